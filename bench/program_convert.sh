#!/usr/bin/env bash
# Times `orvreduce convert` of a 1,000-frame 640 x 512 synthetic recording to
# .npy and .tiff with 1, 2 and all threads (wall time, frames per second, peak
# resident size from /usr/bin/time -v), beside the time of writing the same
# bytes with nothing to compute, and numpy doing the same conversion of the
# same raw frames. Prints the machine's load beside the figures: the
# numbers mean little on a busy machine.
#
#   [TMPDIR=/dev/shm] bench/program_convert.sh [BUILD_DIR] [FRAMES]    (defaults: build, 1000)
set -euo pipefail

BUILD=${1:-build}
FRAMES=${2:-1000}
PROGRAM=$BUILD/tools/orvreduce/orvreduce
[ -x "$PROGRAM" ] || { echo "no program at $PROGRAM: build it first" >&2; exit 1; }
[ -x /usr/bin/time ] || { echo "needs /usr/bin/time (Debian package time)" >&2; exit 1; }
HERE=$(cd "$(dirname "$0")" && pwd)
# TMPDIR=/dev/shm keeps the disk out of the figures: each .npy is 1.3 GB.
WORK=$(mktemp -d "${TMPDIR:-/tmp}/orvreduce-bench-XXXXXX")
trap 'rm -rf "$WORK"' EXIT
CORES=$(nproc)

"$PROGRAM" synth "$WORK/rec.qrt" --size 640x512 --frames "$FRAMES" >/dev/null
"$PROGRAM" info "$WORK/rec.qrt" --json >"$WORK/info.json"
echo "recording: $FRAMES frames of 640x512; $CORES cores; load: $(cut -d' ' -f1-3 /proc/loadavg)"

# run LABEL COMMAND...: wall seconds, frames per second, peak resident size.
run() {
  local label=$1
  shift
  /usr/bin/time -v -o "$WORK/time.txt" "$@" >/dev/null
  local wall rss
  wall=$(awk -F': ' '/Elapsed \(wall clock\)/ {n = split($2, p, ":"); s = 0; for (i = 1; i <= n; ++i) s = s * 60 + p[i]; print s}' "$WORK/time.txt")
  rss=$(awk -F': ' '/Maximum resident set size/ {print int($2 / 1024)}' "$WORK/time.txt")
  awk -v l="$label" -v w="$wall" -v f="$FRAMES" -v r="$rss" \
    'BEGIN {printf "%-22s %7.2f s %8.0f frames/s %6d MB peak\n", l, w, f / w, r}'
}

# The floor under any conversion to .npy: writing the same bytes, from a
# plain loop with nothing to compute (the file system's write path; on tmpfs
# one file's writes do not run in parallel).
run "write floor (dd)" dd if=/dev/zero of="$WORK/floor.bin" bs=4M status=none \
  count=$(((FRAMES * 640 * 512 * 4 + 4194303) / 4194304))
rm -f "$WORK/floor.bin"

for ext in npy tiff; do
  for threads in $(printf "%s\n" 1 2 "$CORES" | sort -un); do
    run "convert .$ext, $threads thr" "$PROGRAM" convert "$WORK/rec.qrt" --threads "$threads" -q -o "$WORK/out.$ext"
  done
done
cmp "$WORK/out.npy" <("$PROGRAM" convert "$WORK/rec.qrt" --threads 1 -q -o "$WORK/one.npy" && cat "$WORK/one.npy") \
  && echo "threads and one thread wrote the same .npy"
rm -f "$WORK"/*.npy "$WORK"/*.tiff
run "numpy float32" /usr/bin/python3 "$HERE/numpy_convert.py" "$WORK/rec.qrt" "$WORK/info.json" "$WORK/numpy.npy"
echo "load after: $(cut -d' ' -f1-3 /proc/loadavg)"
