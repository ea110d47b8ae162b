#!/usr/bin/env bash
# Builds the fuzz targets (clang, libFuzzer) and runs each over its seed corpus for a bounded
# number of executions: bash fuzz/run.sh [RUNS] [TARGET...]. New inputs go to a working corpus in
# the build tree, never into the repository's seeds; a finding stops with the crashing input saved
# in build-fuzz/findings/. NY_FUZZ_MAX_LEN caps the input size (default 16384 bytes).
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-20000}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(lexer syntax_test evaluate formula_file bar_file csv rule_file)
NY_FUZZ=1 bash tools/install-deps.sh
launcher=()
command -v ccache >/dev/null 2>&1 && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S fuzz -B build-fuzz -DCMAKE_CXX_COMPILER=clang++ "${launcher[@]}" >/dev/null
cmake --build build-fuzz -j"$(nproc)" >/dev/null
mkdir -p build-fuzz/findings
for target in "${targets[@]}"; do
  work=build-fuzz/corpus/$target
  log=build-fuzz/fuzz_$target.log
  mkdir -p "$work"
  if ! build-fuzz/fuzz_"$target" -runs="$runs" -max_len="${NY_FUZZ_MAX_LEN:-16384}" -timeout=10 -rss_limit_mb=2048 \
      -artifact_prefix=build-fuzz/findings/"$target"- -print_final_stats=1 "$work" fuzz/corpus/"$target" >"$log" 2>&1; then
    tail -40 "$log"
    echo "fuzz_$target: finding, input saved in build-fuzz/findings/"
    exit 1
  fi
  echo "fuzz_$target: $(grep -E '^#[0-9]+.*DONE' "$log" | tail -1)"
done
