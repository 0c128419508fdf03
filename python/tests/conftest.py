"""Shared helpers. The kit's state is process-wide and it starts once per process, so every
scenario that starts it runs in a fresh Python process (run_scenario)."""
from __future__ import annotations

import os
import subprocess
import sys
import textwrap
from pathlib import Path

import pytest

PYTHON_DIR = Path(__file__).resolve().parents[1]
REPO = PYTHON_DIR.parent
sys.path.insert(0, str(PYTHON_DIR))

from secmolra.library import build_library  # noqa: E402


def build_dir() -> Path:
    return Path(os.environ.get("MOLRA_BUILD_DIR", REPO / "build")).resolve()


@pytest.fixture(scope="session")
def build() -> Path:
    path = build_dir()
    if build_library(path) is None or not (path / "kelapi50.dll").is_file():
        pytest.fail(f"no built kit and transport in {path} (set MOLRA_BUILD_DIR)")
    return path


@pytest.fixture(scope="session")
def kit(build):
    """The kit loaded in this process, for table checks only: never started here."""
    from secmolra.library import Kit
    return Kit(build)


def require(kit, *names: str) -> None:
    """Skips a scenario whose exports have not landed in this build yet."""
    missing = [n for n in names if n in kit.missing]
    if missing:
        pytest.skip("not in this build of the kit: " + ", ".join(missing))


class Scenario:
    def __init__(self, build: Path, workdir: Path):
        self.build, self.workdir = build, workdir

    def run(self, body: str, timeout: float = 60, expect_ok: bool = True,
            args=()) -> subprocess.CompletedProcess:
        """Runs `body` in a new Python process in the scratch folder. The body sees BUILD
        (the build folder), WORK (the scratch folder), SIM (the sim helpers module) and json."""
        prelude = textwrap.dedent(f"""
            import sys, os, json
            sys.path[:0] = [{str(PYTHON_DIR)!r}, {str(Path(__file__).parent)!r}]
            from pathlib import Path
            import simhelp as SIM
            BUILD = Path({str(self.build)!r})
            WORK = Path({str(self.workdir)!r})
        """)
        return self.run_command([sys.executable, "-c", prelude + textwrap.dedent(body),
                                 *args], timeout, expect_ok)

    def run_command(self, command, timeout: float = 60, expect_ok: bool = True, cwd=None):
        env = dict(os.environ, PYTHONPATH=str(PYTHON_DIR), PYTHONIOENCODING="utf-8",
                   SECMOLRA_LIBRARY=str(build_library(self.build)))
        proc = subprocess.run(command, cwd=cwd or self.workdir, env=env, capture_output=True,
                              text=True, timeout=timeout, encoding="utf-8", errors="replace")
        if expect_ok and proc.returncode != 0:
            pytest.fail(f"exit {proc.returncode}\n--- stdout\n{proc.stdout}\n"
                        f"--- stderr\n{proc.stderr}")
        return proc


@pytest.fixture
def scenario(build, tmp_path) -> Scenario:
    return Scenario(build, tmp_path)
