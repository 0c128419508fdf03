"""Typed, English-named models of what the kit returns and pushes.

Query rows (funds, accounts, positions, orders, matches, ...) are built from the record
dataclasses of :mod:`secmolra.records`; pushes, replies and connection events from the
callback texts. Each model keeps what it was made from at ``.raw`` (the record dataclass,
or the parsed JSON object). Request numbers (KFSBDBH) are integers everywhere, whether the
kit sent them as text (pushes) or as numbers (replies).
"""
from __future__ import annotations

import dataclasses
import json
from dataclasses import dataclass, field
from typing import Any, Callable, Dict, List, Mapping, Optional, Tuple, Type, TypeVar

from .enums import (REPLY_BUSINESS, Business, Exchange, OrderStatus, PushType, Side,
                    derive_status)

PUSH, REPLY, CONN = "push", "reply", "conn"
REFUSED_DECLARATIONS = (3, 9)  # SBJG values of a declaration the exchange refused
M = TypeVar("M")


def to_int(value: Any) -> int:
    """An integer from a number or a decimal text (request numbers come as either); 0 for
    anything else."""
    if isinstance(value, bool):
        return int(value)
    if isinstance(value, int):
        return value
    if isinstance(value, float):
        return int(value)
    if isinstance(value, str):
        try:
            return int(value.strip() or 0)
        except ValueError:
            return 0
    return 0


def to_float(value: Any) -> float:
    """A float from a number or a text; 0.0 for anything else."""
    try:
        return float(value)
    except (TypeError, ValueError):
        return 0.0


def to_str(value: Any) -> str:
    """A text; None becomes ""."""
    return "" if value is None else str(value)


def _side(category: Any) -> Optional[Side]:
    return Side.of(to_int(category))


def _exchange(value: Any) -> Exchange:
    return Exchange(to_str(value).strip())


# (model attribute, source key, converter): one table per model.
Table = Tuple[Tuple[str, str, Callable[[Any], Any]], ...]


def _build(cls: Type[M], get: Callable[[str], Any], table: Table, **extra: Any) -> M:
    return cls(**{attr: conv(get(key)) for attr, key, conv in table}, **extra)


def _from_record(cls: Type[M], record: Any, table: Table) -> M:
    return _build(cls, lambda key: getattr(record, key), table, raw=record)


class Model:
    """Base of the models: conversion to a plain dict (for tables and frames)."""

    def as_dict(self) -> Dict[str, Any]:
        """The model's fields without ``raw``, enums as their plain values."""
        out: Dict[str, Any] = {}
        for f in dataclasses.fields(self):
            if f.name == "raw":
                continue
            value = getattr(self, f.name)
            out[f.name] = value.value if isinstance(value, (Side, Exchange, OrderStatus,
                                                            Business, PushType)) else value
        return out


# ---- query rows ----------------------------------------------------------------------


@dataclass
class Fund(Model):
    """A fund account's balances (fund query)."""

    customer: str
    fund_account: str
    currency: str
    available: float
    balance: float
    withdrawable: float
    market_value: float
    opening_balance: float
    frozen: float
    total: float  # market value + available + frozen
    raw: Any = field(default=None, repr=False)

    @classmethod
    def from_record(cls, record: Any) -> "Fund":
        """From a :class:`secmolra.records.Fund`."""
        return _from_record(cls, record, _FUND)


_FUND: Table = (("customer", "KHH", str), ("fund_account", "ZJZH", str),
                ("currency", "BZ", str), ("available", "Amount1", float),
                ("balance", "Amount3", float), ("withdrawable", "Amount4", float),
                ("market_value", "Amount7", float), ("opening_balance", "Amount8", float),
                ("frozen", "Amount9", float), ("total", "Total", float))


@dataclass
class Account(Model):
    """A shareholder account (account query)."""

    customer: str
    exchange: Exchange
    account: str
    name: str
    fund_account: str
    currency: str
    raw: Any = field(default=None, repr=False)

    @classmethod
    def from_record(cls, record: Any) -> "Account":
        """From a :class:`secmolra.records.Account`."""
        return _from_record(cls, record, _ACCOUNT)


_ACCOUNT: Table = (("customer", "KHH", str), ("exchange", "JYS", _exchange),
                   ("account", "GDH", str), ("name", "Text2", str),
                   ("fund_account", "Text3", str), ("currency", "BZ", str))


@dataclass
class Position(Model):
    """A holding of one security (position query)."""

    customer: str
    exchange: Exchange
    account: str
    code: str
    name: str
    quantity: int
    sellable: int
    cost_price: float
    price: float
    market_value: float
    profit: float
    currency: str
    raw: Any = field(default=None, repr=False)

    @classmethod
    def from_record(cls, record: Any) -> "Position":
        """From a :class:`secmolra.records.Position`."""
        return _from_record(cls, record, _POSITION)


