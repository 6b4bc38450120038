#pragma once

#include <fcntl.h>
#include <sys/stat.h>

// Access and modification in the year 2050, for utimensat(2): beyond a time of 32 bits.
inline constexpr timespec after_2038[] = {{2'524'608'000, 0}, {2'524'608'000, 0}};
