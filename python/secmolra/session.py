"""The Pythonic layer: a Session starts and stops the kit, checks every result and turns
records and callback texts into Python objects."""
from __future__ import annotations

import ctypes
import json
import os
import re
import sys
import threading
import traceback
from pathlib import Path
from typing import Callable, NamedTuple, Optional

from . import records as rec
from .exports import ConnEventCallback, FuncCallback, MsgCallback
from .library import TRANSPORT_FILE, Kit, KitError
from .records import CusLoginInfo, decode, encode

PUSH, REPLY, CONN = "push", "reply", "conn"
PUSH_TYPES = {8: "confirmation", 9: "withdrawal", 10: "match", 11: "refused"}
REPLY_TYPE = 14

# The kit starts once per process: SECMOLRA_Init after SECMOLRA_Exit does nothing.
_PROCESS_LOCK = threading.Lock()
_PROCESS_STATE = {"used": False}
# ctypes callback objects handed to the kit live as long as the process: a transport thread
# may still be inside one while the session closes.
_KEEP_ALIVE: list = []


class TransportNotFound(FileNotFoundError):
    pass


class Event(NamedTuple):
    """A push (type 8 to 11), a reply to an asynchronous request (type 14) or a connection
    event (type: the transport's event code, 0 when every connection is up again)."""

    kind: str
    type: int
    time: str
    data: Optional[dict]  # the parsed JSON object; None when the text was not JSON
    text: str  # the text as received (decoded from GBK)


class EventLog:
    """Every event of the session in order of arrival, with waiting for a matching one."""

    def __init__(self):
        self._events: list = []
        self._cond = threading.Condition()

    def add(self, event: Event) -> None:
        with self._cond:
            self._events.append(event)
            self._cond.notify_all()

    def clear(self) -> None:
        """Forgets the events so far (the log grows with every event of the session)."""
        with self._cond:
            self._events.clear()

    def snapshot(self) -> list:
        with self._cond:
            return list(self._events)

    def wait_for(self, predicate: Callable[[Event], bool], timeout: float = 10.0,
                 count: int = 1) -> list:
        """The first `count` events matching `predicate`, waiting up to `timeout` seconds;
        TimeoutError when fewer arrive."""
        def matches() -> list:
            return [e for e in self._events if predicate(e)]

        with self._cond:
            if not self._cond.wait_for(lambda: len(matches()) >= count, timeout):
                raise TimeoutError(f"{len(matches())} of {count} expected events "
                                   f"in {timeout} s")
            return matches()[:count]


_POSITIVE = re.compile(r"TradeLogin|Entrust|Withdraw|ZQHGCrk|FXYW|DZJY|Lof|FJY|"
                       r"GetSystemDate|GetTradeDate|BeginQuery|EndQuery")
_UNCHECKED = {"SECMOLRA_GetLastError", "SECMOLRA_GetReviseTimeAsLong", "SECMOLRA_GetQuote"}


def success_is_positive(name: str) -> bool:
    """True for exports whose success is always above 0 (tokens, order numbers, request
    numbers, dates); the others succeed with 0 too (counts, quantities)."""
    if "TradableQty" in name or "BatchOrderEntrust" in name or "Basket" in name:
        return False
    if name.startswith("SECMOLRA_BatchOrderWithdraw") and name.endswith("_ASync"):
        return False  # returns the caller's serial number, which may be 0
    return bool(_POSITIVE.search(name))


def _argument(ctype, value):
    if isinstance(value, str) and ctype in (ctypes.c_char_p, ctypes.c_char):
        return encode(value)
    if isinstance(value, CusLoginInfo):
        return ctypes.byref(value)
    return value


class _Api:
    """``session.api.OrderEntrust(...)``: any export by its name without the prefix (or with
    it), texts encoded to GBK, keyword arguments by the table's names, results checked."""

    def __init__(self, session: "Session"):
        self._session = session

    def __getattr__(self, name: str):
        exports = self._session.kit.exports
        full = next((n for n in (name, "SECMOLRA_" + name, "PYSECMOLRA_" + name)
                     if n in exports), None)
        if full is None:
            raise AttributeError(f"no export named {name} in {self._session.kit.path}")
        return lambda *args, **kwargs: self._session.call(full, *args, **kwargs)


