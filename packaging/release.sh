#!/usr/bin/env bash
# Makes a release from what is committed: the sources, the Debian packages, their digests and what
# they are made of. Two releases of one commit are the same to the byte, wherever they are made.
#
# usage: release.sh DIRECTORY [KEY]
#
# DIRECTORY takes the files; KEY is a secret key of minisign's, which then signs the digests. The
# time of everything is SOURCE_DATE_EPOCH, or that of the commit.
set -euo pipefail
out=$(mkdir -p "$1" && cd "$1" && pwd)
key=${2:+$(realpath "$2")}
top=$(cd "$(dirname "$0")/.." && pwd)
version=$(sed -n 's/^project(renewer VERSION \([0-9.]*\).*/\1/p' "$top/CMakeLists.txt")
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$top" log -1 --format=%ct)}
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C
umask 022

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sources=$work/renewer-$version

say() { printf 'release: %s\n' "$*" >&2; }

build() { # directory, then options of cmake
  local log=$work/build.log
  if ! cmake -G Ninja -S "$sources" -B "$work/$1" -DCMAKE_BUILD_TYPE=MinSizeRel \
    -DRENEWER_TESTS=OFF "${@:2}" >"$log" 2>&1 || ! cmake --build "$work/$1" >>"$log" 2>&1; then
    cat "$log" >&2
    exit 1
  fi
}

say "sources"
mkdir "$sources"
git -C "$top" archive HEAD | tar -x -C "$sources"
build generators -DRENEWER_TOOLS=OFF
mkdir "$sources/generated" # so that an image is built without Python and fonts
cp "$work/generators/src/lcd/sa1230_pictures.cpp" "$work/generators/src/oled/ssd1327zb_fonts.cpp" \
  "$sources/generated"
tar -C "$work" --sort=name --owner=0 --group=0 --numeric-owner --mtime="@$SOURCE_DATE_EPOCH" \
  --format=gnu -c "renewer-$version" | gzip -9n >"$out/renewer-$version.tar.gz"

say "packages for the unit"
build arm -DRENEWER_TOOLS=OFF -DCMAKE_TOOLCHAIN_FILE="$sources/cmake/arm-linux-gnueabihf.cmake" \
  -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR=lib/arm-linux-gnueabihf
say "packages for the desk"
build desk -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR="lib/$(gcc -print-multiarch)"
for each in arm desk; do
  (cd "$work/$each" && cpack -G DEB >"$work/cpack.log" 2>&1) || {
    cat "$work/cpack.log" >&2
    exit 1
  }
  cp "$work/$each"/*.deb "$out"
done

cd "$out"
python3 "$top/packaging/sbom.py" "$version" "$SOURCE_DATE_EPOCH" ./*.tar.gz ./*.deb \
  >"renewer-$version.spdx.json"
sha256sum ./*.tar.gz ./*.deb ./*.spdx.json | sed 's# \./# #' >SHA256SUMS
[ -z "$key" ] || minisign -S -s "$key" -m SHA256SUMS -t "renewer $version" >/dev/null
say "in $out:"
ls -l
