#!/bin/bash
# The README's excerpt of a time line is one of the demo, but for the times. Arguments: README.md,
# renewer-desk.
set -eu
lines() { sed -nE 's/^ +[0-9]+\.[0-9]{3} s  //p' "$@"; }
awk 'NR == FNR { wanted[++count] = $0; next }
    $0 == wanted[seen + 1] { seen++ }
    END { if (!count || seen < count) { print "not shown: " wanted[seen + 1]; exit 1 } }' \
    <(lines "$1") <("$2" demo --plain --speed 50 | lines)
