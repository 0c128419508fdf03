"""The kit's packed records, each defined once as a ctypes.Structure.

Every record class also has a plain-Python twin (a dataclass generated from the same field
list): queries hand back lists of those, with texts decoded from GBK and the reserved bytes
left out. ``Record.to_data()`` and ``Record.from_data()`` convert between the two.
"""
from __future__ import annotations

import ctypes
import dataclasses
from ctypes import c_char, c_double, c_int32, c_int64
from typing import Any, ClassVar, List, Optional, Tuple, Type, TypeVar, Union

ENCODING = "gbk"
R = TypeVar("R", bound="Record")


def encode(text: Union[str, bytes, None, object]) -> Optional[bytes]:
    """A str argument as the kit's GBK bytes; bytes and None pass unchanged."""
    if text is None or isinstance(text, bytes):
        return text
    return str(text).encode(ENCODING)


def decode(raw: bytes) -> str:
    """Kit bytes up to the first NUL as str. The kit passes texts through unconverted: the
    back end's are GBK, its own messages are the bytes of its sources (UTF-8). Valid UTF-8
    is taken as such (GBK Chinese almost never is), anything else as GBK; undecodable bytes
    become U+FFFD."""
    raw = raw.split(b"\0", 1)[0]
    try:
        return raw.decode("utf-8")
    except UnicodeDecodeError:
        return raw.decode(ENCODING, errors="replace")


def _is_text(ctype: Any) -> bool:
    return isinstance(ctype, type) and issubclass(ctype, ctypes.Array) and \
        getattr(ctype, "_type_", None) is c_char


def _is_hidden(name: str) -> bool:
    return name.startswith(("Reserved", "Unused", "_"))


class Record(ctypes.LittleEndianStructure):
    """Base of the packed records. Subclasses give ``_fields_`` and ``SIZE``."""

    _pack_ = 1
    _fields_: ClassVar[List[Tuple[str, Any]]] = []
    SIZE: ClassVar[int] = 0
    DATA_NAME: ClassVar[str] = ""  # name of the dataclass twin; the class is the C record
    Data: ClassVar[Any] = None  # the generated dataclass, set by _record()

    def to_data(self) -> Any:
        """The record as its dataclass twin: texts decoded, reserved bytes left out."""
        values = {}
        for name, ctype in self._fields_:
            if _is_hidden(name):
                continue
            value = getattr(self, name)
            values[name] = decode(value) if _is_text(ctype) else value
        return self.Data(**values)

    @classmethod
    def from_data(cls: Type[R], data: Any) -> R:
        """A record filled from a dataclass twin (or any object with the same attributes);
        texts are encoded to GBK and cut at their width."""
        rec = cls()
        for name, ctype in cls._fields_:
            if _is_hidden(name) or not hasattr(data, name):
                continue
            value = getattr(data, name)
            if _is_text(ctype):
                raw = encode(value) or b""
                ctypes.memmove(ctypes.addressof(rec) + getattr(cls, name).offset, raw,
                               min(len(raw), ctypes.sizeof(ctype)))
            else:
                setattr(rec, name, value)
        return rec

    @classmethod
    def from_bytes(cls: Type[R], raw: bytes) -> R:
        """A record read from the first bytes of `raw`; ValueError when it is too short."""
        if len(raw) < ctypes.sizeof(cls):
            raise ValueError(f"{cls.__name__} needs {ctypes.sizeof(cls)} bytes, got {len(raw)}")
        return cls.from_buffer_copy(raw[: ctypes.sizeof(cls)])


def _record(cls: Type[R]) -> Type[R]:
    """Checks the stated size and generates the record's dataclass twin."""
    size = ctypes.sizeof(cls)
    assert size == cls.SIZE, f"{cls.__name__} is {size} bytes, not {cls.SIZE}"
    fields: List[Tuple[str, type, Any]] = []
    for name, ctype in cls._fields_:
        if _is_hidden(name):
            continue
        if _is_text(ctype):
            fields.append((name, str, dataclasses.field(default="")))
        elif ctype is c_double:
            fields.append((name, float, dataclasses.field(default=0.0)))
        else:
            fields.append((name, int, dataclasses.field(default=0)))
    cls.Data = dataclasses.make_dataclass(cls.DATA_NAME, fields, namespace={"Struct": cls})
    cls.Data.__module__ = __name__
    return cls


def text(width: int) -> Any:
    """A text field of `width` bytes."""
    return c_char * width


@_record
class CusLoginInfo(Record):
    """Customer login record, taken by the login and every Ex export."""

    SIZE, DATA_NAME = 605, "Login"
    _fields_ = [
        ("KHH", text(16)),
        ("GDH", text(12)),
        ("Password", text(40)),
        ("NodeID", c_int32),
        ("WTFS", text(5)),
        ("Node", text(256)),
        ("Token", c_int64),
        ("ErrorCode", c_int64),  # the account's own copy of its last error
        ("ErrorMsg", text(256)),
    ]

    @classmethod
    def of(cls, khh: str, gdh: str = "", password: str = "", node_id: int = -1,
           token: int = -1, wtfs: str = "", node: str = "") -> "CusLoginInfo":
        """A login record; node id and token -1 let the kit take them from its registry."""
        return cls.from_data(cls.Data(KHH=khh, GDH=gdh, Password=password, NodeID=node_id,
                                      WTFS=wtfs, Node=node, Token=token))


@_record
class CusNodeInfo(Record):
    """A node of the customer (node query)."""

    SIZE, DATA_NAME = 28, "CusNode"
    _fields_ = [
        ("KHH", text(16)),
        ("SystemType", c_int32),
        ("Reserved", c_int32),
        ("NodeID", c_int32),
    ]


