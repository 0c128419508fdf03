"""The trading layer against the simulated back end, each scenario in a process of its own:
orders that end in the status their replies and pushes say, the other families, errors by
class, two threads failing at once, a break during open orders, the asyncio session."""
import json

from conftest import require

NEEDED = ("SECMOLRA_TradeLogin", "SECMOLRA_OrderEntrust", "SECMOLRA_OrderEntrust_ASync",
          "SECMOLRA_OrderWithdraw", "PYSECMOLRA_QueryOrders", "PYSECMOLRA_QueryMatchs")


def _result(proc) -> dict:
    """The scenario's last stdout line is a JSON object with its findings."""
    return json.loads(proc.stdout.strip().splitlines()[-1])


def _state(name: str) -> str:
    """Scenario code: the findings of order `name` as a list."""
    return (f"[{name}.status.name, {name}.filled_quantity, {name}.withdrawn_quantity, "
            f"round({name}.average_price, 3), len({name}.matches), "
            f"type({name}.error).__name__, {name}.order_no > 0]")


def test_orders_end_in_the_status_their_replies_and_pushes_say(scenario, kit):
    require(kit, *NEEDED, "SECMOLRA_OrderWithdraw_ASync")
    proc = scenario.run(f"""
        from secmolra import OrderStatus as S, Refused
        sim = SIM.Sim(BUILD)
        out = {{}}
        with SIM.logged_in(BUILD, WORK) as s:
            def done(name, order, *wanted):
                try:
                    order.wait(*wanted, timeout=10)
                except Refused:
                    pass
                out[name] = {_state("order")}
            done("buy", s.buy("1001", "600000", 100, 10.0), S.FILLED)
            done("sell", s.sell("1001", "600036", 100, 35.0), S.FILLED)
            pending = s.buy_async("1001", "600000", 200, 10.0)
            out["pending"] = [pending.request_no > 0, type(pending.request_no).__name__]
            done("buy_async", pending, S.FILLED)
            resting = s.buy("1001", "600000", 100, 9.5)
            resting.wait(S.ACCEPTED, timeout=10)
            resting.withdraw()
            done("withdrawn", resting, S.WITHDRAWN)
            sim.SetLiquidity(b"SH", b"601318", 100)
            part = s.buy("1001", "601318", 300, 50.0)
            part.wait(S.PARTIALLY_FILLED, timeout=10)
            part.withdraw(asynchronous=True)
            done("partly_withdrawn", part, S.PARTIALLY_WITHDRAWN)
            sim.SetMatchVolume(30)
            done("in_pieces", s.buy("1001", "000001", 100, 12.0), S.FILLED)
            limit = s.buy("1001", "600000", 100, 12.0)  # beyond the daily limit
            done("exchange_refused", limit)
            out["exchange_error"] = [limit.error.code, limit.error.function]
            broke = s.buy_async("1001", "600000", 10_000_000, 10.0)
            done("back_end_refused", broke)
            out["back_end_error"] = [broke.error.code, broke.error.function]
            try:
                s.buy("1001", "600000", 10_000_000, 10.0)
            except Refused as exc:
                out["sync_refused"] = [exc.code, exc.function]
        print(json.dumps(out))
    """)
    assert _result(proc) == {
        "buy": ["FILLED", 100, 0, 10.0, 1, "NoneType", True],
        "sell": ["FILLED", 100, 0, 35.0, 1, "NoneType", True],
        "pending": [True, "int"],
        "buy_async": ["FILLED", 200, 0, 10.0, 1, "NoneType", True],
        "withdrawn": ["WITHDRAWN", 0, 100, 0.0, 0, "NoneType", True],
        "partly_withdrawn": ["PARTIALLY_WITHDRAWN", 100, 200, 50.0, 1, "NoneType", True],
        "in_pieces": ["FILLED", 100, 0, 12.0, 4, "NoneType", True],
        "exchange_refused": ["REJECTED", 0, 0, 0.0, 0, "Refused", True],
        "exchange_error": [3, "exchange"],
        "back_end_refused": ["REJECTED", 0, 0, 0.0, 0, "Refused", False],
        "back_end_error": [-103, "reply"],
        "sync_refused": [-103, "SECMOLRA_OrderEntrust"]}


