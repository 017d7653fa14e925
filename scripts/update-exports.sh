#!/bin/sh
# Rebuilds the two libraries and rewrites cmake/exports/lib*.txt, the lists
# of the names they export. Run it when a change of the exported names is
# intended (a new class, a removed function), and commit the lists with it.
#
#   scripts/update-exports.sh [BUILD_DIR]     (default: build)
#
# BUILD_DIR must be a Release build without sanitizers: the lists are that
# build's, and the tests compare them there only.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
cmake --build "$build" --target orv orvreduce
for lib in orv orvreduce; do
  "$root/scripts/exported-names.sh" "$build/lib$lib.so" > "$root/cmake/exports/lib$lib.txt"
  echo "cmake/exports/lib$lib.txt: $(wc -l < "$root/cmake/exports/lib$lib.txt") names"
done
