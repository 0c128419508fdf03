"""Orders and the book that routes events to them, without the kit: the races between a
call's answer and its pushes, withdrawals, batches, duplicates, waiting."""
import asyncio
import json
import threading

import pytest

from secmolra import records as rec
from secmolra.enums import Business, Exchange, OrderStatus
from secmolra.errors import OrderEnded, OrderTimeout, Refused
from secmolra.events import EventBuffer
from secmolra.models import Match, OrderInfo, parse_event
from secmolra.orders import Order, OrderBook, replay_match, replay_order


def push(push_type, order_no, **fields):
    data = {"TYPE": push_type, "KHH": "1001", "WTH": order_no, "JYS": "SH", "ZQDM": "600000",
            "JYLB": 1, "WTSL": 300, **fields}
    return parse_event("push", push_type, "093000.000", json.dumps(data))


def match(order_no, match_no, qty, total, price=10.0, **fields):
    return push(10, order_no, CJBH=match_no, CJSL=qty, CJJG=price, CJJE=qty * price,
                ZCJSL=total, ZCJJE=total * price, **fields)


def reply(request_no, order_no=0, code=1, note="ok", **fields):
    return parse_event("reply", 14, "093000.000", json.dumps(
        {"TYPE": 14, "JYLX": 30, "KFSBDBH": request_no, "KHH": "1001", "WTH": order_no,
         "RETCODE": code, "RETNOTE": note, **fields}))


def new_order(book, quantity=300, **kwargs):
    return Order("1001", Business.ORDINARY, "600000", Exchange.SH, "A1", 1, quantity, 10.0,
                 lock=book.lock, **kwargs)


@pytest.fixture
def book():
    return OrderBook(EventBuffer())


def placed(book, order_no=0, request_no=0, **kwargs):
    order = new_order(book, request_no=request_no, **kwargs)
    order.order_no = order_no
    return book.register(order, accepted=order_no > 0)


@pytest.mark.parametrize("events,before,status,filled", [
    # pushes that overtook the answer of the call that placed the order
    ([push(8, 5), match(5, "M1", 100, 100)], True, OrderStatus.PARTIALLY_FILLED, 100),
    ([push(8, 5), match(5, "M1", 300, 300)], False, OrderStatus.FILLED, 300),
    ([push(8, 5), match(5, "M1", 100, 100), push(9, 6, CXWTH=5, CDSL=200)], True,
     OrderStatus.PARTIALLY_WITHDRAWN, 100),
    ([push(8, 5), push(9, 6, CXWTH=5, CDSL=300)], False, OrderStatus.WITHDRAWN, 0),
    ([push(11, 5, SBJG=3, JGSM="price beyond the limit")], True, OrderStatus.REJECTED, 0),
    # the same match twice (live, then replayed after a break) counts once
    ([match(5, "M1", 100, 100), match(5, "M1", 100, 100)], False,
     OrderStatus.PARTIALLY_FILLED, 100),
    ([match(5, "M1", 100, 100), match(5, "M2", 200, 300)], True, OrderStatus.FILLED, 300),
])
def test_a_synchronous_order_follows_its_pushes_whenever_they_come(book, events, before,
                                                                   status, filled):
    for event in events if before else []:
        book.deliver(event)
    order = placed(book, order_no=5)
    for event in [] if before else events:
        book.deliver(event)
    assert (order.status, order.filled_quantity) == (status, filled)
    assert [e.seq for e in order.events] == list(range(1, len(events) + 1))
    assert len(order.matches) == len({e.match_no for e in events if e.type == 10})
    if filled:
        assert order.average_price == 10.0
    if status is OrderStatus.REJECTED:
        assert isinstance(order.error, Refused)
        assert (order.error.code, order.error.message) == (3, "price beyond the limit")


@pytest.mark.parametrize("reply_first", [True, False])
def test_an_asynchronous_order_is_found_by_its_request_number(book, reply_first):
    if reply_first:
        book.deliver(reply(77, order_no=9))
    order = placed(book, request_no=77)
    if not reply_first:
        assert order.status is OrderStatus.PENDING
        book.deliver(reply(77, order_no=9))
    book.deliver(match(9, "M1", 300, 300, KFSBDBH="77"))
    assert (order.order_no, order.status, order.filled_quantity) == (9, OrderStatus.FILLED, 300)


def test_a_refused_request_rejects_its_order_and_wait_raises_the_refusal(book):
    order = placed(book, request_no=78)
    book.deliver(reply(78, code=-103, note="insufficient funds"))
    assert order.status is OrderStatus.REJECTED and order.order_no == 0
    with pytest.raises(Refused, match=r"reply: \[-103\] insufficient funds"):
        order.wait(OrderStatus.FILLED, timeout=1)