def test_the_other_families_return_tracked_orders(scenario, kit):
    require(kit, *NEEDED, "SECMOLRA_ETFEntrust", "SECMOLRA_ZQHGEntrust", "SECMOLRA_ZQHGCrk",
            "SECMOLRA_Lof", "SECMOLRA_PHDJEntrust", "SECMOLRA_FXYW", "SECMOLRA_FJY",
            "SECMOLRA_DZJY", "PYSECMOLRA_BatchOrderEntrust_ASync")
    proc = scenario.run(f"""
        from secmolra import BatchItem, Business, KitError, OrderStatus as S
        out = {{}}
        with SIM.logged_in(BUILD, WORK) as s:
            def done(name, order, *wanted):
                order.wait(*wanted, timeout=10)
                out[name] = [order.business.name] + {_state("order")}[:3]
            done("etf_create", s.etf_create("1001", "510050", 10000), S.FILLED)
            done("etf_redeem", s.etf_redeem("1001", "510050", 10000, asynchronous=True),
                 S.FILLED)
            done("after_hours", s.after_hours("1001", "600000", 100, 10.0), S.FILLED)
            repo = s.repo("1001", "204001", 10, 2.0, asynchronous=True)
            done("repo", repo, S.ACCEPTED)
            repo.withdraw()
            done("repo_withdrawn", repo, S.WITHDRAWN)
            done("pledge", s.pledge("1001", "204001", 10), S.ACCEPTED)
            done("lof", s.lof("1001", "501000", 1000, 1.0), S.ACCEPTED)
            done("issue", s.issue("1001", "600000", 100, 10.0, category=1), S.ACCEPTED)
            done("non_trading", s.non_trading("1001", "600000", 100, 10.0, category=11),
                 S.ACCEPTED)
            done("block_trade", s.block_trade("1001", "600000", 100, 10.0, category=55),
                 S.ACCEPTED)
            batch = s.batch("1001", [BatchItem("600000", 100, 9.5),
                                     BatchItem("999999", 100, 10.0, exchange="SH")], batch_no=7)
            out["batch"] = [[o.status.name, str(o.error.message if o.error else "")[:7]]
                            for o in batch]
            later = s.batch("1001", [BatchItem("600000", 100, 10.0)] * 2, batch_no=8,
                            asynchronous=True)
            out["batch_async"] = [o.wait(S.FILLED, timeout=10).order_no > 0 for o in later]
            for name, call in (
                    ("repo_category", lambda: s.repo("1001", "204001", 10, 2.0, category=1)),
                    ("block_async", lambda: s.place(Business.BLOCK_TRADE, "1001", "600000", 1,
                                                    1.0, 55, asynchronous=True)),
                    ("no_account", lambda: s.buy("1001", "600000", 1, 1.0, exchange="BJ")),
                    ("no_exchange", lambda: s.buy("1001", "ABC", 1, 1.0))):
                try:
                    call()
                except KitError as exc:
                    out[name] = [type(exc).__name__, exc.code]
        print(json.dumps(out))
    """)
    assert _result(proc) == {
        "etf_create": ["ETF_CREATE", "FILLED", 10000, 0],
        "etf_redeem": ["ETF_REDEEM", "FILLED", 10000, 0],
        "after_hours": ["AFTER_HOURS", "FILLED", 100, 0],
        "repo": ["REPO", "ACCEPTED", 0, 0],
        "repo_withdrawn": ["REPO", "WITHDRAWN", 0, 10],
        "pledge": ["PLEDGE", "ACCEPTED", 0, 0],
        "lof": ["LOF", "ACCEPTED", 0, 0],
        "issue": ["ISSUE", "ACCEPTED", 0, 0],
        "non_trading": ["NON_TRADING", "ACCEPTED", 0, 0],
        "block_trade": ["BLOCK_TRADE", "ACCEPTED", 0, 0],
        "batch": [["ACCEPTED", ""], ["REJECTED", "securit"]],
        "batch_async": [True, True],
        "repo_category": ["NotSupported", -222],
        "block_async": ["NotSupported", -222],
        "no_account": ["InvalidArgument", -221],
        "no_exchange": ["InvalidArgument", -221]}


