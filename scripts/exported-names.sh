#!/bin/sh
# Prints the names a shared library exports, demangled, sorted, one a line:
# the form of the lists in cmake/exports/.
set -eu
nm -D --defined-only "$1" | awk '{print $3}' | c++filt | LC_ALL=C sort -u
