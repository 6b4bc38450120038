#!/usr/bin/env bash
# Builds the fuzzers and runs each for a time. Findings are kept in build/fuzz/findings.
#
#     fuzz/run.sh [SECONDS [FUZZER...]]     default: 60 seconds, all of them
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
all=(headers validators unpackers examine discovery host_record editions round_trip bmp texts grey_pictures keys)
chosen=("${@:2}")
[ ${#chosen[@]} -gt 0 ] || chosen=("${all[@]}")

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzzers -- --quiet
build=$PWD/build/fuzz
fuzz/make_seeds.py "$build/seeds"
mkdir -p "$build/findings"

# A fuzzer moves into a unit's root, where it sees only its start directory of this machine.
cd "$build"
status=0
for fuzzer in "${chosen[@]}"; do
  mkdir -p "corpus/$fuzzer"
  printf '%s: ' "$fuzzer"
  if fuzz/fuzz_"$fuzzer" -max_total_time="$seconds" -max_len=2048 -timeout=10 -rss_limit_mb=512 \
    -malloc_limit_mb=16 -print_final_stats=1 -artifact_prefix="$build/findings/$fuzzer-" \
    "$build/corpus/$fuzzer" "$build/seeds/$fuzzer" 2>"$fuzzer.log"; then
    echo "$(sed -n 's/^stat::number_of_executed_units: *//p' "$fuzzer.log") inputs, no finding"
  else
    echo "FINDING (build/fuzz/$fuzzer.log, build/fuzz/findings)"
    status=1
  fi
done
exit "$status"
