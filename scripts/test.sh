#!/usr/bin/env bash
# Sets up, builds and runs the test suite.
#
#   scripts/test.sh [ctest arguments]    plain build in build/, whole suite
#   scripts/test.sh --sanitize [...]     AddressSanitizer + UndefinedBehaviorSanitizer
#                                        build in build-asan/, whole suite
#   scripts/test.sh --sanitize-no-gl     the same build, only the suites that need
#                                        no OpenGL (what CI runs)
#
# ZMF_SANITIZE=1 or ZMF_SANITIZE=no-gl in the environment selects the same.
# Leaks inside the GL driver and Qt's plugins are suppressed by name in
# scripts/sanitizers/lsan.supp; anything else fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."

mode=${ZMF_SANITIZE:-}
case "${1:-}" in
  --sanitize) mode=1; shift ;;
  --sanitize-no-gl) mode=no-gl; shift ;;
esac

if [ -z "$mode" ] || [ "$mode" = 0 ]; then
  bash scripts/build.sh
  cd build
  ctest --output-on-failure -j"$(nproc)" "$@"
  exit 0
fi

bash scripts/setup.sh
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
# -O1 -g1: quick to build, and enough for readable sanitizer reports.
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Sanitize -DCMAKE_CXX_FLAGS_SANITIZE="-O1 -g1 -DNDEBUG" \
  -DCMAKE_C_FLAGS_SANITIZE="-O1 -g1 -DNDEBUG" -DZMF_SANITIZE=ON -DZMF_BUILD_BENCH=OFF "${launcher[@]}" >/dev/null

supp=$PWD/scripts/sanitizers
export ASAN_OPTIONS=detect_leaks=1:detect_odr_violation=0:strict_init_order=1:check_initialization_order=1
export LSAN_OPTIONS=suppressions=$supp/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=suppressions=$supp/ubsan.supp:print_stacktrace=1:halt_on_error=1

if [ "$mode" = no-gl ]; then
  # Suites whose tests neither make a GL context nor run the program.
  suites=(tests_program tests_image tests_scene tests_plugins)
  targets=()
  for s in "${suites[@]}"; do targets+=(--target "$s"); done
  cmake --build build-asan -j"$(nproc)" "${targets[@]}"
  cd build-asan
  failed=0
  for s in "${suites[@]}"; do
    exe=$(find tests -maxdepth 1 -name "$s" -type f | head -n1)
    echo "== $s (sanitized)"
    "$exe" --gtest_brief=1 || failed=1
  done
  exit $failed
fi

# Listing the tests at build time starts GL; its leaks are no finding.
ASAN_OPTIONS=detect_leaks=0 cmake --build build-asan -j"$(nproc)"
# Mesa unloads its driver at exit, and the leak checker then cannot name the
# driver's allocations; kept loaded, they are seen as reachable.
dri=$(find /usr/lib/x86_64-linux-gnu/dri /usr/lib/dri -name swrast_dri.so 2>/dev/null | head -n1 || true)
if [ -n "$dri" ]; then
  export LD_PRELOAD="$(c++ -print-file-name=libasan.so) $dri"
fi
cd build-asan
ctest --output-on-failure -j"$(nproc)" "$@"
