#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <sys/mount.h>

// A file system of a few pages, in the unit's root of the tests, which fills up.
class small_disk {
public:
    explicit small_disk(size_t size, const char *at = path) : mounted_at(at) {
        std::filesystem::create_directories(at);
        const std::string options = "size=" + std::to_string(size);
        EXPECT_EQ(mount("small", at, "tmpfs", 0, options.c_str()), 0);
    }
    ~small_disk() { umount2(mounted_at, MNT_DETACH); }
    small_disk(const small_disk &) = delete;
    small_disk &operator=(const small_disk &) = delete;

    static constexpr const char *path = "/media/small";

private:
    const char *mounted_at;
};
