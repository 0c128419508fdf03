"""Orders that follow their replies and pushes, and the book that routes events to them.

Every event of the session passes through :meth:`OrderBook.deliver`, under one lock: the
book records what it has seen (for the catch-up after a connection break), finds the order
the event belongs to (by order number, request number or batch number), adds the event to
the buffer and applies it to the order. Events that arrive before their order is known (a
push can overtake the answer of the call that placed the order) stay in the buffer's index
and are applied when the order is registered.
"""
from __future__ import annotations

import asyncio
import json
import threading
import time
from collections import OrderedDict
from dataclasses import dataclass, field
from typing import Any, Callable, Dict, List, Optional, Set

from .enums import Business, Exchange, OrderStatus, PushType, Side, derive_status
from .errors import KitError, OrderEnded, OrderTimeout, Refused
from .events import EventBuffer
from .models import (PUSH, REFUSED_DECLARATIONS, Event, Match, OrderInfo, Push, Reply,
                     parse_event)

Withdrawer = Callable[["Order", bool], int]
DEFAULT_MAX_ORDERS = 100_000  # finished orders beyond this many are forgotten, oldest first


def _no_withdrawal(order: "Order", asynchronous: bool) -> int:
    raise RuntimeError("this order is not attached to a session")


class Order:
    """An order placed through the session. ``status``, ``order_no``, ``filled_quantity``,
    ``average_price``, ``matches``, ``withdrawn_quantity`` and ``error`` follow the replies
    and pushes as they arrive (on the transport's threads); ``events`` lists them."""

    def __init__(self, customer: str, business: Business, code: str, exchange: Exchange,
                 account: str, category: int, quantity: int, price: float, *,
                 order_type: int = 0, request_no: int = 0, batch_no: int = 0,
                 withdrawer: Withdrawer = _no_withdrawal,
                 lock: Optional["threading.RLock"] = None) -> None:
        self.customer = customer
        self.business = business
        self.code = code
        self.exchange = exchange
        self.account = account
        self.category = category
        self.side = Side.of(category)
        self.quantity = quantity
        self.price = price
        self.order_type = order_type
        self.request_no = request_no
        self.batch_no = batch_no
        self.order_no = 0
        self.status = OrderStatus.PENDING
        self.filled_quantity = 0
        self.filled_amount = 0.0
        self.withdrawn_quantity = 0
        self.matches: List[Match] = []
        self.error: Optional[KitError] = None           # why it was rejected
        self.withdraw_error: Optional[KitError] = None  # a refused asynchronous withdrawal
        self.withdrawals: List[int] = []  # numbers of the withdrawals sent for it
        self.events: List[Event] = []
        self._accepted = False
        self._match_nos: Set[str] = set()
        self._watchers: List[Callable[[], None]] = []
        self._withdrawer = withdrawer
        # The book's lock: every change happens under it, and waiters wait on it.
        self._cond = threading.Condition(lock if lock is not None else threading.RLock())

    # ---- reading ---------------------------------------------------------------------

    @property
    def average_price(self) -> float:
        """The average match price, 0.0 before the first match."""
        return self.filled_amount / self.filled_quantity if self.filled_quantity else 0.0

    @property
    def open(self) -> bool:
        """True while more can happen to the order."""
        return not self.status.final

    def reached(self, status: OrderStatus) -> bool:
        """True once the order got as far as `status`: ACCEPTED counts as reached by every
        later step, PARTIALLY_FILLED by any match; the others must be the status itself."""
        if status is OrderStatus.ACCEPTED:
            return self.status not in (OrderStatus.PENDING, OrderStatus.REJECTED)
        if status is OrderStatus.PARTIALLY_FILLED:
            return self.filled_quantity > 0
        return self.status is status

    def as_dict(self) -> Dict[str, Any]:
        """The order's state as plain values (for tables and frames)."""
        return {"customer": self.customer, "business": self.business.value,
                "exchange": self.exchange.value, "code": self.code, "account": self.account,
                "side": self.side.name if self.side else str(self.category),
                "quantity": self.quantity, "price": self.price, "order_no": self.order_no,
                "request_no": self.request_no, "status": self.status.value,
                "filled_quantity": self.filled_quantity, "average_price": self.average_price,
                "withdrawn_quantity": self.withdrawn_quantity,
                "error": str(self.error) if self.error else ""}

    def __repr__(self) -> str:
        side = self.side.name if self.side else f"category {self.category}"
        return (f"<Order {self.customer} {side} {self.quantity} {self.exchange.value}."
                f"{self.code} @ {self.price} no={self.order_no} request={self.request_no} "
                f"{self.status.name} filled={self.filled_quantity}>")

    # ---- waiting ---------------------------------------------------------------------

    def wait(self, *statuses: OrderStatus, timeout: float = 30.0) -> "Order":
        """Waits until the order reached one of `statuses` (default: any final status)
        and returns it. Raises the order's error when it was rejected, OrderEnded when it
        ended otherwise, and OrderTimeout (listing the events that did arrive) on time-out."""
        targets = statuses or tuple(s for s in OrderStatus if s.final)
        with self._cond:
            self._cond.wait_for(lambda: self._settled(targets), timeout)
            return self._outcome(targets, timeout)

    async def wait_async(self, *statuses: OrderStatus, timeout: float = 30.0) -> "Order":
        """:meth:`wait` for an asyncio task: the order's changes reach the event loop
        through ``loop.call_soon_threadsafe``."""
        targets = statuses or tuple(s for s in OrderStatus if s.final)
        loop = asyncio.get_running_loop()
        settled: asyncio.Future[None] = loop.create_future()

        def check() -> None:
            if not settled.done() and self._settled(targets):
                settled.set_result(None)

        def watcher() -> None:
            try:
                loop.call_soon_threadsafe(check)
            except RuntimeError:  # the loop is closed
                pass

        with self._cond:
            self._watchers.append(watcher)
        try:
            check()
            await asyncio.wait_for(asyncio.shield(settled), timeout)
        except asyncio.TimeoutError:
            pass
        finally:
            with self._cond:
                self._watchers.remove(watcher)
        with self._cond:
            return self._outcome(targets, timeout)

    async def filled(self, timeout: float = 30.0) -> "Order":
        """Waits (asyncio) until the order is filled."""
        return await self.wait_async(OrderStatus.FILLED, timeout=timeout)

    def _settled(self, targets: tuple[OrderStatus, ...]) -> bool:
        return any(self.reached(t) for t in targets) or self.status.final

    def _outcome(self, targets: tuple[OrderStatus, ...], timeout: float) -> "Order":
        if any(self.reached(t) for t in targets):
            return self
        names = " or ".join(t.name for t in targets)
        if not self.status.final:
            raise OrderTimeout(f"{self!r} did not reach {names} within {timeout} s; "
                               f"{self.history()}", self)
        if self.error is not None:
            raise self.error
        raise OrderEnded(f"{self!r} ended {self.status.name}, not {names}; {self.history()}",
                         self)

    def history(self) -> str:
        """What arrived for the order, one short item per event."""
        if not self.events:
            return "no reply or push arrived for it"
        return "events: " + "; ".join(_describe(e) for e in self.events)

    # ---- withdrawing -----------------------------------------------------------------

    def withdraw(self, asynchronous: bool = False) -> int:
        """Withdraws the order; returns the withdrawal's order number (or, asynchronous,
        its request number). The status follows with the withdrawal's confirmation."""
        return self._withdrawer(self, asynchronous)

    async def withdraw_async(self) -> int:
        """:meth:`withdraw` run in the default executor (the kit's call blocks)."""
        return await asyncio.get_running_loop().run_in_executor(None, self.withdraw, False)

    # ---- applying events (under the book's lock) ---------------------------------------

    def _apply(self, event: Event) -> None:
        self.events.append(event)
        if isinstance(event, Push):
            self._apply_push(event)
        elif isinstance(event, Reply):
            self._apply_reply(event)
        self._changed()

    def _apply_push(self, push: Push) -> None:
        if push.push_type is PushType.WITHDRAWAL:
            self._accepted = True
            self.withdrawn_quantity = max(self.withdrawn_quantity, push.withdrawn_quantity)
            return
        if not self.order_no:
            self.order_no = push.order_no
        if push.push_type is PushType.REFUSED:
            self.error = Refused(push.declaration, push.note, "exchange")
        self._accepted = True
        if push.push_type is PushType.MATCH and push.match_no not in self._match_nos:
            if push.match_no:  # a match is counted once, whether live or replayed
                self._match_nos.add(push.match_no)
            self.matches.append(Match.from_push(push))
        self._fill(push.filled_quantity, push.filled_amount)

    def _fill(self, total_quantity: int, total_amount: float) -> None:
        matched = sum(m.quantity for m in self.matches)
        if total_quantity >= max(matched, self.filled_quantity):
            self.filled_quantity, self.filled_amount = total_quantity, total_amount
        if matched > self.filled_quantity:
            self.filled_quantity = matched
            self.filled_amount = sum(m.amount for m in self.matches)

    def _apply_reply(self, reply: Reply) -> None:
        if reply.withdrawal:
            if not reply.ok:
                self.withdraw_error = Refused(reply.code, reply.note, "withdrawal")
            return
        if reply.ok:
            self._accept(reply.order_no)
        else:
            self.error = Refused(reply.code, reply.note, "reply")

    def _accept(self, order_no: int) -> None:
        self._accepted = True
        self.order_no = self.order_no or order_no

    def _changed(self) -> None:
        self.status = derive_status(self._accepted, self.error is not None, self.quantity,
                                    self.filled_quantity, self.withdrawn_quantity)
        for watcher in list(self._watchers):
            watcher()
        self._cond.notify_all()


