#!/usr/bin/python3
"""Builds the Python wheel with the kit and the simulated transport inside.

    python3 scripts/wheel.py BUILD_DIR [--out DIR]

BUILD_DIR is a Linux build (src/libsecmolra.so and kelapi50.dll) or a Windows build
(src/secmolra.dll and kelapi50.dll); the wheel is tagged for that platform
(manylinux_<glibc>_x86_64, or win_amd64) and written to DIR (default: out/wheels). The
package is staged in a scratch folder next to the wheel with the two libraries in
secmolra/_lib, and built with the standard tools offline: python3 -m build --wheel
--no-isolation (Debian: python3-build, python3-wheel). Prints the wheel's path.
"""
from __future__ import annotations

import argparse
import os
import platform
import shutil
import subprocess
import sys
from pathlib import Path
from typing import List, Optional, Tuple

ROOT = Path(__file__).resolve().parents[1]
PACKAGE = ROOT / "python"
TRANSPORT = "kelapi50.dll"


def platform_of(build: Path) -> Tuple[str, Path]:
    """(wheel platform tag, kit library) of a build folder."""
    windows = build / "src" / "secmolra.dll"
    if windows.is_file():
        return "win_amd64", windows
    linux = build / "src" / "libsecmolra.so"
    if linux.is_file():
        libc = os.confstr("CS_GNU_LIBC_VERSION") or ""  # "glibc 2.36"
        name, _, version = libc.partition(" ")
        if name != "glibc" or not version:
            raise SystemExit(f"wheel.py: cannot tell the C library of this system ({libc!r})")
        major, minor = version.split(".")[:2]
        return f"manylinux_{major}_{minor}_{platform.machine()}", linux
    raise SystemExit(f"wheel.py: no built kit in {build} (src/libsecmolra.so or "
                     "src/secmolra.dll)")


def stage(build: Path, tag: str, library: Path, scratch: Path) -> Path:
    """A copy of the package with the libraries in secmolra/_lib and the platform tag."""
    transport = build / TRANSPORT
    if not transport.is_file():
        raise SystemExit(f"wheel.py: no {TRANSPORT} in {build}")
    shutil.rmtree(scratch, ignore_errors=True)
    scratch.mkdir(parents=True)
    for name in ("pyproject.toml", "README.md"):
        shutil.copy2(PACKAGE / name, scratch / name)
    shutil.copytree(PACKAGE / "secmolra", scratch / "secmolra",
                    ignore=shutil.ignore_patterns("__pycache__", "*.pyc", "_lib"))
    lib = scratch / "secmolra" / "_lib"
    lib.mkdir()
    shutil.copy2(library, lib / library.name)
    shutil.copy2(transport, lib / TRANSPORT)
    # A pure-Python wheel (py3-none) that carries native libraries for one platform.
    (scratch / "setup.cfg").write_text(f"[bdist_wheel]\npython_tag = py3\nplat_name = {tag}\n")
    return scratch


def build_wheel(build: Path, out: Path) -> Path:
    """Builds the wheel of a build folder into `out`; returns its path."""
    tag, library = platform_of(build)
    scratch = stage(build, tag, library, out / f"stage-{tag}")
    out.mkdir(parents=True, exist_ok=True)
    before = set(out.glob("*.whl"))
    proc = subprocess.run([sys.executable, "-m", "build", "--wheel", "--no-isolation",
                           "--outdir", str(out), str(scratch)],
                          capture_output=True, text=True)
    if proc.returncode != 0:
        raise SystemExit(f"wheel.py: the build failed\n{proc.stdout}\n{proc.stderr}")
    made = [w for w in out.glob(f"secmolra-*-py3-none-{tag}.whl")
            if w not in before or w.stat().st_mtime >= scratch.stat().st_mtime]
    if not made:
        raise SystemExit(f"wheel.py: no secmolra-*-py3-none-{tag}.whl in {out}\n{proc.stdout}")
    return max(made, key=lambda w: w.stat().st_mtime)


def main(argv: Optional[List[str]] = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path, help="build folder (Linux or Windows)")
    parser.add_argument("--out", type=Path, default=ROOT / "out" / "wheels")
    args = parser.parse_args(argv)
    print(build_wheel(args.build.resolve(), args.out.resolve()))
    return 0


if __name__ == "__main__":
    sys.exit(main())
