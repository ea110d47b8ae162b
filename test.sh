#!/usr/bin/env bash
# Builds the library and the tests and runs them.
#   bash test.sh             optimised build in build/
#   bash test.sh --sanitize  AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
set -euo pipefail
cd "$(dirname "$0")"
bash tools/install-deps.sh
dir=build
flags=(-DCMAKE_BUILD_TYPE=Release)
case "${1:-}" in
  --sanitize) dir=build-asan; flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DNY_SANITIZE=ON) ;;
  "") ;;
  *) echo "usage: bash test.sh [--sanitize]" >&2; exit 2 ;;
esac
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B "$dir" "${flags[@]}" >/dev/null
cmake --build "$dir" -j "$jobs"
ctest --test-dir "$dir" --output-on-failure -j "$jobs"