def test_failures_raise_the_class_of_their_code(scenario, kit):
    require(kit, *NEEDED, "PYSECMOLRA_QueryFundInfo")
    proc = scenario.run("""
        import secmolra
        from secmolra import KitError
        out = {}
        with SIM.logged_in(BUILD, WORK) as s:
            s.logout("1001")
            for name, call in (
                    ("empty", lambda: s.login(SIM.KEY, "", "1")),
                    ("password", lambda: s.login(SIM.KEY, "1003", "wrong")),
                    ("no_section", lambda: s.login("NOSUCH", "1005", "555555")),
                    ("two_nodes", lambda: s.login(SIM.KEY, "1002", "222222")),
                    ("logged_out", lambda: s.funds("1001")),
                    ("never_in", lambda: s.funds("1004"))):
                try:
                    call()
                    out[name] = None
                except KitError as exc:
                    out[name] = [type(exc).__name__, exc.code, bool(exc.message), exc.function]
        print(json.dumps(out))
    """)
    assert _result(proc) == {
        "empty": ["InvalidArgument", -221, True, "SECMOLRA_TradeLogin"],
        "password": ["Refused", -108, True, "SECMOLRA_TradeLogin"],
        "no_section": ["TransportError", 0, True, "SECMOLRA_TradeLogin"],
        "two_nodes": ["InvalidArgument", -226, True, "SECMOLRA_TradeLogin"],
        "logged_out": ["NotLoggedIn", -203, True, "PYSECMOLRA_QueryFundInfo"],
        "never_in": ["NotLoggedIn", 0, True, "PYSECMOLRA_QueryFundInfo"]}


def test_two_threads_failing_at_once_each_read_their_own_error(scenario, kit):
    require(kit, *NEEDED)
    proc = scenario.run("""
        import threading
        from secmolra import KitError
        with SIM.session(BUILD, WORK) as s:
            failures = {"login": lambda: s.login(SIM.KEY, "", "x"),
                        "logout": lambda: s.logout("")}
            wrong, start = [], threading.Barrier(2)
            def fail(name, call):
                start.wait()
                for _ in range(2000):
                    try:
                        call()
                    except KitError as exc:
                        if exc.function != "SECMOLRA_Trade" + name.title() or \\
                                exc.message != EXPECTED[name]:
                            wrong.append([name, exc.function, exc.message])
            EXPECTED = {"login": "配置名、客户号、交易密码不能为空", "logout": "客户号不能为空"}
            threads = [threading.Thread(target=fail, args=item) for item in failures.items()]
            for t in threads:
                t.start()
            for t in threads:
                t.join()
            print(json.dumps({"wrong": wrong[:5], "count": len(wrong)}, ensure_ascii=False))
    """, timeout=120)
    assert _result(proc) == {"wrong": [], "count": 0}


def test_a_break_during_open_orders_is_caught_up_when_the_connection_returns(scenario, kit):
    require(kit, *NEEDED)
    proc = scenario.run(f"""
        from secmolra import OrderStatus as S, TransportError
        sim = SIM.Sim(BUILD)
        with SIM.logged_in(BUILD, WORK) as s:
            a = s.buy("1001", "600000", 100, 9.5)
            b = s.buy_async("1001", "600000", 200, 9.5)
            c = s.buy("1001", "600036", 300, 34.0)
            for order in (a, b, c):
                order.wait(S.ACCEPTED, timeout=10)
            sim.WaitIdle()  # their confirmations are in
            subscribe = sim.ConnectionByAddr(b"127.0.0.1:9104", 0)
            sim.BreakConnection(subscribe, 5)
            s.events.wait_for(kind="conn", type=5, timeout=10)
            # the market moves while the pushes are lost: a and b match, c in part
            sim.SetPrice(b"SH", b"600000", 9.5)
            sim.SetLiquidity(b"SH", b"600036", 100)
            sim.SetPrice(b"SH", b"600036", 34.0)
            try:
                c.withdraw()
            except TransportError as exc:
                refused = exc.message
            sim.WaitIdle()
            during = [o.status.name for o in (a, b, c)]
            sim.RestoreConnection(subscribe)
            for order, status in ((a, S.FILLED), (b, S.FILLED), (c, S.PARTIALLY_FILLED)):
                order.wait(status, timeout=10)
            c.withdraw()
            c.wait(S.PARTIALLY_WITHDRAWN, timeout=10)
            replayed = [e for e in s.events.snapshot() if e.replayed]
            e = s.buy("1001", "600000", 100, 9.5).wait(S.FILLED, timeout=10)  # live again
            print(json.dumps({{
                "during": during, "refused": refused,
                "after": [{_state("o")} for o in (a, b, c)],
                "replayed": sorted((e.push_type.name, e.order_no) for e in replayed),
                "live_after": [x.replayed for x in e.events],
                "again": [len(s.resync()), s.resync_passes >= 1]}}, ensure_ascii=False))
    """)
    result = _result(proc)
    assert result["during"] == ["ACCEPTED", "ACCEPTED", "ACCEPTED"]
    assert result["refused"] == "交易、订阅连接已失效"  # the kit sends nothing while it is down
    assert result["after"] == [["FILLED", 100, 0, 9.5, 1, "NoneType", True],
                               ["FILLED", 200, 0, 9.5, 1, "NoneType", True],
                               ["PARTIALLY_WITHDRAWN", 100, 200, 34.0, 1, "NoneType", True]]
    # only what was lost is replayed: the three matches, no confirmation seen before
    assert [kind for kind, _ in result["replayed"]] == ["MATCH"] * 3
    assert result["live_after"] == [False, False]
    assert result["again"] == [0, True]


