#pragma once

#include <cstddef>

namespace renewer {

constexpr size_t host_info_size = 77;
constexpr size_t host_pn_size = 70;

// Who this unit is: the leading bytes of "/update/hw/sys" unchanged. PN character k is pn[k]; the
// text ends at its first zero byte or, when there is none, with the record.
struct host_info {
    char uninterpreted[host_info_size - host_pn_size];
    char pn[host_pn_size];
};
static_assert(sizeof(host_info) == host_info_size);
static_assert(offsetof(host_info, pn) == 7);

// Reads the unit's host information file into `record`: what a short file lacks is zero, and so
// never matches a digit or a letter. Nothing is cached.
//
// Returns 1 when the file was opened and read; 0, with the record as it was, for a null record or a
// file that cannot be opened, which is reported on standard error with the prefix "open sys err".
int get_local_host_info(host_info *record);

// Reads the record into `host`. Returns false, after "get_local_host_info() failure" on standard
// error, when it cannot be read.
bool read_host_or_report(host_info &host);

// Returns whether PN characters `first` and `first` + 1 of the unit are `a` and `b`. What is
// missing, there or here, is zero and fits nothing.
bool host_pn_is(const host_info &host, size_t first, char a, char b);

} // namespace renewer
