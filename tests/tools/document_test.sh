#!/bin/bash
# The example of the format's document, made anew. Arguments: the document, the program.
set -eu
document=$1
PATH=$(dirname "$2"):$PATH
export PATH

here=$(mktemp -d)
trap 'rm -rf "$here"' EXIT
cd "$here"

# The commands are the indented lines, the bytes those between the fences.
sed -n '/^## An example/,$ s/^    //p' "$document" >commands.sh
# shellcheck disable=SC2016
sed -n '/^## An example/,$ { /^```$/,/^```$/ { /^```$/d; p } }' "$document" >wanted
bash -eu commands.sh >output
od -A d -t x1z -v example.bin >made
[ -s wanted ]
diff wanted made
