#include "manuals.h"

#include "command_info.h"
#include "commands.h"
#include "words.h"

#include <cstdio>

namespace pack {

namespace {

// Escapes a text for man(7): no line begins a request, and special characters stand for themselves.
std::string roff(const std::string &text) {
    std::string result;
    for (const char c : text) {
        const bool begins_line = result.empty() || result.back() == '\n';
        if (begins_line && (c == '.' || c == '\'')) {
            result += "\\&";
        }
        result += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return result;
}

std::string upper(std::string text) {
    for (char &c : text) {
        c = static_cast<char>(toupper(c));
    }
    return text;
}

void print_title(const std::string &name) {
    printf(".TH %s 1 \"\" \"renewer %s\" \"User commands\"\n", roff(upper(name)).c_str(),
           RENEWER_VERSION);
}

// Prints a text; empty lines separate paragraphs.
void print_text(std::string text) {
    for (size_t at = text.find("\n\n"); at != std::string::npos; at = text.find("\n\n", at)) {
        text.replace(at, 2, "\n.PP\n");
    }
    // Lines that came from empty lines are requests; all others are text.
    size_t begin = 0;
    while (begin < text.size()) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        printf("%s\n", line == ".PP" ? line.c_str() : roff(line).c_str());
        begin = end + 1;
    }
}

void print_option(const CLI::Option &option) {
    std::string names;
    if (is_positional(option)) {
        names = "\\fI" + roff(option.get_name(true)) + "\\fR";
    }
    for (const std::string &name : option.get_snames()) {
        names += (names.empty() ? "\\fB\\-" : ", \\fB\\-") + roff(name) + "\\fR";
    }
    for (const std::string &name : option.get_lnames()) {
        names += (names.empty() ? "\\fB\\-\\-" : ", \\fB\\-\\-") + roff(name) + "\\fR";
    }
    if (!is_positional(option) && !is_flag(option)) {
        names += " \\fI" + roff(option.get_type_name()) + "\\fR";
    }
    printf(".TP\n%s\n%s.\n", names.c_str(), roff(option.get_description()).c_str());
}

void print_options(const CLI::App &app) {
    printf(".SH OPTIONS\n");
    for (const CLI::Option *const option : app.get_options()) {
        print_option(*option);
    }
}

void print_exit_status() {
    printf(".SH EXIT STATUS\n"
           ".TP\n.B 0\nAll is good.\n"
           ".TP\n.B 1\nA package was refused, or there is none of the wanted kind.\n"
           ".TP\n.B 2\nThe program was used wrongly.\n"
           ".TP\n.B 3\nThe system refused something: a file that cannot be read, a full disk, "
           "standard output that cannot be written.\n");
}

void print_command_manual(const CLI::App &app, const CLI::App &sub) {
    const std::string name = "renewer-pack-" + sub.get_name();
    print_title(name);
    printf(".SH NAME\n%s \\- %s\n", roff(name).c_str(), roff(sub.get_description()).c_str());
    printf(".SH SYNOPSIS\n");
    print_text(synopsis(sub));
    if (!sub.get_footer().empty()) {
        printf(".SH DESCRIPTION\n");
        print_text(sub.get_footer());
    }
    print_options(sub);
    print_exit_status();
    printf(".SH SEE ALSO\n.BR %s (1)\n", roff(app.get_name()).c_str());
}

void print_program_manual(const CLI::App &app) {
    print_title(app.get_name());
    printf(".SH NAME\nrenewer\\-pack \\- make, check, show and unpack update packages\n"
           ".SH SYNOPSIS\n");
    print_text(synopsis(app));
    printf(".SH DESCRIPTION\n");
    print_text("An update package is one file that carries the files of an update, its nodes, each "
               "under a node type, behind a header with a version, the part number (PN) that it is "
               "meant for, and an MD5 digest. There is an old and a new layout; renewer-pack reads "
               "both and makes the new one.");
    printf(".SH COMMANDS\nEach has a manual page of its own.\n");
    for (const std::string &name : command_names(app)) {
        const CLI::App *const sub = app.get_subcommand(name);
        printf(".TP\n.B %s\n%s.\n", roff(name).c_str(), roff(sub->get_description()).c_str());
    }
    print_options(app);
    print_exit_status();
    printf(".SH EXAMPLES\n.nf\n");
    print_text("renewer-pack create -o new.bin --version 1.1.4.0 --pn 101356340012 \\\n"
               "    --revision 1a2b3c4d install=install.sh kernel=zImage\n"
               "minisign -S -s release.key -m new.bin\n"
               "renewer-pack check --key release.pub new.bin\n"
               "renewer-pack fit new.bin --units records\n"
               "renewer-pack unpack new.bin -C out --only kernel");
    printf(".fi\n.SH SEE ALSO\n");
    for (const std::string &name : command_names(app)) {
        if (name != "help") {
            printf(".BR renewer\\-pack\\-%s (1),\n", roff(name).c_str());
        }
    }
    printf(".BR minisign (1),\n.BR renewer (8)\n");
}

} // namespace

int print_manual(const CLI::App &app, const std::string &command) {
    if (command.empty()) {
        print_program_manual(app);
        return good;
    }
    print_command_manual(app, command_named(app, command));
    return good;
}

} // namespace pack
