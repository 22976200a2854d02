#!/usr/bin/env bash
# Installs the built library into a temporary prefix, then configures, builds and runs a consumer
# project against it with find_package(KwBase) and, separately, with pkg-config.
set -euo pipefail
build_dir=$1
source_dir=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build_dir" --prefix "$work/prefix" >/dev/null
cmake -S "$source_dir" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/build" >/dev/null
LD_LIBRARY_PATH="$work/prefix/lib:$work/prefix/lib64:${LD_LIBRARY_PATH:-}" "$work/build/consumer"
if command -v pkg-config >/dev/null; then
  pc=$(find "$work/prefix" -name kwbase.pc -printf '%h')
  flags=$(PKG_CONFIG_PATH="$pc" pkg-config --cflags --libs kwbase)
  # shellcheck disable=SC2086
  c++ "$source_dir/main.cpp" -o "$work/consumer-pc" $flags
  LD_LIBRARY_PATH="$work/prefix/lib:$work/prefix/lib64:${LD_LIBRARY_PATH:-}" "$work/consumer-pc"
fi
