#include "oled/ssd1327zb_canvas_handler.h"

#include "tests/support/files.h"
#include "tests/support/output.h"
#include "tests/support/scarce_memory.h"
#include "tests/support/spi_boundary.h"

#include <gtest/gtest.h>

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

TEST_F(ssd1327zb_canvas_handler, has_every_operation_a_canvas_and_the_open_device) {
    canvas_handler *handler = create_ssd1327sd_canvas_handler("ssd1327zb", device);
    ASSERT_NE(handler, nullptr);
    EXPECT_STREQ(handler->name, "ssd1327zb");
    EXPECT_GE(fcntl(handler->fd, F_GETFD), 0);
    ASSERT_NE(handler->canvas, nullptr);
    EXPECT_EQ(handler->canvas->size, 8192u);
    EXPECT_TRUE(handler->open && handler->flush_canvas_to_disp && handler->close &&
                handler->create_canvas && handler->clean_canvas && handler->destroy_canvas &&
                handler->check_box && handler->bmp_to_bmpbuf && handler->draw_bmpbuf_on_canvas &&
                handler->destory_bmpbuf && handler->draw_border_on_canvas &&
                handler->get_strbuf_size && handler->str_to_strbuf &&
                handler->draw_strbuf_on_canvas);
    const int fd = handler->fd;
    destory_ssd1327sd_canvas_handler(&handler);
    EXPECT_EQ(handler, nullptr);
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    destory_ssd1327sd_canvas_handler(&handler);
    destory_ssd1327sd_canvas_handler(nullptr);
}

TEST_F(ssd1327zb_canvas_handler, keeps_as_much_of_its_name_as_it_has_room_for) {
    for (const size_t length : {0u, 126u, 127u, 128u, 1000u}) {
        const std::string name(length, 'n');
        canvas_handler *handler = create_ssd1327sd_canvas_handler(name.c_str(), device);
        ASSERT_NE(handler, nullptr);
        EXPECT_EQ(handler->name, name.substr(0, 127));
        destory_ssd1327sd_canvas_handler(&handler);
    }
}

TEST_F(ssd1327zb_canvas_handler, releases_through_the_operations_that_it_has) {
    static int closed;
    closed = 0;
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

TEST_F(ssd1327zb_canvas_handler, leaves_nothing_behind_when_it_cannot_be_had) {
    const std::string no_device = "spi_oled__open: open /dev/spidev0.0 error!\n";
    const std::string no_start = "spi_write_cmd: ioctl command error!\n"
                                 "spi_oled__open: spi_write_cmd error!\n";
    const struct {
        const char *what;
        int allocations;
        const char *path;
        std::set<int> failing_transfers;
        std::string message;
    } cases[] = {
        {"no record", 0, device, {}, ""},
        {"no canvas", 1, device, {}, "create canvas struct failed\n"},
        {"no pixels", 2, device, {}, "create canvas addr failed\n"},
        {"no device", INT_MAX, "/dev/none", {}, no_device + "open /dev/none failed\n"},
        {"no path", INT_MAX, nullptr, {}, no_device + "open (null) failed\n"},
        {"no panel", INT_MAX, device, {1}, no_start + "open /dev/spidev2.0 failed\n"},
    };
    const size_t descriptors = open_descriptors();
    for (const auto &[what, allocations, path, failing, message] : cases) {
        spi().forget();
        spi().failing = failing;
        output_listener printed;
        allocations_left = allocations;
        canvas_handler *handler = create_ssd1327sd_canvas_handler("ssd1327zb", path);
        allocations_left = INT_MAX;
        EXPECT_EQ(handler, nullptr) << what;
        EXPECT_EQ(printed.text, message) << what;
    }
    EXPECT_EQ(open_descriptors(), descriptors);
    spi().failing = {};
    canvas_handler *handler = create_ssd1327sd_canvas_handler("ssd1327zb", device);
    EXPECT_NE(handler, nullptr) << "the control";
    destory_ssd1327sd_canvas_handler(&handler);
}

} // namespace