_POSITION: Table = (("customer", "KHH", str), ("exchange", "JYS", _exchange),
                    ("account", "GDH", str), ("code", "ZQDM", str), ("name", "ZQMC", str),
                    ("quantity", "GFYE", int), ("sellable", "KMSL", int),
                    ("cost_price", "CBJ", float), ("price", "ZXJ", float),
                    ("market_value", "ZXSZ", float), ("profit", "FDYK", float),
                    ("currency", "BZ", str))


@dataclass
class Quote(Model):
    """The latest price of a security as the back end reports it. The kit offers no market
    data link (SECMOLRA_GetQuote has none), so quotes come from the position rows."""

    exchange: Exchange
    code: str
    name: str
    price: float
    raw: Any = field(default=None, repr=False)

    @classmethod
    def from_position(cls, position: Position) -> "Quote":
        """The price of a position row."""
        return cls(position.exchange, position.code, position.name, position.price,
                   raw=position.raw)


@dataclass
class OrderInfo(Model):
    """An order as the order query reports it (the back end's view, not tracked)."""

    customer: str
    exchange: Exchange
    account: str
    code: str
    name: str
    order_no: int
    category: int
    side: Optional[Side]
    quantity: int
    price: float
    order_type: int
    time: str
    filled_quantity: int
    average_price: float
    filled_amount: float
    withdrawn_quantity: int
    declaration: int
    note: str
    withdrawal: bool  # a withdrawal's own record
    request_no: int
    batch_no: int
    frozen: float
    raw: Any = field(default=None, repr=False)

    @property
    def status(self) -> OrderStatus:
        """The status that the row's quantities and declaration result show."""
        return derive_status(True, self.declaration in REFUSED_DECLARATIONS, self.quantity,
                             self.filled_quantity, self.withdrawn_quantity)

    def as_dict(self) -> Dict[str, Any]:
        """The fields and the status."""
        return {**super().as_dict(), "status": self.status.value}

    @classmethod
    def from_record(cls, record: Any) -> "OrderInfo":
        """From a :class:`secmolra.records.Order`."""
        return _from_record(cls, record, _ORDER_INFO)


_ORDER_INFO: Table = (
    ("customer", "KHH", str), ("exchange", "JYS", _exchange), ("account", "GDH", str),
    ("code", "ZQDM", str), ("name", "ZQMC", str), ("order_no", "WTH", int),
    ("category", "JYLB", int), ("side", "JYLB", _side), ("quantity", "WTSL", int),
    ("price", "WTJG", float), ("order_type", "DDLX", int), ("time", "WTSJ", str),
    ("filled_quantity", "CJSL", int), ("average_price", "CJJG", float),
    ("filled_amount", "CJJE", float), ("withdrawn_quantity", "CDSL", int),
    ("declaration", "SBJG", int), ("note", "JGSM", str),
    ("withdrawal", "CXBZ", lambda v: to_str(v).strip() == "W"),
    ("request_no", "KFSBDBH", to_int), ("batch_no", "WTPCH", int), ("frozen", "DJZJ", float))


@dataclass
class Match(Model):
    """One match (a match query row, or a match push)."""

    customer: str
    exchange: Exchange
    account: str
    code: str
    order_no: int
    category: int
    side: Optional[Side]
    quantity: int
    price: float
    amount: float
    match_no: str
    time: str
    request_no: int
    name: str = ""
    raw: Any = field(default=None, repr=False)

    @classmethod
    def from_record(cls, record: Any) -> "Match":
        """From a :class:`secmolra.records.Match`."""
        return _from_record(cls, record, _MATCH_ROW)

    @classmethod
    def from_push(cls, push: "Push") -> "Match":
        """The match a match push reports."""
        return cls(push.customer, push.exchange, push.account, push.code, push.order_no,
                   push.category, push.side, push.match_quantity, push.match_price,
                   push.match_amount, push.match_no, push.match_time, push.request_no,
                   raw=push.data)


_MATCH_ROW: Table = (
    ("customer", "KHH", str), ("exchange", "JYS", _exchange), ("account", "GDH", str),
    ("code", "ZQDM", str), ("name", "ZQMC", str), ("order_no", "WTH", int),
    ("category", "JYLB", int), ("side", "JYLB", _side), ("quantity", "CJSL", int),
    ("price", "CJJG", float), ("amount", "CJJE", float), ("match_no", "CJBH", str),
    ("time", "CJSJ", str), ("request_no", "KFSBDBH", to_int))


