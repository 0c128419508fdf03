"""The event buffer without the kit: bounded, indexed, waiting, subscriptions."""
import json
import threading

import pytest

from secmolra.events import EventBuffer
from secmolra.models import parse_event


def push(order_no, request_no="", khh="1001", push_type=8):
    return parse_event("push", push_type, "093000.000", json.dumps(
        {"TYPE": push_type, "KHH": khh, "WTH": order_no, "KFSBDBH": str(request_no)}))


def reply(request_no, order_no=0):
    return parse_event("reply", 14, "093000.000", json.dumps(
        {"TYPE": 14, "JYLX": 30, "KFSBDBH": request_no, "KHH": "1001", "WTH": order_no,
         "RETCODE": 1}))


def test_the_oldest_events_are_dropped_and_counted_and_leave_the_index():
    buffer = EventBuffer(capacity=100)
    for i in range(1, 1001):
        buffer.add(push(i))
    assert (len(buffer), buffer.dropped) == (100, 900)
    assert [e.seq for e in buffer.snapshot()] == list(range(901, 1001))
    assert buffer.find(order_no=900) == [] and len(buffer.find(order_no=901)) == 1
    assert len(buffer.find(kind="push")) == 100
    assert sum(len(bucket) for bucket in buffer._index.values()) == 2 * 100 + 100  # kind, type, number
    with pytest.raises(ValueError, match="at least 1"):
        EventBuffer(capacity=0)


def test_wait_for_looks_only_at_the_events_of_its_number():
    buffer = EventBuffer(capacity=30_000)
    for i in range(28_000):
        buffer.add(push(i + 1, request_no=i + 1))
    looked_at = []

    def counting(event):
        looked_at.append(event.seq)
        return True

    found = buffer.wait_for(counting, request_no=27_000, timeout=0)
    assert [e.order_no for e in found] == [27_000] and len(looked_at) == 1
    # a push's request number is text, a reply's a number: both are found by the integer
    buffer.add(reply(27_000, order_no=27_000))
    assert [e.kind for e in buffer.wait_for(request_no=27_000, count=2, timeout=0)] == \
        ["push", "reply"]
    assert buffer.wait_for(kind="reply", timeout=0)[0].request_no == 27_000


@pytest.mark.parametrize("criteria,expected", [
    ({"order_no": 2}, [2]),
    ({"kind": "push", "type": 9}, [4]),
    ({"customer": "1002"}, [3]),
    ({"order_no": 3}, [3, 4]),  # the withdrawal of order 3 is found by 3, not by its own 5
    ({"order_no": 5}, []),
    ({"request_no": 11, "order_no": 1}, [1]),
    ({"since": 2, "kind": "push"}, [3, 4]),
])
def test_wait_for_criteria(criteria, expected):
    buffer = EventBuffer()
    for e in (push(1, 11), push(2, 12), push(3, 13, khh="1002"),
              parse_event("push", 9, "t", json.dumps({"KHH": "1001", "WTH": 5, "CXWTH": 3}))):
        buffer.add(e)
    found = buffer.wait_for(count=len(expected), timeout=0, **criteria)
    assert [e.seq for e in found] == expected


def test_wait_for_waits_and_says_what_it_waited_for():
    buffer = EventBuffer()
    threading.Timer(0.05, lambda: [buffer.add(push(i)) for i in (7, 8, 8)]).start()
    assert [e.seq for e in buffer.wait_for(order_no=8, count=2, timeout=10)] == [2, 3]
    with pytest.raises(TimeoutError, match=r"1 of 2 expected events in 0.05 s \(order_no=7\)"):
        buffer.wait_for(order_no=7, count=2, timeout=0.05)


def test_subscriptions_read_every_event_in_order_and_count_what_they_missed():
    buffer = EventBuffer(capacity=10)
    buffer.add(push(1))
    late, early = buffer.subscribe(), buffer.subscribe(from_start=True)
    order = []
    buffer.add_listener(lambda e: order.append(e.seq))
    writers = [threading.Thread(target=lambda k=k: [buffer.add(push(k * 100 + i))
                                                   for i in range(5)]) for k in range(2)]
    for w in writers:
        w.start()
    got = [late.get(timeout=10).seq for _ in range(10)]
    for w in writers:
        w.join()
    assert got == list(range(2, 12)) and order == got
    assert early.get(timeout=0).seq == 2 and early.missed == 1  # seq 1 was dropped
    assert late.get(timeout=0) is None
    buffer.close()
    assert [e.seq for e in early] == list(range(3, 12))
