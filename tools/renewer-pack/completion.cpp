#include "manuals.h"

#include "command_info.h"
#include "commands.h"

#include <algorithm>
#include <cstdio>

namespace pack {

namespace {

// How a shell completes the values of an option or a positional argument, by the name of their
// type.
std::string kind_of(const CLI::Option &option) {
    const std::string type = option.get_type_name();
    if (is_flag(option)) {
        return "flag";
    }
    if (type.find('|') != std::string::npos) {
        std::string words = "words";
        for (size_t begin = 0; begin != std::string::npos;) {
            const size_t end = type.find('|', begin);
            words += " " + type.substr(begin, end - begin);
            begin = end == std::string::npos ? end : end + 1;
        }
        return words;
    }
    for (const char *const known : {"FILE", "DIR", "TYPE", "TYPE=FILE", "COMMAND"}) {
        if (type == known) {
            return type;
        }
    }
    return "text";
}

std::vector<std::string> names_of(const CLI::Option &option) {
    std::vector<std::string> names;
    for (const std::string &name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (const std::string &name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

// A text between single quotes, for all three shells.
std::string in_quotes(const std::string &text) {
    std::string result = "'";
    for (const char c : text) {
        result += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return result + "'";
}

std::vector<const CLI::App *> commands_of(const CLI::App &app) {
    std::vector<const CLI::App *> commands;
    for (const std::string &name : command_names(app)) {
        commands.push_back(app.get_subcommand(name));
    }
    return commands;
}

// bash: tables, and one function that uses them.

constexpr const char *bash_function = R"sh(
_renewer_pack_types() {
    "$1" types 2>/dev/null | awk 'NR > 1 && $2 != "none" { print $3 }'
}

# _renewer_pack_offer KIND CURRENT PROGRAM
_renewer_pack_offer() {
    case $1 in
    FILE) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$2") ;;
    DIR) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$2") ;;
    TYPE) mapfile -t COMPREPLY < <(compgen -W "$(_renewer_pack_types "$3")" -- "$2") ;;
    TYPE=FILE) compopt -o nospace
        mapfile -t COMPREPLY < <(compgen -S = -W "$(_renewer_pack_types "$3")" -- "$2") ;;
    COMMAND) mapfile -t COMPREPLY < <(compgen -W "${!_renewer_pack_options[*]}" -- "$2") ;;
    words*) mapfile -t COMPREPLY < <(compgen -W "${1#words}" -- "$2") ;;
    esac
}

_renewer_pack() {
    local program=${COMP_WORDS[0]} command=${COMP_WORDS[1]} current=${COMP_WORDS[COMP_CWORD]}
    local i option kind
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W \
            "${!_renewer_pack_options[*]} --help --version" -- "$current")
        return
    fi
    # The shell takes TYPE=FILE for three words.
    if [[ $current == "=" || ${COMP_WORDS[COMP_CWORD - 1]} == "=" ]]; then
        _renewer_pack_offer FILE "${current#=}" "$program"
        return
    fi
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "${_renewer_pack_options[$command]-}" -- "$current")
        return
    fi
    # The last option takes this word when it is the next one, or when it takes many.
    for ((i = COMP_CWORD - 1; i > 1; i--)); do
        option=${COMP_WORDS[i]}
        [[ $option == -* ]] || continue
        kind=${_renewer_pack_values[$command $option]-}
        if [[ $kind == *"..." ]] || ((i == COMP_CWORD - 1)) && [[ -n $kind ]]; then
            _renewer_pack_offer "${kind%...}" "$current" "$program"
            [[ $kind == *"..." && ${#COMPREPLY[@]} -eq 0 ]] || return
        fi
        break
    done
    _renewer_pack_offer "${_renewer_pack_words[$command]-}" "$current" "$program"
}

complete -F _renewer_pack renewer-pack
)sh";

void print_bash(const CLI::App &app) {
    printf("# bash completion for renewer-pack(1)\n\n");
    std::string options;
    std::string values;
    std::string words;
    for (const CLI::App *const sub : commands_of(app)) {
        std::string names;
        for (const CLI::Option *const option : sub->get_options()) {
            const std::string kind = kind_of(*option) + (takes_many(*option) ? "..." : "");
            if (is_positional(*option)) {
                words += "    [" + sub->get_name() + "]=" + in_quotes(kind_of(*option)) + "\n";
                continue;
            }
            for (const std::string &name : names_of(*option)) {
                names += (names.empty() ? "" : " ") + name;
                if (kind != "flag") {
                    values += "    [" + in_quotes(sub->get_name() + " " + name) +
                              "]=" + in_quotes(kind) + "\n";
                }
            }
        }
        options += "    [" + sub->get_name() + "]=" + in_quotes(names) + "\n";
    }
    printf("declare -gA _renewer_pack_options=(\n%s)\n", options.c_str());
    printf("declare -gA _renewer_pack_values=(\n%s)\n", values.c_str());
    printf("declare -gA _renewer_pack_words=(\n%s)\n%s", words.c_str(), bash_function);
}

// zsh: a description for each command.

constexpr const char *zsh_functions = R"sh(
_renewer_pack_type_names() {
    renewer-pack types 2>/dev/null | awk 'NR > 1 && $2 != "none" { print $3 }'
}

_renewer_pack_types() {
    local -a types=(${(f)"$(_renewer_pack_type_names)"})
    compadd -a types
}

_renewer_pack_node_files() {
    if compset -P '*='; then
        _files
    else
        local -a types=(${(f)"$(_renewer_pack_type_names)"})
        compadd -q -S = -a types
    fi
}
)sh";

