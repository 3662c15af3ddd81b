#!/bin/sh
# Makes the Debian packages of the build with CPack, checks their control
# fields and which files each one holds, unpacks both into a scratch root and
# builds a host program there with pkg-config.
# Usage: deb_check.sh <build dir> <source dir>; the target is described by
# the QUORVEL_* variables that tests/package/CMakeLists.txt sets.
set -eu
build=$1
source=$2
. "$source/tests/package/tree_checks.sh"

work=$(mktemp -d /tmp/quorvel-deb.XXXXXX)
trap 'rm -rf "$work"' EXIT
(cd "$work" && cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/out") \
  >"$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; fail "cpack failed"; }

major=${QUORVEL_VERSION%%.*}
version=$QUORVEL_VERSION-1
runtime=$work/out/libquorvel${major}_${version}_$QUORVEL_DEB_ARCH.deb
dev=$work/out/libquorvel-dev_${version}_$QUORVEL_DEB_ARCH.deb
[ "$(ls "$work/out"/*.deb | wc -l)" -eq 2 ] || fail "expected two packages: $(ls "$work/out")"
for deb in "$runtime" "$dev"; do
  [ -f "$deb" ] || fail "missing $(basename "$deb")"
  [ "$(dpkg-deb -f "$deb" Architecture)" = "$QUORVEL_DEB_ARCH" ] ||
    fail "$(basename "$deb") is not for $QUORVEL_DEB_ARCH"
done
[ "$(dpkg-deb -f "$dev" Depends)" = "libquorvel$major (= $version)" ] ||
  fail "development package depends on: $(dpkg-deb -f "$dev" Depends)"
# The runtime's dependencies come from the library's own needs.
depends=$(dpkg-deb -f "$runtime" Depends)
for needed in libc6 libavformat libtinyxml libixml; do
  echo "$depends" | grep -F "$needed" >/dev/null ||
    fail "runtime package does not depend on $needed: $depends"
done

# Each file in exactly one package: the library in the runtime one, the
# rest in the development one.
root=$work/root
mkdir -p "$root"
dpkg-deb -x "$runtime" "$root/runtime"
dpkg-deb -x "$dev" "$root/dev"
lib_in() { echo "$root/$1/usr/$QUORVEL_LIBDIR"; }
check_library "$(lib_in runtime)"
[ -z "$(find "$root/runtime" -type f -o -type l | grep -v -e '/libquorvel\.so\.' -e '/usr/share/doc/')" ] ||
  fail "runtime package holds more than the library: $(find "$root/runtime" -type f)"
[ -z "$(find "$root/dev" -name "libquorvel.so.*")" ] || fail "development package holds the library"
check_development "$root/dev/usr" "$(lib_in dev)"

# Both unpacked into one root, the way dpkg installs them.
dpkg-deb -x "$runtime" "$root/both"
dpkg-deb -x "$dev" "$root/both"
lib=$(lib_in both)
export PKG_CONFIG_LIBDIR="$lib/pkgconfig"
[ "$(pkg-config --modversion quorvel)" = "$QUORVEL_VERSION" ] || fail "quorvel.pc version"
# shellcheck disable=SC2046
"$QUORVEL_CC" -std=c11 -Wall -Wextra -Werror $QUORVEL_CFLAGS "$source/tests/c/lifecycle.c" \
  $(pkg-config --cflags --libs quorvel) -o "$work/lifecycle" || fail "host program does not build"
check_machine "$work/lifecycle"
run_host "$lib" "$work/lifecycle" "$work/logs"
echo "packages: $(basename "$runtime") $(basename "$dev"); unpacked, built against and run"
