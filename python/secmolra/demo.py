"""Trading demo on the simulated back end.

    python3 -m secmolra.demo --build build

Starts the kit with the simulated transport of the build folder, logs a customer in, shows
funds, accounts and positions, places a synchronous and an asynchronous order, a batch and a
resting order that it then withdraws, prints the pushes and replies as they arrive, and logs
out. Exits 0 on success; on a failure it names the step, the kit's code and message.
"""
from __future__ import annotations

import argparse
import sys
import tempfile
import threading
import unicodedata
from pathlib import Path

from . import BatchOrder, KitError, Session
from .session import CONN, PUSH, PUSH_TYPES, REPLY
from .simulated import SIM_KEY, write_profile

BUY = 1
_print_lock = threading.Lock()


def say(*lines: str) -> None:
    """Prints whole lines at once: callbacks print from the transport's threads."""
    with _print_lock:
        for line in lines:
            print(line)
        sys.stdout.flush()


def _width(text: str) -> int:
    return sum(2 if unicodedata.east_asian_width(ch) in "WF" else 1 for ch in text)


def _cell(value) -> str:
    return f"{value:.3f}" if isinstance(value, float) else str(value)


def _pad(text: str, width: int) -> str:
    return text + " " * (width - _width(text))


def table(rows: list, columns: list, title: str = "") -> list:
    """Lines of a text table; rows are dataclasses or dicts, columns their field names or
    (field name, heading) pairs."""
    columns = [c if isinstance(c, tuple) else (c, c) for c in columns]
    get = (lambda r, c: r.get(c, "")) if rows and isinstance(rows[0], dict) else getattr
    cells = [[_cell(get(r, field)) for field, _ in columns] for r in rows]
    widths = [max([_width(head)] + [_width(row[i]) for row in cells])
              for i, (_, head) in enumerate(columns)]
    lines = [title] if title else []
    lines.append("  ".join(_pad(head, w) for (_, head), w in zip(columns, widths)).rstrip())
    lines.append("  ".join("-" * w for w in widths))
    lines += ["  ".join(_pad(v, w) for v, w in zip(row, widths)).rstrip() for row in cells]
    if not rows:
        lines.append("(none)")
    return lines


FUND_COLUMNS = [("ZJZH", "fund account"), ("BZ", "currency"), ("Amount1", "available"),
                ("Amount3", "balance"), ("Amount7", "market value"), ("Amount9", "frozen"),
                ("Total", "total")]
POSITION_COLUMNS = [("JYS", "exch"), ("ZQDM", "code"), ("ZQMC", "name"),
                    ("GFYE", "balance"), ("KMSL", "sellable"), ("CBJ", "cost"),
                    ("ZXJ", "price"), ("ZXSZ", "value"), ("FDYK", "profit")]
ORDER_COLUMNS = [("WTH", "order"), ("ZQDM", "code"), ("JYLB", "cat"), ("WTSL", "qty"),
                 ("WTJG", "price"), ("CJSL", "matched"), ("CDSL", "withdrawn"),
                 ("CXBZ", "flag"), ("SBJG", "result"), ("KFSBDBH", "request")]


# (column, width) of the event rows; pushes and replies print as rows under their header
PUSH_COLUMNS = [("time", 10), ("push", 12), ("WTH", 8), ("ZQDM", 6), ("JYLB", 4),
                ("WTSL", 6), ("WTJG", 8), ("CJSL", 6), ("CJJG", 8), ("CXWTH", 8),
                ("SBJG", 4), ("KFSBDBH", 16), ("JGSM", 20)]
REPLY_COLUMNS = [("time", 10), ("reply", 5), ("KFSBDBH", 16), ("WTPCH", 5), ("WTH", 8),
                 ("RETCODE", 7), ("RETNOTE", 24)]


class EventPrinter:
    """Prints each push and reply as one table row, repeating the header when the kind of
    row changes."""

    def __init__(self):
        self.last_kind = None

    def __call__(self, event) -> None:
        if event.kind == CONN:
            say(f"  connection {event.data['NAME']} of {event.data['KHH']}: "
                f"event {event.data['EVENT']}")
            return
        if event.data is None:
            say(f"  unreadable {event.kind}: {event.text}")
            return
        columns = PUSH_COLUMNS if event.kind == PUSH else REPLY_COLUMNS
        data = dict(event.data, time=event.time, push=PUSH_TYPES.get(event.type, event.type),
                    reply=event.data.get("JYLX", ""))
        row = "  " + "  ".join(_pad(_fit(_cell(data.get(c, "")), w), w) for c, w in columns)
        row = row.rstrip()
        with _print_lock:
            if self.last_kind != event.kind:
                self.last_kind = event.kind
                print("  " + "  ".join(_pad(c, w) for c, w in columns).rstrip())
            print(row)
            sys.stdout.flush()


def _fit(text: str, width: int) -> str:
    while _width(text) > width:
        text = text[:-1]
    return text


class Step:
    """Names the step that is running, for the failure report."""

    name = "start"

    def __call__(self, name: str) -> None:
        Step.name = name
        say("", f"== {name}")


