#include "simulator/guest/panel_node.h"

#include <cstring>
#include <fcntl.h>
#include <linux/fuse.h>
#include <linux/spi/spidev.h>
#include <string>
#include <sys/uio.h>

namespace simulator {

namespace {

constexpr uint32_t largest_transfer = 64 * 1024;
constexpr size_t buffer_size = largest_transfer + FUSE_MIN_READ_BUFFER;

constexpr uint32_t set_command_level = SPI_IOC_RD_MODE32;
constexpr uint32_t set_data_level = SPI_IOC_WR_MODE32;

template <typename record>
std::span<const uint8_t> bytes_of(const record &content) {
    return {reinterpret_cast<const uint8_t *>(&content), sizeof(content)};
}

std::vector<uint8_t> joined(std::initializer_list<std::span<const uint8_t>> parts) {
    std::vector<uint8_t> whole;
    for (const auto part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

fuse_ioctl_iovec memory_of_caller(uint64_t address, uint64_t size) {
    return {address, size};
}

} // namespace

struct panel_node::request {
    uint64_t unique;
    fuse_ioctl_in control;
    std::span<const uint8_t> input; // fetched from the caller's memory
};

panel_node::panel_node(const char *name, sa1230_panel &behind)
    : device(open("/dev/cuse", O_RDWR | O_CLOEXEC)), node_name(name), panel(behind),
      buffer(buffer_size) {
    if (device.get() < 0) {
        fail("/dev/cuse");
    }
    answer(); // the first request is for the node's name; its answer creates the node
}

void panel_node::reply(uint64_t unique, int error, std::span<const uint8_t> content) {
    fuse_out_header header = {};
    header.len = static_cast<uint32_t>(sizeof(header) + content.size());
    header.error = -error;
    header.unique = unique;
    const iovec parts[] = {{&header, sizeof(header)},
                           {const_cast<uint8_t *>(content.data()), content.size()}};
    if (writev(device.get(), parts, 2) < 0) {
        fail("/dev/cuse");
    }
}

// Asks the kernel to repeat the request with the content of `inputs`, parts of the caller's memory,
// and with room for an answer that it copies to `outputs`.
void panel_node::ask_for(uint64_t unique, std::span<const fuse_ioctl_iovec> inputs,
                         std::span<const fuse_ioctl_iovec> outputs) {
    fuse_ioctl_out answer = {};
    answer.flags = FUSE_IOCTL_RETRY;
    answer.in_iovs = static_cast<uint32_t>(inputs.size());
    answer.out_iovs = static_cast<uint32_t>(outputs.size());
    const auto bytes = [](std::span<const fuse_ioctl_iovec> list) {
        return std::span(reinterpret_cast<const uint8_t *>(list.data()), list.size_bytes());
    };
    reply(unique, 0, joined({bytes_of(answer), bytes(inputs), bytes(outputs)}));
}

void panel_node::answer_control(const request &asked) {
    const fuse_ioctl_in &control = asked.control;
    fuse_ioctl_out answer = {};
    const uint32_t size = _IOC_SIZE(control.cmd);
    const fuse_ioctl_iovec argument = memory_of_caller(control.arg, size);
    if (control.cmd == set_command_level || control.cmd == set_data_level) {
        panel.level(static_cast<int>(control.arg));
    } else if ((_IOC_DIR(control.cmd) & _IOC_READ) != 0) {
        if (control.out_size < size) {
            return ask_for(asked.unique, {}, {&argument, 1});
        }
        std::vector<uint8_t> &setting = settings[_IOC_NR(control.cmd)];
        setting.resize(size);
        return reply(asked.unique, 0, joined({bytes_of(answer), setting}));
    } else if (asked.input.size() < size) {
        return ask_for(asked.unique, {&argument, 1}, {});
    } else if (control.cmd != static_cast<uint32_t>(SPI_IOC_MESSAGE(1))) {
        settings[_IOC_NR(control.cmd)].assign(asked.input.begin(), asked.input.end());
    } else {
        spi_ioc_transfer transfer;
        memcpy(&transfer, asked.input.data(), sizeof(transfer));
        if (asked.input.size() < sizeof(transfer) + transfer.len) {
            const fuse_ioctl_iovec parts[] = {argument,
                                              memory_of_caller(transfer.tx_buf, transfer.len)};
            return ask_for(asked.unique, parts, {});
        }
        panel.transfer(asked.input.subspan(sizeof(transfer), transfer.len));
        answer.result = static_cast<int32_t>(transfer.len);
    }
    reply(asked.unique, 0, bytes_of(answer));
}

void panel_node::answer() {
    const ssize_t length = read(device.get(), buffer.data(), buffer.size());
    if (length < static_cast<ssize_t>(sizeof(fuse_in_header))) {
        fail("/dev/cuse");
    }
    fuse_in_header header;
    memcpy(&header, buffer.data(), sizeof(header));
    const auto content = std::span<const uint8_t>(buffer.data(), static_cast<size_t>(length))
                             .subspan(sizeof(header));
    switch (header.opcode) {
    case CUSE_INIT: {
        cuse_init_out answer = {};
        answer.major = FUSE_KERNEL_VERSION;
        answer.minor = FUSE_KERNEL_MINOR_VERSION;
        answer.flags = CUSE_UNRESTRICTED_IOCTL;
        answer.max_read = answer.max_write = largest_transfer;
        const std::string name = std::string("DEVNAME=") + node_name;
        const auto text = reinterpret_cast<const uint8_t *>(name.c_str());
        reply(header.unique, 0, joined({bytes_of(answer), {text, name.size() + 1}}));
        break;
    }
    case FUSE_OPEN:
        reply(header.unique, 0, bytes_of(fuse_open_out{}));
        break;
    case FUSE_RELEASE:
        reply(header.unique, 0, {});
        break;
    case FUSE_IOCTL: {
        request asked = {header.unique, {}, content.subspan(sizeof(fuse_ioctl_in))};
        memcpy(&asked.control, content.data(), sizeof(asked.control));
        answer_control(asked);
        break;
    }
    case FUSE_INTERRUPT: // refers to a request that has been answered already
        break;
    default:
        reply(header.unique, ENOSYS, {});
    }
}

} // namespace simulator
