#include "json_output.h"

#include <cstdio>

namespace pack {

namespace {

constexpr int format = 1; // incremented with each incompatible change

}

int print_document(const char *command, int status, const json &document) {
    json whole = {{"format", format}, {"command", command}, {"status", status}};
    whole.update(document);
    printf("%s\n", whole.dump(2, ' ', false, json::error_handler_t::replace).c_str());
    return status;
}

} // namespace pack
