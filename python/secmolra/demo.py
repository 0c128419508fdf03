"""Trading demo on the simulated back end.

    python3 -m secmolra.demo               # the kit and transport inside the package
    python3 -m secmolra.demo --build build # or those of a build folder

Starts the kit with the simulated transport, logs a customer in, shows funds, accounts and
positions, buys and waits for the fill, sends an asynchronous buy, places a batch, rests an
order and withdraws it, prints the pushes and replies as they arrive, and logs out. Exits 0
on success; on a failure it names the step and the error.
"""
from __future__ import annotations

import argparse
import sys
import threading
from pathlib import Path
from typing import List, Optional, Sequence, Tuple

from . import BatchItem, Event, KitError, OrderEnded, OrderStatus, Session
from .library import TRANSPORT_FILE
from .models import ConnectionEvent, Push
from .simulated import SIM_KEY
from .tables import cell, fit, pad, table, terminal_safe

_print_lock = threading.Lock()


def say(*lines: str) -> None:
    """Prints whole lines at once: handlers print from the transport's threads."""
    with _print_lock:
        for line in lines:
            print(line)
        sys.stdout.flush()


FUND_COLUMNS = ["fund_account", "currency", "available", "balance", "market_value", "frozen",
                "total"]
ACCOUNT_COLUMNS = ["exchange", "account", "currency"]
POSITION_COLUMNS = ["exchange", "code", "name", "quantity", "sellable", "cost_price", "price",
                    "market_value", "profit"]
ORDER_COLUMNS = ["order_no", "code", "side", "quantity", "price", "filled_quantity",
                 "withdrawn_quantity", "withdrawal", "status", "request_no"]
# (heading, width, value) of the event rows; pushes and replies print under their header.
PUSH_COLUMNS: List[Tuple[str, int, str]] = [
    ("time", 10, "time"), ("push", 12, "push_type"), ("order", 8, "order_no"),
    ("code", 6, "code"), ("side", 4, "side"), ("qty", 6, "quantity"), ("price", 8, "price"),
    ("matched", 7, "match_quantity"), ("at", 8, "match_price"),
    ("withdrawn", 9, "withdrawn_order_no"), ("request", 16, "request_no"), ("note", 20, "note")]
REPLY_COLUMNS: List[Tuple[str, int, str]] = [
    ("time", 10, "time"), ("reply", 11, "business"), ("request", 16, "request_no"),
    ("batch", 5, "batch_no"), ("order", 8, "order_no"), ("retcode", 7, "code"),
    ("note", 24, "note")]


class EventPrinter:
    """Prints each push and reply as one table row, repeating the header when the kind of
    row changes."""

    def __init__(self) -> None:
        self.last_kind: Optional[str] = None

    def __call__(self, event: Event) -> None:
        if isinstance(event, ConnectionEvent):
            say(f"  connection {event.name} of {event.customer}: event {event.code}")
            return
        if event.data is None:
            say(f"  unreadable {event.kind}: {event.text}")
            return
        columns = PUSH_COLUMNS if isinstance(event, Push) else REPLY_COLUMNS
        row = "  " + "  ".join(pad(fit(cell(getattr(event, name, "")), w), w)
                               for _, w, name in columns)
        with _print_lock:
            if self.last_kind != event.kind:
                self.last_kind = event.kind
                print("  " + "  ".join(pad(h, w) for h, w, _ in columns).rstrip())
            print(row.rstrip() + ("  (replayed)" if event.replayed else ""))
            sys.stdout.flush()


class Step:
    """Names the step that is running, for the failure report."""

    name = "start"

    def __call__(self, name: str) -> None:
        Step.name = name
        say("", f"== {name}")


