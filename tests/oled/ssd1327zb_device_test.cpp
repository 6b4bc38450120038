#include "oled/ssd1327zb_device.h"

#include "simulator/in_process/asked.h"
#include "simulator/in_process/spi_boundary.h"
#include "tests/support/files.h"
#include "tests/support/grey.h"
#include "tests/support/output.h"
#include "tests/support/printed.h"

#include <fcntl.h>
#include <unistd.h>

using namespace renewer;

namespace {

constexpr const char device[] = "/dev/spidev2.0";
const simulator::ssd1327_panel::fault_counts no_faults;

constexpr const char start_up[] =
    "set mode 0\nget mode 0\nset bits 8\nget bits 8\nset speed 30000000\nget speed 30000000\n"
    "command level\n"
    "command AE 15 00 3F 75 00 7F 81 80 A0 53 A1 00 A2 00 A4 A8 7F B1 F1 B3 00 AB 01 B6 0F BE 0F "
    "BC 08 D5 62 FD 12 AF\n";

std::string frame_transcript() {
    std::string text = "command level\ncommand 15 00 3F 75 00 7F\n";
    for (int row = 0; row < 128; ++row) {
        text += "data level\npixels 128\n";
    }
    return text;
}

std::string repeated(int times, const std::string &line) {
    std::string text;
    for (int i = 0; i < times; ++i) {
        text += line;
    }
    return text;
}

struct ssd1327zb_device : testing::Test {
    any_canvas drawn;

    void SetUp() override {
        spi().leads_to_oled = true;
        spi().wanted_speed = 30000000;
        put_file(device, "");
    }
    int flush(int fd) {
        return ssd1327zb_flush_full_screen(fd, drawn.frame->buf, drawn.frame->size);
    }
};

TEST_F(ssd1327zb_device, starts_the_panel_up) {
    const int fd = ssd1327zb_open(device);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(fcntl(fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR);
    EXPECT_EQ(fcntl(fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_EQ(asked().transcript, start_up);
    EXPECT_TRUE(spi().oled.shows());
    EXPECT_EQ(spi().oled.contrast(), 128);
    EXPECT_EQ(spi().oled.faults(), no_faults);
    EXPECT_EQ(ssd1327zb_close(fd), 0);
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    EXPECT_TRUE(spi().oled.shows()) << "the panel stays on";
}

TEST_F(ssd1327zb_device, works_with_what_the_link_accepts) {
    spi().highest_speed = 16000000;
    const int fd = ssd1327zb_open(device);
    EXPECT_NE(asked().transcript.find("set speed 30000000\nget speed 16000000\n"),
              std::string::npos);
    EXPECT_EQ(asked().transcript.find("wrong"), std::string::npos);
    ssd1327zb_close(fd);
}

TEST_F(ssd1327zb_device, leaves_nothing_open_when_the_panel_cannot_be_opened) {
    const size_t descriptors = open_descriptors();
    EXPECT_EQ(printed([] {
                  EXPECT_EQ(ssd1327zb_open("/dev/spidev9.9"), -1);
                  EXPECT_EQ(ssd1327zb_open(nullptr), -1);
                  EXPECT_EQ(ssd1327zb_close(-1), -1);
              }),
              repeated(2, "spi_oled__open: open /dev/spidev0.0 error!\n"));
    EXPECT_EQ(asked().transcript, "");
    spi().failing = {1};
    std::vector<size_t> open_at_line;
    {
        output_listener printed(
            [&](std::string_view) { open_at_line.push_back(open_descriptors()); });
        EXPECT_EQ(ssd1327zb_open(device), -1);
        EXPECT_EQ(printed.text, "spi_write_cmd: ioctl command error!\n"
                                "spi_oled__open: spi_write_cmd error!\n");
    }
    EXPECT_EQ(open_at_line, (std::vector{descriptors + 1, descriptors}));
    EXPECT_EQ(open_descriptors(), descriptors);
    EXPECT_FALSE(spi().oled.shows());
}

TEST_F(ssd1327zb_device, shows_the_frame_pixel_for_pixel) {
    const int fd = ssd1327zb_open(device);
    spi().forget();
    for (int turn = 0; turn < 2; ++turn) {
        drawn.fill();
        EXPECT_EQ(flush(fd), 0);
        EXPECT_EQ(asked().transcript, frame_transcript());
        EXPECT_TRUE(spi().oled.seen_levels() == drawn.levels());
        spi().forget();
    }
    EXPECT_EQ(spi().oled.pictures(), 2);
    EXPECT_EQ(spi().oled.faults(), no_faults);
    ssd1327zb_close(fd);
}

TEST_F(ssd1327zb_device, sends_whole_frames_only_and_goes_on_after_transfers_that_fail) {
    const int fd = ssd1327zb_open(device);
    spi().forget();
    const uint8_t *const bytes = drawn.frame->buf;
    EXPECT_EQ(printed([&] {
                  EXPECT_EQ(ssd1327zb_flush_full_screen(fd, nullptr, 8192), -1);
                  for (const uint32_t count : {0u, 8191u, 8193u, 0x80002000u}) {
                      EXPECT_EQ(ssd1327zb_flush_full_screen(fd, bytes, count), -1);
                  }
              }),
              "ssd1327zd's canvas is null\n" +
                  repeated(4, "ssd1327zd's canvas size is not match!\n"));
    EXPECT_EQ(printed([&] { EXPECT_EQ(flush(-1), 0); }),
              "spi_write_cmd: file descriptor error!\n" +
                  repeated(128, "spi_write_data: file descriptor error!\n"));
    EXPECT_EQ(asked().transcript, "");
    spi().failing = {1, 3, 129};
    EXPECT_EQ(printed([&] { EXPECT_EQ(flush(fd), 0); }),
              "spi_write_cmd: ioctl command error!\n" +
                  repeated(2, "spi_write_data: ioctl command error!\n"));
    EXPECT_EQ(spi().transfers, 129);
    ssd1327zb_close(fd);
}

} // namespace