@dataclass
class EtfShare(Model):
    """ETF shares held (ETF-share query)."""

    customer: str
    exchange: Exchange
    account: str
    fund_code: str
    code: str
    shares: int
    raw: Any = field(default=None, repr=False)

    @classmethod
    def from_record(cls, record: Any) -> "EtfShare":
        """From a :class:`secmolra.records.ETFShare`."""
        return _from_record(cls, record, (
            ("customer", "KHH", str), ("exchange", "JYS", _exchange), ("account", "GDH", str),
            ("fund_code", "JJDM", str), ("code", "ZQDM", str), ("shares", "FESL", int)))


@dataclass
class PlacementQuota(Model):
    """New-issue placement quotas of a shareholder account (allotment-right query)."""

    customer: str
    exchange: Exchange
    account: str
    quota: int
    other_quota: int
    raw: Any = field(default=None, repr=False)

    @classmethod
    def from_record(cls, record: Any) -> "PlacementQuota":
        """From a :class:`secmolra.records.PSQY`."""
        return _from_record(cls, record, (
            ("customer", "KHH", str), ("exchange", "JYS", _exchange), ("account", "GDH", str),
            ("quota", "Value1", int), ("other_quota", "Value2", int)))


@dataclass
class Node(Model):
    """A back-end node the customer trades on (node query)."""

    customer: str
    system_type: int
    node_id: int
    raw: Any = field(default=None, repr=False)

    @classmethod
    def from_record(cls, record: Any) -> "Node":
        """From a :class:`secmolra.records.CusNode`."""
        return _from_record(cls, record, (("customer", "KHH", str),
                                          ("system_type", "SystemType", int),
                                          ("node_id", "NodeID", int)))


@dataclass
class BatchItem(Model):
    """One order of a batch: what to send."""

    code: str
    quantity: int
    price: float
    side: Side = Side.BUY
    exchange: Optional[Exchange] = None  # None: from the security code
    order_type: int = 0
    raw: Any = field(default=None, repr=False)


# ---- events --------------------------------------------------------------------------


@dataclass
class Event(Model):
    """Something the kit delivered on a transport thread: a push (``kind`` "push", type 8
    to 11), a reply to an asynchronous request ("reply", type 14) or a connection event
    ("conn", type: the event code). ``data`` is the parsed JSON object (None when the text
    was not JSON), ``text`` the text as received. ``replayed`` marks events the session
    made up from queries after a connection came back (see Session.resync); ``seq`` is the
    arrival number in the session's event buffer."""

    kind: str
    type: int
    time: str
    data: Optional[Dict[str, Any]]
    text: str
    customer: str = ""
    replayed: bool = False
    seq: int = 0

    @property
    def raw(self) -> Optional[Dict[str, Any]]:
        """The parsed JSON object, as for the other models."""
        return self.data

    def keys(self) -> Dict[str, int]:
        """The numbers this event can be found by: order_no, request_no, batch_no."""
        return {}


@dataclass
class Push(Event):
    """A confirmation (8), withdrawal confirmation (9), match report (10) or refusal (11)."""

    push_type: PushType = PushType.CONFIRMATION
    order_no: int = 0
    exchange: Exchange = Exchange.NONE
    account: str = ""
    code: str = ""
    category: int = 0
    side: Optional[Side] = None
    price: float = 0.0
    quantity: int = 0
    order_type: int = 0
    withdrawn_quantity: int = 0
    frozen: float = 0.0
    filled_quantity: int = 0   # total matched so far (ZCJSL)
    filled_amount: float = 0.0  # total match amount so far (ZCJJE)
    match_no: str = ""
    match_time: str = ""
    match_quantity: int = 0
    match_price: float = 0.0
    match_amount: float = 0.0
    declaration: int = 0
    note: str = ""
    withdrawn_order_no: int = 0  # the order a withdrawal withdraws (CXWTH)
    batch_no: int = 0
    request_no: int = 0
    fund_account: str = ""
    currency: str = ""
    confirm_time: str = ""

    def keys(self) -> Dict[str, int]:
        """A withdrawal is found by the order it withdraws, the rest by their own number."""
        out = {"order_no": self.withdrawn_order_no or self.order_no}
        if self.request_no:
            out["request_no"] = self.request_no
        return out


