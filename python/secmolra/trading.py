"""The trading session: English-named calls that return typed models and self-tracking
orders, on top of the record-level :class:`secmolra.session.KitSession`.

    from secmolra import Session, OrderStatus
    with Session(transport_dir=..., profile_path=...) as s:
        s.login("SIM", "1001", "111111")
        order = s.buy("1001", "600000", 100, 10.0)
        order.wait(OrderStatus.FILLED, timeout=10)
"""
from __future__ import annotations

import queue
import tempfile
import threading
from dataclasses import dataclass
from pathlib import Path
from typing import (Any, Callable, Dict, Iterable, List, Optional, Sequence, Set, Union)

from . import records as rec
from .enums import Business, Category, Exchange, Side, exchange_of
from .errors import InvalidArgument, NotSupported, Refused, TransportNotFound
from .events import DEFAULT_CAPACITY, EventBuffer
from .library import TRANSPORT_FILE, Kit, PathLike, find_library, transport_beside
from .models import (CONN, PUSH, REPLY, Account, BatchItem, ConnectionEvent, EtfShare, Event,
                     Fund, Match, Node, OrderInfo, PlacementQuota, Position, Quote,
                     connection_event, parse_event)
from .orders import DEFAULT_MAX_ORDERS, Order, OrderBook, replay_match, replay_order
from .session import KitSession
from .simulated import write_profile

Handler = Callable[[Any], None]
ExchangeLike = Union[Exchange, str, None]


@dataclass(frozen=True)
class Family:
    """How one business is sent and withdrawn: the export family, the withdrawal family
    (None: no withdrawal export), whether it has asynchronous forms and whether its
    withdrawal can name the order by its request number."""

    export: str
    withdraw: Optional[str]
    asynchronous: bool = True
    by_request: bool = False


FAMILIES: Dict[Business, Family] = {
    Business.ORDINARY: Family("SECMOLRA_OrderEntrust", "Order", by_request=True),
    Business.BATCH: Family("PYSECMOLRA_BatchOrderEntrust", "Order"),
    Business.ETF_CREATE: Family("SECMOLRA_ETFEntrust", "ETF", by_request=True),
    Business.ETF_REDEEM: Family("SECMOLRA_ETFEntrust", "ETF", by_request=True),
    Business.REPO: Family("SECMOLRA_ZQHGEntrust", "ZQHG", by_request=True),
    Business.PLEDGE: Family("SECMOLRA_ZQHGCrk", "ZQHG", by_request=True),
    Business.LOF: Family("SECMOLRA_Lof", "LOF", by_request=True),
    Business.AFTER_HOURS: Family("SECMOLRA_PHDJEntrust", "PHDJ"),
    Business.ISSUE: Family("SECMOLRA_FXYW", "FXYW"),
    Business.NON_TRADING: Family("SECMOLRA_FJY", "FJY"),
    Business.BLOCK_TRADE: Family("SECMOLRA_DZJY", None, asynchronous=False),
}


class _Resync:
    """The thread that catches up after a connection came back: one pass per request,
    requests that come while it runs fold into one more pass."""

    def __init__(self, run: Callable[[], None], failed: Callable[[BaseException], None]) -> None:
        self._run, self._failed = run, failed
        self._requests: "queue.Queue[bool]" = queue.Queue()
        self._lock = threading.Lock()
        self._thread: Optional[threading.Thread] = None
        self._stopped = False
        self.passes = 0

    def request(self) -> None:
        with self._lock:  # a connection event may come while the session closes
            if self._stopped:
                return
            if self._thread is None:
                thread = threading.Thread(target=self._loop, name="secmolra-resync",
                                          daemon=True)
                thread.start()
                self._thread = thread
            self._requests.put(True)

    def stop(self) -> None:
        with self._lock:
            self._stopped = True
            thread, self._thread = self._thread, None
        if thread is not None:
            self._requests.put(False)
            thread.join(timeout=30)

    def _loop(self) -> None:
        while self._requests.get():
            while not self._requests.empty():  # fold waiting requests into this pass
                if not self._requests.get():
                    return
            try:
                self._run()
            except BaseException as exc:
                self._failed(exc)
            self.passes += 1