def test_queries_return_models_and_the_event_buffer_stays_bounded(scenario, kit):
    require(kit, *NEEDED, "PYSECMOLRA_QueryFundInfo", "PYSECMOLRA_QueryPositions")
    proc = scenario.run("""
        from secmolra import Exchange, OrderStatus as S, Side
        from secmolra.tables import table
        seen = []
        with SIM.logged_in(BUILD, WORK, event_capacity=20, on_event=seen.append) as s:
            fund = s.funds("1001")[0]
            sh = [a for a in s.accounts("1001") if a.exchange is Exchange.SH][0]
            quote = s.quotes("1001", ["600036"])
            orders = [s.buy("1001", "600000", 100, 10.0) for _ in range(15)]
            for o in orders:
                o.wait(S.FILLED, timeout=10)
            rows = s.orders("1001")
            matches = s.matches("1001", order_no=orders[0].order_no)
            print(json.dumps({
                "fund": [fund.available, fund.frozen, fund.total == fund.market_value +
                         fund.available + fund.frozen],
                "account": [sh.account, sh.fund_account],
                "quote": [(q.code, q.price) for q in quote],
                "rows": [(r.order_no, r.side.name, r.status.name) for r in rows[:2]],
                "matches": [(m.order_no, m.quantity, m.side is Side.BUY) for m in matches],
                "buffer": [len(s.events), s.events.dropped, len(seen)],
                "in_order": [e.seq for e in seen] == sorted(e.seq for e in seen),
                "table": table(rows[:1], ["order_no", "side", "status"]).splitlines()[2]}))
    """)
    result = _result(proc)
    assert result["fund"] == [1_000_000.0, 0.0, True]
    assert result["account"] == ["A000001001", "000000001001"]
    assert result["quote"] == [["600036", 35.0]]
    assert result["rows"] == [[1, "BUY", "FILLED"], [2, "BUY", "FILLED"]]
    assert result["matches"] == [[1, 100, True]]
    assert result["buffer"] == [20, 10, 30]  # a confirmation and a match per order
    assert result["in_order"] and result["table"].split() == ["1", "BUY", "FILLED"]


def test_async_session_trades_and_streams_every_event_in_order(scenario, kit):
    require(kit, *NEEDED)
    proc = scenario.run("""
        import asyncio, threading
        from secmolra.aio import AsyncSession
        from secmolra.simulated import write_profile

        async def main():
            loop = asyncio.get_running_loop()
            crossings, original = [], loop.call_soon_threadsafe
            def counting(callback, *args):
                if getattr(callback, "__name__", "") == "put_nowait":  # an event crossing
                    crossings.append(threading.get_ident())
                return original(callback, *args)
            loop.call_soon_threadsafe = counting
            async with AsyncSession(BUILD, transport_dir=BUILD,
                                    profile_path=write_profile(WORK / "p")) as s:
                for khh, password in (("1001", "111111"), ("1003", "333333")):
                    await s.login(SIM.KEY, khh, password)
                streamed = []
                async def collect():
                    async for event in s.events():
                        streamed.append(event)
                reader = asyncio.ensure_future(collect())
                await asyncio.sleep(0)
                first = await s.buy("1001", "600000", 100, 10.0)
                await first.filled(timeout=10)
                orders = await asyncio.gather(*[
                    s.buy_async(khh, "600000", 100, 10.0) for khh in ("1001", "1003") * 10])
                await asyncio.gather(*[o.filled(timeout=10) for o in orders])
                buffered = [e.seq for e in s.buffer.snapshot()]
                await asyncio.sleep(0.1)
            await reader
            return {"streamed": [e.seq for e in streamed] == buffered,
                    "count": len(streamed),
                    "per_customer": all(
                        [e.seq for e in streamed if e.customer == k] ==
                        sorted(e.seq for e in streamed if e.customer == k)
                        for k in ("1001", "1003")),
                    "crossed": len(crossings) == len(streamed) and
                               threading.get_ident() not in crossings,
                    "statuses": sorted({o.status.name for o in orders})}
        print(json.dumps(asyncio.run(main())))
    """)
    result = _result(proc)
    assert result == {"streamed": True, "count": 2 + 20 * 3, "per_customer": True,
                      "crossed": True, "statuses": ["FILLED"]}
