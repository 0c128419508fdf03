#!/usr/bin/env bash
# Builds the kit in Release with the benchmarks, runs them and prints one table: each path's
# kit time beside its floor (the same transport calls, or the same JSON, done directly); then
# the simulated exchange's rate of replayed quotes, and the back end's server (molra-simd) under
# the kit: round trip of a synchronous order and throughput of four host processes.
#
#   bash scripts/bench.sh            # table as text
#   bash scripts/bench.sh --markdown # table as Markdown (for docs/performance.md)
#
# Environment: MOLRA_BENCH_BUILD (build directory, default build-bench),
# MOLRA_BENCH_REPETITIONS (default 5), MOLRA_BENCH_MIN_TIME (seconds per repetition, 0.3).
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${MOLRA_BENCH_BUILD:-$root/build-bench}
reps=${MOLRA_BENCH_REPETITIONS:-5}
min_time=${MOLRA_BENCH_MIN_TIME:-0.3}

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DMOLRA_BUILD_BENCH=ON \
      -DMOLRA_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" -j2 --target molra_bench kelapi50 molra_sim_bench molra_server_bench >&2

out=$(mktemp -d /tmp/molra-bench-XXXXXX)
trap 'rm -rf "$out"' EXIT
cd "$build"  # the kit loads ./kelapi50.dll

run() {  # name, filter, extra flags...
  local name=$1 filter=$2
  shift 2
  echo "running $name" >&2
  ./bench/molra_bench --benchmark_filter="$filter" --benchmark_out="$out/$name.json" \
      --benchmark_out_format=json "$@" >&2
}

load_before=$(cut -d' ' -f1-3 /proc/loadavg)
# Kit and floor repetitions interleaved at random, so that a change of load hits both.
run times '-^memory:' --benchmark_repetitions="$reps" --benchmark_min_time="$min_time" \
    --benchmark_report_aggregates_only=true --benchmark_enable_random_interleaving=true
# Memory in processes of their own: the peak must not carry other benchmarks' use.
run memory_kit '^memory:kit'
run memory_floor '^memory:floor'
load_after=$(cut -d' ' -f1-3 /proc/loadavg)

cpu=$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ *//')
echo "machine: $(nproc) cores, ${cpu}; load average before ${load_before}, after ${load_after}"
python3 "$root/scripts/bench_table.py" "$@" "$out"/*.json
# The simulated exchange on its own: a day of quotes replayed with 100 resting orders.
echo "running sim_replay" >&2
./bench/molra_sim_bench --benchmark_out="$out/sim.json" --benchmark_out_format=json >&2
python3 - "$out/sim.json" <<'PY'
import json, sys
b = json.load(open(sys.argv[1]))["benchmarks"][0]
rate = b.get("items_per_second", 0)
print(f"simulated exchange: {rate:,.0f} quote updates a second replayed with 100 resting orders "
      f"(goal 200,000: {'met' if rate >= 200000 else 'NOT met'})")
PY
# The back end's server over loopback, with its state in memory and in a state file.
echo "running server_bench" >&2
./bench/molra_server_bench
./bench/molra_server_bench --state
