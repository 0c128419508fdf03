"""Quick start for Python hosts: the kit on the simulated back end, a customer logged in,
funds as a table, a buy that is waited for until filled, an asynchronous buy, positions.

    python3 examples/quickstart.py              # with the package installed from its wheel
    PYTHONPATH=python python3 examples/quickstart.py build   # from a build folder
"""
import sys

from secmolra import KitError, OrderStatus, OrderTimeout, Session
from secmolra.simulated import SIM_KEY
from secmolra.tables import table

KHH, PASSWORD = "1001", "111111"


def main() -> int:
    build = sys.argv[1] if len(sys.argv) > 1 else None  # None: the kit inside the package
    try:
        with Session.simulated(build) as s:
            print("token", s.login(SIM_KEY, KHH, PASSWORD))
            print(table(s.funds(KHH), ["fund_account", "available", "frozen", "total"]))

            order = s.buy(KHH, "600000", 100, 10.0)  # returns once the back end took it
            order.wait(OrderStatus.FILLED, timeout=10)
            print(f"order {order.order_no} {order.status.name}: {order.filled_quantity} "
                  f"at {order.average_price:.2f} ({order.history()})")

            pending = s.buy_async(KHH, "600036", 100, 35.0)  # returns at once
            pending.wait(OrderStatus.ACCEPTED, timeout=10)
            print(f"request {pending.request_no} became order {pending.order_no}")

            print(table(s.positions(KHH), ["code", "name", "quantity", "sellable", "price"]))
            s.logout(KHH)
    except KitError as exc:
        print(f"{type(exc).__name__} {exc.code}: {exc.message} ({exc.function})")
        return 1
    except OrderTimeout as exc:
        print("too slow:", exc)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