@_record
class BatchOrderRow(Record):
    """One batch entrust row: in Jys..Ddlx, out Wth and Msg."""

    SIZE, DATA_NAME = 181, "BatchOrder"
    _fields_ = [
        ("Jys", text(3)),
        ("Zqdm", text(7)),
        ("Jylb", c_int32),
        ("Wtjg", c_double),
        ("Wtsl", c_int64),
        ("Ddlx", c_int32),
        ("Unused", text(11)),
        ("Wth", c_int64),
        ("Msg", text(128)),
    ]


@_record
class FundRecord(Record):
    """Fund query row. Amount1 and Amount2 carry the same answer key; Total is
    Amount7 + Amount1 + Amount9."""

    SIZE, DATA_NAME = 236, "Fund"
    _fields_ = [
        ("KHH", text(16)),
        ("ZJZH", text(16)),
        ("BZ", text(4)),
        ("Text2", text(16)),
        ("Amount1", c_double),
        ("Amount2", c_double),
        ("Amount3", c_double),
        ("Amount4", c_double),
        ("Amount5", c_double),
        ("Amount6", c_double),
        ("Total", c_double),
        ("Amount7", c_double),
        ("Amount8", c_double),
        ("Reserved", text(88)),
        ("Amount9", c_double),
        ("Reserved2", text(16)),
    ]


@_record
class AccountRecord(Record):
    """Shareholder-account query row: JYS exchange, GDH account, Text2 name, Text3 fund
    account, Text5 branch."""

    SIZE, DATA_NAME = 100, "Account"
    _fields_ = [
        ("KHH", text(16)),
        ("JYS", text(4)),
        ("GDH", text(12)),
        ("Text2", text(16)),
        ("Text3", text(16)),
        ("Text4", text(8)),
        ("BZ", text(4)),
        ("Text5", text(16)),
        ("Value", c_int32),
        ("Reserved", c_int32),
    ]


@_record
class PSQYRecord(Record):
    """Allotment-right query row: Value1 the main-board quota, Value2 the other quota."""

    SIZE, DATA_NAME = 48, "PSQY"
    _fields_ = [
        ("KHH", text(16)),
        ("JYS", text(4)),
        ("GDH", text(12)),
        ("Value1", c_int64),
        ("Value2", c_int64),
    ]


@_record
class OrderRecord(Record):
    """Order query row."""

    SIZE, DATA_NAME = 444, "Order"
    _fields_ = [
        ("KHH", text(16)),
        ("JYS", text(4)),
        ("GDH", text(12)),
        ("ZQDM", text(9)),
        ("ZQMC", text(33)),
        ("WTH", c_int64),
        ("JYLB", c_int32),
        ("WTSL", c_int64),
        ("WTJG", c_double),
        ("DDLX", c_int32),
        ("WTSJ", text(13)),
        ("CJSL", c_int64),
        ("CJJG", c_double),
        ("CJJE", c_double),
        ("CDSL", c_int64),
        ("SBJG", c_int32),
        ("JGSM", text(128)),
        ("CXBZ", text(2)),
        ("KFSBDBH", c_int64),
        ("WTPCH", c_int64),
        ("DJZJ", c_double),
        ("ZJZH", text(31)),
        ("BZ", text(4)),
        ("Reserved", text(100)),
    ]


@_record
class MatchRecord(Record):
    """Match query row."""

    SIZE, DATA_NAME = 185, "Match"
    _fields_ = [
        ("KHH", text(16)),
        ("JYS", text(4)),
        ("GDH", text(12)),
        ("ZQDM", text(9)),
        ("ZQMC", text(33)),
        ("WTH", c_int64),
        ("JYLB", c_int32),
        ("CJSL", c_int64),
        ("CJJG", c_double),
        ("CJJE", c_double),
        ("CJBH", text(31)),
        ("CJSJ", text(13)),
        ("KFSBDBH", c_int64),
        ("Reserved", text(23)),
    ]


@_record
class PositionRecord(Record):
    """Position query row."""

    SIZE, DATA_NAME = 384, "Position"
    _fields_ = [
        ("KHH", text(16)),
        ("JYS", text(4)),
        ("GDH", text(12)),
        ("ZQDM", text(9)),
        ("ZQMC", text(33)),
        ("GFYE", c_int64),
        ("KMSL", c_int64),
        ("CBJ", c_double),
        ("ZXJ", c_double),
        ("ZXSZ", c_double),
        ("FDYK", c_double),
        ("BZ", text(4)),
        ("Reserved", text(258)),
    ]


@_record
class ETFShareRecord(Record):
    """ETF-share query row."""

    SIZE, DATA_NAME = 72, "ETFShare"
    _fields_ = [
        ("KHH", text(16)),
        ("JYS", text(4)),
        ("GDH", text(12)),
        ("JJDM", text(9)),
        ("ZQDM", text(9)),
        ("FESL", c_int64),
        ("Reserved", text(14)),
    ]


RECORDS: List[Type[Record]] = [CusLoginInfo, CusNodeInfo, BatchOrderRow, FundRecord, AccountRecord, PSQYRecord,
           OrderRecord, MatchRecord, PositionRecord, ETFShareRecord]

Login = CusLoginInfo.Data
CusNode = CusNodeInfo.Data
BatchOrder = BatchOrderRow.Data
Fund = FundRecord.Data
Account = AccountRecord.Data
PSQY = PSQYRecord.Data
Order = OrderRecord.Data
Match = MatchRecord.Data
Position = PositionRecord.Data
ETFShare = ETFShareRecord.Data
