#!/bin/sh
# Runs the Python package's tests (python/tests) against a build folder.
#   scripts/pytest.sh [BUILD_DIR] [pytest arguments...]
# BUILD_DIR defaults to $MOLRA_BUILD_DIR, else build/. It must hold the kit
# (src/libsecmolra.so) and the simulated transport (kelapi50.dll).
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${MOLRA_BUILD_DIR:-$root/build}
if [ $# -gt 0 ] && [ -d "$1" ]; then
  build=$1
  shift
fi
python=${PYTHON:-}
if [ -z "$python" ]; then
  for candidate in /usr/bin/python3 python3; do
    if "$candidate" -c 'import pytest' >/dev/null 2>&1; then
      python=$candidate
      break
    fi
  done
fi
if [ -z "$python" ]; then
  echo "pytest.sh: no python3 with pytest found (Debian: apt-get install python3-pytest)" >&2
  exit 1
fi
MOLRA_BUILD_DIR=$(cd "$build" && pwd)
export MOLRA_BUILD_DIR
export PYTHONDONTWRITEBYTECODE=1
cd "$root/python"
exec "$python" -m pytest -q -p no:cacheprovider "$@"
