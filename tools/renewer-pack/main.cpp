#include "command_info.h"
#include "command_line.h"
#include "commands.h"
#include "package_file.h"

#include <cstdio>
#include <system_error>

namespace {

using namespace pack;

constexpr const char *about =
    "Makes, checks, shows and unpacks update packages, and says which units would take them.\n\n"
    "Exit status: 0 good, 1 a package was refused (or none was found), 2 used wrongly,\n"
    "3 the system refused something (a file that cannot be read, a full disk).";

int complain(const std::string &what, int status) {
    fflush(stdout);
    fprintf(stderr, "renewer-pack: %s\n", printable(what).c_str());
    return status;
}

// The system's reason and the file, without the C++ library's own words.
std::string reason_of(const std::filesystem::filesystem_error &error) {
    return error.path1().string() + ": " + error.code().message();
}

int run(const chosen_command &chosen) {
    try {
        return chosen();
    } catch (const refused &reason) {
        return complain(reason.what(), package_refused);
    } catch (const usage_error &reason) {
        return complain(reason.what(), wrong_usage);
    } catch (const std::filesystem::filesystem_error &error) {
        return complain(reason_of(error), pack::system_error);
    } catch (const std::system_error &error) {
        return complain(error.what(), pack::system_error);
    } catch (const std::bad_alloc &) {
        return complain("out of memory", pack::system_error);
    }
}

// Lost output overrides any other result.
int after_output(int status) {
    if (fflush(stdout) != 0 || ferror(stdout) != 0) {
        return complain("standard output could not be written", pack::system_error);
    }
    return status;
}

} // namespace

int main(int argc, char **argv) {
    CLI::App app(about, "renewer-pack");
    chosen_command chosen;
    describe_commands(app, chosen);
    if (argc < 2) {
        fprintf(stderr, "%s", app.help().c_str());
        return wrong_usage;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0) { // help or version was requested
            app.exit(error);
            return after_output(good);
        }
        return complain(complaint(app, error), wrong_usage);
    }
    return after_output(run(chosen));
}
