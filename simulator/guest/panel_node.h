#pragma once

#include "platform/owner.h"
#include "simulator/panels/sa1230_panel.h"
#include "simulator/unit/failure.h"

#include <cstdint>
#include <map>
#include <span>
#include <vector>

struct fuse_ioctl_iovec;

namespace simulator {

// The SPI device node of a panel, on a machine without that panel: a character device whose
// requests are answered by this process (CUSE, linux/fuse.h). It takes the spidev requests and,
// like the unit's SPI driver, the data/command level as a plain integer.
class panel_node {
public:
    // Makes the node "/dev/<name>"; `behind` must outlive this object. Throws if the kernel
    // refuses.
    panel_node(const char *name, sa1230_panel &behind);

    // A descriptor that becomes readable when a request has arrived.
    int incoming() const { return device.get(); }

    // Answers the next request.
    void answer();

private:
    struct request;
    void answer_control(const request &asked);
    void reply(uint64_t unique, int error, std::span<const uint8_t> content);
    void ask_for(uint64_t unique, std::span<const fuse_ioctl_iovec> inputs,
                 std::span<const fuse_ioctl_iovec> outputs);

    renewer::owned_descriptor device;
    const char *node_name;
    sa1230_panel &panel;
    std::map<uint32_t, std::vector<uint8_t>> settings; // as written, by request number
    std::vector<uint8_t> buffer;
};

} // namespace simulator
