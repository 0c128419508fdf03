"""A moving-average strategy for one trading day, offline. The simulated back end replays a
day of quotes of SH 600000 (sim/data/day-600000.csv) on a manual clock. Each minute with a new
quote the strategy compares the average last price of the past 10 such minutes with that of
the past 30: when the short one crosses above it buys 2,000 shares, when it crosses below it
sells 2,000 of the customer's holding if that many are sellable (shares bought today are
sellable tomorrow only). Fees
are charged as configured below. At the close it prints its trades, funds and positions.

    PYTHONPATH=python python3 examples/strategy.py out/linux   # from a build folder
"""
import os
import sys
import tempfile
from pathlib import Path

from secmolra import KitError, Session
from secmolra.simulated import SIM_KEY, Exchange, write_config, write_profile

BUILD = Path(sys.argv[1] if len(sys.argv) > 1 else "out/linux")
DAY = Path(__file__).resolve().parents[1] / "sim" / "data" / "day-600000.csv"
KHH, PASSWORD, JYS, CODE = "1001", "111111", "SH", "600000"
SHORT, LONG, SHARES, CLOSE = 10, 30, 2000, "15:00:00"
FEES = {"commission_rate": 0.00025, "commission_min": 5, "stamp_duty_rate": 0.0005,
        "transfer_fee_rate": 0.00001}


def signal(prices):
    """+1 when the short average has just crossed above the long one, -1 below, else 0."""
    def gap(p):
        return sum(p[-SHORT:]) / SHORT - sum(p[-LONG:]) / LONG
    if len(prices) <= LONG:
        return 0
    before, now = gap(prices[:-1]), gap(prices)
    return 1 if before <= 0 < now else (-1 if before >= 0 > now else 0)


def sellable(session):
    return sum(p.sellable for p in session.positions(KHH, CODE, JYS))


def trade_day(session, exchange):
    prices, last_time, holding = [], None, 0  # holding: shares bought (+) or sold (-) today
    while exchange.clock()[1] < CLOSE:
        exchange.advance(60)
        quote = exchange.quote(JYS, CODE)
        if quote.time == last_time:
            continue  # no quote this minute (the lunch break)
        last_time = quote.time
        prices.append(quote.last)
        side = signal(prices)
        if side > 0 and holding <= 0:  # buy up to the fifth ask
            session.buy(KHH, CODE, SHARES, quote.asks[-1][0], JYS)
            holding += SHARES
        elif side < 0 and holding >= 0 and sellable(session) >= SHARES:  # down to the fifth bid
            session.sell(KHH, CODE, SHARES, quote.bids[-1][0], JYS)
            holding -= SHARES


def report(session, exchange):
    print("== trades")
    for m in session.matches(KHH):
        t = m.time
        print(f"  {t[0:2]}:{t[2:4]}:{t[4:6]}  {m.side.name.lower():4} {m.quantity:>6} "
              f"@ {m.price:6.2f} = {m.amount:>10,.2f}")
    fund = session.funds(KHH)[0]
    print(f"== end of day {exchange.clock()[0]}")
    print(f"  funds: balance {fund.balance:,.2f}, available {fund.available:,.2f}, "
          f"market value {fund.market_value:,.2f}")
    print("== positions")
    for p in session.positions(KHH, nonempty=True):
        print(f"  {p.exchange.name} {p.code} {p.quantity:>7} shares ({p.sellable} sellable)  "
              f"cost {p.cost_price:.3f}  last {p.price:.3f}  value {p.market_value:,.2f}")


def main() -> int:
    work = Path(tempfile.mkdtemp(prefix="molra-strategy-"))
    config = write_config(work, backend={"include_defaults": True}, fees=FEES,
                          market={"replay": DAY, "clock": "manual", "start": "09:30:00"})
    os.environ["KELSIM_CONFIG"] = str(config)  # read by the transport when the kit starts
    session = Session(BUILD, transport_dir=BUILD, profile_path=write_profile(work),
                      log_path=work / "log")
    try:
        with session:
            session.login(SIM_KEY, KHH, PASSWORD)
            exchange = Exchange(session)
            trade_day(session, exchange)
            report(session, exchange)
            session.logout(KHH)
    except KitError as exc:
        print(f"kit error {exc.code}: {exc.message} ({exc.function})")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