def run(args) -> int:
    step = Step()
    printer = EventPrinter()
    work = Path(tempfile.mkdtemp(prefix="molra-demo-"))
    profile = write_profile(work / "profile")
    khh = args.khh
    try:
        step("start the kit")
        session = Session(args.library or args.build,
                          transport_dir=args.transport_dir or args.build,
                          profile_path=profile, log_path=work / "log",
                          on_push=printer, on_reply=printer, on_conn_event=printer)
        with session:
            say(f"kit {session.kit.path}, profile {profile / 'molra.ini'}")
            step(f"log customer {khh} in")
            say(f"token {session.login(SIM_KEY, khh, args.password)}")

            step("funds")
            say(*table(session.funds(khh), FUND_COLUMNS))
            step("shareholder accounts")
            accounts = session.accounts(khh)
            say(*table(accounts, [("JYS", "exchange"), ("GDH", "shareholder account"),
                                  ("BZ", "currency")]))
            step("positions")
            say(*table(session.positions(khh), POSITION_COLUMNS))

            jys, zqdm = args.security.split(":")
            gdh = next((a.GDH for a in accounts if a.JYS == jys), None)
            if gdh is None:
                raise KitError(0, f"customer {khh} has no shareholder account on {jys}", "demo")
            price = args.price

            step(f"synchronous buy of 100 {zqdm} at {price}")
            wth = session.entrust(khh, jys, zqdm, BUY, 100, price, gdh)
            say(f"order number {wth}")
            wait(session, lambda e: e.kind == PUSH and e.data.get("WTH") == wth,
                 "the confirmation of the synchronous order", args.timeout)

            step(f"asynchronous buy of 200 {zqdm} at {price}")
            kfsbdbh = session.entrust_async(khh, jys, zqdm, BUY, 200, price, gdh)
            say(f"request number {kfsbdbh}")
            reply = wait(session, lambda e: e.kind == REPLY and
                         e.data.get("KFSBDBH") == kfsbdbh, "the reply", args.timeout)
            if reply.data.get("RETCODE", 0) <= 0:
                raise KitError(reply.data.get("RETCODE", 0), reply.data.get("RETNOTE", ""),
                               "asynchronous order")

            step("batch of three buys")
            rows = [BatchOrder(Jys=jys, Zqdm=zqdm, Jylb=BUY, Wtjg=price, Wtsl=100 * (i + 1))
                    for i in range(3)]
            accepted = session.batch_entrust(khh, rows, wtpch=args.batch)
            say(f"{accepted} of {len(rows)} accepted",
                *table(rows, ["Jys", "Zqdm", "Wtsl", "Wtjg", "Wth", "Msg"]))

            low = round(price * 0.95, 2)  # below the price it rests; within 10% it is taken
            step(f"resting buy of 100 {zqdm} at {low}, then its withdrawal")
            resting = session.entrust(khh, jys, zqdm, BUY, 100, low, gdh)
            say(f"order number {resting}")
            withdrawal = session.withdraw(khh, jys, resting)
            say(f"withdrawal number {withdrawal}")
            wait(session, lambda e: e.kind == PUSH and e.type == 9 and
                 e.data.get("CXWTH") == resting, "the withdrawal's confirmation", args.timeout)

            step("orders of the day")
            say(*table(session.orders(khh), ORDER_COLUMNS))

            step(f"log customer {khh} out")
            session.logout(khh)
            if session.callback_errors:
                raise KitError(0, f"callback errors: {session.callback_errors}", "callbacks")
        say("", "demo finished")
        return 0
    except KitError as exc:
        say("", f"FAILED at step '{Step.name}': code {exc.code}, message: {exc.message}"
            + (f" (in {exc.function})" if exc.function else ""))
    except TimeoutError as exc:
        say("", f"FAILED at step '{Step.name}': {exc}")
    except (OSError, RuntimeError, AttributeError) as exc:
        say("", f"FAILED at step '{Step.name}': {exc}")
    return 1


def wait(session: Session, predicate, what: str, timeout: float):
    try:
        return session.events.wait_for(predicate, timeout)[0]
    except TimeoutError:
        raise TimeoutError(f"{what} did not arrive within {timeout} s") from None


def main(argv=None) -> int:
    parser = argparse.ArgumentParser(prog="python3 -m secmolra.demo", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default="build", help="build folder (kit and transport)")
    parser.add_argument("--library", help="the kit library, if not in the build folder")
    parser.add_argument("--transport-dir", help="folder of kelapi50.dll (default: --build)")
    parser.add_argument("--khh", default="1001")
    parser.add_argument("--password", default="111111")
    parser.add_argument("--security", default="SH:600000", help="exchange:code")
    parser.add_argument("--price", type=float, default=10.0,
                        help="order price, at or above the security's reference price")
    parser.add_argument("--batch", type=int, default=1, help="batch number (WTPCH)")
    parser.add_argument("--timeout", type=float, default=10.0)
    return run(parser.parse_args(argv))


if __name__ == "__main__":
    sys.exit(main())
