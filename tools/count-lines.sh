#!/usr/bin/env bash
# Counts the code lines of the project: non-blank lines that are not whole-line // comments, in
# the .cpp, .cc, .h and .hpp files tracked by git, for tests/ and for everything else. The
# catalog's rows (catalog/function_table.inc) are data and, like the data files of tests/, not
# counted.
set -euo pipefail
cd "$(dirname "$0")/.."

count() {
    git ls-files "$@" | grep -E '\.(cpp|cc|h|hpp)$' | xargs -r cat | grep -c -v -E '^\s*(//.*)?$' || true
}

tests=$(count tests)
code=$(count . ':!tests')
echo "code (without tests): $code"
echo "tests:                $tests"
awk -v t="$tests" -v c="$code" 'BEGIN { printf "tests / code:         %.0f %%\n", 100 * t / c }'
