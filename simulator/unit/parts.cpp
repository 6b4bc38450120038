#include "simulator/unit/parts.h"

#include <stdexcept>

namespace simulator {

namespace fs = std::filesystem;

namespace {

// The running program is somewhere below the top of its build, or in the bin of an installation.
fs::path find_top() {
    const fs::path program = fs::read_symlink("/proc/self/exe");
    for (fs::path above = program.parent_path(); above != above.root_path();
         above = above.parent_path()) {
        for (const fs::path &top : {above, above / "libexec/renewer-desk"}) {
            if (fs::exists(top / "simulator/boundary/boundary.so")) {
                return top;
            }
        }
    }
    throw std::runtime_error("the parts of the desk are not where " + program.string() + " is");
}

// Found once: a unit's first process has another root.
const fs::path &top() {
    static const fs::path found = find_top();
    return found;
}

} // namespace

fs::path part(const fs::path &place_in_build) {
    return top() / place_in_build;
}

fs::path place_in_build(const fs::path &part) {
    return fs::relative(part, top());
}

} // namespace simulator
