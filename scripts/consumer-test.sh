#!/bin/sh
# Installs the built project into a scratch prefix and builds, outside the
# tree, the two example programs of examples/consumer against it: the C one
# with pkg-config, the C++ one with find_package. Both must read the same
# line from a synthetic recording. Nothing of the project is rebuilt.
#
#   consumer-test.sh SOURCE_DIR BUILD_DIR [CHECK_EXPORTS]
#
# With CHECK_EXPORTS 1 (a Release build) the installed libraries must also
# export exactly the names of cmake/exports/.
set -eu
src=$1; build=$2; check_exports=${3:-0}
work=$(mktemp -d "${TMPDIR:-/tmp}/orvreduce-consumer.XXXXXX")
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" > "$work/install.log" || { cat "$work/install.log"; exit 1; }
libdir=$(dirname "$(find "$prefix" -name orvreduce.pc)")/..
for lib in liborv.so liborvreduce.so; do
  soname=$(objdump -p "$libdir/$lib" | awk '/SONAME/ {print $2}')
  [ "$soname" = "$lib.0" ] || { echo "$lib: SONAME '$soname', expected $lib.0"; exit 1; }
  # The installed library exports what its list says, no more.
  if [ "$check_exports" = 1 ]; then
    "$src/scripts/check-exports.sh" "$libdir/$lib" "$src/cmake/exports/${lib%.so}.txt"
  fi
done

"$prefix/bin/orvreduce" synth "$work/scene.qrt" --size 64x48 --frames 2 > /dev/null
expected="orvreduce synthetic scene: 64 x 48, emissivity 0.95"

# C, with pkg-config.
export PKG_CONFIG_PATH="$libdir/pkgconfig"
${CC:-cc} -std=c99 -Wall -Wextra -Werror "$src/examples/consumer/recording_info.c" \
  $(pkg-config --cflags --libs orvreduce) -o "$work/info_c"
# C++, with find_package.
cmake -S "$src/examples/consumer" -B "$work/cpp" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release \
  > "$work/cpp.log" 2>&1 || { cat "$work/cpp.log"; exit 1; }
cmake --build "$work/cpp" > "$work/cpp-build.log" 2>&1 || { cat "$work/cpp-build.log"; exit 1; }

status=0
for program in "$work/info_c" "$work/cpp/recording_info"; do
  got=$(LD_LIBRARY_PATH="$libdir" "$program" "$work/scene.qrt")
  if [ "$got" = "$expected" ]; then echo "ok   $(basename "$program"): $got"
  else echo "FAIL $(basename "$program"): '$got', expected '$expected'"; status=1; fi
done
exit $status