def _describe(event: Event) -> str:
    mark = " (replayed)" if event.replayed else ""
    if isinstance(event, Push):
        what = {PushType.MATCH: f"match {event.match_quantity} @ {event.match_price}",
                PushType.WITHDRAWAL: f"withdrawal of {event.withdrawn_quantity}",
                PushType.REFUSED: f"refused: {event.note}"}.get(event.push_type, "confirmation")
        return f"{event.time} {what}{mark}"
    if isinstance(event, Reply):
        return f"{event.time} reply {event.code} {event.note}{mark}"
    return f"{event.time} {event.kind} {event.type}{mark}"


@dataclass
class _Seen:
    """What a customer's pushes have shown so far: order numbers confirmed, orders whose
    withdrawal was confirmed, match numbers."""

    confirmed: Set[int] = field(default_factory=set)
    withdrawn: Set[int] = field(default_factory=set)
    matches: Set[str] = field(default_factory=set)

    def has(self, push: Push) -> bool:
        if push.push_type is PushType.MATCH:
            return bool(push.match_no) and push.match_no in self.matches
        if push.push_type is PushType.WITHDRAWAL:
            return push.withdrawn_order_no in self.withdrawn
        return push.order_no in self.confirmed

    def add(self, push: Push) -> None:
        if push.push_type is PushType.MATCH:
            if push.match_no:
                self.matches.add(push.match_no)
        elif push.push_type is PushType.WITHDRAWAL:
            self.withdrawn.add(push.withdrawn_order_no)
            self.confirmed.add(push.order_no)
        else:
            self.confirmed.add(push.order_no)


