#include "input.h"

#include "unit/host_info.h"

#include <algorithm>
#include <cstring>

using namespace renewer;

// The reader of the host record, on any file.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::put_input(fuzz::text_of(data, size), "/update/hw/sys");
    host_info record = {};
    fuzz::expect(get_local_host_info(&record) == 1);
    host_info expected = {};
    memcpy(&expected, data, std::min(size, sizeof(expected)));
    fuzz::expect(memcmp(&record, &expected, sizeof(record)) == 0);
    return 0;
}
