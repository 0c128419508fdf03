"""The wheels: built with the standard tools by scripts/wheel.py, the kit and the simulated
transport inside. The Linux wheel installs offline into a fresh virtual environment and
trades from an empty directory; the Windows wheel's content is checked (windows suite)."""
import base64
import hashlib
import os
import re
import shutil
import struct
import subprocess
import sys
import zipfile
from pathlib import Path

import pytest

from conftest import PYTHON_DIR, REPO

WHEEL_SCRIPT = REPO / "scripts" / "wheel.py"
# What a Windows DLL of the wheel may import: the system's own libraries only.
WINDOWS_SYSTEM_DLLS = re.compile(r"^(kernel32|msvcrt|advapi32|ws2_32|user32|shell32|ole32|"
                                 r"bcrypt|ntdll|api-ms-win-[\w-]+)\.dll$", re.I)


def build_wheel(build: Path, out: Path) -> Path:
    proc = subprocess.run([sys.executable, str(WHEEL_SCRIPT), str(build), "--out", str(out)],
                          capture_output=True, text=True, timeout=300)
    assert proc.returncode == 0, proc.stdout + proc.stderr
    return Path(proc.stdout.strip().splitlines()[-1])


def check_content(wheel: Path, build: Path, library: str, tag: str) -> None:
    """The wheel's name and tag, its files with their RECORD hashes, the libraries as built."""
    assert re.fullmatch(rf"secmolra-\d+\.\d+\.\d+-py3-none-{tag}\.whl", wheel.name), wheel.name
    with zipfile.ZipFile(wheel) as z:
        names = set(z.namelist())
        info = next(n for n in names if n.endswith(".dist-info/WHEEL"))
        assert re.search(rf"^Tag: py3-none-{tag}$", z.read(info).decode(), re.M)
        sources = {f"secmolra/{p.name}" for p in (PYTHON_DIR / "secmolra").glob("*.py")}
        assert sources | {"secmolra/py.typed", f"secmolra/_lib/{library}",
                          "secmolra/_lib/kelapi50.dll"} <= names
        assert z.read(f"secmolra/_lib/{library}") == (build / "src" / library).read_bytes()
        assert z.read("secmolra/_lib/kelapi50.dll") == (build / "kelapi50.dll").read_bytes()
        record = z.read(next(n for n in names if n.endswith(".dist-info/RECORD"))).decode()
        for line in filter(None, record.splitlines()):
            name, digest, _ = line.rsplit(",", 2)
            if digest:
                actual = base64.urlsafe_b64encode(hashlib.sha256(z.read(name)).digest())
                assert digest == "sha256=" + actual.rstrip(b"=").decode(), name


def test_the_linux_wheel_installs_offline_and_trades_from_an_empty_directory(build, tmp_path):
    wheel = build_wheel(build, tmp_path / "wheels")
    check_content(wheel, build, "libsecmolra.so", r"manylinux_\d+_\d+_x86_64")
    venv = tmp_path / "venv"
    subprocess.run([sys.executable, "-m", "venv", str(venv)], check=True, timeout=120)
    python = venv / "bin" / "python"
    pip = subprocess.run([str(python), "-m", "pip", "install", "--no-index", "--no-cache-dir",
                          str(wheel)], capture_output=True, text=True, timeout=300)
    assert pip.returncode == 0, pip.stdout + pip.stderr
    empty = tmp_path / "empty"
    empty.mkdir()
    demo = subprocess.run([str(python), "-m", "secmolra.demo"], cwd=empty, env={},
                          capture_output=True, text=True, timeout=120)
    assert demo.returncode == 0, demo.stdout + demo.stderr
    site = next((venv / "lib").glob("python3*/site-packages/secmolra"))
    assert f"kit {site / '_lib' / 'libsecmolra.so'}" in demo.stdout
    assert f"transport {site / '_lib' / 'kelapi50.dll'}" in demo.stdout
    assert "demo finished" in demo.stdout and list(empty.iterdir()) == []


def windows_imports(dll: Path) -> list:
    objdump = shutil.which("x86_64-w64-mingw32-objdump")
    if objdump is None:
        pytest.fail("x86_64-w64-mingw32-objdump is needed to read the DLLs' imports")
    out = subprocess.run([objdump, "-p", str(dll)], capture_output=True, text=True,
                         check=True).stdout
    return re.findall(r"DLL Name: (\S+)", out)


def test_the_windows_wheel_carries_the_dlls_and_needs_no_other_runtime(tmp_path):
    build = os.environ.get("MOLRA_WINDOWS_BUILD_DIR")
    if not build:
        pytest.skip("the windows suite runs this with MOLRA_WINDOWS_BUILD_DIR")
    build = Path(build).resolve()
    wheel = build_wheel(build, tmp_path / "wheels")
    check_content(wheel, build, "secmolra.dll", "win_amd64")
    with zipfile.ZipFile(wheel) as z:
        z.extractall(tmp_path / "unpacked")
    for name in ("secmolra.dll", "kelapi50.dll"):
        dll = tmp_path / "unpacked" / "secmolra" / "_lib" / name
        raw = dll.read_bytes()
        pe = struct.unpack_from("<I", raw, 0x3C)[0]
        assert raw[:2] == b"MZ" and raw[pe:pe + 4] == b"PE\0\0"
        assert struct.unpack_from("<H", raw, pe + 4)[0] == 0x8664, f"{name} is not x86-64"
        imports = windows_imports(dll)
        assert imports and all(WINDOWS_SYSTEM_DLLS.match(i) for i in imports), (name, imports)
