#!/usr/bin/env bash
# Builds what nyind needs (the tool, the sample market, the system formula set) and runs it.
#   bash run.sh                      MACD of a sample stock as numbers and as a chart
#                                    (build/chart-demo.png), and a pick over the sample market
#   bash run.sh studio [--light]     the desktop program nystudio on the same installation
#   bash run.sh ARGUMENTS...         nyind with your own arguments, e.g. bash run.sh funcs MA
set -euo pipefail
cd "$(dirname "$0")"
bash tools/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
jobs="$(nproc 2>/dev/null || echo 2)"
if [ "${1:-}" = studio ]; then
  shift
  cmake --build build -j "$jobs" --target nystudio >/dev/null
  exec build/studio/nystudio "$@"
fi
cmake --build build -j "$jobs" --target nyind sample_market formula_set >/dev/null
nyind=build/cli/nyind
if [ $# -gt 0 ]; then
  exec "$nyind" "$@"
fi
echo "\$ nyind calc --formula MACD --stock SH600001 --last 10"
"$nyind" calc --formula MACD --stock SH600001 --last 10
echo
echo "\$ nyind chart --formula MACD --stock SH600001 -o build/chart-demo.png"
"$nyind" chart --formula MACD --stock SH600001 -o build/chart-demo.png
echo "(the chart is in build/chart-demo.png)"
echo
echo "\$ nyind pick --cond MACDJC --cond DTPL:5,10,20"
"$nyind" pick --cond MACDJC --cond DTPL:5,10,20
