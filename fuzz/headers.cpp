#include "input.h"

#include "package/package.h"
#include "platform/owner.h"

#include <cstring>

using namespace renewer;

// Readers and printers of both layouts, on any file.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::put_input(fuzz::text_of(data, size));
    pack_head old_head = {};
    fuzz::expect(get_pack_head(fuzz::input_path, &old_head) == (size >= sizeof(old_head)));
    show_header(&old_head);

    pack_head_new head = {};
    const int read = get_pack_head_new(fuzz::input_path, &head);
    const owned_memory<char> version(head.version_content);
    fuzz::expect(read == (size > pack_head_new_size && head.version_len > 0));
    fuzz::expect(version == nullptr || strlen(version.get()) <= size);
    show_header_new(&head);

    show_package_info(fuzz::input_path);
    show_package_info_new(fuzz::input_path);
    uint32_t magic = 0;
    fuzz::expect(get_magic(fuzz::input_path, &magic) == 1);
    return 0;
}
