#!/bin/sh
# Installs the libraries of a build and builds the examples against what was installed.
#
# usage: build_examples.sh BUILD SOURCE WORK FLAGS
set -eu
rm -rf "$3"
cmake --install "$1" --prefix "$3/usr" --component dev >/dev/null
cmake -S "$2" -B "$3/build" -DCMAKE_PREFIX_PATH="$3/usr" -DCMAKE_CXX_FLAGS="$4 -Werror" >/dev/null
cmake --build "$3/build" >/dev/null
# The same by hand, as pkg-config says.
PKG_CONFIG_PATH=$(find "$3/usr" -name pkgconfig)
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086
c++ -std=c++20 $4 "$2/start_update.cpp" -o "$3/by_hand" \
  $(pkg-config --cflags --libs renewer-discovery renewer-signature)
