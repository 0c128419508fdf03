"""asyncio access to the trading session.

    async with AsyncSession(transport_dir=..., profile_path=...) as s:
        await s.login("SIM", "1001", "111111")
        order = await s.buy("1001", "600000", 100, 10.0)
        await order.filled()
        async for event in s.events():
            ...

The kit's calls block, so each awaitable call runs in a thread pool of its own. Events
cross from the transport's threads into the event loop with ``loop.call_soon_threadsafe``
in the order the session received them; an ``events()`` iterator keeps every event from
its start on (its queue is not bounded).
"""
from __future__ import annotations

import asyncio
import functools
from concurrent.futures import ThreadPoolExecutor
from typing import (Any, AsyncIterator, Callable, List, Optional, Sequence, Set, TypeVar)

from .enums import Side
from .events import EventBuffer
from .library import PathLike
from .models import (Account, BatchItem, Event, Fund, Match, OrderInfo, Position, Quote)
from .orders import Order
from .trading import ExchangeLike, Session

T = TypeVar("T")


class AsyncSession:
    """An async context manager around :class:`secmolra.trading.Session` (same arguments;
    `workers`: threads for the kit's calls). ``session`` is the wrapped session, for the
    calls that have no awaitable form here (``await s.run(s.session.etf_create, ...)``)."""

    def __init__(self, library: Optional[PathLike] = None, *, workers: int = 4,
                 **options: Any) -> None:
        self.session = Session(library, **options)
        self._executor = ThreadPoolExecutor(workers, thread_name_prefix="secmolra")
        self._queues: Set["asyncio.Queue[Optional[Event]]"] = set()
        self._loop: Optional[asyncio.AbstractEventLoop] = None

    async def __aenter__(self) -> "AsyncSession":
        self._loop = asyncio.get_running_loop()
        await self.run(self.session.start)
        return self

    async def __aexit__(self, *exc: object) -> None:
        try:
            await self.run(self.session.close)
        finally:
            for q in list(self._queues):
                q.put_nowait(None)  # ends the events() iterators
            self._executor.shutdown(wait=False)

    async def run(self, fn: Callable[..., T], *args: Any, **kwargs: Any) -> T:
        """Runs a blocking call in the session's threads and awaits its result."""
        loop = asyncio.get_running_loop()
        return await loop.run_in_executor(self._executor, functools.partial(fn, *args, **kwargs))

    @property
    def buffer(self) -> EventBuffer:
        """The session's event buffer."""
        return self.session.events

    # ---- events ----------------------------------------------------------------------

    async def events(self) -> AsyncIterator[Event]:
        """Every event from now on, in the order the session received it, until the
        session closes."""
        loop = asyncio.get_running_loop()
        q: "asyncio.Queue[Optional[Event]]" = asyncio.Queue()

        def hand_on(event: Event) -> None:
            try:
                loop.call_soon_threadsafe(q.put_nowait, event)
            except RuntimeError:  # the loop is closed
                pass

        self._queues.add(q)
        self.session.events.add_listener(hand_on)
        try:
            while True:
                event = await q.get()
                if event is None:
                    return
                yield event
        finally:
            self.session.events.remove_listener(hand_on)
            self._queues.discard(q)

    # ---- calls -----------------------------------------------------------------------

    async def login(self, key: str, khh: str, password: str, **options: Any) -> int:
        """Logs the customer in; returns the token."""
        return await self.run(self.session.login, key, khh, password, **options)

    async def logout(self, khh: str) -> None:
        """Logs the customer out."""
        await self.run(self.session.logout, khh)

    async def funds(self, khh: str) -> List[Fund]:
        """The customer's fund accounts."""
        return await self.run(self.session.funds, khh)

    async def accounts(self, khh: str) -> List[Account]:
        """The customer's shareholder accounts."""
        return await self.run(self.session.accounts, khh)

    async def positions(self, khh: str, code: str = "") -> List[Position]:
        """The customer's holdings."""
        return await self.run(self.session.positions, khh, code)

    async def orders(self, khh: str, code: str = "") -> List[OrderInfo]:
        """The customer's orders of the day as the back end lists them."""
        return await self.run(self.session.orders, khh, code)

    async def matches(self, khh: str, code: str = "") -> List[Match]:
        """The customer's matches of the day."""
        return await self.run(self.session.matches, khh, code)

    async def quotes(self, khh: str, codes: Sequence[str] = ()) -> List[Quote]:
        """Latest prices of the customer's holdings."""
        return await self.run(self.session.quotes, khh, codes)

    async def buy(self, khh: str, code: str, quantity: int, price: float,
                  exchange: ExchangeLike = None, account: Optional[str] = None) -> Order:
        """Buys; the order is accepted when this returns (see Session.buy)."""
        return await self.run(self.session.buy, khh, code, quantity, price, exchange, account)

    async def sell(self, khh: str, code: str, quantity: int, price: float,
                   exchange: ExchangeLike = None, account: Optional[str] = None) -> Order:
        """Sells; as :meth:`buy`."""
        return await self.run(self.session.sell, khh, code, quantity, price, exchange, account)

    async def buy_async(self, khh: str, code: str, quantity: int, price: float,
                        exchange: ExchangeLike = None, account: Optional[str] = None,
                        request_no: int = 0) -> Order:
        """Sends a buy without waiting for the back end (see Session.buy_async)."""
        return await self.run(self.session.buy_async, khh, code, quantity, price, exchange,
                              account, request_no=request_no)

    async def sell_async(self, khh: str, code: str, quantity: int, price: float,
                         exchange: ExchangeLike = None, account: Optional[str] = None,
                         request_no: int = 0) -> Order:
        """Sends a sell without waiting for the back end."""
        return await self.run(self.session.sell_async, khh, code, quantity, price, exchange,
                              account, request_no=request_no)

    async def batch(self, khh: str, items: Sequence[BatchItem], batch_no: int = 0,
                    asynchronous: bool = False) -> List[Order]:
        """Places a batch (see Session.batch)."""
        return await self.run(self.session.batch, khh, items, batch_no, asynchronous)

    async def withdraw(self, order: Order, asynchronous: bool = False) -> int:
        """Withdraws an order (see Session.withdraw)."""
        return await self.run(self.session.withdraw, order, asynchronous)

    async def tradable_quantity(self, khh: str, code: str, side: Side = Side.BUY,
                                price: float = 0.0) -> int:
        """How much the customer can trade (see Session.tradable_quantity)."""
        return await self.run(self.session.tradable_quantity, khh, code, side, price)

    async def resync(self, khh: Optional[str] = None) -> List[Event]:
        """Catches up with the back end (see Session.resync)."""
        return await self.run(self.session.resync, khh)
