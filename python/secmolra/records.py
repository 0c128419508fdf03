"""The kit's packed records, each defined once as a ctypes.Structure.

Every record class also has a plain-Python twin (a dataclass generated from the same field
list): queries hand back lists of those, with texts decoded from GBK and the reserved bytes
left out. ``Record.to_data()`` and ``Record.from_data()`` convert between the two.
"""
from __future__ import annotations

import ctypes
import dataclasses
from ctypes import c_char, c_double, c_int32, c_int64

ENCODING = "gbk"


def encode(text) -> bytes | None:
    """A str argument as the kit's GBK bytes; bytes and None pass unchanged."""
    if text is None or isinstance(text, bytes):
        return text
    return str(text).encode(ENCODING)


def decode(raw: bytes) -> str:
    """GBK bytes up to the first NUL as str (undecodable bytes become U+FFFD)."""
    return raw.split(b"\0", 1)[0].decode(ENCODING, errors="replace")


def _is_text(ctype) -> bool:
    return isinstance(ctype, type) and issubclass(ctype, ctypes.Array) and ctype._type_ is c_char


def _is_hidden(name: str) -> bool:
    return name.startswith(("Reserved", "Unused", "_"))


class Record(ctypes.LittleEndianStructure):
    """Base of the packed records. Subclasses give ``_fields_`` and ``SIZE``."""

    _pack_ = 1
    SIZE = 0
    C_NAME = ""  # the record's name in include/secmolra.h
    Data = None  # the generated dataclass, set by _record()

    def to_data(self):
        values = {}
        for name, ctype in self._fields_:
            if _is_hidden(name):
                continue
            value = getattr(self, name)
            values[name] = decode(value) if _is_text(ctype) else value
        return self.Data(**values)

    @classmethod
    def from_data(cls, data) -> "Record":
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
    def from_bytes(cls, raw: bytes) -> "Record":
        if len(raw) < ctypes.sizeof(cls):
            raise ValueError(f"{cls.__name__} needs {ctypes.sizeof(cls)} bytes, got {len(raw)}")
        return cls.from_buffer_copy(raw[: ctypes.sizeof(cls)])


def _record(cls):
    """Checks the stated size and generates the record's dataclass twin."""
    size = ctypes.sizeof(cls)
    assert size == cls.SIZE, f"{cls.__name__} is {size} bytes, not {cls.SIZE}"
    fields = []
    for name, ctype in cls._fields_:
        if _is_hidden(name):
            continue
        if _is_text(ctype):
            fields.append((name, str, dataclasses.field(default="")))
        elif ctype is c_double:
            fields.append((name, float, dataclasses.field(default=0.0)))
        else:
            fields.append((name, int, dataclasses.field(default=0)))
    name = cls.__name__[:-6] if cls.__name__.endswith("Struct") else cls.__name__
    cls.Data = dataclasses.make_dataclass(name, fields, namespace={"Struct": cls})
    cls.Data.__module__ = __name__
    return cls


def text(width: int):
    return c_char * width


@_record
class CusLoginInfo(Record):
    """Customer login record, taken by the login and every Ex export."""

    SIZE = 605
    C_NAME = "CusLoginInfo"
    _fields_ = [
        ("KHH", text(16)),
        ("GDH", text(12)),
        ("Password", text(40)),
        ("NodeID", c_int32),
        ("WTFS", text(5)),
        ("Node", text(256)),
        ("Token", c_int64),
        ("ErrorCode", c_int64),
        ("ErrorMsg", text(256)),
    ]

    @classmethod
    def of(cls, khh, gdh="", password="", node_id=-1, token=-1, wtfs="", node=""):
        return cls.from_data(cls.Data(KHH=khh, GDH=gdh, Password=password, NodeID=node_id,
                                      WTFS=wtfs, Node=node, Token=token))


@_record
class CusNodeInfoStruct(Record):
    SIZE = 28
    C_NAME = "CusNodeInfo"
    _fields_ = [
        ("KHH", text(16)),
        ("SystemType", c_int32),
        ("Reserved", c_int32),
        ("NodeID", c_int32),
    ]


@_record
class BatchOrderRowStruct(Record):
    """One batch entrust row: in Jys..Ddlx, out Wth and Msg."""

    SIZE = 181
    C_NAME = "BatchOrderRow"
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
class FundInfoStruct(Record):
    SIZE = 236
    _fields_ = [
        ("KHH", text(16)),
        ("ZJZH", text(16)),
        ("BZ", text(4)),
        ("ZJZH2", text(16)),
        ("Amount1", c_double),
        ("Amount2", c_double),
        ("Amount3", c_double),
        ("Amount4", c_double),
        ("Amount5", c_double),
        ("Amount6", c_double),
        ("Total", c_double),
        ("Amount7", c_double),
        ("Amount8", c_double),
        ("Reserved1", text(88)),
        ("Amount9", c_double),
        ("Reserved2", text(16)),
    ]


@_record
class AccInfoStruct(Record):
    SIZE = 100
    _fields_ = [
        ("KHH", text(16)),
        ("JYS", text(4)),
        ("GDH", text(12)),
        ("Text2", text(16)),
        ("Text3", text(16)),
        ("Text4", text(8)),
        ("BZ", text(4)),
        ("Text5", text(16)),
        ("Flag", c_int32),
        ("Reserved", c_int32),
    ]


@_record
class PSQYStruct(Record):
    SIZE = 48
    _fields_ = [
        ("KHH", text(16)),
        ("JYS", text(4)),
        ("GDH", text(12)),
        ("Value1", c_int64),
        ("Value2", c_int64),
    ]


@_record
class OrderInfoStruct(Record):
    SIZE = 444
    _fields_ = [("Raw", text(444))]


@_record
class MatchInfoStruct(Record):
    SIZE = 185
    _fields_ = [("Raw", text(185))]


@_record
class PositionInfoStruct(Record):
    SIZE = 384
    _fields_ = [("Raw", text(384))]


@_record
class ETFShareStruct(Record):
    SIZE = 72
    _fields_ = [("Raw", text(72))]


CusNodeInfo = CusNodeInfoStruct.Data
BatchOrderRow = BatchOrderRowStruct.Data
FundInfo = FundInfoStruct.Data
AccInfo = AccInfoStruct.Data
PSQY = PSQYStruct.Data
OrderInfo = OrderInfoStruct.Data
MatchInfo = MatchInfoStruct.Data
PositionInfo = PositionInfoStruct.Data
ETFShare = ETFShareStruct.Data