def test_a_batch_reply_numbers_its_orders_and_their_pushes_follow(book):
    orders = [new_order(book, quantity=100, batch_no=8) for _ in range(3)]
    book.deliver(match(41, "M1", 100, 100, LSH=8))  # before the reply: waits in the buffer
    book.register_batch(8, orders)
    book.deliver(reply(0, code=1, WTPCH=8, Success=2, orders={
        "1": {"WTH": 40, "NOTE": "ok"}, "2": {"WTH": 41, "NOTE": "ok"},
        "3": {"WTH": 0, "NOTE": "insufficient funds"}}))
    assert [(o.order_no, o.status) for o in orders] == [
        (40, OrderStatus.ACCEPTED), (41, OrderStatus.FILLED), (0, OrderStatus.REJECTED)]
    assert orders[2].error.message == "insufficient funds"


def test_replayed_pushes_seen_before_are_dropped(book):
    order = placed(book, order_no=5)
    book.deliver(push(8, 5))
    row = rec.OrderRecord.Data(KHH="1001", JYS="SH", ZQDM="600000", WTH=5, JYLB=1, WTSL=300,
                               CJSL=300, CJJE=3000.0, CDSL=0, SBJG=2, CXBZ="O")
    m = rec.MatchRecord.Data(KHH="1001", JYS="SH", ZQDM="600000", WTH=5, JYLB=1, CJSL=300,
                             CJJG=10.0, CJJE=3000.0, CJBH="M9")
    replays = replay_order(OrderInfo.from_record(row)) + [replay_match(Match.from_record(m))]
    delivered = [book.deliver(e) for e in replays]
    assert delivered == [False, True]  # the confirmation was seen, the match was not
    assert replays[1].replayed and order.status is OrderStatus.FILLED
    assert order.matches[0].match_no == "M9" and order.filled_quantity == 300


@pytest.mark.parametrize("filled,withdrawn,declaration,status", [
    (100, 200, 2, OrderStatus.PARTIALLY_WITHDRAWN),
    (0, 300, 2, OrderStatus.WITHDRAWN),
    (0, 0, 3, OrderStatus.REJECTED),
])
def test_an_order_row_replays_the_confirmation_and_withdrawal_that_were_missed(
        book, filled, withdrawn, declaration, status):
    order = placed(book, order_no=5)
    row = rec.OrderRecord.Data(KHH="1001", JYS="SH", ZQDM="600000", WTH=5, JYLB=1, WTSL=300,
                               CJSL=filled, CJJE=filled * 10.0, CDSL=withdrawn,
                               SBJG=declaration, CXBZ="O")
    withdrawal_row = rec.OrderRecord.Data(KHH="1001", WTH=6, CDSL=withdrawn, CXBZ="W")
    replays = replay_order(OrderInfo.from_record(row)) + \
        replay_order(OrderInfo.from_record(withdrawal_row))  # a withdrawal's row: nothing
    assert [book.deliver(e) for e in replays] == [True] * (2 if withdrawn else 1)
    assert (order.status, order.filled_quantity, order.withdrawn_quantity) == \
        (status, filled, withdrawn)
    assert all(e.replayed for e in order.events)
    assert [book.deliver(e) for e in replay_order(OrderInfo.from_record(row))] == \
        [False] * len(replays)  # a second pass emits nothing


def test_wait_timeout_says_which_events_arrived(book):
    order = placed(book, order_no=5)
    book.deliver(push(8, 5))
    book.deliver(match(5, "M1", 100, 100))
    with pytest.raises(OrderTimeout) as caught:
        order.wait(OrderStatus.FILLED, timeout=0.05)
    text = str(caught.value)
    assert "did not reach FILLED within 0.05 s" in text and "PARTIALLY_FILLED" in text
    assert "events: 093000.000 confirmation; 093000.000 match 100 @ 10.0" in text
    assert caught.value.order is order
    silent = placed(book, request_no=99)
    with pytest.raises(OrderTimeout, match="no reply or push arrived for it"):
        silent.wait(OrderStatus.ACCEPTED, timeout=0.01)


def test_wait_returns_at_once_for_a_step_passed_and_raises_when_the_order_ended_otherwise(book):
    order = placed(book, order_no=5)
    book.deliver(match(5, "M1", 300, 300))
    assert order.wait(OrderStatus.ACCEPTED, timeout=0) is order
    assert order.wait(OrderStatus.PARTIALLY_FILLED, timeout=0) is order
    withdrawn = placed(book, order_no=6)
    book.deliver(push(9, 7, CXWTH=6, CDSL=300))
    with pytest.raises(OrderEnded, match="ended WITHDRAWN, not FILLED"):
        withdrawn.wait(OrderStatus.FILLED, timeout=1)


def test_threads_and_tasks_wake_when_the_order_changes(book):
    order = placed(book, order_no=5)
    waiter = threading.Thread(target=lambda: order.wait(OrderStatus.FILLED, timeout=10))
    waiter.start()

    async def main():
        task = asyncio.ensure_future(order.filled(timeout=10))
        await asyncio.sleep(0.01)
        threading.Thread(target=lambda: book.deliver(match(5, "M1", 300, 300))).start()
        return await task

    assert asyncio.run(main()) is order
    waiter.join(10)
    assert not waiter.is_alive() and order._watchers == []