def run(args: argparse.Namespace) -> int:
    """The demo; 0 on success, 1 on a failure (reported)."""
    step = Step()
    printer = EventPrinter()
    khh, code, price = args.khh, args.security, args.price
    options = {"transport_dir": args.transport_dir or args.build} \
        if args.transport_dir or args.build else {}
    try:
        step("start the kit")
        session = Session.simulated(args.library or args.build, on_push=printer,
                                    on_reply=printer, on_conn_event=printer, **options)
        with session:
            say(f"kit {session.kit.path}",
                f"transport {Path(session.records.transport_dir or '.') / TRANSPORT_FILE}",
                f"profile {session.records.profile_dir() / 'molra.ini'}")
            step(f"log customer {khh} in")
            say(f"token {session.login(SIM_KEY, khh, args.password)}")

            step("funds")
            say(table(session.funds(khh), FUND_COLUMNS))
            step("shareholder accounts")
            say(table(session.accounts(khh), ACCOUNT_COLUMNS))
            step("positions")
            say(table(session.positions(khh), POSITION_COLUMNS))

            step(f"buy 100 {code} at {price} and wait for the fill")
            order = session.buy(khh, code, 100, price)
            say(f"order number {order.order_no}")
            order.wait(OrderStatus.FILLED, timeout=args.timeout)
            say(f"filled {order.filled_quantity} at {order.average_price:.3f}")

            step(f"asynchronous buy of 200 {code} at {price}")
            pending = session.buy_async(khh, code, 200, price)
            say(f"request number {pending.request_no}")
            pending.wait(OrderStatus.ACCEPTED, timeout=args.timeout)
            say(f"accepted as order {pending.order_no}, {pending.status.name}")

            step("batch of three buys")
            batch = session.batch(khh, [BatchItem(code, 100 * (i + 1), price) for i in range(3)],
                                  batch_no=args.batch)
            accepted = sum(1 for o in batch if o.error is None)
            say(f"{accepted} of {len(batch)} accepted", table(batch, ["code", "quantity", "price",
                                                                    "order_no", "status"]))

            low = round(price * 0.95, 2)  # below the price it rests; within 10% it is taken
            step(f"resting buy of 100 {code} at {low}, then its withdrawal")
            resting = session.buy(khh, code, 100, low)
            say(f"order number {resting.order_no}")
            say(f"withdrawal number {resting.withdraw()}")
            resting.wait(OrderStatus.WITHDRAWN, timeout=args.timeout)
            say(f"order {resting.order_no} {resting.status.name}")

            step("orders of the day")
            say(table(session.orders(khh), ORDER_COLUMNS))

            step(f"log customer {khh} out")
            session.logout(khh)
            if session.callback_errors:
                raise RuntimeError(f"callback errors: {list(session.callback_errors)}")
        say("", "demo finished")
        return 0
    except KitError as exc:
        say("", f"FAILED at step '{Step.name}': {type(exc).__name__} code {exc.code}, "
            f"message: {exc.message}" + (f" (in {exc.function})" if exc.function else ""))
    except (TimeoutError, OrderEnded, OSError, RuntimeError) as exc:
        say("", f"FAILED at step '{Step.name}': {exc}")
    return 1


def main(argv: Optional[Sequence[str]] = None) -> int:
    """The command line: python3 -m secmolra.demo [options]."""
    terminal_safe()
    parser = argparse.ArgumentParser(prog="python3 -m secmolra.demo", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", help="build folder with the kit and the transport "
                        "(default: those inside the package, else ./build)")
    parser.add_argument("--library", help="the kit library, if not in the build folder")
    parser.add_argument("--transport-dir", help="folder of kelapi50.dll (default: --build)")
    parser.add_argument("--khh", default="1001")
    parser.add_argument("--password", default="111111")
    parser.add_argument("--security", default="600000", help="security code")
    parser.add_argument("--price", type=float, default=10.0,
                        help="order price, at or above the security's reference price")
    parser.add_argument("--batch", type=int, default=1, help="batch number")
    parser.add_argument("--timeout", type=float, default=10.0)
    return run(parser.parse_args(argv))


if __name__ == "__main__":
    sys.exit(main())
