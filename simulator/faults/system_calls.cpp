// system_calls MODEL calls
// system_calls MODEL fault KEY WHAT
//
// system_calls MODEL start FOLDER
//
// The first prints the calls of an undisturbed run, as fault_runner records them. The second makes
// one of them fail, or cuts the power at it, and prints the result in one line: "seen" or "not
// seen", and what did not hold, or "held". The third starts the updater with the storage in a
// folder, in which files with the content "old" or "new" stand for the updaters, and prints what
// did not hold, or "held".

#include "simulator/unit/outcome.h"
#include "simulator/unit/unit.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>

using namespace simulator;

namespace fs = std::filesystem;

namespace {

constexpr const char installed[] = "/data/sbin/renewer";
constexpr const char fallback[] = "/data/sbin/update/renewer";
constexpr const char done[] = "/firmware/installed"; // written last by the script

std::string read(const fs::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The updater as it ships, and the one that the update brings.
const std::string old_updater = read(RENEWER);
const std::string new_updater = old_updater + "newer";

unit usual_unit(const std::string &model) {
    unit it;
    it.model(model)
        .file(installed, old_updater, 0755)
        .file("/tmp/renewer", old_updater, 0755)
        .file("/firmware/update/renewer.bin", new_updater, 0755)
        .install_script("#!/bin/sh\necho installing\necho done > /firmware/installed\n")
        .clock_speed(150)
        .patience(120s)
        .acknowledge_end(300ms)
        .program(FAULT_RUNNER);
    return it;
}

// The LED unit starts the installed copy, the screen unit another one.
const char *started_from(const std::string &model) {
    return model == "13" ? installed : "/tmp/renewer";
}

outcome run(unit &it, const char *started) {
    return it.run({started, "5", "/firmware/update"});
}

// Fills the unit's storage from the folder `root`.
void leave_as(unit &it, const fs::path &root) {
    for (const char *part : {"/data", "/firmware", "/update", "/reserve", "/media"}) {
        it.without(part).directory(part);
        if (!fs::exists(root / (part + 1))) {
            continue;
        }
        for (const auto &entry : fs::recursive_directory_iterator(root / (part + 1))) {
            const std::string path = "/" + fs::relative(entry.path(), root).string();
            if (entry.is_directory()) {
                it.directory(path);
                continue;
            }
            const std::string content = read(entry.path());
            it.file(path,
                    content == "old"   ? old_updater
                    : content == "new" ? new_updater
                                       : content,
                    static_cast<unsigned>(entry.status().permissions()));
        }
    }
}

bool is_whole(const std::optional<std::string> &copy) {
    return copy == old_updater || copy == new_updater;
}

// Collects what did not hold.
class verdict {
public:
    void expect(bool held, const std::string &what) {
        if (!held) {
            text += (text.empty() ? "" : ", ") + what;
        }
    }
    std::string summary() const { return text.empty() ? "held" : text; }

private:
    std::string text;
};

// Paths that a run may create, change or remove; everything else must stay unchanged.
bool is_named(const std::string &path) {
    return path.starts_with("/firmware/") || path.starts_with("/data/app/log/update.log") ||
           path.starts_with("/data/sbin/update") || path.starts_with(installed);
}

void check_rest(const outcome &end, verdict &found) {
    static const std::set<std::string> usual = {"/data/app",  "/data/app/log",  "/data/sbin",
                                                "/update/hw", "/update/hw/sys", "/reserve/update",
                                                "/media/sda1"};
    for (const char *part : {"/data", "/update", "/reserve", "/media"}) {
        for (const auto &entry : fs::recursive_directory_iterator(*end.tree / (part + 1))) {
            const std::string path = "/" + fs::relative(entry.path(), *end.tree).string();
            found.expect(usual.contains(path) || is_named(path), "left " + path);
        }
    }
}

void check_copies(const outcome &end, bool cut, const std::string &key, verdict &found) {
    const bool first = is_whole(end.file(installed));
    const bool second = is_whole(end.file(fallback));
    found.expect(first || second, "no usable copy");
    // cp truncates the installed copy before it writes it: the one window without it.
    const bool in_window = cut && key.find("cp /firmware/renewer.bin /data/sbin/renewer") == 0;
    found.expect(first || in_window, "installed copy torn");
    if (!first && second && in_window) {
        found.expect(false, "window");
    }
}

void check_end(const outcome &end, verdict &found) {
    const bool tried = end.has("shell cp -drf");
    const bool success = end.has("shell echo update_success");
    found.expect(!end.timed_out, "did not end");
    found.expect(end.timed_out || end.exit_status == (tried ? 1 : 0),
                 "status " + std::to_string(end.exit_status));
    found.expect(!tried || end.has("call reboot"), "no reboot");
    found.expect(!success || end.file(done) == "done\n", "success without the script's");
}

// Starts the updater once more with what was left; returns what did not hold.
std::string second_start(const std::string &model, const fs::path &root) {
    const std::string copy = read(root / (installed + 1));
    const bool usable = is_whole(copy) || copy == "old" || copy == "new";
    const char *started = usable ? installed : fallback;
    unit again = usual_unit(model);
    leave_as(again, root);
    again.directory("/data/app/log"); // empty folders may not have been copied
    const outcome end = run(again, started);
    verdict found;
    check_end(end, found);
    check_copies(end, false, "", found);
    const bool whole_update = fs::exists(root / "firmware/update/install.sh") &&
                              fs::exists(root / "firmware/update/renewer.bin");
    found.expect(!whole_update || end.file(installed) == new_updater, "not renewed");
    return found.summary();
}

int fault(const std::string &model, const std::string &key, const std::string &what) {
    const bool cut = !isdigit(what[0]);
    const char *started = started_from(model);
    unit it = usual_unit(model);
    it.environment("FAULT", key + " " + what);
    const outcome end = run(it, started);
    verdict found;
    if (!cut) {
        check_end(end, found);
    }
    check_copies(end, cut, key, found);
    check_rest(end, found);
    if (is_whole(end.file(installed)) || is_whole(end.file(fallback))) {
        const std::string second = second_start(model, *end.tree);
        found.expect(second == "held", "second start: " + second);
    }
    const bool seen = !end.file("/.simulator/calls").value_or("").empty();
    printf("%s\t%s\n", seen ? "seen" : "not seen", found.summary().c_str());
    return 0;
}

int calls(const std::string &model) {
    const char *started = started_from(model);
    unit it = usual_unit(model);
    const outcome end = run(it, started);
    verdict found;
    check_end(end, found);
    check_copies(end, false, "", found);
    check_rest(end, found);
    found.expect(end.file(installed) == new_updater, "not renewed");
    if (found.summary() != "held") {
        fprintf(stderr, "undisturbed run: %s\n%s", found.summary().c_str(),
                end.transcript().c_str());
        return 1;
    }
    fputs(end.file("/.simulator/calls").value_or("").c_str(), stdout);
    return 0;
}

} // namespace

int main(int count, char **arguments) {
    if (count == 3 && std::string(arguments[2]) == "calls") {
        return calls(arguments[1]);
    }
    if (count == 4 && std::string(arguments[2]) == "start") {
        puts(second_start(arguments[1], arguments[3]).c_str());
        return 0;
    }
    if (count == 5 && std::string(arguments[2]) == "fault") {
        return fault(arguments[1], arguments[3], arguments[4]);
    }
    fputs("usage: system_calls MODEL calls | fault KEY WHAT | start FOLDER\n", stderr);
    return 2;
}
