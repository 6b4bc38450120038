#include "input.h"

#include "package_file.h"

// renewer-pack's examination, on any file: it refuses it or reports defects, in printable text.
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
