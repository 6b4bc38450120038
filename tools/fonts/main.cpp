// Makes the OLED's glyph tables at build time, and looks after the texts that are drawn with them:
//
//     renewer-fonts LISTS source HEX_FONT HEADER FILE
//     renewer-fonts LISTS check SOURCE...
//
// "source" writes a C++ file that defines the tables as HEADER declares them; "check" names each
// character in the texts of C++ files that has no glyph, and fails when there is one.

#include "tables.h"
#include "texts.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>

namespace {

using namespace fonts;

void write_source(const std::vector<table> &tables, const std::string &header,
                  const std::filesystem::path &path) {
    constexpr size_t bytes_a_line = 24;
    std::ofstream file(path);
    file << "// Made at build time.\n#include \"" << header << "\"\n\nnamespace renewer {\n";
    for (const auto &[name, bytes] : tables) {
        file << "\nconst std::array<uint8_t, " << bytes.size() << "> " << name << " = {";
        for (size_t i = 0; i < bytes.size(); ++i) {
            file << (i % bytes_a_line == 0 ? "\n" : "") << int{bytes[i]} << ',';
        }
        file << "\n};\n";
    }
    file << "\n} // namespace renewer\n";
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

int check(const lists &characters, const std::vector<std::string> &files) {
    int status = 0;
    for (const std::string &file : files) {
        for (const std::string &line : characters_without_glyph(file, characters)) {
            fprintf(stderr, "%s\n", line.c_str());
            status = 1;
        }
    }
    return status;
}

} // namespace

int main(int argc, char **argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        if (arguments.size() == 5 && arguments[1] == "source") {
            const lists characters = read_lists(arguments[0]);
            const hex_font font(arguments[2]);
            write_source(make_tables(characters, font), arguments[3], arguments[4]);
            return 0;
        }
        if (arguments.size() >= 3 && arguments[1] == "check") {
            return check(read_lists(arguments[0]), {arguments.begin() + 2, arguments.end()});
        }
        fprintf(stderr,
                "usage: renewer-fonts LISTS (source HEX_FONT HEADER FILE | check SOURCE...)\n");
        return 2;
    } catch (const std::exception &error) {
        fprintf(stderr, "renewer-fonts: %s\n", error.what());
        return 1;
    }
}
