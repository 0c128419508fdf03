"""Quick start for Python hosts: start the kit on the simulated back end, log a customer in,
show funds, place a synchronous and an asynchronous order, print what comes back.

    PYTHONPATH=python python3 examples/quickstart.py [BUILD_DIR]
"""
import sys
import tempfile
import threading
from pathlib import Path

from secmolra import KitError, Session
from secmolra.simulated import SIM_KEY, write_profile

BUILD = Path(sys.argv[1] if len(sys.argv) > 1 else "build")
KHH, PASSWORD = "1001", "111111"
print_lock = threading.Lock()


def say(*args):
    # Callbacks print from transport threads too: one lock keeps the lines whole.
    with print_lock:
        print(*args, flush=True)


def show(event):
    # Runs on a transport thread, possibly next to another one: keep it short.
    say(f"{event.kind} type {event.type} at {event.time}: {event.data}")


def main() -> int:
    work = Path(tempfile.mkdtemp(prefix="molra-quickstart-"))
    profile = write_profile(work)  # molra.ini with the sim's addresses, section "SIM"
    session = Session(BUILD, transport_dir=BUILD, profile_path=profile, log_path=work / "log",
                      on_push=show, on_reply=show)
    try:
        with session:
            say("token", session.login(SIM_KEY, KHH, PASSWORD))
            for fund in session.funds(KHH):
                say(fund)
            account = session.accounts(KHH)[0]
            wth = session.entrust(KHH, account.JYS, "600000", 1, 100, 10.0, account.GDH)
            say("synchronous order", wth)
            kfsbdbh = session.entrust_async(KHH, account.JYS, "600000", 1, 100, 10.0,
                                            account.GDH)
            say("asynchronous request", kfsbdbh)
            session.events.wait_for(lambda e: e.kind == "reply" and
                                    e.data["KFSBDBH"] == kfsbdbh, timeout=10)
            session.logout(KHH)
    except KitError as exc:
        say(f"kit error {exc.code}: {exc.message} ({exc.function})")
        return 1
    except TimeoutError as exc:
        say("no reply:", exc)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
