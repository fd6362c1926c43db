#!/bin/sh
# deb_test.sh BUILD SAMPLE: makes the Debian packages, has them checked, and runs what is in them.
set -eu
build=$1 sample=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work" > "$work/log" 2>&1 ||
  { cat "$work/log"; exit 1; }
lintian --allow-root --fail-on error "$work"/*.deb
for package in "$work"/*.deb; do
  dpkg-deb -x "$package" "$work/root"
done
"$work/root/usr/bin/deimg" develop "$sample" -o - > "$work/picture.png"
LD_LIBRARY_PATH=$(dirname "$(find "$work/root/usr/lib" -name libdeimg.so.0)")
export LD_LIBRARY_PATH
ldd "$work/root/usr/bin/deimg" | grep 'not found' && exit 1
nm -D "$LD_LIBRARY_PATH/libdeimg.so.0" | grep -q ' T DEImg_DevelopM480'
