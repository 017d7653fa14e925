#!/bin/sh
# Compares the names a library exports with its checked list; names the
# difference and fails when they differ.
#
#   check-exports.sh LIBRARY LIST
set -eu
lib=$1; list=$2
actual=$(mktemp); trap 'rm -f "$actual"' EXIT
"$(dirname "$0")/exported-names.sh" "$lib" > "$actual"
if LC_ALL=C diff "$list" "$actual" > /dev/null; then
  echo "$(basename "$lib"): $(wc -l < "$actual") exported names, as listed"
  exit 0
fi
echo "$(basename "$lib") exports other names than $list lists."
added=$(LC_ALL=C comm -13 "$list" "$actual")
lost=$(LC_ALL=C comm -23 "$list" "$actual")
[ -n "$added" ] && printf 'Exported but not listed:\n%s\n' "$added" | sed '2,$s/^/  + /'
[ -n "$lost" ] && printf 'Listed but no longer exported:\n%s\n' "$lost" | sed '2,$s/^/  - /'
echo "If the change is intended, run scripts/update-exports.sh and commit the lists;"
echo "otherwise move the new names into a priv namespace or an anonymous one."
exit 1
