#include "commands.h"

#include "package_file.h"

#include <algorithm>
#include <cstdio>
#include <system_error>

namespace pack {

namespace {

std::string joined(const std::vector<std::string> &defects) {
    std::string text;
    for (const std::string &defect : defects) {
        text += (text.empty() ? "" : "; ") + defect;
    }
    return text;
}

int check_one(const std::filesystem::path &package) {
    const std::string name = printable(package.string());
    try {
        const std::vector<std::string> defects = all_defects(package);
        printf("%s: %s\n", name.c_str(),
               defects.empty() ? "good" : ("refused: " + joined(defects)).c_str());
        return defects.empty() ? good : package_refused;
    } catch (const std::system_error &error) {
        printf("%s: cannot be read: %s\n", name.c_str(), error.code().message().c_str());
        return system_error;
    }
}

} // namespace

int check(const std::vector<std::filesystem::path> &packages) {
    int status = good;
    for (const std::filesystem::path &package : packages) {
        status = std::max(status, check_one(package));
        fflush(stdout);
    }
    return status;
}

} // namespace pack
