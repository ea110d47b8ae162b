#!/usr/bin/env bash
# Builds the library and the tests and runs them.
#   bash test.sh             optimised build in build/, the whole suite
#   bash test.sh --sanitize  AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
#   bash test.sh --tsan      ThreadSanitizer build of the picking tests in build-tsan/
set -euo pipefail
cd "$(dirname "$0")"
bash tools/install-deps.sh
jobs=$(nproc 2>/dev/null || echo 2)
case "${1:-}" in
  "") dir=build; flags=(-DCMAKE_BUILD_TYPE=Release) ;;
  --sanitize) dir=build-asan; flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DNY_SANITIZE=ON)
              export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}" ;;
  --tsan) dir=build-tsan; flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DNY_TSAN=ON) ;;
  *) echo "usage: bash test.sh [--sanitize|--tsan]" >&2; exit 2 ;;
esac
cmake -S . -B "$dir" "${flags[@]}" >/dev/null
if [ "${1:-}" = "--tsan" ]; then
  # The worker thread, the lock and the event live in the picker; its tests exercise them.
  cmake --build "$dir" -j "$jobs" --target test_picker
  "$dir/tests/test_picker"
else
  cmake --build "$dir" -j "$jobs"
  ctest --test-dir "$dir" --output-on-failure -j "$jobs"
fi