class Session:
    """A trading session on the kit: starts it on enter and stops it on exit.

    library, transport_dir, profile_path, log_path, write_log: as for
    :class:`secmolra.session.KitSession` (the kit is found as
    :func:`secmolra.library.find_library` says; kelapi50.dll and molra.ini are checked
    before the kit starts). event_capacity: how many events ``events`` keeps (older ones are
    dropped and counted). on_event, on_push, on_reply, on_conn_event: callables taking the
    typed event, run on the transport's threads after the event was buffered and applied
    to its order. resync: on a connection-event recovery (0), re-query the orders and
    matches of every logged-in customer and emit, marked replayed, what was missed.

    The layers below stay reachable: ``records`` (the record-level session), ``api`` (any
    export by name, checked) and ``raw`` (the ctypes functions).
    """

    def __init__(self, library: Optional[PathLike] = None, *,
                 transport_dir: Optional[PathLike] = None,
                 profile_path: Optional[PathLike] = None, log_path: Optional[PathLike] = None,
                 write_log: bool = True, event_capacity: int = DEFAULT_CAPACITY,
                 on_event: Optional[Handler] = None, on_push: Optional[Handler] = None,
                 on_reply: Optional[Handler] = None, on_conn_event: Optional[Handler] = None,
                 resync: bool = True, max_orders: int = DEFAULT_MAX_ORDERS) -> None:
        self.records = KitSession(library, transport_dir=transport_dir,
                                  profile_path=profile_path, log_path=log_path,
                                  write_log=write_log, on_text=self._on_text,
                                  on_conn=self._on_conn)
        self.kit: Kit = self.records.kit
        self.raw: Kit = self.kit
        self.api = self.records.api
        self.events = EventBuffer(event_capacity)
        self.book = OrderBook(self.events, max_orders)
        self.handlers: Dict[str, Optional[Handler]] = {PUSH: on_push, REPLY: on_reply,
                                                       CONN: on_conn_event}
        self.on_event = on_event
        self.resync_on_recovery = resync
        self.logged_in: Set[str] = set()
        self._accounts: Dict[str, List[Account]] = {}
        self._resync = _Resync(self._resync_all, self.records.callback_failed)

    @classmethod
    def simulated(cls, library: Optional[PathLike] = None, *,
                  folder: Optional[PathLike] = None, **options: Any) -> "Session":
        """A session on the simulated back end: the kit as find_library finds it (the one
        inside the package when installed from a wheel), the simulated transport that comes
        with it, and a molra.ini for it written into `folder` (default: a new temporary
        folder, which also takes the kit's log). Other options as for Session."""
        kit = find_library(library)
        transport = options.pop("transport_dir", None) or transport_beside(kit)
        if transport is None:
            raise TransportNotFound(f"no {TRANSPORT_FILE} beside {kit} or in its build folder: "
                                    "give transport_dir")
        work = Path(folder) if folder is not None else Path(tempfile.mkdtemp(prefix="molra-"))
        options.setdefault("log_path", work / "log")
        return cls(kit, transport_dir=transport, profile_path=write_profile(work / "profile"),
                   **options)

    # ---- lifecycle -------------------------------------------------------------------

    def __enter__(self) -> "Session":
        return self.start()

    def __exit__(self, *exc: object) -> None:
        self.close()

    def start(self) -> "Session":
        """Starts the kit (see :meth:`secmolra.session.KitSession.start`)."""
        self.records.start()
        return self

    def close(self) -> None:
        """Stops catching up, stops the kit and ends the event subscriptions."""
        self._resync.stop()
        try:
            self.records.close()
        finally:
            self.events.close()

    @property
    def started(self) -> bool:
        """True between start and close."""
        return self.records.started

    @property
    def transport_dir(self) -> Optional[PathLike]:
        """The folder of the kelapi50.dll this session's kit loads (None: the current one)."""
        return self.records.transport_dir

    @property
    def callback_errors(self) -> Sequence[BaseException]:
        """The last exceptions raised inside callbacks and handlers."""
        return self.records.callback_errors

    # ---- events (transport threads) --------------------------------------------------

    def _on_text(self, kind: str, msg_type: int, time: str, text: str) -> None:
        self._dispatch(parse_event(kind, msg_type, time, text))

    def _on_conn(self, khh: str, name: str, code: int) -> None:
        event = connection_event(khh, name, code)
        self._dispatch(event)
        if event.recovered and self.resync_on_recovery and self.logged_in:
            self._resync.request()

    def _dispatch(self, event: Event) -> bool:
        if not self.book.deliver(event):
            return False
        for handler in (self.on_event, self.handlers.get(event.kind)):
            if handler is not None:
                try:
                    handler(event)
                except BaseException as exc:
                    self.records.callback_failed(exc)
        return True

    def resync(self, khh: Optional[str] = None) -> List[Event]:
        """Re-queries the orders and matches of the customer (default: every logged-in
        one) and emits, marked ``replayed``, each confirmation, withdrawal and match that
        no push had brought. Returns the events emitted. Runs by itself after a
        connection came back."""
        emitted: List[Event] = []
        with self.book.lock:
            customers = [khh] if khh else sorted(self.logged_in)
        for customer in customers:
            replays = [replay_order(OrderInfo.from_record(r))
                       for r in self.records.orders(customer)]
            matches = [Match.from_record(r) for r in self.records.matches(customer)]
            # confirmations first, then the matches, the withdrawals last
            events = [r[0] for r in replays if r] + [replay_match(m) for m in matches]
            events += [r[1] for r in replays if len(r) > 1]
            emitted += [e for e in events if self._dispatch(e)]
        return emitted

    def _resync_all(self) -> None:
        self.resync()

    @property
    def resync_passes(self) -> int:
        """How many catch-up passes ran after recoveries."""
        return self._resync.passes

    # ---- login -----------------------------------------------------------------------

    def login(self, key: str, khh: str, password: str, *, node_id: Optional[int] = None,
              node: str = "", wtfs: str = "") -> int:
        """Logs the customer in on the connection key (a section of molra.ini); returns the
        token."""
        token = self.records.login(key, khh, password, node_id=node_id, node=node, wtfs=wtfs)
        with self.book.lock:  # the catch-up thread reads it
            self.logged_in.add(khh)
        return token

    def logout(self, khh: str) -> None:
        """Logs the customer out."""
        self.records.logout(khh)
        with self.book.lock:
            self.logged_in.discard(khh)
        self._accounts.pop(khh, None)

    # ---- queries ---------------------------------------------------------------------

    def funds(self, khh: str) -> List[Fund]:
        """The customer's fund accounts."""
        return [Fund.from_record(r) for r in self.records.funds(khh)]

    def accounts(self, khh: str) -> List[Account]:
        """The customer's shareholder accounts."""
        accounts = [Account.from_record(r) for r in self.records.accounts(khh)]
        self._accounts[khh] = accounts
        return accounts

    def positions(self, khh: str, code: str = "", exchange: ExchangeLike = None,
                  nonempty: bool = False) -> List[Position]:
        """The customer's holdings (of one security when `code` is given)."""
        return [Position.from_record(r) for r in self.records.positions(
            khh, jys=_jys(exchange), zqdm=code, exeflag=1 if nonempty else 0)]

    def orders(self, khh: str, code: str = "", exchange: ExchangeLike = None,
               withdrawable: bool = False) -> List[OrderInfo]:
        """The customer's orders of the day as the back end lists them."""
        return [OrderInfo.from_record(r) for r in self.records.orders(
            khh, type=1 if withdrawable else 0, jys=_jys(exchange), zqdm=code)]

    def matches(self, khh: str, code: str = "", exchange: ExchangeLike = None,
                order_no: int = 0) -> List[Match]:
        """The customer's matches of the day."""
        return [Match.from_record(r) for r in self.records.matches(
            khh, jys=_jys(exchange), zqdm=code, wth=order_no)]

    def quotes(self, khh: str, codes: Iterable[str] = ()) -> List[Quote]:
        """Latest prices of the securities the customer holds (of `codes` when given): the
        kit has no market data link, the back end reports prices with positions."""
        wanted = set(codes)
        return [Quote.from_position(p) for p in self.positions(khh)
                if not wanted or p.code in wanted]

    def etf_shares(self, khh: str, fund_code: str) -> List[EtfShare]:
        """ETF shares the customer holds of one fund."""
        return [EtfShare.from_record(r) for r in self.records.etf_shares(khh, fund_code)]

    def placement_quotas(self, khh: str, exchange: ExchangeLike = None,
                         account: str = "") -> List[PlacementQuota]:
        """New-issue placement quotas."""
        return [PlacementQuota.from_record(r)
                for r in self.records.psqy(khh, _jys(exchange), account)]

    def nodes(self, key: str, khh: str) -> List[Node]:
        """The back-end nodes of the customer on the connection key."""
        return [Node.from_record(r) for r in self.records.node_info(key, khh)]

    def tradable_quantity(self, khh: str, code: str, side: Side = Side.BUY,
                          price: float = 0.0, exchange: ExchangeLike = None,
                          account: Optional[str] = None, order_type: int = 0) -> int:
        """How much the customer can buy or sell of a security at a price."""
        where, gdh = self._where(khh, code, exchange, account)
        return self.records.tradable_qty(khh, where.value, code, int(side), price, gdh,
                                         order_type)

    # ---- orders ----------------------------------------------------------------------

    def buy(self, khh: str, code: str, quantity: int, price: float,
            exchange: ExchangeLike = None, account: Optional[str] = None,
            order_type: int = 0) -> Order:
        """Buys and returns the accepted order (the kit waits for the back end's answer);
        its status then follows the pushes. A refusal raises Refused."""
        return self.place(Business.ORDINARY, khh, code, quantity, price, Side.BUY,
                          exchange=exchange, account=account, order_type=order_type)

    def sell(self, khh: str, code: str, quantity: int, price: float,
             exchange: ExchangeLike = None, account: Optional[str] = None,
             order_type: int = 0) -> Order:
        """Sells; as :meth:`buy`."""
        return self.place(Business.ORDINARY, khh, code, quantity, price, Side.SELL,
                          exchange=exchange, account=account, order_type=order_type)

    def buy_async(self, khh: str, code: str, quantity: int, price: float,
                  exchange: ExchangeLike = None, account: Optional[str] = None,
                  order_type: int = 0, request_no: int = 0) -> Order:
        """Sends a buy without waiting: the order is PENDING until its reply; a refusal in
        the reply makes it REJECTED with ``error`` set. request_no 0: the kit makes one."""
        return self.place(Business.ORDINARY, khh, code, quantity, price, Side.BUY,
                          exchange=exchange, account=account, order_type=order_type,
                          asynchronous=True, request_no=request_no)

    def sell_async(self, khh: str, code: str, quantity: int, price: float,
                   exchange: ExchangeLike = None, account: Optional[str] = None,
                   order_type: int = 0, request_no: int = 0) -> Order:
        """Sends a sell without waiting; as :meth:`buy_async`."""
        return self.place(Business.ORDINARY, khh, code, quantity, price, Side.SELL,
                          exchange=exchange, account=account, order_type=order_type,
                          asynchronous=True, request_no=request_no)

    def etf_create(self, khh: str, code: str, quantity: int, exchange: ExchangeLike = None,
                   account: Optional[str] = None, asynchronous: bool = False) -> Order:
        """Creates ETF shares from the basket (a whole number of creation units)."""
        return self.place(Business.ETF_CREATE, khh, code, quantity, 0.0, Category.ETF_CREATE,
                          exchange=exchange, account=account, asynchronous=asynchronous)

    def etf_redeem(self, khh: str, code: str, quantity: int, exchange: ExchangeLike = None,
                   account: Optional[str] = None, asynchronous: bool = False) -> Order:
        """Redeems ETF shares for the basket."""
        return self.place(Business.ETF_REDEEM, khh, code, quantity, 0.0, Category.ETF_REDEEM,
                          exchange=exchange, account=account, asynchronous=asynchronous)

    def repo(self, khh: str, code: str, quantity: int, price: float,
             category: int = Category.REPO_LEND, exchange: ExchangeLike = None,
             account: Optional[str] = None, asynchronous: bool = False) -> Order:
        """A bond repurchase order (category REPO_LEND or REPO_BORROW)."""
        return self.place(Business.REPO, khh, code, quantity, price, category,
                          exchange=exchange, account=account, asynchronous=asynchronous)

    def pledge(self, khh: str, code: str, quantity: int, category: int = Category.PLEDGE_IN,
               exchange: ExchangeLike = None, account: Optional[str] = None,
               asynchronous: bool = False) -> Order:
        """Pledges bonds for repurchase, or takes them back (PLEDGE_IN, PLEDGE_OUT)."""
        return self.place(Business.PLEDGE, khh, code, quantity, 0.0, category,
                          exchange=exchange, account=account, asynchronous=asynchronous)

    def lof(self, khh: str, code: str, quantity: int, price: float,
            category: int = Category.FUND_SUBSCRIBE, exchange: ExchangeLike = None,
            account: Optional[str] = None, asynchronous: bool = False) -> Order:
        """A listed-fund order (FUND_SUBSCRIBE, FUND_REDEEM, ...)."""
        return self.place(Business.LOF, khh, code, quantity, price, category,
                          exchange=exchange, account=account, asynchronous=asynchronous)

    def after_hours(self, khh: str, code: str, quantity: int, price: float,
                    side: Side = Side.BUY, exchange: ExchangeLike = None,
                    account: Optional[str] = None, asynchronous: bool = False) -> Order:
        """An after-hours order at the closing price."""
        return self.place(Business.AFTER_HOURS, khh, code, quantity, price, side,
                          exchange=exchange, account=account, asynchronous=asynchronous)

    def issue(self, khh: str, code: str, quantity: int, price: float, category: int,
              exchange: ExchangeLike = None, account: Optional[str] = None,
              asynchronous: bool = False) -> Order:
        """An issuance-business order (the back end's categories 1, 3, 14, 24)."""
        return self.place(Business.ISSUE, khh, code, quantity, price, category,
                          exchange=exchange, account=account, asynchronous=asynchronous)

    def non_trading(self, khh: str, code: str, quantity: int, price: float, category: int,
                    exchange: ExchangeLike = None, account: Optional[str] = None,
                    asynchronous: bool = False) -> Order:
        """A non-trading business order (the back end's categories 11, 12, 76, 77, 212)."""
        return self.place(Business.NON_TRADING, khh, code, quantity, price, category,
                          exchange=exchange, account=account, asynchronous=asynchronous)

    def block_trade(self, khh: str, code: str, quantity: int, price: float, category: int, *,
                    counterparty_seat: str = "", contact: str = "", phone: str = "",
                    agreement: str = "", counterparty_account: str = "", match_code: int = 0,
                    flag: int = 0, exchange: ExchangeLike = None,
                    account: Optional[str] = None) -> Order:
        """A block trade (synchronous only)."""
        return self.place(Business.BLOCK_TRADE, khh, code, quantity, price, category,
                          exchange=exchange, account=account, dfxw=counterparty_seat,
                          lxr=contact, lxdh=phone, hyh=agreement, dfgdh=counterparty_account,
                          pddm=match_code, tdbz=flag)

    def place(self, business: Business, khh: str, code: str, quantity: int, price: float,
              category: int, *, exchange: ExchangeLike = None, account: Optional[str] = None,
              order_type: int = 0, asynchronous: bool = False, request_no: int = 0,
              **extra: Any) -> Order:
        """Places an order of any family. The exchange defaults to the one the security
        code belongs to, the shareholder account to the customer's on that exchange.
        Synchronous: returns the accepted order. Asynchronous: returns the PENDING order
        at once. Failures of the call raise the KitError subclass of their code."""
        family = FAMILIES[business]
        if business is Business.BATCH:
            raise InvalidArgument(-221, "batches go through Session.batch", "Session.place")
        if asynchronous and not family.asynchronous:
            raise NotSupported(-222, f"{business.name} orders have no asynchronous form",
                               "Session.place")
        where, gdh = self._where(khh, code, exchange, account)
        order = Order(khh, business, code, where, gdh, int(category), quantity, price,
                      order_type=order_type, withdrawer=self._withdraw, lock=self.book.lock)
        kwargs = dict(jys=where.value, zqdm=code, jylb=int(category), wtsl=quantity,
                      wtjg=price, ddlx=order_type, gdh=gdh, step=None, flag=b"\0", **extra)
        if asynchronous:
            kwargs["kfsbdbh"] = request_no
        number = self.records.operation(family.export, khh, asynchronous, **kwargs)
        if asynchronous:
            order.request_no = number
        else:
            order.order_no = number
        return self.book.register(order, accepted=not asynchronous)

    def batch(self, khh: str, items: Sequence[BatchItem], batch_no: int = 0,
              asynchronous: bool = False) -> List[Order]:
        """Places up to 100 ordinary orders at once; one Order per item, in order.
        Synchronous: each order is accepted with its number, or REJECTED with the back
        end's note as error. Asynchronous: the orders are PENDING until the batch reply
        (found by batch_no, which must then be given)."""
        if asynchronous and batch_no <= 0:
            raise InvalidArgument(-221, "an asynchronous batch needs its batch_no (the reply "
                                  "is found by it)", "Session.batch")
        orders, rows = [], []
        for item in items:
            where = self._exchange(khh, item.code, item.exchange)
            rows.append(rec.BatchOrder(Jys=where.value, Zqdm=item.code, Jylb=int(item.side),
                                       Wtjg=item.price, Wtsl=item.quantity,
                                       Ddlx=item.order_type))
            orders.append(Order(khh, Business.BATCH, item.code, where, "", int(item.side),
                                item.quantity, item.price, order_type=item.order_type,
                                batch_no=batch_no, withdrawer=self._withdraw,
                                lock=self.book.lock))
        if asynchronous:
            self.records.batch_entrust_async(khh, rows, batch_no)
            self.book.register_batch(batch_no, orders)
            return orders
        self.records.batch_entrust(khh, rows, batch_no)
        for order, row in zip(orders, rows):
            order.order_no = row.Wth
            if row.Wth <= 0:
                order.error = Refused(0, row.Msg, "batch")
            self.book.register(order, accepted=row.Wth > 0)
        return orders

    def withdraw(self, order: Order, asynchronous: bool = False) -> int:
        """Withdraws an order (by its order number, or by the request number it was sent
        with while the number is not known yet). Returns the withdrawal's order number, or
        its request number when asynchronous; the order's status follows with the
        withdrawal's confirmation."""
        return self._withdraw(order, asynchronous)

    def _withdraw(self, order: Order, asynchronous: bool) -> int:
        family = FAMILIES[order.business]
        if family.withdraw is None:
            raise NotSupported(-222, f"{order.business.name} orders cannot be withdrawn",
                               "Session.withdraw")
        jys = order.exchange.value
        if order.order_no:
            number = self.records.withdraw(order.customer, jys, order.order_no,
                                           family=family.withdraw, asynchronous=asynchronous)
        elif order.request_no and family.by_request:
            number = self.records.withdraw_by_kfsbdbh(order.customer, jys, order.request_no,
                                                      family=family.withdraw,
                                                      asynchronous=asynchronous)
        else:
            raise InvalidArgument(-221, f"{order!r} has no order number yet",
                                  "Session.withdraw")
        if asynchronous:
            self.book.note_withdrawal(number, order)
        else:
            order.withdrawals.append(number)
        return number

    def withdraw_batch(self, khh: str, batch_no: int) -> int:
        """Withdraws the open orders of a batch; returns the back end's answer code."""
        return self.records.batch_withdraw(khh, batch_no)

    # ---- where an order goes ---------------------------------------------------------

    def _exchange(self, khh: str, code: str, exchange: ExchangeLike) -> Exchange:
        if exchange:
            return Exchange(exchange)
        guessed = exchange_of(code)
        if guessed is not None:
            return guessed
        known = {a.exchange for a in self._cached_accounts(khh)}
        if len(known) == 1:
            return known.pop()
        raise InvalidArgument(-221, f"the exchange of {code!r} is not known: give exchange=",
                              "Session")

    def _where(self, khh: str, code: str, exchange: ExchangeLike,
               account: Optional[str]) -> tuple[Exchange, str]:
        where = self._exchange(khh, code, exchange)
        if account:
            return where, account
        found = next((a.account for a in self._cached_accounts(khh) if a.exchange == where),
                     None)
        if found is None:
            raise InvalidArgument(-221, f"customer {khh} has no shareholder account on "
                                  f"{where.value}", "Session")
        return where, found

    def _cached_accounts(self, khh: str) -> List[Account]:
        if khh not in self._accounts:
            self.accounts(khh)
        return self._accounts[khh]


def _jys(exchange: ExchangeLike) -> str:
    return Exchange(exchange).value if exchange else ""

