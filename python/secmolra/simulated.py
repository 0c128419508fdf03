"""The simulated back end: the kit's connection profile for it, its configuration files, and
its exchange (quotes, the clock, trading days) for Python hosts.

    path = write_config(folder, backend={"include_defaults": True},
                        market={"replay": "day.csv", "clock": "manual"})
    os.environ["KELSIM_CONFIG"] = str(path)   # before the session starts
    with Session(...) as session:
        exchange = Exchange(session)
        exchange.advance(60)
        print(exchange.quote("SH", "600000").last)
"""
from __future__ import annotations

import ctypes
import os
import sys
import traceback
from ctypes import POINTER, c_bool, c_char, c_char_p, c_double, c_int32, c_int64, c_void_p
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Callable, List, Mapping, Optional, Sequence, Tuple, Union

SIM_KEY = "SIM"
SIM_ADDRESSES = {
    "addr": "127.0.0.1:9101",           # management
    "tradeaddr": "127.0.0.1:9102",      # trade
    "queryaddr": "127.0.0.1:9103",      # query
    "subscribeaddr": "127.0.0.1:9104",  # subscribe
}
SIM_CUSTOMERS = {"1001": "111111", "1002": "222222", "1003": "333333", "1004": "444444"}
CONFIG_FILE = "sim.ini"
TRANSPORT_FILE = "kelapi50.dll"

PathLike = Union[str, "os.PathLike[str]"]


def write_profile(folder: PathLike, key: str = SIM_KEY,
                  global_settings: Optional[Mapping[str, Any]] = None,
                  **settings: Any) -> Path:
    """Writes folder/molra.ini with a GLOBAL section and one connection section `key` for
    the simulated back end; extra settings override or add keys. Returns the folder."""
    where = Path(folder)
    where.mkdir(parents=True, exist_ok=True)
    section = {"Name": key, "SystemType": "4", **SIM_ADDRESSES, **settings}
    lines = ["[GLOBAL]"] + [f"{k}={v}" for k, v in (global_settings or {}).items()]
    lines += ["", f"[{key}]"] + [f"{k}={v}" for k, v in section.items()]
    (where / "molra.ini").write_bytes(("\r\n".join(lines) + "\r\n").encode("gbk"))
    return where


def _ini_value(value: Any) -> str:
    if isinstance(value, bool):
        return "true" if value else "false"
    return str(value)


def write_config(folder: PathLike, **sections: Mapping[str, Any]) -> Path:
    """Writes a configuration of the simulated back end to folder/sim.ini and returns its path
    (for the environment variable KELSIM_CONFIG, or Exchange.load). Each keyword is a section
    and its mapping the section's keys; "__" in a name stands for "." (security__SH__600000
    is [security.SH.600000]), or pass such names with **{"security.SH.600000": {...}}.
    Relative file names in it (replay, state) are taken against the folder."""
    where = Path(folder)
    where.mkdir(parents=True, exist_ok=True)
    lines: List[str] = []
    for name, keys in sections.items():
        lines.append(f"[{name.replace('__', '.')}]")
        lines += [f"{key} = {_ini_value(value)}" for key, value in keys.items()]
        lines.append("")
    path = where / CONFIG_FILE
    path.write_bytes("\n".join(lines).encode("gbk"))
    return path


class _Level(ctypes.Structure):
    _pack_ = 1
    _fields_ = [("price", c_double), ("volume", c_int64)]
    price: float
    volume: int


class _Quote(ctypes.Structure):
    """KelSimQuote of kelsim.h (240 bytes, packed)."""

    _pack_ = 1
    _fields_ = [("jys", c_char * 4), ("zqdm", c_char * 12), ("date", c_int32),
                ("time_ms", c_int32), ("last", c_double), ("prev_close", c_double),
                ("upper_limit", c_double), ("lower_limit", c_double), ("tick", c_double),
                ("volume", c_int64), ("turnover", c_double), ("bid", _Level * 5),
                ("ask", _Level * 5)]
    jys: bytes
    zqdm: bytes
    date: int
    time_ms: int
    last: float
    prev_close: float
    upper_limit: float
    lower_limit: float
    tick: float
    volume: int
    turnover: float
    bid: Any
    ask: Any


assert ctypes.sizeof(_Quote) == 240, "KelSimQuote is 240 bytes"

_QuoteFn = ctypes.CFUNCTYPE(None, POINTER(_Quote), c_void_p)

_SIGNATURES = {
    "KelSim_GetQuote": (c_bool, [c_char_p, c_char_p, POINTER(_Quote)]),
    "KelSim_SetQuote": (c_bool, [POINTER(_Quote)]),
    "KelSim_SetQuoteCallback": (None, [_QuoteFn, c_void_p]),
    "KelSim_Advance": (c_bool, [c_int64]),
    "KelSim_NewDay": (None, []),
    "KelSim_Clock": (None, [POINTER(c_int64), POINTER(c_int64)]),
    "KelSim_LoadConfig": (c_bool, [c_char_p]),
}

Levels = List[Tuple[float, int]]

# Quote callbacks handed to the transport live as long as the process: a push thread may
# still be inside one while it is replaced.
_KEEP_ALIVE: List[Any] = []


