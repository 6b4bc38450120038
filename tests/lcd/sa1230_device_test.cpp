#include "lcd/sa1230_device.h"

#include "lcd/sa1230_pictures.h"

#include "simulator/in_process/asked.h"
#include "simulator/in_process/spi_boundary.h"
#include "tests/support/files.h"
#include "tests/support/pictures.h"
#include "tests/support/printed.h"

#include <fcntl.h>

using namespace renewer;

namespace {

constexpr const char device[] = "/dev/spidev1.0";
const simulator::sa1230_panel::fault_counts no_faults;

constexpr const char start_up[] = "set mode 0\nget mode 0\n"
                                  "set bits 8\nget bits 8\n"
                                  "set speed 50000000\nget speed 50000000\n"
                                  "shell echo 255 > /sys/class/leds/Oled_Power/brightness\n"
                                  "sleep 0.005 s\n"
                                  "shell echo 255 > /sys/class/leds/Oled_Rst/brightness\n"
                                  "sleep 0.005 s\n"
                                  "shell echo 0   > /sys/class/leds/Oled_Rst/brightness\n"
                                  "sleep 0.005 s\n"
                                  "shell echo 255 > /sys/class/leds/Oled_Rst/brightness\n"
                                  "sleep 0.015 s\n"
                                  "command level\ncommand FE\ndata level\ndata 00\n"
                                  "command level\ncommand 2A\ndata level\ndata 00\n"
                                  "data level\ndata 00\ndata level\ndata 00\ndata level\ndata 7D\n"
                                  "command level\ncommand 2B\ndata level\ndata 00\n"
                                  "data level\ndata 00\ndata level\ndata 01\ndata level\ndata 25\n"
                                  "command level\ncommand 35\ndata level\ndata 00\n"
                                  "command level\ncommand 51\ndata level\ndata FF\n"
                                  "command level\ncommand 3A\ndata level\ndata 05\n"
                                  "command level\ncommand 11\nsleep 0.15 s\n"
                                  "command level\ncommand 29\nsleep 0.15 s\n";

// An open LCD with an empty transcript.
struct sa1230_device : testing::Test {
    int fd = -1;

