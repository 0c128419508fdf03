#!/usr/bin/env bash
# Builds the kit, the simulated transport and the examples for Linux and runs the trading
# demo against the simulated back end: login, funds, accounts and positions, a synchronous
# and an asynchronous order with their pushes and reply, a batch, a withdrawal, logout.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

ensure_packages "${LINUX_PACKAGES[@]}" python3
say "building (Linux) in $OUT/linux"
timed "build linux" build_linux
say "running the trading demo (python3 -m secmolra.demo)"
cd "$OUT/linux"
PYTHONPATH="$ROOT/python" PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -m secmolra.demo --build "$OUT/linux"
