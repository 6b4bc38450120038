#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// The commands of renewer-pack. Each returns the exit status; what they throw is turned into one by
// main: `refused` into 1, `misused` into 2, std::system_error into 3.
namespace pack {

enum exit_status { good = 0, package_refused = 1, used_wrongly = 2, system_error = 3 };

struct misused : std::runtime_error {
    using runtime_error::runtime_error;
};

struct show_options {
    std::filesystem::path package;
    bool json = false;
};
int show(const show_options &options);

int check(const std::vector<std::filesystem::path> &packages);

struct unpack_options {
    std::filesystem::path package;
    std::filesystem::path directory = ".";
    std::vector<std::string> only; // names or numbers of node types; all when empty
    bool force = false;
};
int unpack(const unpack_options &options);

struct create_options {
    std::filesystem::path output;
    std::string version; // "M.S.R.T"
    std::string pn;
    std::string revision;
    std::vector<std::string> sources; // "TYPE=FILE"
    std::filesystem::path manifest;   // empty for none
};
int create(const create_options &options);

struct find_options {
    std::vector<std::filesystem::path> directories;
    std::filesystem::path unit; // host information file
    std::string inputs;         // the three hardware-presence inputs as read; empty when unknown
};
int find(const find_options &options);

int types();

// The node type that a name or a number stands for; nothing when there is none.
std::optional<unsigned> node_type_of(const std::string &name);

} // namespace pack
