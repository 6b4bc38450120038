#!/bin/bash
# What is derived from the description of the commands: completion of the shells and manual pages.
# Arguments: renewer-pack, renewer, the manual page of renewer, renewer-desk, its completions.
set -u
program=$1
updater=$2
updater_manual=$3
desk=$4
desk_completions=$5
PATH=$(dirname "$program"):$(dirname "$desk"):$PATH
failures=0
complain() {
    echo "$*"
    failures=$((failures + 1))
}

here=$(mktemp -d)
trap 'rm -rf "$here"' EXIT
cd "$here" || exit 1
for shell in bash zsh fish; do renewer-pack completion $shell >$shell.completion || exit; done
touch package.bin
mkdir parts

# shellcheck source=/dev/null
source ./bash.completion
# shellcheck disable=SC2317
compopt() { :; } # outside a completion there is nothing to set

# offers "wanted words" word...: the last word is being completed
offers() {
    local wanted=$1
    shift
    COMP_WORDS=("$program" "$@")
    COMP_CWORD=$#
    "$completed" "$program" "${*: -1}"
    [[ $(printf '%s\n' "${COMPREPLY[@]-}" | sort | paste -sd " ") == "$wanted" ]] ||
        complain "renewer-pack $*: offered '${COMPREPLY[*]}', wanted '$wanted'"
}


completed=_renewer_pack
offers "check create" c
offers "show" sh
offers "--version" --v
offers "package.bin" check pac
offers "package.bin" unpack pac
offers "parts" unpack package.bin -C pa
offers "parts" find pa
offers "kernel" unpack package.bin --only ker
offers "kernel" unpack package.bin --only uboot ker
offers "kernel" unpack package.bin --only uboot dtb ker
offers "package.bin" unpack --only uboot pac
offers "package.bin" unpack --only uboot --key pac
offers "kernel=" create -o new.bin ker
offers "uboot= update_info=" create u
offers "package.bin" create kernel = pac
offers "" create --pn 10
offers "json" create --progress j
offers "--force" unpack package.bin --fo
offers "--json" show --j
offers "create" help cr
offers "" types x

fish_offers() {
    [[ $(fish -c "source $fish_file; complete -C '$2'" | cut -f 1 | sort | paste -sd " ") == "$1" ]] ||
        complain "fish, $2: wanted '$1'"
}
fish_file=fish.completion
fish_offers "check create" "renewer-pack c"
fish_offers "kernel" "renewer-pack unpack package.bin --only ker"
fish_offers "kernel" "renewer-pack unpack package.bin --only uboot ker"
fish_offers "--json" "renewer-pack show --j"
# shellcheck source=/dev/null
source "$desk_completions/bash"
program=$desk completed=_renewer_desk
offers "demo" d
offers "--pictures" run --pic
offers "package.bin" run pack
fish_file=$desk_completions/fish
fish_offers "demo" "renewer-desk d"
fish_offers "--port" "renewer-desk panel --po"

zsh -n zsh.completion || complain "zsh cannot read its completion"

# Each command and each option of the help is in each of them, and the pages are sound.
for command in $(renewer-pack --help | sed -n '/^Commands:/,$ s/^  \([a-z]*\) .*/\1/p'); do
    renewer-pack manual "$command" >page
    for option in $(renewer-pack help "$command" | grep -o -- '^  -[^ ]*' | tr ',' ' '); do
        grep -q -- "${option//-/\\\\-}" page || complain "$option in no page"
        grep -q -- "'$command.*$option\|\[$command\].*$option" bash.completion ||
            complain "bash: no $command $option"
        sed -n "/^    $command)/,/;;/p" zsh.completion | grep -q -- "'$option\[" ||
            complain "zsh: no $command $option"
        grep -q -- "from $command' .*-[sl] ${option##*-}\b" fish.completion ||
            complain "fish: no $command $option"
    done
    [ -z "$(man --warnings -l page 2>&1 >/dev/null)" ] || complain "page of $command"
done
[ -s page ] || complain "no commands"

# The updater's own page has the words of its help.
words() { tr -cs '[:alnum:]/_' '\n' | tr '[:upper:]' '[:lower:]' | sort -u; }
MANWIDTH=1000 man -l "$updater_manual" | words >page
"$updater" --help | words | comm -23 - page >missing
[ ! -s missing ] || complain "renewer(8) lacks" "$(paste -sd ' ' missing)"
exit "$failures"
