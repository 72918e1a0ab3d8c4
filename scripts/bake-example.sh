#!/usr/bin/env bash
# Sets up, builds, and bakes the bundled example (examples/pebble_*.obj) into out/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target zmfbaker
mkdir -p out
low=examples/pebble_low.obj
for baker in normal-world-space position world-space-direction; do
  ./build/zmfbaker -v "$baker" "$low" --output-size 10,10 --output-path out
done
./build/zmfbaker -v curvature "$low" --output-size 10,10 --output-path out
high=examples/pebble_high.obj
for baker in normal-from-mesh ambient-occlusion-from-mesh; do
  ./build/zmfbaker -v "$baker" "$low" --highdef-mesh "$high" --output-size 10,10 --output-path out
done
ls -l out
