#!/bin/sh
# package_test.sh BUILD SAMPLE CC CXX: installs a build into a directory of its own and checks that
# hosts in C and C++ can be made against it with CMake and with pkg-config, and what they produce.
set -eu
build=$1 sample=$2 CC=$3 CXX=$4
export CC CXX
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
hosts=$work/hosts
trap 'rm -rf "$work"' EXIT
fail() { echo "package: $*" >&2; exit 1; }

DESTDIR='' cmake --install "$build" --prefix "$work/prefix" > "$work/log"
libdir=$(dirname "$(find "$work/prefix" -name 'libdeimg.so')")
export LD_LIBRARY_PATH="$libdir"
PATH="$work/prefix/bin:$PATH"
deimg develop "$sample" -o "$work/wanted.ppm" --progress none

# The host in C is the one of the README.
cp -r "$here/hosts" "$hosts"
awk '/^```c$/ { on = 1; next } /^```$/ { on = 0 } on' "$here/../../README.md" > "$hosts/c_host.c"

# The only symbol that hosts see, behind a versioned name.
[ "$(nm -D --defined-only "$libdir/libdeimg.so" | awk '$2 != "A" { print $3 }' | sed 's/@.*//')" \
  = DEImg_DevelopM480 ] || fail 'the library exports other symbols'
objdump -p "$libdir/libdeimg.so" | grep -q 'SONAME *libdeimg\.so\.[0-9]' || fail 'no soname version'

{ cmake -S "$hosts" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$work/prefix" &&
  cmake --build "$work/cmake"; } > "$work/log" 2>&1 || { cat "$work/log"; fail 'CMake hosts'; }

export PKG_CONFIG_PATH="$libdir/pkgconfig"
mkdir "$work/pkg-config"
flags=$(pkg-config --cflags --libs deimg)
# shellcheck disable=SC2086  # $flags is a list of words
$CC -std=c11 -Wall -Wextra -Werror "$hosts/c_host.c" $flags -o "$work/pkg-config/c_host"
# shellcheck disable=SC2086
$CXX -std=c++20 -Wall -Wextra -Werror "$hosts/cpp_host.cpp" $flags -o "$work/pkg-config/cpp_host"

for host in cmake/c_host cmake/c_host_static cmake/cpp_host pkg-config/c_host pkg-config/cpp_host; do
  "$work/$host" "$sample" "$work/got.ppm" || fail "$host failed"
  # The samples are what is behind the header.
  tail -c 816192 "$work/got.ppm" > "$work/got"
  tail -c 816192 "$work/wanted.ppm" | cmp "$work/got" - || fail "$host made another picture"
done

# Everything else that belongs to the package.
cd "$work/prefix"
for file in share/man/man1/deimg.1.gz share/thumbnailers/deimg.thumbnailer \
  share/mime/packages/deimg.xml share/bash-completion/completions/deimg; do
  [ -f "$file" ] || fail "$file is missing"
done