class Session:
    """Starts the kit on enter (SECMOLRA_Init) and stops it on exit (SECMOLRA_Exit).

    library: path of the kit or of a build folder (default: $SECMOLRA_LIBRARY, then ./build
    and the checkout's build folder). transport_dir: the folder holding kelapi50.dll; the kit
    loads "./kelapi50.dll" from the current directory, so the session changes into it for
    SECMOLRA_Init and back (default: the current directory, which must hold it).
    profile_path: folder of molra.ini; log_path: the kit's log folder.
    on_push / on_reply / on_conn_event: callables taking an Event; they run on the
    transport's threads, possibly concurrently. Every event is also kept in ``events``.
    """

    def __init__(self, library=None, *, transport_dir=None, profile_path=None, log_path=None,
                 write_log: bool = True, on_push=None, on_reply=None, on_conn_event=None):
        self.kit = Kit(library)
        self.raw = self.kit
        self.api = _Api(self)
        self.transport_dir = transport_dir
        self.profile_path = profile_path
        self.log_path = log_path
        self.write_log = write_log
        self.handlers = {PUSH: on_push, REPLY: on_reply, CONN: on_conn_event}
        self.events = EventLog()
        self.callback_errors: list = []
        self.started = False

    # ---- lifecycle -------------------------------------------------------------------

    def __enter__(self) -> "Session":
        self.start()
        return self

    def __exit__(self, *exc) -> None:
        self.close()

    def start(self) -> "Session":
        if self.started:
            return self
        with _PROCESS_LOCK:
            if _PROCESS_STATE["used"]:
                raise RuntimeError("the kit starts once per process (SECMOLRA_Init after "
                                   "SECMOLRA_Exit does nothing): use a new process")
            _PROCESS_STATE["used"] = True
        transport_dir = Path(self.transport_dir or os.getcwd()).resolve()
        if not (transport_dir / TRANSPORT_FILE).is_file():
            raise TransportNotFound(
                f"no {TRANSPORT_FILE} in {transport_dir}: the kit loads ./{TRANSPORT_FILE} "
                "from the current directory; give transport_dir or change into its folder")
        self._apply_settings()
        self._install_callbacks()
        here = os.getcwd()
        os.chdir(transport_dir)
        try:
            ok = self.kit.SECMOLRA_Init()
        finally:
            os.chdir(here)
        if not ok:
            raise self.kit.error("SECMOLRA_Init")
        self.started = True
        return self

    def _apply_settings(self) -> None:
        kit = self.kit
        kit.SECMOLRA_SetWriteLog(self.write_log)
        profile, log = self.profile_path, self.log_path
        if self.transport_dir:
            # Relative defaults would be taken against the transport folder: pin them to
            # the caller's current directory, where the kit would have looked.
            profile = profile if profile is not None else "."
            log = log if log is not None else "log"
        if profile is not None:
            kit.SECMOLRA_SetProfilePath(encode(os.path.join(os.path.abspath(profile), "")))
        if log is not None:
            kit.SECMOLRA_SetLogPath(encode(os.path.abspath(log)))

    def _install_callbacks(self) -> None:
        callbacks = (MsgCallback(lambda t, j, ty: self._deliver(PUSH, ty, t, j)),
                     FuncCallback(lambda t, j, ty: self._deliver(REPLY, ty, t, j)),
                     ConnEventCallback(self._on_conn))
        _KEEP_ALIVE.extend(callbacks)
        self.kit.SECMOLRA_SetMsgCallback(callbacks[0])
        self.kit.SECMOLRA_SetFuncCallback(callbacks[1])
        self.kit.SECMOLRA_SetConnEventCallback(callbacks[2])

    def close(self) -> None:
        if not self.started:
            return
        self.started = False
        self.kit.SECMOLRA_SetMsgCallback(MsgCallback())
        self.kit.SECMOLRA_SetFuncCallback(FuncCallback())
        self.kit.SECMOLRA_SetConnEventCallback(ConnEventCallback())
        if not self.kit.SECMOLRA_Exit():
            raise self.kit.error("SECMOLRA_Exit")

    # ---- callbacks (transport threads) ---------------------------------------------------

    def _deliver(self, kind: str, msg_type: int, time: bytes, text: bytes) -> None:
        try:
            body = decode(text or b"")
            try:
                data = json.loads(body)
            except ValueError as exc:
                data = None
                self.callback_errors.append(exc)
            self._dispatch(Event(kind, msg_type, decode(time or b""), data, body))
        except BaseException as exc:  # never let an exception unwind into the kit
            self._callback_failed(exc)

    def _on_conn(self, khh: bytes, name: bytes, event: int, _reserved: int) -> None:
        try:
            data = {"KHH": decode(khh or b""), "NAME": decode(name or b""), "EVENT": event}
            self._dispatch(Event(CONN, event, "", data, json.dumps(data, ensure_ascii=False)))
        except BaseException as exc:
            self._callback_failed(exc)

    def _dispatch(self, event: Event) -> None:
        self.events.add(event)
        handler = self.handlers.get(event.kind)
        if handler is not None:
            try:
                handler(event)
            except BaseException as exc:
                self._callback_failed(exc)

    def _callback_failed(self, exc: BaseException) -> None:
        self.callback_errors.append(exc)
        traceback.print_exception(type(exc), exc, exc.__traceback__, file=sys.stderr)

    # ---- checked calls -----------------------------------------------------------------

    def last_error(self) -> tuple:
        return self.kit.last_error()

    def call(self, name: str, *args, **kwargs):
        """Calls an export by its full name; texts are encoded to GBK, a CusLoginInfo is
        passed by reference, and a failure raises KitError with the kit's code and message.

        A connection-layer failure is reported with code 0, so a 0 result is taken as a
        failure when the last error then holds code 0 with a message."""
        export = self._export(name)
        names = [a for a, _ in export.args]
        values = list(args) + [None] * (len(names) - len(args))
        for key, value in kwargs.items():
            if key not in names:
                raise TypeError(f"{name} has no argument {key!r} (it takes {', '.join(names)})")
            values[names.index(key)] = value
        if len(args) > len(names):
            raise TypeError(f"{name} takes {len(names)} arguments, got {len(args)}")
        converted = [_argument(t, v) for (_, t), v in zip(export.args, values)]
        fn = getattr(self.kit, name)
        if export.restype not in (ctypes.c_int64, ctypes.c_int32) or name in _UNCHECKED:
            return fn(*converted)
        self._clear_staged_error()
        result = fn(*converted)
        self._check(name, result)
        return result

    def _export(self, name: str):
        export = self.kit.exports.get(name)
        if export is None:
            raise AttributeError(f"{name} is not exported by {self.kit.path}")
        return export

    def _clear_staged_error(self) -> None:
        # A record of code 0 with a message left by an earlier staged failure would make a
        # later 0 result look failed: clear it (rare; the kit logs the clearing).
        code, message = self.kit.last_error()
        if code == 0 and message:
            self.kit.SECMOLRA_SetLastError(0, b"", b"", None)

    def _check(self, name: str, result: int) -> None:
        if result > 0:
            return
        code, message = self.kit.last_error()
        if result < 0:
            raise KitError(result, message, name)
        if success_is_positive(name) or (code == 0 and message):
            raise KitError(code, message, name)

    def _operation(self, base: str, customer, asynchronous: bool, **kwargs):
        """One member of a family: the Ex form when the customer is a CusLoginInfo."""
        ex = isinstance(customer, CusLoginInfo)
        name = base + ("Ex" if ex else "") + ("_ASync" if asynchronous else "")
        export = self._export(name)
        kwargs["account" if ex else "khh"] = customer
        return self.call(name, *[kwargs.get(a) for a, _ in export.args])

    # ---- settings ----------------------------------------------------------------------

    def set_node(self, node: str) -> None:
        if not self.kit.SECMOLRA_SetNode(encode(node)):
            raise KitError(-221, "the node was refused", "SECMOLRA_SetNode")

    def set_wtfs(self, wtfs: str) -> None:
        if not self.kit.SECMOLRA_SetWTFS(encode(wtfs)):
            raise KitError(0, f"the transport refused the entrust method {wtfs!r}",
                           "SECMOLRA_SetWTFS")

    # ---- login ------------------------------------------------------------------------

    def login(self, key: str, khh: str, password: str, *, node_id: int | None = None,
              node: str = "", wtfs: str = "") -> int:
        """Logs the customer in on the connection key (a section of molra.ini); returns the
        token. With node_id, node or wtfs the Ex form is used."""
        if node_id is None and not node and not wtfs:
            return self.call("SECMOLRA_TradeLogin", key, khh, password)
        account = CusLoginInfo.of(khh, password=password, node_id=-1 if node_id is None
                                  else node_id, node=node, wtfs=wtfs)
        return self.call("SECMOLRA_TradeLoginEx", key, account)

    def logout(self, khh: str) -> None:
        self.call("SECMOLRA_TradeLogout", khh)

    # ---- queries ----------------------------------------------------------------------

    def _query(self, adapter: str, struct, *leading, capacity: int = 64) -> list:
        while True:
            array = (struct * capacity)()
            count = self.call(adapter, *leading, array, capacity)
            if count <= capacity:
                return [array[i].to_data() for i in range(count)]
            capacity = count  # the array was too small: the result is the full count

    def node_info(self, key: str, khh: str) -> list:
        return self._query("PYSECMOLRA_QueryCusNodeinfo", rec.CusNodeInfo, key, khh)

    def funds(self, khh: str) -> list:
        return self._query("PYSECMOLRA_QueryFundInfo", rec.FundRecord, khh)

    def accounts(self, khh: str) -> list:
        return self._query("PYSECMOLRA_QueryAccInfo", rec.AccountRecord, khh)

    def psqy(self, khh: str, jys: str = "", gdh: str = "") -> list:
        return self._query("PYSECMOLRA_QueryPSQY", rec.PSQYRecord, khh, jys, gdh)

    def orders(self, khh: str, *, type: int = 0, sort: int = 0, rowcount: int = 0,
               browindex: int = 0, jys: str = "", zqdm: str = "", wth: int = 0) -> list:
        return self._query("PYSECMOLRA_QueryOrders", rec.OrderRecord, khh, type, sort,
                           rowcount, browindex, jys, zqdm, wth)

    def matches(self, khh: str, *, type: int = 0, sort: int = 0, rowcount: int = 0,
                browindex: int = 0, jys: str = "", zqdm: str = "", wth: int = 0) -> list:
        return self._query("PYSECMOLRA_QueryMatchs", rec.MatchRecord, khh, type, sort,
                           rowcount, browindex, jys, zqdm, wth)

    def positions(self, khh: str, *, sort: int = 0, rowcount: int = 0, browindex: int = 0,
                  gdh: str = "", jys: str = "", zqdm: str = "", exeflag: int = 0) -> list:
        return self._query("PYSECMOLRA_QueryPositions", rec.PositionRecord, khh, sort,
                           rowcount, browindex, gdh, jys, zqdm, exeflag)

    def etf_shares(self, khh: str, jjdm: str) -> list:
        return self._query("PYSECMOLRA_QueryETFShare", rec.ETFShareRecord, khh, jjdm)

    def reference_table(self, func_code: str, fields, request: dict | None = None,
                        khh: str = "") -> list:
        """Rows of a reference-data table (any key/value request) through the kit's cursor:
        one {field id: text} per answer row, for the answer field ids in `fields`.
        request: {field id: value} sent as text; khh "": the customer that logged in last."""
        text = "|".join(f"{k}={v}" for k, v in (request or {}).items())
        cursor = self.call("SECMOLRA_BeginQuery", khh, func_code, text)
        try:
            count = self.call("SECMOLRA_GetQueryCount", cursor)
            return [{f: self._cursor_field(cursor, row, f) for f in fields}
                    for row in range(count)]
        finally:
            self.call("SECMOLRA_EndQuery", cursor)

    def _cursor_field(self, cursor: int, row: int, field_id: int) -> str:
        buf = ctypes.create_string_buffer(256)
        size = self.call("SECMOLRA_GetQuery", cursor, row, field_id, buf, len(buf))
        if size >= len(buf):
            buf = ctypes.create_string_buffer(size + 1)
            self.call("SECMOLRA_GetQuery", cursor, row, field_id, buf, len(buf))
        return decode(buf.value)

    # ---- orders -----------------------------------------------------------------------

    def entrust(self, customer, jys: str, zqdm: str, jylb: int, wtsl: int, wtjg: float,
                gdh: str = "", ddlx: int = 0) -> int:
        """A synchronous order; returns its order number (WTH). customer: the customer
        number, or a CusLoginInfo (then its GDH is used)."""
        return self._operation("SECMOLRA_OrderEntrust", customer, False, jys=jys, zqdm=zqdm,
                               jylb=jylb, wtsl=wtsl, wtjg=wtjg, ddlx=ddlx, gdh=gdh)

    def entrust_async(self, customer, jys: str, zqdm: str, jylb: int, wtsl: int,
                      wtjg: float, gdh: str = "", ddlx: int = 0, kfsbdbh: int = 0) -> int:
        """An asynchronous order; returns the request number (KFSBDBH) that its reply
        (an Event of kind "reply") carries. kfsbdbh 0: the kit makes one."""
        return self._operation("SECMOLRA_OrderEntrust", customer, True, jys=jys, zqdm=zqdm,
                               jylb=jylb, wtsl=wtsl, wtjg=wtjg, ddlx=ddlx, gdh=gdh,
                               kfsbdbh=kfsbdbh)

    def withdraw(self, customer, jys: str, wth: int, *, family: str = "Order",
                 asynchronous: bool = False, kfsbdbh: int = 0) -> int:
        """Withdraws an order by its order number. family: Order, ETF, ZQHG, LOF, PHDJ,
        FXYW or FJY. Returns the withdrawal's order number (synchronous) or the request
        number (asynchronous)."""
        return self._operation(f"SECMOLRA_{family}Withdraw", customer, asynchronous,
                               jys=jys, cxwth=wth, kfsbdbh=kfsbdbh)

    def withdraw_by_kfsbdbh(self, customer, jys: str, cx_kfsbdbh: int, *,
                            family: str = "Order", asynchronous: bool = False,
                            kfsbdbh: int = 0) -> int:
        """Withdraws an order by the request number it was placed with (Order, ETF, ZQHG
        and LOF families)."""
        return self._operation(f"SECMOLRA_{family}WithdrawByKFSBDBH", customer, asynchronous,
                               jys=jys, cxkfsbdbh=cx_kfsbdbh, kfsbdbh=kfsbdbh)

    def batch_entrust(self, khh: str, rows: list, wtpch: int = 0) -> int:
        """Places up to 100 BatchOrderRow dataclasses at once; writes each row's order
        number (Wth) and note (Msg) back into it and returns the number accepted."""
        array = self._batch_array(rows)
        accepted = self.call("PYSECMOLRA_BatchOrderEntrust", khh, wtpch, array, len(rows))
        for row, out in zip(rows, array):
            row.Wth = out.Wth
            row.Msg = decode(out.Msg)
        return accepted

    def batch_entrust_async(self, khh: str, rows: list, wtpch: int) -> int:
        """Sends the batch and returns at once; the reply carries WTPCH."""
        array = self._batch_array(rows)
        return self.call("PYSECMOLRA_BatchOrderEntrust_ASync", khh, wtpch, array, len(rows))

    @staticmethod
    def _batch_array(rows: list):
        array = (rec.BatchOrderRow * max(len(rows), 1))()
        for i, row in enumerate(rows):
            array[i] = rec.BatchOrderRow.from_data(row)
        return array

    def batch_withdraw(self, customer, lsh: int, *, asynchronous: bool = False) -> int:
        return self._operation("SECMOLRA_BatchOrderWithdraw", customer, asynchronous, lsh=lsh)

    def tradable_qty(self, customer, jys: str, zqdm: str, jylb: int, wtjg: float,
                     gdh: str = "", ddlx: int = 0) -> int:
        return self._operation("SECMOLRA_TradableQty", customer, False, jys=jys, zqdm=zqdm,
                               jylb=jylb, wtjg=wtjg, ddlx=ddlx, gdh=gdh)

    # ---- clock ------------------------------------------------------------------------

    def revise_time(self) -> str:
        buf = ctypes.create_string_buffer(64)
        self.kit.SECMOLRA_GetReviseTime(buf)
        return decode(buf.value)
