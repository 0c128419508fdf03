"""The record-level session (KitSession) end to end on the simulated back end, each scenario
in a process of its own: lifecycle, checked calls, records, callbacks."""
import json

import pytest

from conftest import require

LOGIN = ("SECMOLRA_TradeLogin", "SECMOLRA_TradeLogout")
ORDERS = ("SECMOLRA_OrderEntrust", "SECMOLRA_OrderEntrust_ASync")


def _result(proc) -> dict:
    """The scenario's last stdout line is a JSON object with its findings."""
    return json.loads(proc.stdout.strip().splitlines()[-1])


def test_session_starts_and_stops_the_kit_and_restores_the_directory(scenario):
    proc = scenario.run("""
        s = SIM.records_session(BUILD, WORK)
        here = os.getcwd()
        started = s.started
        s.close()
        print(json.dumps({"started": started, "cwd": here == str(WORK),
                          "log": sorted(p.name[:6] for p in (WORK / "log").iterdir()),
                          "closed": not s.started}))
    """)
    assert _result(proc) == {"started": True, "cwd": True, "log": ["molra_"], "closed": True}


def test_second_session_in_one_process_is_refused(scenario):
    proc = scenario.run("""
        with SIM.records_session(BUILD, WORK):
            pass
        try:
            SIM.records_session(BUILD, WORK)
        except RuntimeError as exc:
            print("refused:", exc)
    """)
    assert "refused: the kit starts once per process" in proc.stdout


def test_missing_transport_or_profile_is_explained_before_the_kit_starts(scenario):
    proc = scenario.run("""
        from secmolra import Session, ProfileNotFound, TransportNotFound
        from secmolra.simulated import write_profile
        out = {}
        for name, kwargs in (("transport", {}),  # the scratch folder holds no kelapi50.dll
                             ("profile", {"transport_dir": BUILD, "profile_path": WORK / "x"})):
            try:
                Session(BUILD, **kwargs).start()
            except (TransportNotFound, ProfileNotFound) as exc:
                out[name] = [type(exc).__name__, str(exc)]
        # the checks come before the kit starts: a session with both files still starts
        s = Session(BUILD, transport_dir=BUILD, profile_path=write_profile(WORK / "p")).start()
        out["started"] = s.started
        print(json.dumps(out))
    """)
    result = _result(proc)
    kind, text = result["transport"]
    assert kind == "TransportNotFound" and "transport_dir" in text
    assert f"no kelapi50.dll at {scenario.workdir / 'kelapi50.dll'}" in text
    kind, text = result["profile"]
    assert kind == "ProfileNotFound" and "profile_path" in text
    assert f"no molra.ini at {scenario.workdir / 'x' / 'molra.ini'}" in text
    assert result["started"]


def test_failed_call_raises_with_the_kits_code_and_message(scenario, kit):
    require(kit, *LOGIN)
    proc = scenario.run("""
        from secmolra import KitError
        out = {}
        with SIM.records_session(BUILD, WORK) as s:
            for name, call in (("empty", lambda: s.login(SIM.KEY, "", "111111")),
                               ("logout", lambda: s.logout("")),
                               ("null", lambda: s.call("SECMOLRA_TradeLogin", None, "1", "x"))):
                try:
                    call()
                except KitError as exc:
                    out[name] = [type(exc).__name__, exc.code, exc.message, exc.function]
        print(json.dumps(out, ensure_ascii=False))
    """)
    assert _result(proc) == {
        "empty": ["InvalidArgument", -221, "配置名、客户号、交易密码不能为空",
                  "SECMOLRA_TradeLogin"],
        "logout": ["InvalidArgument", -221, "客户号不能为空", "SECMOLRA_TradeLogout"],
        "null": ["InvalidArgument", -221, "非法参数", "SECMOLRA_TradeLogin"]}


def test_connection_failure_with_code_0_still_raises(scenario, kit):
    require(kit, *LOGIN)
    proc = scenario.run("""
        from secmolra import KitError
        with SIM.records_session(BUILD, WORK, profile_settings={"addr": "127.0.0.1:1",
                                                                "tradeaddr": "127.0.0.1:1"}) as s:
            try:
                s.login(SIM.KEY, "1001", "111111")
                print(json.dumps({"raised": False}))
            except KitError as exc:
                print(json.dumps({"raised": type(exc).__name__, "code": exc.code,
                                  "message": exc.message}, ensure_ascii=False))
    """)
    result = _result(proc)
    assert result["raised"] == "TransportError" and result["code"] == 0
    assert result["message"].startswith("connect failed.")