_PUSH: Table = (
    ("customer", "KHH", to_str), ("order_no", "WTH", to_int), ("exchange", "JYS", _exchange),
    ("account", "GDH", to_str), ("code", "ZQDM", to_str), ("category", "JYLB", to_int),
    ("side", "JYLB", _side), ("price", "WTJG", to_float), ("quantity", "WTSL", to_int),
    ("order_type", "DDLX", to_int), ("withdrawn_quantity", "CDSL", to_int),
    ("frozen", "DJZJ", to_float), ("filled_quantity", "ZCJSL", to_int),
    ("filled_amount", "ZCJJE", to_float), ("match_no", "CJBH", to_str),
    ("match_time", "CJSJ", to_str), ("match_quantity", "CJSL", to_int),
    ("match_price", "CJJG", to_float), ("match_amount", "CJJE", to_float),
    ("declaration", "SBJG", to_int), ("note", "JGSM", to_str),
    ("withdrawn_order_no", "CXWTH", to_int), ("batch_no", "LSH", to_int),
    ("request_no", "KFSBDBH", to_int), ("fund_account", "ZJZH", to_str),
    ("currency", "BZ", to_str), ("confirm_time", "QRSJ", to_str))


@dataclass
class BatchResult(Model):
    """One row of a batch reply: the order number (0 when refused) and the note."""

    order_no: int
    note: str
    raw: Any = field(default=None, repr=False)


@dataclass
class Reply(Event):
    """The reply to an asynchronous request."""

    business: Optional[Business] = None
    withdrawal: bool = False  # the reply to a withdrawal
    request_no: int = 0
    order_no: int = 0
    placed_time: str = ""
    frozen: float = 0.0
    declaration: int = 0
    code: int = 0   # the back end's return code, above 0 when accepted
    note: str = ""
    batch_no: int = 0
    accepted_count: int = 0
    batch_orders: List[BatchResult] = field(default_factory=list)

    @property
    def ok(self) -> bool:
        """True when the back end accepted the request."""
        return self.code > 0

    def keys(self) -> Dict[str, int]:
        """Found by its request number, its order number and its batch number."""
        out = {"request_no": self.request_no}
        if self.order_no:
            out["order_no"] = self.order_no
        if self.batch_no:
            out["batch_no"] = self.batch_no
        return out


_REPLY: Table = (
    ("customer", "KHH", to_str), ("request_no", "KFSBDBH", to_int),
    ("order_no", "WTH", to_int), ("placed_time", "WTSJ", to_str), ("frozen", "DJZJ", to_float),
    ("declaration", "SBJG", to_int), ("code", "RETCODE", to_int), ("note", "RETNOTE", to_str),
    ("batch_no", "WTPCH", to_int), ("accepted_count", "Success", to_int))


@dataclass
class ConnectionEvent(Event):
    """A connection of the customer's set broke (code: the transport's break code) or all
    of them are up again (code 0)."""

    name: str = ""  # the connection section (key) of molra.ini
    code: int = 0

    @property
    def recovered(self) -> bool:
        """True when every connection of the set is up again."""
        return self.code == 0


def _batch_orders(data: Mapping[str, Any]) -> List[BatchResult]:
    rows = data.get("orders")
    if not isinstance(rows, dict):
        return []
    ordered = sorted(rows.items(), key=lambda item: to_int(item[0]))
    return [BatchResult(to_int(r.get("WTH")), to_str(r.get("NOTE")), raw=r)
            for _, r in ordered if isinstance(r, dict)]


def parse_event(kind: str, msg_type: int, time: str, text: str,
                replayed: bool = False) -> Event:
    """The typed event for a callback text (pushes and replies are JSON objects)."""
    try:
        loaded = json.loads(text)
    except ValueError:
        loaded = None
    data: Optional[Dict[str, Any]] = loaded if isinstance(loaded, dict) else None
    base: Dict[str, Any] = dict(kind=kind, type=msg_type, time=time, data=data, text=text,
                                replayed=replayed)
    source: Mapping[str, Any] = data or {}
    if kind == PUSH:
        push_type = PushType(msg_type) if msg_type in PushType._value2member_map_ \
            else PushType.CONFIRMATION
        return _build(Push, source.get, _PUSH, push_type=push_type, **base)
    if kind == REPLY:
        business, withdrawal = REPLY_BUSINESS.get(to_int(source.get("JYLX")), (None, False))
        if "WTPCH" in source and business is Business.ORDINARY:
            business = Business.BATCH
        return _build(Reply, source.get, _REPLY, business=business,
                      withdrawal=withdrawal, batch_orders=_batch_orders(source), **base)
    return ConnectionEvent(customer=to_str(source.get("KHH")), name=to_str(source.get("NAME")),
                           code=to_int(source.get("EVENT")), **base)


def connection_event(khh: str, name: str, code: int) -> ConnectionEvent:
    """The event of the connection-event callback."""
    data = {"KHH": khh, "NAME": name, "EVENT": code}
    return ConnectionEvent(kind=CONN, type=code, time="", data=data,
                           text=json.dumps(data, ensure_ascii=False), customer=khh, name=name,
                           code=code)
