"""The session reads errors per thread: another thread's failure never shows in this one's."""
import json

from conftest import require


def test_a_failure_on_another_thread_leaves_this_threads_error(scenario, kit):
    require(kit, "SECMOLRA_GetThreadLastError", "SECMOLRA_TradeLogout")
    proc = scenario.run("""
        import threading
        from secmolra import KitError
        with SIM.session(BUILD, WORK) as s:
            try:
                s.logout("")
            except KitError as exc:
                raised = [exc.code, exc.message]
            other = threading.Thread(
                target=lambda: s.raw.SECMOLRA_SetLastError(-206, b"other", b"f", None))
            other.start()
            other.join()
            print(json.dumps({"raised": raised, "after": list(s.kit.last_error())},
                             ensure_ascii=False))
    """)
    result = json.loads(proc.stdout.strip().splitlines()[-1])
    assert result == {"raised": [-221, "客户号不能为空"], "after": [-221, "客户号不能为空"]}