def test_queries_decode_the_back_ends_records(scenario, kit):
    require(kit, *LOGIN, "PYSECMOLRA_QueryFundInfo", "PYSECMOLRA_QueryAccInfo")
    proc = scenario.run("""
        import dataclasses
        with SIM.records_session(BUILD, WORK) as s:
            token = s.login(SIM.KEY, "1001", "111111")
            funds = [dataclasses.asdict(f) for f in s.funds("1001")]
            accounts = [dataclasses.asdict(a) for a in s.accounts("1001")]
            # the same rows through a one-record array: the package grows it and asks again
            from secmolra.records import AccountRecord
            small = s.query("PYSECMOLRA_QueryAccInfo", AccountRecord, "1001", capacity=1)
            s.logout("1001")
            print(json.dumps({"token": token, "funds": funds, "accounts": accounts,
                              "small": [dataclasses.asdict(a) for a in small]},
                             ensure_ascii=False))
    """)
    result = _result(proc)
    assert result["token"] > 0
    assert result["funds"] and all(f["KHH"] == "1001" for f in result["funds"])
    for f in result["funds"]:
        assert f["Amount1"] == f["Amount2"]
    assert result["accounts"] and all(a["KHH"] == "1001" for a in result["accounts"])
    assert result["small"] == result["accounts"]


def test_callbacks_arrive_on_transport_threads_without_loss(scenario, kit):
    require(kit, *LOGIN, *ORDERS, "PYSECMOLRA_QueryAccInfo")
    proc = scenario.run("""
        import threading
        main = threading.get_ident()
        threads = set()
        def seen(event):
            threads.add(threading.get_ident())
        with SIM.session(BUILD, WORK, on_push=seen, on_reply=seen) as s:
            s.login(SIM.KEY, "1001", "111111")
            r = s.records
            acc = r.accounts("1001")[0]
            sent = [r.entrust_async("1001", acc.JYS, "600000", 1, 100, 10.0, acc.GDH,
                                    kfsbdbh=i + 1) for i in range(20)]
            replies = s.events.wait_for(kind="reply", timeout=20, count=20)
            print(json.dumps({
                "sent": sent,
                "replied": sorted(e.request_no for e in replies),
                "types": sorted({e.type for e in replies}),
                "main_thread_used": main in threads,
                "errors": [repr(e) for e in s.callback_errors]}))
    """)
    result = _result(proc)
    assert result["sent"] == list(range(1, 21))
    assert result["replied"] == list(range(1, 21))
    assert result["types"] == [14]
    assert not result["main_thread_used"]
    assert result["errors"] == []


def test_a_failing_handler_does_not_stop_delivery(scenario, kit):
    require(kit, *LOGIN, *ORDERS)
    proc = scenario.run("""
        def boom(event):
            raise ValueError("handler bug")
        with SIM.logged_in(BUILD, WORK, on_reply=boom) as s:
            orders = [s.buy_async("1001", "600000", 100, 10.0, request_no=i) for i in (1, 2)]
            got = s.events.wait_for(kind="reply", timeout=10, count=2)
            print(json.dumps({"replies": len(got), "applied": [o.order_no > 0 for o in orders],
                              "errors": [str(e) for e in s.callback_errors]}))
    """)
    assert _result(proc) == {"replies": 2, "applied": [True, True],
                             "errors": ["handler bug", "handler bug"]}
    assert "ValueError: handler bug" in proc.stderr


def test_session_cleans_up_connections_sessions_and_callbacks(scenario, kit):
    require(kit, *LOGIN, *ORDERS)
    proc = scenario.run("""
        sim = SIM.Sim(BUILD)
        s = SIM.logged_in(BUILD, WORK)
        order = s.buy_async("1001", "600000", 100, 10.0, request_no=5)
        s.events.wait_for(kind="reply", request_no=5, timeout=10)
        during = sim.ConnectionCount()
        s.close()
        after = {"connections": sim.ConnectionCount(), "sessions": sim.OpenSessions()}
        # pushes after the close reach no Python callback
        sim.PushRecord(b"1001", 0, SIM.push_record("1001", 99), 402)
        sim.WaitIdle()
        late = s.events.find(order_no=99)
        ended = list(s.events.subscribe())  # a subscription ends once the session closed
        print(json.dumps({"during": during, **after, "late": len(late), "ended": ended}))
    """)
    assert _result(proc) == {"during": 4, "connections": 0, "sessions": 0, "late": 0,
                             "ended": []}


