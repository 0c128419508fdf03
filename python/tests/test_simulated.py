"""secmolra.simulated: configuration files of the simulated back end, and its exchange
(quotes, the manual clock, trading days) driven from Python while the kit trades on it."""
import json

from secmolra.simulated import CONFIG_FILE, write_config

DAY = ("time,exchange,code,last,volume,bid1,bid1_volume,ask1,ask1_volume\n"
       "09:30:00,SH,600000,10.00,1000,9.99,500,10.01,800\n"
       "09:30:03.500,SH,600000,10.02,1600,10.01,200,10.03,400\n"
       "09:31:00,SH,600000,9.95,2500,9.94,100,9.95,700\n")


def test_write_config_writes_each_section_with_its_keys(tmp_path):
    path = write_config(tmp_path / "conf", backend={"include_defaults": True, "trade_date": 0},
                        market={"clock": "manual", "start": "09:30:00"},
                        security__SH__600000={"price": 10.5, "kind": "stock"},
                        **{"customer.2001": {"password": "pw"}})
    assert path == tmp_path / "conf" / CONFIG_FILE
    sections = {}
    for line in path.read_text(encoding="gbk").splitlines():
        if line.startswith("["):
            current = sections.setdefault(line.strip("[]"), {})
        elif line:
            key, value = line.split(" = ")
            current[key] = value
    assert sections == {
        "backend": {"include_defaults": "true", "trade_date": "0"},
        "market": {"clock": "manual", "start": "09:30:00"},
        "security.SH.600000": {"price": "10.5", "kind": "stock"},
        "customer.2001": {"password": "pw"},
    }


SCENARIO = """
import threading
from secmolra.simulated import Exchange, write_config
(WORK / "day.csv").write_text(DAY)
os.environ["KELSIM_CONFIG"] = str(write_config(
    WORK, backend={"include_defaults": True},
    market={"replay": "day.csv", "clock": "manual", "start": "09:30:00"}))
s = SIM.session(BUILD, WORK)
s.login(SIM.KEY, "1001", "111111")
ex = Exchange(s)
out = {"clock": ex.clock(), "first": ex.quote("SH", "600000").__dict__}
seen, last_seen = [], threading.Event()
def on_quote(q):
    seen.append((q.code, q.time, q.last))
    if q.time == "09:31:00.000":
        last_seen.set()
ex.on_quote(on_quote)
order = s.buy("1001", "600000", 500, 9.96, "SH")
ex.advance(3.5)
ex.advance(56.5)  # 09:31:00: the ask comes down to 9.95 and reaches the resting buy
assert last_seen.wait(10)
out["seen"] = list(seen)
out["filled"] = [e.data["CJSL"] for e in s.events.snapshot() if e.kind == "push" and e.data["CJSL"]]
ex.set_quote("SH", "600000", 9.90, bids=[(9.89, 100)], asks=[(9.90, 300), (9.91, 400)])
out["set"] = ex.quote("SH", "600000").__dict__
out["refused"] = []
for call in (lambda: ex.quote("SH", "999999"), lambda: ex.set_quote("SH", "600000", -1)):
    try:
        call()
    except (KeyError, ValueError) as exc:
        out["refused"].append(type(exc).__name__)
ex.new_day()
out["next_day"] = ex.clock()
out["prev_close"] = ex.quote("SH", "600000").prev_close
out["positions"] = [(p.code, p.quantity, p.sellable) for p in s.positions("1001", "600000")]
ex.on_quote(None)
s.close()
print(json.dumps(out))
"""


def test_exchange_shows_quotes_moves_the_clock_and_ends_the_day(scenario, kit):
    proc = scenario.run(f"DAY = {DAY!r}\n" + SCENARIO, timeout=60)
    out = json.loads(proc.stdout.strip().splitlines()[-1])
    assert out["clock"][1] == "09:30:00.000"
    first = out["first"]
    assert (first["last"], first["prev_close"], first["volume"]) == (10.0, 10.0, 1000)
    assert (first["upper_limit"], first["lower_limit"], first["tick"]) == (11.0, 9.0, 0.01)
    assert first["bids"] == [[9.99, 500]] and first["asks"] == [[10.01, 800]]
    assert out["seen"] == [["600000", "09:30:03.500", 10.02], ["600000", "09:31:00.000", 9.95]]
    assert out["filled"] == [500]  # its match report came before the quote that caused it
    assert out["set"]["last"] == 9.9
    assert out["set"]["asks"] == [[9.9, 300], [9.91, 400]]
    assert out["set"]["volume"] == 2500  # kept when not given
    assert out["refused"] == ["KeyError", "ValueError"]
    assert out["next_day"][0] > out["clock"][0] and out["next_day"][1] == "09:30:00.000"
    assert out["prev_close"] == 9.9
    assert out["positions"] == [["600000", 10500, 10500]]  # the bought 500 are sellable now
