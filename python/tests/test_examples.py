"""The demo and the host examples run end to end, so that they cannot rot."""
import os
import re
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
    assert re.search(r"^filled 100 at 10\.000$", out, re.M)
    assert re.search(r"^accepted as order [1-9]\d*, ", out, re.M)
    assert re.search(r"^withdrawal number [1-9]\d*$", out, re.M)
    assert re.search(r"^order [1-9]\d* WITHDRAWN$", out, re.M)
    assert re.search(r"^3 of 3 accepted$", out, re.M)
    # pushes and the reply arrive as table rows, not raw JSON
    assert re.search(r"^  time\s+push\s+order", out, re.M)
    assert re.search(r"^  time\s+reply\s+request", out, re.M)
    assert re.search(r"^  \d{6}\.\d{3}\s+CONFIRMATION\s", out, re.M)
    assert re.search(r"^  \d{6}\.\d{3}\s+ORDINARY\s+[1-9]\d*", out, re.M)
    assert '{"TYPE"' not in out


@pytest.mark.parametrize("args,encoding,step,error", [
    (["--password", "wrong"], "utf-8", "log customer 1001 in", "Refused code -108"),
    # the kit's own Chinese message, on a terminal that cannot show it
    (["--khh", ""], "ascii", "log customer  in", "InvalidArgument code -221, message: ????"),
])
def test_demo_names_the_failing_step_and_error(scenario, kit, build, args, encoding, step,
                                               error):
    require(kit, *NEEDED)
    command = [sys.executable, "-m", "secmolra.demo", "--build", str(build), *args]
    env = dict(os.environ, PYTHONPATH=str(PYTHON_DIR), PYTHONIOENCODING=encoding,
               SECMOLRA_LIBRARY=str(build_library(build)))
    proc = subprocess.run(command, cwd=scenario.workdir, env=env, capture_output=True,
                          timeout=60)
    assert proc.returncode == 1, proc.stderr.decode(errors="replace")
    line = proc.stdout.decode(encoding).strip().splitlines()[-1]
    assert line.startswith(f"FAILED at step '{step}': {error}"), line


def test_python_quickstart_and_the_readme_example_run(scenario, kit, build):
    require(kit, *NEEDED)
    proc = scenario.run_command([sys.executable, str(REPO / "examples" / "quickstart.py"),
                                 str(build)], timeout=60)
    assert re.search(r"^order [1-9]\d* FILLED: 100 at 10.00 \(events: ", proc.stdout, re.M)
    assert re.search(r"^request [1-9]\d* became order [1-9]\d*$", proc.stdout, re.M)
    readme = (REPO / "README.md").read_text(encoding="utf-8")
    example = next(block for block in re.findall(r"```python\n(.*?)```", readme, re.S)
                   if "Session.simulated()" in block)
    assert len(example.strip().splitlines()) <= 10
    proc = scenario.run_command([sys.executable, "-c", example], timeout=60)
    lines = proc.stdout.splitlines()
    assert lines[0].split()[:4] == ["customer", "exchange", "account", "code"]
    assert any(line.split()[3:5] == ["600000", "PFYH"] for line in lines[2:])


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
