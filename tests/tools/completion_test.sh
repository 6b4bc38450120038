#!/bin/bash
# What the completion of renewer-pack offers. Arguments: the completion file, the program.
set -u
# shellcheck source=/dev/null
source "$1"
program=$2
# shellcheck disable=SC2317
compopt() { :; } # outside a completion there is nothing to set
failures=0

# offers "wanted words" word...: the last word is being completed
offers() {
    local wanted=$1
    shift
    COMP_WORDS=("$program" "$@")
    COMP_CWORD=$#
    _renewer_pack
    if [[ "${COMPREPLY[*]}" != "$wanted" ]]; then
        echo "renewer-pack $*: offered '${COMPREPLY[*]}', wanted '$wanted'"
        failures=$((failures + 1))
    fi
}

here=$(mktemp -d)
trap 'rm -rf "$here"' EXIT
cd "$here" || exit 1
touch package.bin
mkdir parts

offers "check create" c
offers "show" sh
offers "--version" --v
offers "package.bin" check pac
offers "package.bin" unpack pac
offers "parts" unpack package.bin -C pa
offers "parts" find pa
offers "kernel" unpack package.bin --only ker
offers "kernel=" create -o new.bin ker
offers "uboot= update_info=" create u
offers "package.bin" create kernel = pac
offers "" create --pn 10
offers "--force" unpack package.bin --fo
offers "--json" show --j
offers "" types x
exit "$failures"
