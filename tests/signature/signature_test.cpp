#include "signature/signature.h"

#include "tests/support/files.h"

#include <gtest/gtest.h>

using namespace renewer;

namespace {

// Made by minisign 0.11 of a file that holds "hello\n".
const std::string key = "untrusted comment: minisign public key 3B4A26CB45DC5743\n"
                        "RWRDV9xFyyZKOy3fupHxKwhUi9VPaXR3zqIbd4vpJESCao0ksvHg5yCQ\n";
const std::string signature =
    "untrusted comment: signature from minisign secret key\n"
    "RURDV9xFyyZKOyE5wJck0IIM8yT2Z2sP9y/eeeN+NwT3KyH0F0/P/hiGuDcuSpy7zn1SVIxM1Z3JzYwo3pwLJsEnJzUgwD"
    "mTwQI=\n"
    "trusted comment: a comment\n"
    "ueS1q6FTmWqQ2huJk+7ntH84Adx/dynHOzSHg4IhIxCfXkZPo291sanhcFBV1IukXWbrjvr1s7CmVuzJ8yPoAw==\n";

// `text` with its first `what` replaced.
std::string with(std::string text, const std::string &what, const std::string &by) {
    return text.replace(text.find(what), what.size(), by);
}

TEST(signature, holds_for_what_was_signed_and_nothing_else) {
    using enum signature_fault;
    struct {
        std::string file, signature, key;
        signature_fault fault;
    } const cases[] = {
        {"hello\n", signature, key, none},
        {"hello\n", with(signature, "from", "of"), with(key, "minisign", "our"), none},
        {"hello\n", with(signature, "\ntrusted", "\r\ntrusted"), key, none},
        {"hello", signature, key, file_changed},
        {"hello!", signature, key, file_changed},
        {"", signature, key, file_changed},
        {"hello\n", with(signature, "KOyE5", "KOyE6"), key, file_changed},
        {"hello\n", signature, with(key, "KOy3f", "KOy3g"), file_changed},
        {"hello\n", with(signature, "a comment", "A comment"), key, comment_changed},
        {"hello\n", with(signature, "a comment", "a comment "), key, comment_changed},
        {"hello\n", with(signature, "ueS1q", "ueS2q"), key, comment_changed},
        {"hello\n", signature, with(key, "RWRD", "RWRE"), other_key},
        {"hello\n", with(signature, "RURD", "RURE"), key, other_key},
        {"hello\n", with(signature, "RURD", "RWRD"), key, signature_of_whole_file},
        {"hello\n", with(signature, "RURD", "RVRD"), key, signature_malformed},
        {"hello\n", with(signature, "wQI=", "wQI"), key, signature_malformed},
        {"hello\n", with(signature, "trusted comment: sig", "comment: sig"), key,
         signature_malformed},
        {"hello\n", with(signature, "trusted comment: a", std::string(9000, 'a')), key,
         signature_malformed},
        {"hello\n", signature.substr(0, 200), key, signature_malformed},
        {"hello\n", "", key, signature_malformed},
        {"hello\n", signature, with(key, "RWRD", "RURD"), key_malformed},
        {"hello\n", signature, key.substr(56), key_malformed},
        {"hello\n", signature, "", key_malformed},
    };
    for (const auto &given : cases) {
        put_file("/tmp/file", given.file);
        put_file("/tmp/file.minisig", given.signature);
        put_file("/tmp/key", given.key);
        signature_report report;
        EXPECT_EQ(check_signature("/tmp/file", nullptr, "/tmp/key", &report), given.fault == none);
        EXPECT_EQ(report.fault, given.fault) << signature_fault_str(report.fault);
        EXPECT_STREQ(report.comment, given.fault == none ? "a comment" : "");
    }
    put_file("/tmp/file", "hello\n");
    put_file("/tmp/file.minisig", signature);
    put_file("/tmp/key", key);
    EXPECT_EQ(check_signature("/tmp/file", "/tmp/file.minisig", "/tmp/key", nullptr), 1);
    EXPECT_EQ(check_signature("/tmp/none", "/tmp/file.minisig", "/tmp/key", nullptr), 0);
    EXPECT_EQ(check_signature("/tmp/file", "/tmp/none", "/tmp/key", nullptr), 0);
    EXPECT_EQ(check_signature("/tmp/file", nullptr, nullptr, nullptr), 0);
    signature_report report;
    check_signature("/tmp", "/tmp/file.minisig", "/tmp/key", &report);
    EXPECT_EQ(report.fault, file_unreadable);
    EXPECT_EQ(check_signature(nullptr, nullptr, "/tmp/key", nullptr), 0);
}

} // namespace
