#!/usr/bin/env bash
# Sets up, builds, and bakes the bundled example (examples/pebble_*.obj) into out/:
# single bakers on the pebble, then the plan examples/pebble_plan.json over the
# pebble whose UVs span the UDIM tiles 1001 and 1002.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target zmfbaker
mkdir -p out
low=examples/pebble_low.obj
for baker in normal-world-space position world-space-direction ambient-occlusion; do
  ./build/zmfbaker -v "$baker" "$low" --output-size 10,10 --output-path out
done
./build/zmfbaker -v curvature "$low" --output-size 10,10 --output-path out
high=examples/pebble_high.obj
for baker in normal-from-mesh ambient-occlusion-from-mesh; do
  ./build/zmfbaker -v "$baker" "$low" --highdef-mesh "$high" --output-size 10,10 --output-path out
done
./build/zmfbaker -v uv-map "$low" --output-size 10,10 --output-format svg --output-path out
./build/zmfbaker -v run examples/pebble_plan.json
ls -l out
