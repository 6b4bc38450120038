// What a log of a run in the field says, as its application recorded it.

#include "simulator/desk/verdict.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace simulator;

namespace {

verdict verdict_on(const std::string &log) {
    run_reading run;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        read_printed(run, line);
    }
    return verdict_of(run);
}

const std::string asked = "new host pack!\n2,3 PN fit!\ncoming................";
const std::string started = asked + "updating1110\nwait 60 sec...\nfork_exec: /firmware/x\n";

TEST(verdict, reads_each_ending_from_a_log) {
    const struct {
        std::string log;
        const char *verdict;
    } cases[] = {
        {started + "status 0\n/data/sbin/update already exist\r\n", "UPDATED"},
        {started + "status 3\nfork_exec: x\nstatus 0\n",
         "UPDATED (at the script's second attempt)"},
        {started + "status 3\nfork_exec: x\nstatus 3\n", "FAILED (script status 3, twice)"},
        {started + "status 3\nfork_exec: x\nstatus 127\n", "FAILED (script status 3, then 127)"},
        {started + "status 143\nfork_exec: x\nstatus 143\n",
         "FAILED (the script ran over its limit of 60 s, and was tried twice)"},
        {started + "status 0\nthis is new version checkupdate\r\nfopen: No such file\n",
         "FAILED (the install script succeeded, but a version file cannot be read)"},
        {"2,3 PN fit!\next!!!!!!!!!!!!! power 0 bat1 24 \n no ext power and baterry low , cannot\n",
         "REFUSED (battery 24 %, no external supply; 30 % are needed)"},
        {"new host pack!\npn=1013\npn2=1,pn3=3,st2=1,st3=6\n2,3 PN not fit!\n",
         "REFUSED (part number: the package is for model 13, this unit is 16)"},
        {"new host pack!\npn=\npn2=,pn3=,st2=1,st3=6\n2,3 PN not fit!\n",
         "REFUSED (part number: /data/app/log/pack_tmp holds no package header)"},
        {"radio pack!\npn radio not fit\n",
         "REFUSED (part number: the package is for another radio module)"},
        {"open sys err: No such file\nget_local_host_info() failure\n",
         "REFUSED (host information: /update/hw/sys cannot be read)"},
        {"package path mnt  not allow\r\n",
         "REFUSED (path: packages below /mnt are not installed)"},
        {"gnss pack!\ngnss 6,7 PN fit!\nopen err\nUpdate status init err\n",
         "REFUSED (display: the LCD cannot be opened)"},
        {asked + "key 7 enter\nuser canceled  update program\n",
         "DECLINED (key 7 came first, not ok (2))"},
        {asked + "get the code is :13.\nget the code is :13.\nuser canceled  update program\n",
         "DECLINED (the power key was pressed twice)"},
        {asked + "user canceled  update program\n", "DECLINED (nobody answered within 120 s)"},
        // Truncated logs, and lines of other programs in between.
        {asked, "CUT (the log stops while waiting for the user's answer)"},
        {started + "dhcp: status unknown\n",
         "CUT (the log stops while running the install script)"},
        {started + "status 3\n", "CUT (the log stops while running the install script)"},
        {started + "status 3\nfork_exec: x\n",
         "CUT (the log stops while running the install script once more)"},
        {"12:01 app: gnss pack!\n12:01 app: gnss 6,7 PN fit!\nlow key \nwait for the dog\n",
         "CUT (the log stops while stopping the application and preparing the prompts)"},
        // The last run of a log counts.
        {"radio pack!\npn radio not fit\n" + started + "status 0\n", "UPDATED"},
    };
    for (const auto &[log, expected] : cases) {
        EXPECT_EQ(verdict_on(log).line(), expected) << log;
    }
}

} // namespace
