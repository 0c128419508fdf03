# Shared by scripts/demo.sh and scripts/test.sh (sourced, not run): the packages the project
# needs, their installation on Debian 12, and the builds.
set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
OUT=${MOLRA_OUT:-$ROOT/out}          # every build of the scripts lives under out/
JOBS=${MOLRA_JOBS:-2}
export DEBIAN_FRONTEND=noninteractive

# The Linux build: compiler, build tools and the libraries the kit and its tests use.
LINUX_PACKAGES=(cmake ninja-build g++ libspdlog-dev libfmt-dev rapidjson-dev libsimpleini-dev
                libgtest-dev libbenchmark-dev libsqlite3-dev libasio-dev libcli11-dev)
# Everything the test suites use besides: the Windows cross build and Wine; for the Python
# suite pytest, mypy, the wheel tools, venv and pandas (secmolra.frames is tested with it);
# clang with its runtime libraries for the sanitizer and fuzzing builds; clang-format for the
# layout check; and what the package suite reads packages with (dpkg-shlibdeps, file,
# pkg-config, llvm-dlltool and llvm-nm, unzip).
TEST_PACKAGES=("${LINUX_PACKAGES[@]}" g++-mingw-w64-x86-64-posix wine64 python3-pytest mypy
               python3-build python3-wheel python3-venv python3-pandas clang
               libclang-rt-14-dev clang-format dpkg-dev file pkgconf llvm unzip)

say() { printf '\n==> %s\n' "$*"; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }

installed() { dpkg -s "$1" 2>/dev/null | grep -q '^Status: install ok installed'; }

# Installs the packages that are not installed yet (apt-get update once, before installing).
ensure_packages() {
  local missing=() p
  for p in "$@"; do installed "$p" || missing+=("$p"); done
  [ ${#missing[@]} -eq 0 ] && return 0
  say "installing ${missing[*]}"
  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || die "not root and no sudo: install ${missing[*]}"
    sudo=(sudo -n)
  fi
  "${sudo[@]}" apt-get update -q
  "${sudo[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# Phase timings, printed by print_timings.
TIMINGS=()
timed() {
  local label=$1 start=$SECONDS rc=0
  shift
  "$@" || rc=$?
  TIMINGS+=("$(printf '%-28s %5ss%s' "$label" $((SECONDS - start)) "$([ $rc -eq 0 ] || echo '  FAILED')")")
  return $rc
}
print_timings() {
  say "timings"
  printf '  %s\n' "${TIMINGS[@]}"
}

# configure_and_build DIR [cmake arguments...]: configures and builds everything in DIR (only
# the targets named in BUILD_TARGETS when that is set; warnings as errors when MOLRA_WERROR
# is ON); the tools' output goes to DIR/configure.log and DIR/build.log and is shown when a
# step fails.
configure_and_build() {
  local dir=$1
  shift
  mkdir -p "$dir"
  cmake -S "$ROOT" -B "$dir" -G Ninja ${MOLRA_WERROR:+-DMOLRA_WERROR=$MOLRA_WERROR} "$@" \
    >"$dir/configure.log" 2>&1 || {
    cat "$dir/configure.log"
    return 1
  }
  local targets=()
  [ -z "${BUILD_TARGETS:-}" ] || targets=(--target $BUILD_TARGETS)
  cmake --build "$dir" -j "$JOBS" "${targets[@]}" >"$dir/build.log" 2>&1 || {
    grep -v '^\[[0-9]*/[0-9]*\] ' "$dir/build.log" | tail -n 200
    return 1
  }
  grep -i 'warning:' "$dir/build.log" | sort -u | head -n 20 || true
}

# Optimised as shipped; line tables only (-g1) are enough for a backtrace and compile faster.
# The demo (only the kit and the transport) and the test suites share this build.
LINUX_CONFIG=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g1 -DNDEBUG"
              -DCMAKE_C_FLAGS_RELWITHDEBINFO="-O2 -g1 -DNDEBUG")
build_linux() {
  configure_and_build "$OUT/linux" "${LINUX_CONFIG[@]}"
}

# The libFuzzer build (clang, every object instrumented): scripts/test.sh and scripts/fuzz.sh.
build_fuzz() {
  # -O1 and line tables only: what fuzzing needs, and a third less compile time than -O2 -g.
  CC=clang CXX=clang++ BUILD_TARGETS=molra_fuzzers configure_and_build "$OUT/fuzz" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" \
    -DCMAKE_C_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" -DMOLRA_BUILD_FUZZ=ON -DMOLRA_BUILD_TESTS=OFF
}
FUZZ_TARGETS=(push_fuzz replies_fuzz order_answer_fuzz config_fuzz adapters_fuzz csv_fuzz wire_fuzz)

# run_fuzzer TARGET SECONDS: runs one target on a scratch copy of its seed corpus (new
# inputs go to $OUT/fuzz/corpus/TARGET, the repository's seeds are only read); a crash, a
# sanitizer report or a leak fails it and leaves the reproducer in $OUT/fuzz/artifacts.
run_fuzzer() {
  local target=$1 seconds=$2 dir="$OUT/fuzz" rc=0
  mkdir -p "$dir/corpus/$target" "$dir/artifacts"
  "$dir/fuzz/$target" -max_total_time="$seconds" -print_final_stats=1 -timeout=10 -rss_limit_mb=4096 \
    -artifact_prefix="$dir/artifacts/$target-" "$dir/corpus/$target" "$ROOT/fuzz/corpus/$target" \
    >"$dir/$target.log" 2>&1 || rc=$?
  if [ $rc -ne 0 ]; then
    tail -n 60 "$dir/$target.log"
  else
    printf '  %-20s %10s runs in %ss, corpus %s\n' "$target" \
      "$(sed -n 's/^stat::number_of_executed_units: *//p' "$dir/$target.log")" "$seconds" \
      "$(find "$dir/corpus/$target" "$ROOT/fuzz/corpus/$target" -type f | wc -l)"
  fi
  return $rc
}
