#!/usr/bin/env bash
# Builds the kit, the simulated transport and the examples for Linux and runs the demo from
# the build directory, where the simulated transport kelapi50.dll lies.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

ensure_packages "${LINUX_PACKAGES[@]}"
say "building (Linux) in $OUT/linux"
timed "build linux" build_linux
say "running examples/molra_hello"
cd "$OUT/linux"
./examples/molra_hello
