#include "input.h"

#include "package_file.h"

// What renewer-pack makes of any file: it is refused or its defects are told, in words that a
// terminal can show.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::put_input(fuzz::text_of(data, size));
    try {
        pack::package_file package = pack::read_package(fuzz::input_path);
        pack::examine_nodes(package);
        for (const std::string &defect : package.defects) {
            fuzz::expect(!defect.empty() && pack::printable(defect) == defect);
        }
    } catch (const pack::refused &) {
    }
    return 0;
}
