#!/bin/bash
# The commands of a document's section, run, and what it shows of their output. Arguments: the
# document, the section's heading, the program.
set -eu
document=$1
heading=$2
PATH=$(dirname "$3"):$PATH
export PATH

here=$(mktemp -d)
trap 'rm -rf "$here"' EXIT
cd "$here"
printf 'true\n' >install.sh
printf 'updater\n' >renewer.bin

# The commands are the indented lines up to the next section, what they print is between fences
# without a language. The last part of the how-to's section is of examples alone.
# shellcheck disable=SC2016
sed -n "/^$heading\$/,/^## [^#]/p" "$document" |
    sed -e '/^### In a script/,$d' -e '/^```cpp$/,/^```$/d' >section
[ -s section ]
sed -n 's/^    //p' section >commands.sh
bash -eu commands.sh >output 2>&1 || { cat output; exit 1; }
# shellcheck disable=SC2016
sed -n '/^```$/,/^```$/ { /^```$/d; p }' section >wanted
[ ! -f example.bin ] || od -A d -t x1z -v example.bin >>output
[ -s wanted ]
while read -r line; do
    grep -qxF -- "$line" output || { echo "not printed: $line"; exit 1; }
done <wanted
