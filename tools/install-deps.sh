#!/usr/bin/env bash
# Installs what the build needs and a fresh machine lacks. Quiet when everything is there.
set -euo pipefail
need=()
command -v cmake >/dev/null 2>&1 || need+=(cmake)
command -v g++ >/dev/null 2>&1 || need+=(g++)
command -v make >/dev/null 2>&1 || need+=(make)
command -v ninja >/dev/null 2>&1 || need+=(ninja-build)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
[ -f /usr/include/gmock/gmock.h ] || need+=(libgmock-dev)
[ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
[ -f /usr/include/asio.hpp ] || need+=(libasio-dev)
[ -f /usr/include/CLI/CLI.hpp ] || need+=(libcli11-dev)
[ -f /usr/include/nlohmann/json.hpp ] || need+=(nlohmann-json3-dev)
command -v pkg-config >/dev/null 2>&1 || need+=(pkg-config)
[ -f /usr/include/cairo/cairo.h ] || need+=(libcairo2-dev)
# grep reads the whole list: with -q it would stop early, and the pipe's broken write would count
# as a missing font under pipefail.
# The desktop program: Qt 6 Widgets (its offscreen platform plugin ships with it).
dpkg -s qt6-base-dev >/dev/null 2>&1 || need+=(qt6-base-dev)
fc-list 2>/dev/null | grep 'Noto Sans Mono CJK SC' >/dev/null || need+=(fonts-noto-cjk)
# The fuzz targets (fuzz/run.sh sets NY_FUZZ=1): clang and libFuzzer, only when fuzzing is asked for.
if [ "${NY_FUZZ:-0}" = 1 ]; then
  command -v clang++ >/dev/null 2>&1 || need+=(clang)
  ls /usr/lib/llvm-14/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1 || need+=(libfuzzer-14-dev)
fi
if [ ${#need[@]} -gt 0 ]; then
  echo "Installing: ${need[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq "${need[@]}"
fi
