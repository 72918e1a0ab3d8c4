#!/usr/bin/env bash
# Installs every Debian package that building, running and testing zmfbaker needs.
# Idempotent: prints nothing and touches nothing when all is already there.
set -euo pipefail

packages=(
  # toolchain
  g++ make cmake pkg-config
  # libraries
  qt6-base-dev libqt6opengl6-dev qt6-svg-dev qt6-base-dev-tools
  libglew-dev libegl-dev libgl-dev
  libembree-dev libfreeimage-dev libjsoncpp-dev libboost-graph-dev libeigen3-dev zlib1g-dev
  # headless OpenGL at run time
  xvfb libgl1-mesa-dri libglx-mesa0 libegl-mesa0
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev imagemagick libassimp-dev librsvg2-bin
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
