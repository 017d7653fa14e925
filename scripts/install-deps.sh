#!/usr/bin/env bash
# Installs every Debian package the project builds, tests or benchmarks with.
# Idempotent: does nothing when all packages are present.
set -euo pipefail

PACKAGES=(
  build-essential cmake pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  libpugixml-dev zlib1g-dev libjpeg62-turbo-dev libtbb-dev libcharls-dev
  libcli11-dev libpng-dev libtiff-dev nlohmann-json3-dev
  pybind11-dev python3-dev python3-numpy python3-pytest python3-dask python3-distributed python3-pandas time
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1; then SUDO="sudo"; else
    echo "install-deps: need root (or sudo) to install: ${missing[*]}" >&2
    exit 1
  fi
fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
