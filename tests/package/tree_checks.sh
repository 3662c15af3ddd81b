# Checks shared by the staged-tree and Debian-package tests (sourced).

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# An ELF file built for the target machine.
check_machine() {
  [ -f "$1" ] || fail "missing $1"
  file -L "$1" | grep -F "$QUORVEL_MACHINE" >/dev/null ||
    fail "$1 is not built for $QUORVEL_MACHINE: $(file -L "$1")"
}

# The runtime part: the versioned library and its soname link.
check_library() {
  lib=$1
  major=${QUORVEL_VERSION%%.*}
  check_machine "$lib/libquorvel.so.$QUORVEL_VERSION"
  [ "$(readlink "$lib/libquorvel.so.$major")" = "libquorvel.so.$QUORVEL_VERSION" ] ||
    fail "libquorvel.so.$major does not link to libquorvel.so.$QUORVEL_VERSION"
}

# The development part: every public header, the development link, the
# pkg-config file and the CMake package config.
check_development() {
  root=$1
  lib=$2
  for h in "$source"/include/quorvel/*.h; do
    cmp -s "$h" "$root/include/quorvel/$(basename "$h")" ||
      fail "header $(basename "$h") missing or different"
  done
  [ -L "$lib/libquorvel.so" ] || fail "no development link libquorvel.so"
  for f in pkgconfig/quorvel.pc cmake/Quorvel/QuorvelConfig.cmake \
           cmake/Quorvel/QuorvelConfigVersion.cmake cmake/Quorvel/QuorvelTargets.cmake; do
    [ -f "$lib/$f" ] || fail "missing $lib/$f"
  done
}

# Runs a host program against the library folder given, and checks that
# the library it loaded is that one.
run_host() {
  lib=$1
  program=$2
  logs=$3
  LD_LIBRARY_PATH=$lib $QUORVEL_RUNNER "$program" "$logs" >/dev/null ||
    fail "$program did not run cleanly against $lib"
  interpreter=$(readelf -l "$program" | sed -n 's/.*interpreter: \(.*\)]/\1/p')
  LD_LIBRARY_PATH=$lib $QUORVEL_RUNNER "$interpreter" --list "$program" |
    grep -F "$lib/libquorvel.so" >/dev/null ||
    fail "$program does not load the library from $lib"
}
