#!/usr/bin/env bash
# A longer fuzzing run of one target:
#   bash scripts/fuzz.sh TARGET SECONDS      e.g. bash scripts/fuzz.sh replies_fuzz 3600
# Targets: push_fuzz replies_fuzz order_answer_fuzz config_fuzz adapters_fuzz. New inputs
# collect in out/fuzz/corpus/TARGET (copy the interesting ones to fuzz/corpus/TARGET);
# a crash leaves its input in out/fuzz/artifacts, replayed with: out/fuzz/fuzz/TARGET FILE
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# -eq 2 ] || die "usage: scripts/fuzz.sh TARGET SECONDS (targets: ${FUZZ_TARGETS[*]})"
printf '%s\n' "${FUZZ_TARGETS[@]}" | grep -qxF "$1" || die "no target '$1' (targets: ${FUZZ_TARGETS[*]})"
ensure_packages clang libclang-rt-14-dev "${LINUX_PACKAGES[@]}"
say "fuzz: build ($OUT/fuzz)"
build_fuzz
say "fuzz: $1 for $2 s"
run_fuzzer "$1" "$2"