def test_pushes_arrive_complete_while_the_main_thread_calls_the_kit(scenario, kit):
    require(kit, *LOGIN, "PYSECMOLRA_QueryFundInfo")
    proc = scenario.run("""
        import threading, time
        sim = SIM.Sim(BUILD)
        inside_kit = []
        def on_push(event):
            inside_kit.append(s.records.last_error()[0])  # a kit call from a transport thread
            time.sleep(0.001)
        s = SIM.logged_in(BUILD, WORK, on_push=on_push)
        with s:
            def inject():
                for i in range(200):
                    rec = SIM.push_record("1001", 1000 + i, note="已报", cjsl=i % 2)
                    sim.PushRecord(b"1001", i % 2, rec, len(rec))
            pusher = threading.Thread(target=inject)
            pusher.start()
            queries = 0
            while pusher.is_alive() or queries < 5:
                s.funds("1001")
                queries += 1
            pusher.join()
            got = s.events.wait_for(lambda e: e.order_no >= 1000, kind="push", timeout=30,
                                    count=200)
            sim.WaitIdle()  # the last handlers may still be running
            print(json.dumps({
                "wths": sorted(e.order_no for e in got),
                "types": sorted({(e.order_no % 2, e.push_type.name) for e in got}),
                "notes": sorted({e.note for e in got}),
                "khh": sorted({e.customer for e in got}),
                "kit_calls_in_callbacks": len(inside_kit) >= 200,
                "queries": queries > 0}, ensure_ascii=False))
    """)
    result = _result(proc)
    assert result["wths"] == list(range(1000, 1200))
    assert result["types"] == [[0, "CONFIRMATION"], [1, "MATCH"]]
    assert result["notes"] == ["已报"] and result["khh"] == ["1001"]
    assert result["kit_calls_in_callbacks"] and result["queries"]


def test_order_families_ex_forms_batches_and_withdrawals(scenario, kit):
    require(kit, *LOGIN, *ORDERS, "PYSECMOLRA_BatchOrderEntrust", "SECMOLRA_ZQHGEntrust",
            "SECMOLRA_OrderWithdrawByKFSBDBH_ASync", "SECMOLRA_OrderWithdrawEx")
    proc = scenario.run("""
        from secmolra import BatchOrder, CusLoginInfo, KitError
        out = {}
        with SIM.session(BUILD, WORK) as t:
            s = t.records
            s.login(SIM.KEY, "1001", "111111")
            acc = s.accounts("1001")[0]
            who = CusLoginInfo.of("1001", gdh=acc.GDH)
            resting = s.entrust(who, acc.JYS, "600000", 1, 100, 9.5)  # Ex form, rests
            out["withdrawn_ex"] = s.withdraw(who, acc.JYS, resting) > resting
            s.entrust_async("1001", acc.JYS, "600000", 1, 100, 9.5, acc.GDH, kfsbdbh=77)
            t.events.wait_for(kind="reply", request_no=77)
            n = s.withdraw_by_kfsbdbh("1001", acc.JYS, 77, asynchronous=True, kfsbdbh=78)
            reply = t.events.wait_for(kind="reply", request_no=78)[0]
            out["withdraw_reply"] = [n, reply.data["JYLX"], reply.ok, reply.withdrawal]
            try:
                s.api.ZQHGEntrust("1001", acc.JYS, "204001", 1, 10, 2.0, 0, acc.GDH)
            except KitError as exc:
                out["zqhg"] = [type(exc).__name__, exc.code, exc.message, exc.function]
            rows = [BatchOrder(Jys=acc.JYS, Zqdm="600000", Jylb=1, Wtjg=10.0, Wtsl=100),
                    BatchOrder(Jys=acc.JYS, Zqdm="600036", Jylb=1, Wtjg=35.0, Wtsl=200)]
            out["batch"] = s.batch_entrust("1001", rows, wtpch=7)
            out["rows"] = [[r.Wth > 0, bool(r.Msg)] for r in rows]
            s.batch_entrust_async("1001", rows, wtpch=8)
            batch = t.events.wait_for(kind="reply", batch_no=8)[0]
            out["batch_reply"] = [batch.business.name, [b.order_no > 0 for b in batch.batch_orders]]
            try:
                s.batch_entrust("1001", rows * 51, wtpch=9)
            except KitError as exc:
                out["too_many"] = [exc.code, exc.message]
        print(json.dumps(out, ensure_ascii=False))
    """)
    assert _result(proc) == {
        "withdrawn_ex": True,
        "withdraw_reply": [78, 40, True, True],
        "zqhg": ["NotSupported", -222, "仅支持[JYLB_HGRQ,JYLB_HGRZ]", "SECMOLRA_ZQHGEntrust"],
        "batch": 2, "rows": [[True, True], [True, True]],
        "batch_reply": ["BATCH", [True, True]],
        "too_many": [-221, "批量委托数量超出限制[100]"]}


