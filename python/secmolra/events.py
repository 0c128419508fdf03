"""The session's event buffer: bounded, indexed, with waiting and subscriptions.

The buffer keeps the most recent ``capacity`` events; older ones are dropped and counted in
``dropped``. Events are indexed by kind, type, order number, request number and batch
number, so :meth:`EventBuffer.wait_for` looks only at the events that carry the number it
waits for. Threaded hosts read every event in order through :meth:`EventBuffer.subscribe`;
listeners (the asyncio bridge) are called for each event in arrival order.
"""
from __future__ import annotations

import threading
import time
from collections import deque
from typing import (Any, Callable, Deque, Dict, Hashable, Iterator, List, Optional, Tuple)

from .models import Event

Predicate = Callable[[Event], bool]
Listener = Callable[[Event], None]
DEFAULT_CAPACITY = 10_000


def _index_keys(event: Event) -> List[Hashable]:
    keys: List[Hashable] = [("kind", event.kind), ("type", event.kind, event.type)]
    keys += [(name, number) for name, number in event.keys().items() if number]
    return keys


class EventBuffer:
    """The most recent events of a session, in arrival order."""

    def __init__(self, capacity: int = DEFAULT_CAPACITY) -> None:
        if capacity < 1:
            raise ValueError(f"the event buffer needs a capacity of at least 1, not {capacity}")
        self.capacity = capacity
        self.dropped = 0
        self._events: Deque[Event] = deque()
        self._index: Dict[Hashable, Deque[Event]] = {}
        self._next_seq = 1
        self._closed = False
        self._listeners: List[Listener] = []
        self._cond = threading.Condition()

    # ---- adding ----------------------------------------------------------------------

    def add(self, event: Event) -> Event:
        """Numbers the event, keeps it (dropping the oldest when full), indexes it, calls
        the listeners and wakes the waiters. Returns the event."""
        with self._cond:
            event.seq = self._next_seq
            self._next_seq += 1
            self._events.append(event)
            for key in _index_keys(event):
                self._index.setdefault(key, deque()).append(event)
            while len(self._events) > self.capacity:
                self._drop_oldest()
            for listener in list(self._listeners):
                listener(event)
            self._cond.notify_all()
        return event

    def _drop_oldest(self) -> None:
        old = self._events.popleft()
        self.dropped += 1
        for key in _index_keys(old):
            bucket = self._index[key]
            bucket.popleft()  # the oldest event of every bucket it is in
            if not bucket:
                del self._index[key]

    def add_listener(self, listener: Listener) -> None:
        """Calls `listener(event)` for every later event, in arrival order, on the thread
        that delivers it and while the buffer is locked: it must only hand the event on."""
        with self._cond:
            self._listeners.append(listener)

    def remove_listener(self, listener: Listener) -> None:
        """Stops calling `listener`."""
        with self._cond:
            if listener in self._listeners:
                self._listeners.remove(listener)

    def close(self) -> None:
        """Ends every subscription once it has read what is left."""
        with self._cond:
            self._closed = True
            self._cond.notify_all()

    # ---- reading ---------------------------------------------------------------------

    def __len__(self) -> int:
        with self._cond:
            return len(self._events)

    def snapshot(self) -> List[Event]:
        """The events in the buffer, oldest first."""
        with self._cond:
            return list(self._events)

    def clear(self) -> None:
        """Forgets the events in the buffer (they do not count as dropped)."""
        with self._cond:
            self._events.clear()
            self._index.clear()

    def find(self, **keys: Any) -> List[Event]:
        """The events in the buffer that match, oldest first (see :meth:`wait_for`)."""
        with self._cond:
            return self._matching(keys, None, 0)[0]

    def wait_for(self, predicate: Optional[Predicate] = None, timeout: float = 10.0,
                 count: int = 1, *, kind: Optional[str] = None, type: Optional[int] = None,
                 customer: Optional[str] = None, order_no: Optional[int] = None,
                 request_no: Optional[int] = None, batch_no: Optional[int] = None,
                 since: int = 0) -> List[Event]:
        """The first `count` events in the buffer (or arriving within `timeout` seconds)
        that match every criterion given: kind ("push", "reply", "conn"), type (with kind),
        customer, order_no, request_no, batch_no, a predicate, and a sequence number above
        `since`. Only the events indexed under the most selective number given are looked
        at. TimeoutError when fewer arrive."""
        keys = {name: value for name, value in (("kind", kind), ("type", type),
                ("customer", customer), ("order_no", order_no), ("request_no", request_no),
                ("batch_no", batch_no)) if value is not None}
        deadline = time.monotonic() + timeout
        with self._cond:
            found, examined = self._matching(keys, predicate, since)
            while len(found) < count:
                left = deadline - time.monotonic()
                if left <= 0:
                    raise TimeoutError(f"{len(found)} of {count} expected events in {timeout} s "
                                       f"({_describe(keys, predicate)})")
                self._cond.wait(left)
                more, examined = self._matching(keys, predicate, examined)
                found += more
            return found[:count]

    def _bucket(self, keys: Dict[str, Any]) -> Deque[Event]:
        for name in ("order_no", "request_no", "batch_no"):
            if name in keys:
                return self._index.get((name, keys[name]), deque())
        if "type" in keys:
            return self._index.get(("type", keys.get("kind"), keys["type"]), deque())
        if "kind" in keys:
            return self._index.get(("kind", keys["kind"]), deque())
        return self._events

    def _matching(self, keys: Dict[str, Any], predicate: Optional[Predicate],
                  since: int) -> Tuple[List[Event], int]:
        """The matching events after `since` in the chosen bucket, and the newest sequence
        number looked at (the next look starts there)."""
        bucket = self._bucket(keys)
        newer: List[Event] = []
        for event in reversed(bucket):  # newest first, stopping at what was looked at
            if event.seq <= since:
                break
            newer.append(event)
        newer.reverse()
        examined = max(since, self._next_seq - 1)
        return [e for e in newer if _matches(e, keys) and
                (predicate is None or predicate(e))], examined

    def subscribe(self, from_start: bool = False) -> "Subscription":
        """An iterator over every later event (every buffered one too with `from_start`),
        for threaded hosts; see :class:`Subscription`."""
        with self._cond:
            first = self._events[0].seq - 1 if from_start and self._events else self._next_seq - 1
            return Subscription(self, first)

    # ---- for Subscription ------------------------------------------------------------

    def _next_after(self, seq: int, timeout: Optional[float]) -> Tuple[Optional[Event], int]:
        """The event after `seq` and how many were dropped before it; (None, 0) on timeout
        or when the buffer is closed and read to the end."""
        deadline = None if timeout is None else time.monotonic() + timeout
        with self._cond:
            while True:
                if self._events and self._events[-1].seq > seq:
                    first = self._events[0].seq
                    missed = max(0, first - seq - 1)
                    return self._events[max(seq + 1, first) - first], missed
                if self._closed:
                    return None, 0
                left = None if deadline is None else deadline - time.monotonic()
                if left is not None and left <= 0:
                    return None, 0
                self._cond.wait(left)


