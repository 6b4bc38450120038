#include "oled/ssd1327zb_canvas_handler.h"

#include "simulator/in_process/spi_boundary.h"
#include "tests/support/files.h"
#include "tests/support/printed.h"
#include "tests/support/scarce_memory.h"

#include <fcntl.h>

using namespace renewer;

namespace {

constexpr const char device[] = "/dev/spidev2.0";

struct ssd1327zb_canvas_handler : testing::Test {
    void SetUp() override {
        spi().leads_to_oled = true;
        spi().wanted_speed = 30000000;
        put_file(device, "");
    }
};

TEST_F(ssd1327zb_canvas_handler, has_a_name_every_operation_a_canvas_and_the_open_device) {
    for (const size_t length : {0u, 9u, 127u, 128u, 1000u}) {
        const std::string name(length, 'n');
        canvas_handler *handler = create_ssd1327sd_canvas_handler(name.c_str(), device);
        ASSERT_NE(handler, nullptr);
        EXPECT_EQ(handler->name, name.substr(0, 127));
        EXPECT_TRUE(handler->open && handler->create_canvas) << "the others through canvas";
        const int fd = handler->fd;
        EXPECT_GE(fcntl(fd, F_GETFD), 0);
        destory_ssd1327sd_canvas_handler(&handler);
        EXPECT_EQ(handler, nullptr);
        EXPECT_EQ(fcntl(fd, F_GETFD), -1);
        destory_ssd1327sd_canvas_handler(&handler);
    }
    destory_ssd1327sd_canvas_handler(nullptr);
}

TEST_F(ssd1327zb_canvas_handler, releases_through_the_operations_that_it_has) {
    static int closed = -1;
    canvas_handler *handler = create_ssd1327sd_canvas_handler("ssd1327zb", device);
    canvas *frame = handler->canvas;
    const int fd = handler->fd;
    handler->close = [](int32_t descriptor) { return closed = descriptor; };
    handler->destroy_canvas = nullptr;
    destory_ssd1327sd_canvas_handler(&handler);
    EXPECT_EQ(closed, fd);
    EXPECT_EQ(ssd1327zb_clean_canvas(frame), 0) << "the canvas is left";
    ssd1327zb_destroy_canvas(&frame);
    close(fd);
}

TEST_F(ssd1327zb_canvas_handler, leaks_nothing_when_it_cannot_start) {
    const struct {
        int allocations;
        const char *path;
        std::set<int> failing_transfers;
        std::string message;
    } cases[] = {
        {0, device, {}, ""},
        {1, device, {}, "create canvas struct failed\n"},
        {2, device, {}, "create canvas addr failed\n"},
        {INT_MAX, nullptr, {}, "spi_oled__open: open /dev/spidev0.0 error!\nopen (null) failed\n"},
        {INT_MAX,
         device,
         {1},
         "spi_write_cmd: ioctl command error!\n"
         "spi_oled__open: spi_write_cmd error!\n"
         "open /dev/spidev2.0 failed\n"},
    };
    const size_t descriptors = open_descriptors();
    for (const auto &[allocations, path, failing, message] : cases) {
        spi().forget();
        spi().failing = failing;
        canvas_handler *handler = nullptr;
        EXPECT_EQ(printed([&, allocations = allocations, path = path] {
                      allocations_left = allocations;
                      handler = create_ssd1327sd_canvas_handler("ssd1327zb", path);
                      allocations_left = INT_MAX;
                  }),
                  message);
        EXPECT_EQ(handler, nullptr) << message;
    }
    EXPECT_EQ(open_descriptors(), descriptors);
}

} // namespace
