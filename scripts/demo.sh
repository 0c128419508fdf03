#!/usr/bin/env bash
# Builds what the trading demo needs (the kit and the simulated transport, no tests) in
# out/linux and runs the demo against the simulated back end: login, funds, accounts and
# positions, a synchronous and an asynchronous order with their pushes and reply, a batch, a
# withdrawal, logout.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

ensure_packages "${LINUX_PACKAGES[@]}" python3
build=$OUT/linux
say "configuring $build"
mkdir -p "$build"
cmake -S "$ROOT" -B "$build" -G Ninja "${LINUX_CONFIG[@]}" >"$build/configure.log" 2>&1 ||
  { cat "$build/configure.log"; exit 1; }
say "building the kit and the simulated transport in $build"
start=$SECONDS
cmake --build "$build" -j "$JOBS" --target secmolra kelapi50
say "built in $((SECONDS - start)) s: $build/src/libsecmolra.so (the kit), $build/kelapi50.dll (the simulated transport)"

say "running the trading demo: python3 -m secmolra.demo --build $build"
cd "$build"
PYTHONPATH="$ROOT/python" PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -m secmolra.demo --build "$build"