def _matches(event: Event, keys: Dict[str, Any]) -> bool:
    for name, value in keys.items():
        if name == "customer":
            if event.customer != value:
                return False
        elif name in ("kind", "type"):
            if getattr(event, name) != value:
                return False
        elif event.keys().get(name) != value:
            return False
    return True


def _describe(keys: Dict[str, Any], predicate: Optional[Predicate]) -> str:
    parts = [f"{k}={v!r}" for k, v in keys.items()]
    if predicate is not None:
        parts.append("a predicate")
    return ", ".join(parts) or "any event"


class Subscription:
    """Reads the buffer's events in order from where it was made: ``get(timeout)`` or
    iteration (which ends when the session closes). When it falls more than the buffer's
    capacity behind, the oldest unread events are lost; ``missed`` counts them."""

    def __init__(self, buffer: EventBuffer, after: int) -> None:
        self._buffer = buffer
        self._last = after
        self.missed = 0

    def get(self, timeout: Optional[float] = None) -> Optional[Event]:
        """The next event, waiting up to `timeout` seconds (None: until one comes or the
        session closes); None when none came."""
        event, missed = self._buffer._next_after(self._last, timeout)
        if event is not None:
            self.missed += missed
            self._last = event.seq
        return event

    def __iter__(self) -> Iterator[Event]:
        while True:
            event = self.get()
            if event is None:
                return
            yield event
