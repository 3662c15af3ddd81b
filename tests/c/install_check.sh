#!/bin/sh
# Installs the build into a temporary prefix and builds the C host there the
# way a user would: with pkg-config, against the installed header and library
# only. Usage: install_check.sh <build dir> <C source> <cc> [extra flags...]
set -eu
build=$1
source=$2
cc=$3
shift 3

prefix=$(mktemp -d /tmp/quorvel-install.XXXXXX)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null

pc=$(find "$prefix" -name quorvel.pc)
[ -n "$pc" ] || { echo "quorvel.pc was not installed"; exit 1; }
export PKG_CONFIG_PATH="$(dirname "$pc")"
flags=$(pkg-config --cflags --libs quorvel)
echo "pkg-config: $flags"
libdir=$(pkg-config --variable=libdir quorvel)
[ -f "$libdir/libquorvel.so" ] || { echo "no libquorvel.so in $libdir"; exit 1; }

"$cc" -std=c11 -Wall -Wextra -Werror "$@" "$source" $flags -o "$prefix/lifecycle"
# The program's own loader lists what it loads (ldd knows the host's only).
loader=$(readelf -l "$prefix/lifecycle" | sed -n 's/.*interpreter: \(.*\)]/\1/p')
LD_LIBRARY_PATH="$libdir" "$loader" --list "$prefix/lifecycle" | grep -F "$libdir" >/dev/null ||
  { echo "the program does not use the installed library"; exit 1; }
LD_LIBRARY_PATH="$libdir" "$prefix/lifecycle" "$prefix/logs" >/dev/null
echo "installed copy builds and runs"
