#!/usr/bin/env bash
# Builds the benchmarks and prints their tables. Arguments: see compare_packages.py.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset release -DRENEWER_BENCH=ON >/dev/null
cmake --build --preset release --target package_operations -- --quiet
bench/compare_packages.py build/release/bench/package_operations "$@"