class OrderBook:
    """Routes the session's events to its orders (see the module's description)."""

    def __init__(self, buffer: EventBuffer, max_orders: int = DEFAULT_MAX_ORDERS) -> None:
        self.buffer = buffer
        self.max_orders = max_orders
        self.lock = threading.RLock()
        self._orders: "OrderedDict[int, Order]" = OrderedDict()  # by id(), oldest first
        self._by_no: Dict[int, Order] = {}
        self._by_request: Dict[int, Order] = {}
        self._by_batch: Dict[int, List[Order]] = {}
        self._withdrawal_requests: Dict[int, Order] = {}
        self._seen: Dict[str, _Seen] = {}
        self._claimed: Set[int] = set()  # sequence numbers of events an order took

    def orders(self) -> List[Order]:
        """The orders the book follows, oldest first."""
        with self.lock:
            return list(self._orders.values())

    def deliver(self, event: Event) -> bool:
        """Buffers the event and applies it to its order. A replayed push that was seen
        already is dropped: False."""
        with self.lock:
            if isinstance(event, Push):
                seen = self._seen.setdefault(event.customer, _Seen())
                if event.replayed and seen.has(event):
                    return False
                seen.add(event)
            self.buffer.add(event)
            self._route(event)
        return True

    def _route(self, event: Event) -> None:
        if isinstance(event, Reply) and event.batch_no and event.batch_no in self._by_batch:
            self._claim(event)
            self._apply_batch(self._by_batch.pop(event.batch_no), event)
            return
        order = self._owner(event)
        if order is not None:
            self._give(order, event)

    def _owner(self, event: Event) -> Optional[Order]:
        if isinstance(event, Push):
            if event.push_type is PushType.WITHDRAWAL:
                return self._by_no.get(event.withdrawn_order_no)
            return self._by_no.get(event.order_no) or self._by_request.get(event.request_no)
        if isinstance(event, Reply):
            if event.withdrawal:
                return self._withdrawal_requests.get(event.request_no)
            return self._by_request.get(event.request_no)
        return None

    def _claim(self, event: Event) -> None:
        self._claimed.add(event.seq)
        if len(self._claimed) > 4 * self.buffer.capacity:  # keep only what the buffer holds
            oldest = self.buffer.snapshot()[0].seq if len(self.buffer) else 0
            self._claimed = {s for s in self._claimed if s >= oldest}

    def _give(self, order: Order, event: Event) -> None:
        self._claim(event)
        with order._cond:
            order._apply(event)
        if order.order_no and order.order_no not in self._by_no:
            self._index_number(order)

    def _apply_batch(self, orders: List[Order], reply: Reply) -> None:
        results = reply.batch_orders
        for i, order in enumerate(orders):
            with order._cond:
                order.events.append(reply)
                result = results[i] if i < len(results) else None
                if reply.ok and result is not None and result.order_no > 0:
                    order._accept(result.order_no)
                else:
                    note = result.note if result is not None and result.note else reply.note
                    order.error = Refused(reply.code if reply.code <= 0 else 0, note, "batch")
                order._changed()
            if order.order_no:
                self._index_number(order)

    # ---- registering ---------------------------------------------------------------

    def register(self, order: Order, accepted: bool = False) -> Order:
        """Follows the order from now on (accepted: the back end answered with its order
        number), and applies the events that arrived for it before, by its order number
        or request number."""
        with self.lock:
            self._orders[id(order)] = order
            if accepted:
                order._accept(order.order_no)
            with order._cond:
                order._changed()
            if order.request_no:
                self._by_request[order.request_no] = order
                self._pull(order, request_no=order.request_no)
            if order.order_no:
                self._index_number(order)
            self._forget_old()
        return order

    def register_batch(self, batch_no: int, orders: List[Order]) -> None:
        """Follows the orders of an asynchronous batch; its reply gives their numbers."""
        with self.lock:
            for order in orders:
                self._orders[id(order)] = order
            self._by_batch[batch_no] = orders
            earlier = [e for e in self.buffer.find(batch_no=batch_no)
                       if e.seq not in self._claimed and isinstance(e, Reply)]
            if earlier:
                self._route(earlier[0])

    def note_withdrawal(self, request_no: int, order: Order) -> None:
        """The reply to the asynchronous withdrawal `request_no` belongs to `order`."""
        with self.lock:
            self._withdrawal_requests[request_no] = order
            self._pull(order, request_no=request_no)

    def _index_number(self, order: Order) -> None:
        self._by_no[order.order_no] = order
        self._pull(order, order_no=order.order_no)

    def _pull(self, order: Order, **keys: int) -> None:
        for event in self.buffer.find(**keys):
            if event.seq not in self._claimed:
                self._give(order, event)

    def _forget_old(self) -> None:
        while len(self._orders) > self.max_orders:
            finished = next((k for k, o in self._orders.items() if not o.open), None)
            if finished is None:
                return
            order = self._orders.pop(finished)
            for index, key in ((self._by_no, order.order_no),
                               (self._by_request, order.request_no)):
                if index.get(key) is order:
                    del index[key]