@dataclass(frozen=True)
class Quote:
    """A security's market: prices in yuan, the day's volume and turnover, and the levels
    of bid and ask that are present, best first, as (price, volume); a volume of -1 is
    unlimited. time is the clock's "HH:MM:SS.mmm" when the market last changed."""

    exchange: str
    code: str
    date: int
    time: str
    last: float
    prev_close: float
    upper_limit: float
    lower_limit: float
    tick: float
    volume: int
    turnover: float
    bids: Levels
    asks: Levels


def _time_text(ms: int) -> str:
    return f"{ms // 3600000:02d}:{ms // 60000 % 60:02d}:{ms // 1000 % 60:02d}.{ms % 1000:03d}"


def _levels(side: Any) -> Levels:
    return [(side[i].price, side[i].volume) for i in range(5) if side[i].price > 0]


def _from_record(r: _Quote) -> Quote:
    return Quote(exchange=r.jys.decode(), code=r.zqdm.decode(), date=r.date,
                 time=_time_text(r.time_ms), last=r.last, prev_close=r.prev_close,
                 upper_limit=r.upper_limit, lower_limit=r.lower_limit, tick=r.tick,
                 volume=r.volume, turnover=r.turnover, bids=_levels(r.bid),
                 asks=_levels(r.ask))


class Exchange:
    """The simulated exchange behind a running Session: quotes, the clock and trading days,
    through the control interface of the transport the session's kit has loaded.

    Every method may be called from any thread; on_quote callbacks run on the transport's
    push thread, in order with the pushes."""

    def __init__(self, session: Any) -> None:
        if not getattr(session, "started", False):
            raise RuntimeError("the session is not started: start it before its exchange")
        folder = Path(getattr(session, "transport_dir", None) or os.getcwd()).resolve()
        # The same file as the kit's "./kelapi50.dll": the same loaded module.
        self._dll = ctypes.CDLL(str(folder / TRANSPORT_FILE))
        for name, (restype, argtypes) in _SIGNATURES.items():
            fn = getattr(self._dll, name)
            fn.restype, fn.argtypes = restype, argtypes

    def quote(self, exchange: str, code: str) -> Quote:
        """The security's quote; KeyError for a security the exchange does not know."""
        record = _Quote()
        if not self._dll.KelSim_GetQuote(exchange.encode(), code.encode(), ctypes.byref(record)):
            raise KeyError(f"no security {exchange}.{code}")
        return _from_record(record)

    def set_quote(self, exchange: str, code: str, last: float, *,
                  bids: Sequence[Tuple[float, int]] = (), asks: Sequence[Tuple[float, int]] = (),
                  volume: Optional[int] = None, turnover: Optional[float] = None,
                  prev_close: float = 0) -> None:
        """Sets the security's market: last price, levels (best first, at most five a side),
        the day's volume (unchanged when None), turnover (None: the volume added since the
        last quote at the last price) and the previous close (0: unchanged). Resting orders
        the new book reaches match. ValueError when refused."""
        record = _Quote()
        record.jys, record.zqdm = exchange.encode(), code.encode()
        record.last = last
        record.volume = self.quote(exchange, code).volume if volume is None else volume
        record.turnover = -1.0 if turnover is None else turnover
        record.prev_close = prev_close
        for side, levels in ((record.bid, bids), (record.ask, asks)):
            if len(levels) > 5:
                raise ValueError("at most five levels a side")
            for i, (price, qty) in enumerate(levels):
                side[i].price, side[i].volume = price, qty
        if not self._dll.KelSim_SetQuote(ctypes.byref(record)):
            raise ValueError(f"quote of {exchange}.{code} refused (unknown security, or a "
                             "negative price or volume)")

    def advance(self, seconds: float) -> None:
        """Moves the manual clock on; past midnight the next trading day starts. RuntimeError
        for a clock that runs by itself (realtime or a speed)."""
        if not self._dll.KelSim_Advance(round(seconds * 1000)):
            raise RuntimeError("the clock is not manual (or the time is negative)")

    def new_day(self) -> None:
        """Ends the trading day (open orders expire, bought shares become sellable, each
        previous close becomes the last price) and starts the next."""
        self._dll.KelSim_NewDay()

    def clock(self) -> Tuple[int, str]:
        """The trade date (YYYYMMDD) and the time of day, "HH:MM:SS.mmm"."""
        date, ms = c_int64(), c_int64()
        self._dll.KelSim_Clock(ctypes.byref(date), ctypes.byref(ms))
        return date.value, _time_text(ms.value)

    def on_quote(self, callback: Optional[Callable[[Quote], None]]) -> None:
        """Calls callback(quote) for every change of a quote; None stops it. An exception in
        the callback is printed and the deliveries go on."""
        def deliver(record: Any, _ctx: Any) -> None:
            try:
                if callback is not None:
                    callback(_from_record(record.contents))
            except BaseException:  # never unwind into the transport
                traceback.print_exc(file=sys.stderr)

        fn = _QuoteFn(deliver) if callback is not None else ctypes.cast(0, _QuoteFn)
        _KEEP_ALIVE.append(fn)
        self._dll.KelSim_SetQuoteCallback(fn, None)

    def load(self, config: PathLike) -> None:
        """Replaces the back end by the one a configuration file describes (connections stay
        open; customers log in again). ValueError when the file cannot be used."""
        if not self._dll.KelSim_LoadConfig(os.fspath(config).encode()):
            raise ValueError(f"the simulator refused {config} (see its standard error)")
