#!/usr/bin/env bash
# Builds the benchmarks and prints their tables. Arguments: see compare_packages.py.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset release -DRENEWER_BENCH=ON >/dev/null
cmake --build --preset release --target package_operations picture_bench oled_bench \
  renewer renewer-pack -- --quiet
for bench in picture oled; do
  build/release/bench/"$bench"_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only
done
bench/compare_packages.py build/release/bench/package_operations "$@"
bench/compare_updaters.py build/release/src/update/renewer \
  build/release/tools/renewer-pack/renewer-pack
