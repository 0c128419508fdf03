"""The demo and the host examples run end to end, so that they cannot rot."""
import json
import os
import re
import shutil
import subprocess
import sys
import time

import pytest

from conftest import PYTHON_DIR, REPO, require
from secmolra.library import build_library
from secmolra.simulated import SIM_KEY, write_profile

NEEDED = ("SECMOLRA_TradeLogin", "SECMOLRA_OrderEntrust", "SECMOLRA_OrderEntrust_ASync",
          "PYSECMOLRA_QueryAccInfo", "PYSECMOLRA_BatchOrderEntrust", "SECMOLRA_OrderWithdraw")


def test_demo_trades_on_the_simulated_back_end(scenario, kit, build):
    require(kit, *NEEDED)
    proc = scenario.run_command([sys.executable, "-m", "secmolra.demo", "--build", str(build)],
                                timeout=120)
    out = proc.stdout
    assert "demo finished" in out and "FAILED" not in out
    for step in ("funds", "shareholder accounts", "positions", "batch of three buys",
                 "orders of the day", "log customer 1001 out"):
        assert f"== {step}" in out
    assert re.search(r"^order number [1-9]\d*$", out, re.M)
    assert re.search(r"^withdrawal number [1-9]\d*$", out, re.M)
    assert re.search(r"^3 of 3 accepted$", out, re.M)
    # pushes and the reply arrive as table rows, not raw JSON
    assert re.search(r"^  time\s+push\s+WTH", out, re.M)
    assert re.search(r"^  time\s+reply\s+KFSBDBH", out, re.M)
    assert re.search(r"^  \d{6}\.\d{3}\s+confirmation\s", out, re.M)
    assert '{"TYPE"' not in out


def test_demo_names_the_failing_step_code_and_message(scenario, kit, build):
    require(kit, *NEEDED)
    proc = scenario.run_command([sys.executable, "-m", "secmolra.demo", "--build", str(build),
                                 "--password", "wrong"], timeout=60, expect_ok=False)
    assert proc.returncode == 1
    line = proc.stdout.strip().splitlines()[-1]
    assert line.startswith("FAILED at step 'log customer 1001 in': code -")
    assert "message: " in line and line.split("message: ", 1)[1]


def test_python_quickstart_runs(scenario, kit, build):
    require(kit, *NEEDED)
    proc = scenario.run_command([sys.executable, str(REPO / "examples" / "quickstart.py"),
                                 str(build)], timeout=60)
    assert re.search(r"^synchronous order [1-9]\d*$", proc.stdout, re.M)
    assert re.search(r"^reply type 14 at \d{6}\.\d{3}: \{'TYPE': 14", proc.stdout, re.M)


def test_strategy_example_trades_a_replayed_day_within_ten_seconds(scenario, kit, build):
    require(kit, *NEEDED)
    started = time.monotonic()
    proc = scenario.run_command([sys.executable, str(REPO / "examples" / "strategy.py"),
                                 str(build)], timeout=60)
    assert time.monotonic() - started < 10
    out = proc.stdout
    trades = re.findall(r"^  (\d\d:\d\d:\d\d)  (buy |sell) +(\d+) @ +(\d+\.\d\d) = ", out, re.M)
    assert {t[1] for t in trades} == {"buy ", "sell"}
    assert [t[0] for t in trades] == sorted(t[0] for t in trades)
    assert all("09:30:00" <= t[0] <= "15:00:00" for t in trades)
    assert re.search(r"^== end of day \d{8}$", out, re.M)
    assert re.search(r"^  funds: balance [\d,]+\.\d\d, available [\d,]+\.\d\d", out, re.M)
    assert re.search(r"^  SH 600000 +\d+ shares \(\d+ sellable\)", out, re.M)


def test_cpp_trade_example_runs(scenario, kit, build, tmp_path):
    require(kit, *NEEDED)
    exe = build / "examples" / ("molra_trade" + (".exe" if sys.platform == "win32" else ""))
    if not exe.is_file():
        pytest.fail(f"{exe} was not built")
    profile = write_profile(tmp_path / "profile")
    # the kit loads ./kelapi50.dll: run it in the build folder
    proc = scenario.run_command([str(exe), f"{profile}/", SIM_KEY], timeout=60, cwd=build)
    assert re.search(r"^order number [1-9]\d*$", proc.stdout, re.M)
    assert re.search(r"^\[\d{6}\.\d{3}\] reply 14 \{\"TYPE\":14", proc.stdout, re.M)
    assert "replies received: 1" in proc.stdout


def test_examples_stay_short():
    for name in ("quickstart.py", "trade.cpp"):
        assert len((REPO / "examples" / name).read_text(encoding="utf-8").splitlines()) < 80


def test_package_installs_offline_and_works_from_the_install(tmp_path, scenario, build):
    target = tmp_path / "site"
    pip = subprocess.run([sys.executable, "-m", "pip", "install", "--no-build-isolation",
                          "--no-index", "--no-deps", "--target", str(target), str(PYTHON_DIR)],
                         capture_output=True, text=True, timeout=180, cwd=tmp_path)
    if "No module named pip" in pip.stderr:
        pytest.skip("pip is not installed")
    assert pip.returncode == 0, pip.stdout + pip.stderr
    shutil.rmtree(PYTHON_DIR / "build", ignore_errors=True)  # pip's scratch in the source
    probe = ("import secmolra, json; from secmolra.library import Kit; "
             "print(json.dumps([secmolra.__file__, Kit().missing]))")
    proc = subprocess.run([sys.executable, "-c", probe], capture_output=True, text=True,
                          cwd=tmp_path, timeout=60,
                          env={**os.environ, "PYTHONPATH": str(target),
                               "SECMOLRA_LIBRARY": str(build_library(build))})
    assert proc.returncode == 0, proc.stderr
    where, missing = json.loads(proc.stdout)
    assert where.startswith(str(target)) and missing == []