std::string zsh_action(const CLI::Option &option) {
    const std::string kind = kind_of(option);
    return kind == "FILE"              ? "_files"
           : kind == "DIR"             ? "_files -/"
           : kind == "TYPE"            ? "_renewer_pack_types"
           : kind == "TYPE=FILE"       ? "_renewer_pack_node_files"
           : kind == "COMMAND"         ? "_renewer_pack_commands"
           : kind.starts_with("words") ? "(" + kind.substr(6) + ")"
                                       : " ";
}

// Escapes a text that stands in brackets or between colons.
std::string zsh_text(const std::string &text) {
    std::string result;
    for (const char c : text) {
        result += std::string(c == '[' || c == ']' || c == ':' ? "\\" : "") + c;
    }
    return result;
}

std::string zsh_specification(const CLI::Option &option, const std::string &name) {
    const std::string value = zsh_text(option.get_type_name()) + ":" + zsh_action(option);
    if (is_positional(option)) {
        return (takes_many(option) ? "*:" : ":") + value;
    }
    return name + "[" + zsh_text(option.get_description()) + "]" +
           (is_flag(option) ? "" : (takes_many(option) ? ":*-*:" : ":") + value);
}

void print_zsh(const CLI::App &app) {
    printf("#compdef renewer-pack\n%s\n_renewer_pack_commands() {\n    local -a commands=(\n",
           zsh_functions);
    for (const CLI::App *const sub : commands_of(app)) {
        printf("        %s\n", in_quotes(sub->get_name() + ":" + sub->get_description()).c_str());
    }
    printf("    )\n    _describe command commands\n}\n\n"
           "_renewer_pack() {\n"
           "    local state line curcontext=$curcontext\n"
           "    _arguments -C '(-h --help)'{-h,--help}'[Print help]' "
           "'(-V --version)'{-V,--version}'[Print the version]' "
           "'1:command:_renewer_pack_commands' '*::argument:->arguments'\n"
           "    [[ $state == arguments ]] || return\n"
           "    case $words[1] in\n");
    for (const CLI::App *const sub : commands_of(app)) {
        printf("    %s)\n        _arguments", sub->get_name().c_str());
        for (const CLI::Option *const option : sub->get_options()) {
            for (const std::string &name :
                 is_positional(*option) ? std::vector<std::string>{""} : names_of(*option)) {
                printf(" \\\n            %s", in_quotes(zsh_specification(*option, name)).c_str());
            }
        }
        printf("\n        ;;\n");
    }
    printf("    esac\n}\n\n_renewer_pack \"$@\"\n");
}

// fish: a line for each option and its values.

std::string fish_values(const CLI::Option &option) {
    constexpr const char *types = "renewer-pack types | awk 'NR > 1 && $2 != \"none\" { print $3";
    const std::string kind = kind_of(option);
    return kind == "FILE"        ? " -F"
           : kind == "DIR"       ? " -a '(__fish_complete_directories)'"
           : kind == "TYPE"      ? " -a " + in_quotes("(" + std::string(types) + " }')")
           : kind == "TYPE=FILE" ? " -F -a " + in_quotes("(" + std::string(types) + " \"=\" }')")
           : kind == "COMMAND"   ? " -a '(__renewer_pack_commands)'"
           : kind.starts_with("words") ? " -a " + in_quotes(kind.substr(6))
                                       : "";
}

std::string fish_option(const CLI::App &sub, const CLI::Option &option) {
    const std::string seen = "__fish_seen_subcommand_from " + sub.get_name();
    const std::string start = "complete -c renewer-pack -n ";
    std::string line = start + in_quotes(seen);
    if (is_positional(option)) {
        return line + fish_values(option) + "\n";
    }
    for (const std::string &name : option.get_snames()) {
        line += " -s " + name;
    }
    for (const std::string &name : option.get_lnames()) {
        line += " -l " + name;
    }
    line += is_flag(option) ? "" : " -r" + fish_values(option);
    line += " -d " + in_quotes(option.get_description()) + "\n";
    if (takes_many(option)) { // the values after the first
        line += start +
                in_quotes(seen + "; and __fish_contains_opt " + option.get_lnames().front()) +
                fish_values(option) + "\n";
    }
    return line;
}

void print_fish(const CLI::App &app) {
    printf("# fish completion for renewer-pack(1)\n\ncomplete -c renewer-pack -f\n"
           "complete -c renewer-pack -n __fish_use_subcommand -s h -l help -d 'Print help'\n"
           "complete -c renewer-pack -n __fish_use_subcommand -s V -l version "
           "-d 'Print the version'\n");
    std::string names;
    for (const CLI::App *const sub : commands_of(app)) {
        names += " " + sub->get_name();
        printf("complete -c renewer-pack -n __fish_use_subcommand -a %s -d %s\n",
               sub->get_name().c_str(), in_quotes(sub->get_description()).c_str());
        for (const CLI::Option *const option : sub->get_options()) {
            printf("%s", fish_option(*sub, *option).c_str());
        }
    }
    printf("function __renewer_pack_commands\n    printf '%%s\\n'%s\nend\n", names.c_str());
}

} // namespace

int print_completion(const CLI::App &app, const std::string &shell) {
    if (shell == "bash") {
        print_bash(app);
    } else if (shell == "zsh") {
        print_zsh(app);
    } else if (shell == "fish") {
        print_fish(app);
    } else {
        throw usage_error("there is a completion for bash, zsh and fish, not for " + shell);
    }
    return good;
}

} // namespace pack