def test_reference_table_through_the_cursor(scenario, kit):
    require(kit, *LOGIN, "SECMOLRA_BeginQuery")
    proc = scenario.run("""
        from secmolra import KitError
        with SIM.records_session(BUILD, WORK) as s:
            s.login(SIM.KEY, "1001", "111111")
            rows = s.reference_table("D00088", [599, 9233, 9234], {599: "SH", 719: "510050"})
            try:
                s.reference_table("D00088", [9233], {599: "SH", 719: "999999"})
                refused = None
            except KitError as exc:
                refused = [type(exc).__name__, exc.code]
            print(json.dumps({"rows": rows, "refused": refused}))
    """)
    result = _result(proc)
    assert [r["9233"] for r in result["rows"]] == ["600000", "600036", "601318"]
    assert {r["599"] for r in result["rows"]} == {"SH"}
    assert all(int(r["9234"]) > 0 for r in result["rows"])
    assert result["refused"][0] == "Refused" and result["refused"][1] < 0


def test_connection_events_reach_python_with_customer_and_name(scenario, kit):
    require(kit, *LOGIN)
    proc = scenario.run("""
        sim = SIM.Sim(BUILD)
        seen = []
        with SIM.logged_in(BUILD, WORK, on_conn_event=seen.append) as s:
            trade = sim.ConnectionByAddr(b"127.0.0.1:9102", 0)
            sim.BreakConnection(trade, 7)
            broken = s.events.wait_for(kind="conn", timeout=10)[0]
            sim.RestoreConnection(trade)
            back = s.events.wait_for(kind="conn", type=0, timeout=10)[0]
            print(json.dumps({"broken": [broken.code, broken.customer, broken.name,
                                         broken.recovered, broken.data],
                              "back": [back.code, back.recovered],
                              "handled": len(seen)}))
    """)
    assert _result(proc) == {"broken": [7, "1001", "SIM", False,
                                        {"KHH": "1001", "NAME": "SIM", "EVENT": 7}],
                             "back": [0, True], "handled": 2}


def test_call_checks_names_and_arguments_before_reaching_the_kit(build):
    from secmolra import KitSession
    s = KitSession(build)  # loaded, not started: nothing here may reach the kit
    with pytest.raises(AttributeError, match="no export named NoSuchThing"):
        s.api.NoSuchThing
    with pytest.raises(TypeError, match=r"has no argument 'bogus' \(it takes key, khh, pass"):
        s.api.TradeLogin(key="SIM", bogus=1)
    with pytest.raises(TypeError, match="takes 1 arguments, got 2"):
        s.call("SECMOLRA_TradeLogout", "1001", "extra")


@pytest.mark.parametrize("name,positive", [
    ("SECMOLRA_TradeLogin", True), ("SECMOLRA_OrderEntrust_ASync", True),
    ("SECMOLRA_OrderWithdrawByKFSBDBHEx", True), ("SECMOLRA_BatchOrderWithdraw", True),
    ("SECMOLRA_BatchOrderWithdraw_ASync", False), ("PYSECMOLRA_BatchOrderEntrust", False),
    ("SECMOLRA_FXYWTradableQty", False), ("SECMOLRA_ETFBasketEntrust", False),
    ("PYSECMOLRA_QueryFundInfo", False), ("SECMOLRA_BeginQuery", True)])
def test_which_results_must_be_positive(name, positive):
    from secmolra.session import success_is_positive
    assert success_is_positive(name) is positive
