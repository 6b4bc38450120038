#include "input.h"

#include "package/common.h"

#include <string>

// The comparison of two version texts, any two.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view input = fuzz::text_of(data, size);
    const size_t middle = input.find('\n');
    const std::string a(input.substr(0, middle));
    const std::string b(middle == std::string_view::npos ? "" : input.substr(middle + 1));
    renewer::edition_compare(b.c_str(), a.c_str());
    const int result = renewer::edition_compare(a.c_str(), b.c_str());
    if (std::string(a.c_str()) == b.c_str()) {
        fuzz::expect(result == 0);
    }
    return 0;
}
