#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// The commands of renewer-pack. Each returns the exit status; main converts exceptions: `refused`
// to 1, `usage_error` to 2, std::system_error to 3.
namespace pack {

enum exit_status { good = 0, package_refused = 1, wrong_usage = 2, system_error = 3 };

struct usage_error : std::runtime_error {
    using runtime_error::runtime_error;
};

struct show_options {
    std::filesystem::path package;
    bool as_json = false;
    bool as_bytes = false;
};
int show(const show_options &options);

struct check_options {
    std::vector<std::filesystem::path> packages;
    std::filesystem::path key; // public key of the demanded signature; empty for none
    bool as_json = false;
};
int check(const check_options &options);

struct unpack_options {
    std::filesystem::path package;
    std::filesystem::path directory = ".";
    std::vector<std::string> only; // names or numbers of node types; empty for all
    std::filesystem::path key;     // as for `check`
    bool force = false;            // replace files, accept damaged packages
    bool quiet = false;
};
int unpack(const unpack_options &options);

struct create_options {
    std::filesystem::path output;
    std::string version; // "M.S.R.T"
    std::string pn;
    std::string revision;
    std::vector<std::string> sources; // "TYPE=FILE"
    std::filesystem::path manifest;   // empty for none
    bool print_manifest = false;      // instead of making the package
    bool force = false;               // replace the output
    bool quiet = false;
};
int create(const create_options &options);

struct find_options {
    std::vector<std::filesystem::path> directories;
    std::filesystem::path unit; // host record
    std::string inputs;         // the three hardware-presence inputs as read; empty if unknown
    bool as_json = false;
};
int find(const find_options &options);

struct fit_options {
    std::filesystem::path package;
    std::filesystem::path unit;  // host record; empty for none
    std::filesystem::path units; // directory of host records; empty for none
    std::optional<int> kind;     // first argument of the updater
    std::string pn;              // its third
    std::string inputs;          // as for `find`
    bool as_json = false;
};
int fit(const fit_options &options);

struct unit_options {
    std::vector<std::filesystem::path> records; // to show
    std::filesystem::path output;               // to make
    std::string pn;
    std::string leading; // seven bytes in hexadecimal digits
    bool force = false;
};
int unit(const unit_options &options);

struct diff_options {
    std::filesystem::path first;
    std::filesystem::path second;
    bool as_json = false;
};
int diff(const diff_options &options);

struct types_options {
    bool as_json = false;
};
int types(const types_options &options);

// The node type with this name or number; nothing if there is none.
std::optional<unsigned> node_type_of(const std::string &name);

// The same; throws `usage_error` with a suggestion if there is none.
unsigned required_node_type(const std::string &name);

} // namespace pack