# ---- catching up after a break ------------------------------------------------------


def _now() -> str:
    t = time.time()
    return time.strftime("%H%M%S", time.localtime(t)) + f".{int(t * 1000) % 1000:03d}"


def _replayed(push_type: PushType, data: Dict[str, Any]) -> Event:
    data = {"TYPE": int(push_type), "SYS_TYPE": 4, **data}
    return parse_event(PUSH, int(push_type), _now(), json.dumps(data, ensure_ascii=False),
                       replayed=True)


def _order_fields(row: OrderInfo) -> Dict[str, Any]:
    return {"KHH": row.customer, "WTH": row.order_no, "JYS": row.exchange.value,
            "GDH": row.account, "ZQDM": row.code, "WTJG": row.price, "WTSL": row.quantity,
            "JYLB": row.category, "DDLX": row.order_type, "KFSBDBH": str(row.request_no or ""),
            "LSH": row.batch_no}


def replay_order(row: OrderInfo) -> List[Event]:
    """The pushes that an order row stands for: its confirmation (or refusal), and the
    confirmation of its withdrawal when part of it was withdrawn. A withdrawal's own row
    stands for nothing: the withdrawn order's row carries what it did."""
    if row.withdrawal:
        return []
    refused = row.declaration in REFUSED_DECLARATIONS
    confirmation = _replayed(PushType.REFUSED if refused else PushType.CONFIRMATION, {
        **_order_fields(row), "CXBZ": "O", "ZCJSL": row.filled_quantity,
        "ZCJJE": row.filled_amount, "SBJG": row.declaration, "JGSM": row.note,
        "DJZJ": row.frozen, "QRSJ": row.time})
    if row.withdrawn_quantity <= 0:
        return [confirmation]
    withdrawal = _replayed(PushType.WITHDRAWAL, {
        **_order_fields(row), "WTH": 0, "CXBZ": "W", "CXWTH": row.order_no,
        "CDSL": row.withdrawn_quantity, "ZCJSL": row.filled_quantity,
        "ZCJJE": row.filled_amount})
    return [confirmation, withdrawal]


def replay_match(match: Match) -> Event:
    """The match push that a match row stands for."""
    return _replayed(PushType.MATCH, {
        "KHH": match.customer, "WTH": match.order_no, "JYS": match.exchange.value,
        "GDH": match.account, "ZQDM": match.code, "JYLB": match.category,
        "CJBH": match.match_no, "CJSJ": match.time, "CJSL": match.quantity,
        "CJJG": match.price, "CJJE": match.amount, "KFSBDBH": str(match.request_no or "")})