    void SetUp() override {
        put_lcd(device);
        fd = sa1230_open(device);
        ASSERT_GE(fd, 0);
        spi().forget();
    }
    void TearDown() override { close(fd); }
};

std::string full_frame(const std::string &last_column, const std::string &last_row) {
    std::string text = "command level\ncommand 2A\ndata level\ndata 00 00 " + last_column +
                       "\ncommand level\ncommand 2B\ndata level\ndata 00 00 " + last_row +
                       "\ncommand level\ncommand 2C\ndata level\n";
    for (int i = 0; i < 18; ++i) {
        text += "pixels 4096\n";
    }
    return text + "pixels 360\n";
}

void put_picture(const std::string &name, int width, int height, const std::string &pixels) {
    put_file("/reserve/update/" + name, bmp_of(width, height, pixels));
}

TEST(sa1230_open, starts_the_panel_up) {
    put_lcd(device);
    const int fd = sa1230_open(device);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(fcntl(fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR | O_NONBLOCK);
    EXPECT_EQ(fcntl(fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_EQ(asked().transcript, start_up);
    EXPECT_EQ(spi().panel.faults(), no_faults);
    EXPECT_TRUE(spi().panel.shows());
    close(fd);
}

TEST(sa1230_open, works_with_what_the_link_accepts) {
    put_lcd(device);
    spi().highest_speed = 33000000;
    const int fd = sa1230_open(device);
    EXPECT_NE(asked().transcript.find("set speed 50000000\nget speed 33000000\n"),
              std::string::npos);
    EXPECT_EQ(asked().transcript.find("wrong"), std::string::npos);
    close(fd);
    spi().forget();
    EXPECT_EQ(printed([] { EXPECT_EQ(sa1230_open("/dev/spidev9.9"), -1); }),
              "spi_oled__open: /dev/spidev9.9 error!\n");
    EXPECT_EQ(asked().transcript, "");
}

TEST_F(sa1230_device, shows_a_picture_that_another_program_wrote_and_rotated) {
    const std::string pixels = random_pixels(294, 126);
    put_picture("confirm.bmp", 294, 126, pixels);
    EXPECT_EQ(sa1230_update(fd, 131), 0);
    EXPECT_EQ(asked().transcript, full_frame("00 7D", "01 25"));
    const std::string rotated = netpbm("pnmflip -quiet -ccw", ppm_of(294, 126, pixels));
    EXPECT_TRUE(spi().pixels == rgb565_of(rotated.substr(rotated.size() - 294 * 126 * 3)));
    EXPECT_EQ(spi().panel.faults(), no_faults);
    EXPECT_EQ(spi().panel.pictures(), 1);

    spi().forget();
    put_picture("confirm.bmp", 2, 1, std::string("\xFF\0\0\0\0\xFF", 6));
    EXPECT_EQ(sa1230_update(fd, 131), 0);
    EXPECT_EQ(asked().transcript, "command level\ncommand 2A\ndata level\ndata 00 00 00 00\n"
                                  "command level\ncommand 2B\ndata level\ndata 00 00 00 01\n"
                                  "command level\ncommand 2C\ndata level\npixels 4\n");
    EXPECT_EQ(spi().pixels, std::string("\x00\x1F\xF8\x00", 4)) << "the right one first";
}

TEST_F(sa1230_device, refuses_layers_that_do_not_fit_or_have_no_pixels) {
    std::vector<uint8_t> pixels(2 * 295 * 127);
    uint8_t *const some = pixels.data();
    const struct {
        sa1230_layer layer;
        const char *message;
    } cases[] = {
        {{some, 0, 0, 295, 126}, "out of range\n"}, {{some, 0, 0, 294, 127}, "out of range\n"},
        {{some, 0, 0, 126, 294}, "out of range\n"}, {{nullptr, 0, 0, 1, 1}, "input err\n"},
        {{some, 0, 0, 0, 1}, "input err\n"},        {{some, 0, 0, 1, 0}, "input err\n"},
        {{some, 0, 0, -1, -1}, "input err\n"},
    };
    for (const auto &[layer, message] : cases) {
        EXPECT_EQ(printed([&, layer = layer] { EXPECT_EQ(sa1230_show_layer(fd, layer), -1); }),
                  message);
    }
    put_picture("success.bmp", 600, 1, random_pixels(600, 1));
    EXPECT_EQ(printed([this] { EXPECT_EQ(sa1230_update(fd, 132), -1); }), "out of range\n");
    EXPECT_EQ(printed([&] { EXPECT_EQ(sa1230_show_layer(-1, {some, 0, 0, 1, 1}), -1); }), "");
    EXPECT_EQ(asked().transcript, "");
    EXPECT_EQ(sa1230_show_layer(fd, {some, 40, -3, 1, 1}), 0) << "its place is ignored";
    EXPECT_NE(asked().transcript.find("data 00 00 00 00"), std::string::npos);
}

TEST_F(sa1230_device, goes_on_after_a_failed_transfer) {
    put_picture("failure.bmp", 294, 126, random_pixels(294, 126));
    const std::string data_error = "spi_write_data: ioctl command error Input/output error!\n";
    const struct {
        int failing;
        const char *replaced, *by;
        std::string output;
    } cases[] = {
        {1, "command 2A\n", "failed transfer of 1\n", "spi_write_cmd: ioctl command error!\n"},
        {2, "data 00 00 00 7D\n", "failed transfer of 4\n", data_error},
        {6, "pixels 4096\n", "failed transfer of 4096\n", data_error},
        {24, "pixels 360\n", "failed transfer of 360\n", data_error},
    };
    for (const auto &[failing, replaced, by, output] : cases) {
        spi().forget();
        spi().failing = {failing};
        EXPECT_EQ(printed([this] { EXPECT_EQ(sa1230_update(fd, 133), 0); }), output);
        EXPECT_EQ(spi().transfers, 5 + 19);
        std::string expected = full_frame("00 7D", "01 25");
        expected.replace(expected.find(replaced), strlen(replaced), by);
        EXPECT_EQ(asked().transcript, expected) << failing;
    }
}

TEST_F(sa1230_device, cuts_large_data_into_transfers) {
    const std::vector<uint8_t> bytes(3 * 4096);
    const struct {
        int length, result;
        const char *sizes;
    } cases[] = {
        {-5000, 0, ""},
        {0, 0, ""},
        {4096, 4096, "pixels 4096\n"},
        {4097, 1, "pixels 4096\npixels 1\n"},
        {8192, 4096, "pixels 4096\npixels 4096\n"},
    };
    sa1230_write_ram_prepare(fd);
    for (const auto &[length, result, sizes] : cases) {
        spi().forget();
        EXPECT_EQ(spi_write_big_data(fd, bytes.data(), length), result);
        EXPECT_EQ(asked().transcript, "data level\n" + std::string(sizes)) << length;
    }
    spi().forget();
    spi().failing = {1, 2};
    EXPECT_EQ(spi_write_big_data(fd, bytes.data(), 4097), -1) << "the last one failed too";
    EXPECT_EQ(spi().transfers, 2);
}

TEST_F(sa1230_device, transfers_refuse_what_is_missing) {
    const uint8_t byte = 0;
    EXPECT_EQ(printed([&] {
                  EXPECT_EQ(spi_write_cmds(-1, &byte, 1), -1);
                  EXPECT_EQ(spi_write_cmds(fd, nullptr, 1), -1);
                  EXPECT_EQ(spi_write_data(-1, &byte, 1), -1);
                  EXPECT_EQ(spi_write_data(fd, nullptr, 1), -1);
                  EXPECT_EQ(spi_write_big_data(-1, &byte, 1), -1);
                  EXPECT_EQ(spi_write_big_data(fd, nullptr, 1), -1);
              }),
              "spi_write_cmd: file descriptor error!\n"
              "spi_write_cdd: NULL pointer to command!\n"
              "spi_write_data: file descriptor error!\n"
              "spi_write_data: NULL pointer to command!\n"
              "spi_write_data: file descriptor error!\n"
              "spi_write_data: NULL pointer to command!\n");
    EXPECT_EQ(asked().transcript, "");
}

TEST_F(sa1230_device, finds_the_picture_of_each_index) {
    const std::pair<int, const char *> cases[] = {{0, "updating_0"}, {128, "updating_128"},
                                                  {131, "confirm"},  {132, "success"},
                                                  {133, "failure"},  {134, "notallow"}};
    for (const auto &[index, name] : cases) {
        EXPECT_EQ(printed([&, index = index] { EXPECT_EQ(sa1230_update(fd, index), -1); }),
                  "open /reserve/update/" + std::string(name) + ".bmp failed\nread bmp err\n");
    }
    for (const int index : {-1, 129, 130, 135, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(printed([&, index = index] { EXPECT_EQ(sa1230_update(fd, index), -1); }),
                  "bmp name error!\n");
    }
    EXPECT_EQ(asked().transcript, "");
}

const struct {
    int x, y, width, height;
    std::string pixels;
} built_in[] = {
    {60, 44, 174, 39, {updating_bmp.begin(), updating_bmp.end()}},
    {10, 29, 275, 68, {update_now_bmp.begin(), update_now_bmp.end()}},
    {24, 44, 247, 38, {update_success_bmp.begin(), update_success_bmp.end()}},
    {37, 44, 221, 39, {update_failed_bmp.begin(), update_failed_bmp.end()}},
};

TEST_F(sa1230_device, shows_the_built_in_pictures_in_the_middle) {
    for (uint32_t number = 0; number < 4; ++number) {
        put_picture("notallow.bmp", 294, 126, random_pixels(294, 126));
        sa1230_update(fd, 134);
        spi().forget();
        EXPECT_EQ(sa1230_default(fd, number), 0);
        EXPECT_EQ(asked().transcript, full_frame("00 7D", "01 25"));

        const auto &[x, y, width, height, pixels] = built_in[number];
        std::string rotated;
        for (int column = 293 - x; column >= -x; --column) {
            for (int row = -y; row < 126 - y; ++row) {
                const bool inside = column >= 0 && column < width && row >= 0 && row < height;
                rotated += inside ? pixels.substr(static_cast<size_t>(row * width + column) * 2, 2)
                                  : std::string(2, '\0');
            }
        }
        EXPECT_TRUE(spi().pixels == rotated) << number;
    }
    spi().forget();
    EXPECT_EQ(printed([this] {
                  EXPECT_EQ(sa1230_default(fd, 4), 0);
                  EXPECT_EQ(sa1230_default(fd, UINT32_MAX), 0);
              }),
              "4 is out range\n-1 is out range\n");
    EXPECT_EQ(asked().transcript, "");
    EXPECT_EQ(sa1230_default(-1, 1), 0) << "unsent transfers are no error";
}

// White letters with soft edges on black, and as wide as their place allows.
TEST(sa1230_pictures, are_white_on_black) {
    for (const auto &[x, y, width, height, pixels] : built_in) {
        int white = 0, black = 0, left = width, right = 0;
        for (size_t i = 0; i < pixels.size(); i += 2) {
            const int value =
                static_cast<uint8_t>(pixels[i]) << 8 | static_cast<uint8_t>(pixels[i + 1]);
            const int red = value >> 11, green = value >> 5 & 0x3F, blue = value & 0x1F;
            EXPECT_TRUE(red == blue && green / 2 == red) << "a colour";
            white += value == 0xFFFF;
            black += value == 0;
            if (value != 0) {
                left = std::min(left, static_cast<int>(i / 2) % width);
                right = std::max(right, static_cast<int>(i / 2) % width);
            }
        }
        const int all = width * height;
        EXPECT_GT(white, 500);
        EXPECT_GT(all - white - black, 500);
        EXPECT_GT(black, all / 2);
        EXPECT_LE(std::abs(left - (width - 1 - right)), 1) << "not in the middle";
    }
}

} // namespace
