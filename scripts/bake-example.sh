#!/usr/bin/env bash
# Sets up, builds, and bakes the bundled example into out/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
mkdir -p out
./build/zmfbaker --help
