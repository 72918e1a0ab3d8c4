#!/usr/bin/env bash
# Builds every tests/fuzz/*_fuzzer.cpp with clang and libFuzzer + ASan into
# build-fuzz/, then runs each for the given time on its seed corpus
# tests/fuzz/corpus/<name>/ (the growing corpus stays in build-fuzz/).
#
#   scripts/fuzz.sh [seconds per target, default 60] [target names...]
#
# Findings land in build-fuzz/artifacts/<name>/; the script exits 1 if any
# target stopped on one. Keep a finding as a regression input once fixed.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true

targets=()
if [ $# -gt 0 ]; then
  targets=("$@")
else
  for f in tests/fuzz/*_fuzzer.cpp; do
    n=$(basename "$f" .cpp)
    targets+=("${n%_fuzzer}")
  done
fi

launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DZMF_FUZZ=ON -DZMF_BUILD_TESTS=OFF -DZMF_BUILD_BENCH=OFF "${launcher[@]}" >/dev/null
build_targets=()
for t in "${targets[@]}"; do build_targets+=(--target "${t}_fuzzer"); done
nice -n 19 cmake --build build-fuzz -j"${FUZZ_JOBS:-$(nproc)}" "${build_targets[@]}"

status=0
for t in "${targets[@]}"; do
  exe=build-fuzz/tests/fuzz/${t}_fuzzer
  work=build-fuzz/corpus/$t
  artifacts=build-fuzz/artifacts/$t/
  mkdir -p "$work" "$artifacts" "tests/fuzz/corpus/$t"
  dict=()
  [ -f "tests/fuzz/$t.dict" ] && dict=(-dict="tests/fuzz/$t.dict")
  echo "== $t: ${seconds}s"
  # 10 s per input is a hang (FUZZ_TIMEOUT raises it on a loaded machine);
  # 2 GiB of memory is a runaway allocation.
  if ! LSAN_OPTIONS="suppressions=$PWD/scripts/sanitizers/lsan.supp" nice -n 19 "$exe" -max_total_time="$seconds" -timeout="${FUZZ_TIMEOUT:-10}" -rss_limit_mb=2048 -malloc_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="$artifacts" "${dict[@]}" "$work" "tests/fuzz/corpus/$t" \
      2>"build-fuzz/$t.log"; then
    status=1
    echo "   FINDING: see build-fuzz/$t.log and $artifacts"
  fi
  grep -E '^stat::(number_of_executed_units|peak_rss_mb)|^#[0-9]+.*DONE' "build-fuzz/$t.log" | sed 's/^/   /' || true
done
exit $status
