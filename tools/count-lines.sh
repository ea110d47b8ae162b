#!/usr/bin/env bash
# Counts the code lines of the project: non-blank lines that are not whole-line // comments, in
# the .cpp, .h and .inc files tracked by git, for tests/ and for everything else.
set -euo pipefail
cd "$(dirname "$0")/.."

count() {
    git ls-files "$@" | grep -E '\.(cpp|h|inc)$' | xargs -r cat | grep -c -v -E '^\s*(//.*)?$' || true
}

tests=$(count tests)
code=$(count . ':!tests')
echo "code (without tests): $code"
echo "tests:                $tests"
awk -v t="$tests" -v c="$code" 'BEGIN { printf "tests / code:         %.0f %%\n", 100 * t / c }'
