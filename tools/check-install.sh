#!/usr/bin/env bash
# Checks that the library installs and serves another project: a fresh Ninja build of the
# libraries and the programs, cmake --install into a temporary prefix, the installed nyind over its
# installed sample installation (and nystudio beside it, when Qt was there to build it), then the
# consumer project under tests/consumer built against that prefix with find_package(ny_indicator) and run, and once more
# with the library's sources added as its subdirectory.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/install-deps.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
launcher=()
command -v ccache >/dev/null 2>&1 && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

cmake -S . -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DNY_BUILD_TESTS=OFF \
      -DNY_BUILD_BENCHMARKS=OFF "${launcher[@]}" >/dev/null
cmake --build "$work/build" -j 2 >/dev/null
cmake --install "$work/build" --prefix "$work/prefix" >/dev/null
# The installed nyind opens its own installed sample installation, not the build tree's (moved
# out of the way here): the system formula over a sample stock.
mv "$work/build/install" "$work/build-home"
"$work/prefix/bin/nyind" calc --formula MACD --stock SH600001 --last 1 >/dev/null
# The desktop program, built where Qt is, is installed beside nyind.
if [ -x "$work/build/studio/nystudio" ]; then
  test -x "$work/prefix/bin/nystudio"
  QT_QPA_PLATFORM=offscreen "$work/prefix/bin/nystudio" --help >/dev/null
fi

cmake -S tests/consumer -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/consumer" >/dev/null
"$work/consumer/three_bar_ma"

cmake -S tests/consumer -B "$work/subdirectory" -G Ninja -DNY_INDICATOR_SOURCE_DIR="$PWD" "${launcher[@]}" >/dev/null
cmake --build "$work/subdirectory" -j 2 --target three_bar_ma >/dev/null
"$work/subdirectory/three_bar_ma"
