#include "input.h"

#include "prompt/mw_key.h"

using namespace renewer;

// Any stream of bytes from the key device, read by both readers.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::put_input(fuzz::text_of(data, size), "/dev/input/event1");
    const int fd = key_open(0);
    fuzz::expect(fd >= 0);
    for (size_t event = 0; event < size / sizeof(key_event) + 2;
         event++) { // and a torn one, and the end
        if (event % 4 == 3) {
            key_stamp stamp = {};
            fuzz::expect(get_key_info(fd, &stamp) >= key_none);
            continue;
        }
        unsigned duration = 0;
        const int key = key_get(fd, &duration);
        const bool pressed = key >= key_ok && key <= key_power;
        const bool released = key >= key_ok + key_released && key <= key_power + key_released;
        fuzz::expect(pressed || released || key == key_none);
        fuzz::expect(!pressed || duration == 0);
    }
    fuzz::expect(key_device_lost());
    fuzz::expect(key_close(fd) == 0);
    return 0;
}
