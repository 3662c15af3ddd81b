#!/bin/sh
# Installs the build into a staging folder the way a device image takes it,
# checks the tree, then builds and runs a host project that finds the
# library with find_package(Quorvel) in that tree only.
# Usage: staged_tree_check.sh <build dir> <source dir>; the target is
# described by the QUORVEL_* variables that tests/package/CMakeLists.txt sets.
set -eu
build=$1
source=$2
. "$source/tests/package/tree_checks.sh"

stage=$(mktemp -d /tmp/quorvel-stage.XXXXXX)
trap 'rm -rf "$stage"' EXIT
cmake --install "$build" --prefix "$stage" >/dev/null

lib=$stage/$QUORVEL_LIBDIR
check_library "$lib"
check_development "$stage" "$lib"
for tool in quorvel quorvel-emu; do
  check_machine "$stage/bin/$tool"
done
# The installed package config must not lead back into the build or the
# source tree: a device's host projects have neither.
if grep -rlF -e "$build" -e "$source" "$lib/cmake" "$lib/pkgconfig"; then
  fail "installed config names the build or source tree"
fi

consumer=$stage/consumer-build
toolchain=""
[ -z "$QUORVEL_TOOLCHAIN" ] || toolchain="-DCMAKE_TOOLCHAIN_FILE=$QUORVEL_TOOLCHAIN"
cmake -S "$source/tests/package/consumer" -B "$consumer" $toolchain \
  -DCMAKE_PREFIX_PATH="$stage" -DCMAKE_C_COMPILER="$QUORVEL_CC" \
  -DCMAKE_C_FLAGS="$QUORVEL_CFLAGS" -DCMAKE_EXE_LINKER_FLAGS="$QUORVEL_CFLAGS" \
  -DCONSUMER_SOURCE="$source/tests/c/lifecycle.c" >"$stage/consumer.log" 2>&1 ||
  { cat "$stage/consumer.log"; fail "find_package(Quorvel) failed"; }
grep -F "Quorvel_DIR:PATH=$lib/cmake/Quorvel" "$consumer/CMakeCache.txt" >/dev/null ||
  fail "find_package(Quorvel) did not take the staged config"
cmake --build "$consumer" >"$stage/consumer.log" 2>&1 ||
  { cat "$stage/consumer.log"; fail "the host project does not build"; }
check_machine "$consumer/consumer"
run_host "$lib" "$consumer/consumer" "$stage/logs"
echo "staged tree: library, headers, quorvel.pc, CMake package, CLI and emulator; find_package host builds and runs"
