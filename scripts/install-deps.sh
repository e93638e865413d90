#!/usr/bin/env bash
# The one list of Debian packages the library, its tests, benchmarks and reference
# generators need. Idempotent: installs only what is missing.
set -euo pipefail

PACKAGES=(
  g++ clang-14 cmake ninja-build make pkg-config ccache binutils
  libboost-dev libeigen3-dev libfftw3-dev libqhull-dev
  googletest libgtest-dev libbenchmark-dev
  python3-numpy python3-scipy python3-mpmath libgsl-dev
  python3-statsmodels  # benchmark peer of the local regression (lowess)
  r-base-core  # reference generators only: quantile() types and fivenum()
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
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
