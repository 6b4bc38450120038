// renewer-flash attach
//     Attaches the first flash to UBI and makes one volume "storage" on it.
//
// renewer-flash cuts RESULTS
//     Restores each of the flash's recorded states (see recorded_flash.c), mounts it and writes its
//     files to RESULTS, one line per state: "<operations> <whole|half>" and then, after a tab each,
//     "<path> <bytes> <hash>" for a file, or "cannot be mounted".

#include "platform/owner.h"
#include "simulator/unit/failure.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mtd/ubi-user.h>
#include <sys/ioctl.h>
#include <sys/mount.h>

using namespace simulator;

namespace fs = std::filesystem;

namespace {

constexpr char mount_point[] = "/media";
constexpr char flash_file[] = "/proc/recorded_flash";

// Its UBI device gets number 0, too.
bool attach() {
    const renewer::owned_descriptor control(open("/dev/ubi_ctrl", O_RDWR | O_CLOEXEC));
    ubi_attach_req request = {};
    return ioctl(control.get(), UBI_IOCATT, &request) >= 0;
}

void detach() {
    const renewer::owned_descriptor control(open("/dev/ubi_ctrl", O_RDWR | O_CLOEXEC));
    int32_t number = 0;
    ioctl(control.get(), UBI_IOCDET, &number);
}

int64_t number_in(const char *path) {
    int64_t number = 0;
    std::ifstream(path) >> number;
    return number;
}

void make_volume() {
    const renewer::owned_descriptor device(open("/dev/ubi0", O_RDWR | O_CLOEXEC));
    ubi_mkvol_req request = {};
    request.vol_id = UBI_VOL_NUM_AUTO;
    request.alignment = 1;
    request.bytes = number_in("/sys/class/ubi/ubi0/avail_eraseblocks") *
                    number_in("/sys/class/ubi/ubi0/eraseblock_size");
    request.vol_type = UBI_DYNAMIC_VOLUME;
    request.name_len = static_cast<int16_t>(strlen(strcpy(request.name, "storage")));
    if (ioctl(device.get(), UBI_IOCMKVOL, &request) < 0) {
        fail("volume");
    }
}

// FNV-1a, 64 bits.
uint64_t hash_of(const std::string &content) {
    uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : content) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    }
    return hash;
}

std::string files_of(const fs::path &top) {
    std::string text;
    for (const auto &entry : fs::recursive_directory_iterator(top)) {
        if (entry.is_regular_file()) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string content{std::istreambuf_iterator<char>(file), {}};
            text += "\t/" + fs::relative(entry.path(), top).string() + " " +
                    std::to_string(content.size()) + " " + std::to_string(hash_of(content));
        }
    }
    return text;
}

std::string look_at(const std::string &moment) {
    std::ofstream(flash_file) << moment;
    std::string text = "\tcannot be mounted";
    if (attach()) {
        if (mount("ubi0:storage", mount_point, "ubifs", 0, nullptr) == 0) {
            text = files_of(mount_point);
            umount(mount_point);
        }
        detach();
    }
    return text;
}

void look_at_all(const char *results) {
    detach();
    std::ofstream file(results);
    const int64_t operations = number_in(flash_file);
    for (int64_t done = 0; done <= operations; ++done) {
        const std::string number = std::to_string(done);
        file << number << " whole" << look_at(number) << '\n';
        if (done < operations) {
            file << number << " half" << look_at(number + " half") << '\n';
        }
    }
}

} // namespace

int main(int count, char **arguments) {
    if (count == 2 && strcmp(arguments[1], "attach") == 0) {
        if (!attach()) {
            fail("flash");
        }
        make_volume();
        return 0;
    }
    if (count == 3 && strcmp(arguments[1], "cuts") == 0) {
        look_at_all(arguments[2]);
        return 0;
    }
    fputs("usage: renewer-flash attach | cuts RESULTS\n", stderr);
    return 2;
}
