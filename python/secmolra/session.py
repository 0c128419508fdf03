"""The record-level session: starts and stops the kit, checks every result, and hands back
the kit's records as their dataclass twins (:mod:`secmolra.records`) with the kit's own
argument names (khh, jys, zqdm, ...). The trading layer (:mod:`secmolra.trading`) is built
on it; it is also ``Session.records`` for hosts that want the records as they are."""
from __future__ import annotations

import ctypes
import os
import re
import sys
import threading
import traceback
from collections import deque
from pathlib import Path
from typing import Any, Callable, Deque, List, Optional, Type

from . import records as rec
from .errors import (InvalidArgument, KitError, ProfileNotFound, TransportError,
                     TransportNotFound, error_for)
from .exports import ConnEventCallback, Export, FuncCallback, MsgCallback
from .library import TRANSPORT_FILE, Kit, PathLike
from .records import CusLoginInfo, decode, encode

PUSH, REPLY, CONN = "push", "reply", "conn"
PUSH_TYPES = {8: "confirmation", 9: "withdrawal", 10: "match", 11: "refused"}
REPLY_TYPE = 14
PROFILE_FILE = "molra.ini"

# (kind, type, time, text) of a push or reply; (khh, name, event code) of a connection event.
TextSink = Callable[[str, int, str, str], None]
ConnSink = Callable[[str, str, int], None]

# The kit starts once per process: SECMOLRA_Init after SECMOLRA_Exit does nothing.
_PROCESS_LOCK = threading.Lock()
_PROCESS_STATE = {"used": False}
# ctypes callback objects handed to the kit live as long as the process: a transport thread
# may still be inside one while the session closes.
_KEEP_ALIVE: List[Any] = []


_POSITIVE = re.compile(r"TradeLogin|Entrust|Withdraw|ZQHGCrk|FXYW|DZJY|Lof|FJY|"
                       r"GetSystemDate|GetTradeDate|BeginQuery|EndQuery")
_UNCHECKED = {"SECMOLRA_GetLastError", "SECMOLRA_GetThreadLastError",
              "SECMOLRA_GetReviseTimeAsLong", "SECMOLRA_GetQuote"}


def success_is_positive(name: str) -> bool:
    """True for exports whose success is always above 0 (tokens, order numbers, request
    numbers, dates); the others succeed with 0 too (counts, quantities)."""
    if "TradableQty" in name or "BatchOrderEntrust" in name or "Basket" in name:
        return False
    if name.startswith("SECMOLRA_BatchOrderWithdraw") and name.endswith("_ASync"):
        return False  # returns the caller's serial number, which may be 0
    return bool(_POSITIVE.search(name))


def _argument(ctype: Any, value: Any) -> Any:
    if isinstance(value, str) and ctype in (ctypes.c_char_p, ctypes.c_char):
        return encode(value)
    if isinstance(value, CusLoginInfo):
        return ctypes.byref(value)
    return value


class _Api:
    """``session.api.OrderEntrust(...)``: any export by its name without the prefix (or with
    it), texts encoded to GBK, keyword arguments by the table's names, results checked."""

    def __init__(self, session: "KitSession") -> None:
        self._session = session

    def __getattr__(self, name: str) -> Callable[..., Any]:
        exports = self._session.kit.exports
        full = next((n for n in (name, "SECMOLRA_" + name, "PYSECMOLRA_" + name)
                     if n in exports), None)
        if full is None:
            raise AttributeError(f"no export named {name} in {self._session.kit.path}")
        found: str = full
        return lambda *args, **kwargs: self._session.call(found, *args, **kwargs)


def _ignore_text(kind: str, msg_type: int, time: str, text: str) -> None:
    pass


def _ignore_conn(khh: str, name: str, code: int) -> None:
    pass


class KitSession:
    """Starts the kit on enter (SECMOLRA_Init) and stops it on exit (SECMOLRA_Exit).

    library: path of the kit or of a build folder (see :func:`secmolra.library.find_library`).
    transport_dir: the folder holding kelapi50.dll; the kit loads "./kelapi50.dll" from the
    current directory, so the session changes into it for SECMOLRA_Init and back (default:
    the current directory, which must hold it). profile_path: folder of molra.ini (default:
    the current directory); log_path: the kit's log folder. Both transport and molra.ini
    are checked before SECMOLRA_Init. Callback texts go, decoded, to `on_text` and
    `on_conn`, on the transport's threads.
    """

    def __init__(self, library: Optional[PathLike] = None, *,
                 transport_dir: Optional[PathLike] = None,
                 profile_path: Optional[PathLike] = None, log_path: Optional[PathLike] = None,
                 write_log: bool = True, on_text: TextSink = _ignore_text,
                 on_conn: ConnSink = _ignore_conn) -> None:
        self.kit = Kit(library)
        self.raw = self.kit
        self.api = _Api(self)
        self.transport_dir = transport_dir
        self.profile_path = profile_path
        self.log_path = log_path
        self.write_log = write_log
        self.on_text = on_text
        self.on_conn = on_conn
        # The last failures inside callbacks (printed to stderr as they happen).
        self.callback_errors: Deque[BaseException] = deque(maxlen=100)
        self.started = False

    # ---- lifecycle -------------------------------------------------------------------

    def __enter__(self) -> "KitSession":
        return self.start()

    def __exit__(self, *exc: object) -> None:
        self.close()

    def start(self) -> "KitSession":
        """Checks the transport and molra.ini, then starts the kit (once per process)."""
        if self.started:
            return self
        transport_dir = Path(self.transport_dir or os.getcwd()).resolve()
        self._check_files(transport_dir)
        with _PROCESS_LOCK:
            if _PROCESS_STATE["used"]:
                raise RuntimeError("the kit starts once per process (SECMOLRA_Init after "
                                   "SECMOLRA_Exit does nothing): use a new process")
            _PROCESS_STATE["used"] = True
        self._apply_settings()
        self._install_callbacks()
        here = os.getcwd()
        os.chdir(transport_dir)
        try:
            ok = self.kit.SECMOLRA_Init()
        finally:
            os.chdir(here)
        if not ok:
            code, message = self.kit.last_error()
            raise TransportError(code, message or "SECMOLRA_Init failed (the kit's log has the "
                                 "reason)", "SECMOLRA_Init")
        self.started = True
        return self

    def profile_dir(self) -> Path:
        """The folder whose molra.ini the kit reads."""
        return Path(self.profile_path if self.profile_path is not None else ".").resolve()

    def _check_files(self, transport_dir: Path) -> None:
        transport = transport_dir / TRANSPORT_FILE
        if not transport.is_file():
            raise TransportNotFound(
                f"no {TRANSPORT_FILE} at {transport}: the kit loads ./{TRANSPORT_FILE} from "
                "the current directory; give transport_dir or change into its folder")
        profile = self.profile_dir() / PROFILE_FILE
        if not profile.is_file():
            raise ProfileNotFound(
                f"no {PROFILE_FILE} at {profile}: the kit reads its connection settings "
                "there; give profile_path (secmolra.simulated.write_profile writes one for "
                "the simulated back end)")

    def _apply_settings(self) -> None:
        kit = self.kit
        kit.SECMOLRA_SetWriteLog(self.write_log)
        # Relative paths would be taken against the transport folder: pin them to the
        # caller's current directory, where the kit would have looked.
        log = self.log_path if self.log_path is not None else "log"
        kit.SECMOLRA_SetProfilePath(encode(os.path.join(self.profile_dir(), "")))
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
        """Switches the callbacks off and stops the kit."""
        if not self.started:
            return
        self.started = False
        self.kit.SECMOLRA_SetMsgCallback(MsgCallback())
        self.kit.SECMOLRA_SetFuncCallback(FuncCallback())
        self.kit.SECMOLRA_SetConnEventCallback(ConnEventCallback())
        if not self.kit.SECMOLRA_Exit():
            raise self.kit.error("SECMOLRA_Exit")

    # ---- callbacks (transport threads) ---------------------------------------------------

    def _deliver(self, kind: str, msg_type: int, time: Optional[bytes],
                 text: Optional[bytes]) -> None:
        try:
            self.on_text(kind, msg_type, decode(time or b""), decode(text or b""))
        except BaseException as exc:  # never let an exception unwind into the kit
            self.callback_failed(exc)

    def _on_conn(self, khh: Optional[bytes], name: Optional[bytes], event: int,
                 _reserved: int) -> None:
        try:
            self.on_conn(decode(khh or b""), decode(name or b""), event)
        except BaseException as exc:
            self.callback_failed(exc)

    def callback_failed(self, exc: BaseException) -> None:
        """Keeps and prints an exception raised inside a callback."""
        self.callback_errors.append(exc)
        traceback.print_exception(type(exc), exc, exc.__traceback__, file=sys.stderr)

    # ---- checked calls -----------------------------------------------------------------

    def last_error(self) -> tuple[int, str]:
        """The calling thread's last error (code, message)."""
        return self.kit.last_error()

    def call(self, name: str, *args: Any, **kwargs: Any) -> Any:
        """Calls an export by its full name; texts are encoded to GBK, a CusLoginInfo is
        passed by reference, and a failure raises the KitError subclass of its code with
        the kit's code and message.

        A connection-layer failure is reported with code 0, so a 0 result is taken as a
        failure when the last error then holds code 0 with a message."""
        export = self._export(name)
        names = [a for a, _ in export.args]
        if len(args) > len(names):
            raise TypeError(f"{name} takes {len(names)} arguments, got {len(args)}")
        values = list(args) + [None] * (len(names) - len(args))
        for key, value in kwargs.items():
            if key not in names:
                raise TypeError(f"{name} has no argument {key!r} (it takes {', '.join(names)})")
            values[names.index(key)] = value
        converted = [_argument(t, v) for (_, t), v in zip(export.args, values)]
        fn = getattr(self.kit, name)
        if export.restype not in (ctypes.c_int64, ctypes.c_int32) or name in _UNCHECKED:
            return fn(*converted)
        self._clear_staged_error()
        result = int(fn(*converted))
        self._check(name, result)
        return result

    def _export(self, name: str) -> Export:
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
            raise error_for(result, message, name)
        if success_is_positive(name) or (code == 0 and message):
            raise error_for(code, message, name)

    def operation(self, base: str, customer: Any, asynchronous: bool, **kwargs: Any) -> int:
        """One member of a family by its base name: the Ex form when the customer is a
        CusLoginInfo, the _ASync form when asynchronous; arguments by the table's names."""
        ex = isinstance(customer, CusLoginInfo)
        name = base + ("Ex" if ex else "") + ("_ASync" if asynchronous else "")
        export = self._export(name)
        kwargs["account" if ex else "khh"] = customer
        return int(self.call(name, *[kwargs.get(a) for a, _ in export.args]))

    # ---- settings ----------------------------------------------------------------------

    def set_node(self, node: str) -> None:
        """The node text sent at login (SECMOLRA_SetNode)."""
        if not self.kit.SECMOLRA_SetNode(encode(node)):
            raise InvalidArgument(-221, "the node was refused", "SECMOLRA_SetNode")

    def set_wtfs(self, wtfs: str) -> None:
        """The transport's default entrust method (SECMOLRA_SetWTFS)."""
        if not self.kit.SECMOLRA_SetWTFS(encode(wtfs)):
            raise KitError(0, f"the transport refused the entrust method {wtfs!r}",
                           "SECMOLRA_SetWTFS")

    # ---- login ------------------------------------------------------------------------

    def login(self, key: str, khh: str, password: str, *, node_id: Optional[int] = None,
              node: str = "", wtfs: str = "") -> int:
        """Logs the customer in on the connection key (a section of molra.ini); returns the
        token. With node_id, node or wtfs the Ex form is used."""
        if node_id is None and not node and not wtfs:
            return int(self.call("SECMOLRA_TradeLogin", key, khh, password))
        account = CusLoginInfo.of(khh, password=password, node_id=-1 if node_id is None
                                  else node_id, node=node, wtfs=wtfs)
        return int(self.call("SECMOLRA_TradeLoginEx", key, account))

    def logout(self, khh: str) -> None:
        """Logs the customer out."""
        self.call("SECMOLRA_TradeLogout", khh)

    # ---- queries ----------------------------------------------------------------------

    def query(self, adapter: str, struct: Type[rec.Record], *leading: Any,
              capacity: int = 64) -> List[Any]:
        """Rows of a PYSECMOLRA_ query adapter as record dataclasses; the array grows when
        the kit reports more rows than it held."""
        while True:
            array = (struct * capacity)()
            count = int(self.call(adapter, *leading, array, capacity))
            if count <= capacity:
                return [array[i].to_data() for i in range(count)]
            capacity = count  # the array was too small: the result is the full count

    def node_info(self, key: str, khh: str) -> List[Any]:
        """The customer's nodes (records.CusNode)."""
        return self.query("PYSECMOLRA_QueryCusNodeinfo", rec.CusNodeInfo, key, khh)

    def funds(self, khh: str) -> List[Any]:
        """Fund rows (records.Fund)."""
        return self.query("PYSECMOLRA_QueryFundInfo", rec.FundRecord, khh)

    def accounts(self, khh: str) -> List[Any]:
        """Shareholder accounts (records.Account)."""
        return self.query("PYSECMOLRA_QueryAccInfo", rec.AccountRecord, khh)

    def psqy(self, khh: str, jys: str = "", gdh: str = "") -> List[Any]:
        """Allotment rights (records.PSQY)."""
        return self.query("PYSECMOLRA_QueryPSQY", rec.PSQYRecord, khh, jys, gdh)

    def orders(self, khh: str, *, type: int = 0, sort: int = 0, rowcount: int = 0,
               browindex: int = 0, jys: str = "", zqdm: str = "", wth: int = 0) -> List[Any]:
        """Orders of the day (records.Order); type 1: only those that can be withdrawn."""
        return self.query("PYSECMOLRA_QueryOrders", rec.OrderRecord, khh, type, sort,
                          rowcount, browindex, jys, zqdm, wth)

    def matches(self, khh: str, *, type: int = 0, sort: int = 0, rowcount: int = 0,
                browindex: int = 0, jys: str = "", zqdm: str = "", wth: int = 0) -> List[Any]:
        """Matches of the day (records.Match)."""
        return self.query("PYSECMOLRA_QueryMatchs", rec.MatchRecord, khh, type, sort,
                          rowcount, browindex, jys, zqdm, wth)

    def positions(self, khh: str, *, sort: int = 0, rowcount: int = 0, browindex: int = 0,
                  gdh: str = "", jys: str = "", zqdm: str = "", exeflag: int = 0) -> List[Any]:
        """Positions (records.Position); exeflag 1 leaves out empty ones."""
        return self.query("PYSECMOLRA_QueryPositions", rec.PositionRecord, khh, sort,
                          rowcount, browindex, gdh, jys, zqdm, exeflag)

    def etf_shares(self, khh: str, jjdm: str) -> List[Any]:
        """ETF shares held (records.ETFShare)."""
        return self.query("PYSECMOLRA_QueryETFShare", rec.ETFShareRecord, khh, jjdm)

    def reference_table(self, func_code: str, fields: List[int],
                        request: Optional[dict[int, Any]] = None,
                        khh: str = "") -> List[dict[int, str]]:
        """Rows of a reference-data table (any key/value request) through the kit's cursor:
        one {field id: text} per answer row, for the answer field ids in `fields`.
        request: {field id: value} sent as text; khh "": the customer that logged in last."""
        text = "|".join(f"{k}={v}" for k, v in (request or {}).items())
        cursor = int(self.call("SECMOLRA_BeginQuery", khh, func_code, text))
        try:
            count = int(self.call("SECMOLRA_GetQueryCount", cursor))
            return [{f: self._cursor_field(cursor, row, f) for f in fields}
                    for row in range(count)]
        finally:
            self.call("SECMOLRA_EndQuery", cursor)

    def _cursor_field(self, cursor: int, row: int, field_id: int) -> str:
        buf = ctypes.create_string_buffer(256)
        size = int(self.call("SECMOLRA_GetQuery", cursor, row, field_id, buf, len(buf)))
        if size >= len(buf):
            buf = ctypes.create_string_buffer(size + 1)
            self.call("SECMOLRA_GetQuery", cursor, row, field_id, buf, len(buf))
        return decode(buf.value)

    # ---- orders -----------------------------------------------------------------------

    def entrust(self, customer: Any, jys: str, zqdm: str, jylb: int, wtsl: int, wtjg: float,
                gdh: str = "", ddlx: int = 0) -> int:
        """A synchronous order; returns its order number (WTH). customer: the customer
        number, or a CusLoginInfo (then its GDH is used)."""
        return self.operation("SECMOLRA_OrderEntrust", customer, False, jys=jys, zqdm=zqdm,
                              jylb=jylb, wtsl=wtsl, wtjg=wtjg, ddlx=ddlx, gdh=gdh)

    def entrust_async(self, customer: Any, jys: str, zqdm: str, jylb: int, wtsl: int,
                      wtjg: float, gdh: str = "", ddlx: int = 0, kfsbdbh: int = 0) -> int:
        """An asynchronous order; returns the request number (KFSBDBH) that its reply
        carries. kfsbdbh 0: the kit makes one."""
        return self.operation("SECMOLRA_OrderEntrust", customer, True, jys=jys, zqdm=zqdm,
                              jylb=jylb, wtsl=wtsl, wtjg=wtjg, ddlx=ddlx, gdh=gdh,
                              kfsbdbh=kfsbdbh)

    def withdraw(self, customer: Any, jys: str, wth: int, *, family: str = "Order",
                 asynchronous: bool = False, kfsbdbh: int = 0) -> int:
        """Withdraws an order by its order number. family: Order, ETF, ZQHG, LOF, PHDJ,
        FXYW or FJY. Returns the withdrawal's order number (synchronous) or the request
        number (asynchronous)."""
        return self.operation(f"SECMOLRA_{family}Withdraw", customer, asynchronous,
                              jys=jys, cxwth=wth, kfsbdbh=kfsbdbh)

    def withdraw_by_kfsbdbh(self, customer: Any, jys: str, cx_kfsbdbh: int, *,
                            family: str = "Order", asynchronous: bool = False,
                            kfsbdbh: int = 0) -> int:
        """Withdraws an order by the request number it was placed with (Order, ETF, ZQHG
        and LOF families)."""
        return self.operation(f"SECMOLRA_{family}WithdrawByKFSBDBH", customer, asynchronous,
                              jys=jys, cxkfsbdbh=cx_kfsbdbh, kfsbdbh=kfsbdbh)

    def batch_entrust(self, khh: str, rows: List[Any], wtpch: int = 0) -> int:
        """Places up to 100 BatchOrder dataclasses at once; writes each row's order number
        (Wth) and note (Msg) back into it and returns the number accepted."""
        array = self._batch_array(rows)
        accepted = int(self.call("PYSECMOLRA_BatchOrderEntrust", khh, wtpch, array, len(rows)))
        for row, out in zip(rows, array):
            row.Wth = out.Wth
            row.Msg = decode(out.Msg)
        return accepted

    def batch_entrust_async(self, khh: str, rows: List[Any], wtpch: int) -> int:
        """Sends the batch and returns at once; the reply carries WTPCH."""
        array = self._batch_array(rows)
        return int(self.call("PYSECMOLRA_BatchOrderEntrust_ASync", khh, wtpch, array,
                             len(rows)))

    @staticmethod
    def _batch_array(rows: List[Any]) -> Any:
        array = (rec.BatchOrderRow * max(len(rows), 1))()
        for i, row in enumerate(rows):
            array[i] = rec.BatchOrderRow.from_data(row)
        return array

    def batch_withdraw(self, customer: Any, lsh: int, *, asynchronous: bool = False) -> int:
        """Withdraws the open orders of a batch (LSH: its batch number)."""
        return self.operation("SECMOLRA_BatchOrderWithdraw", customer, asynchronous, lsh=lsh)

    def tradable_qty(self, customer: Any, jys: str, zqdm: str, jylb: int, wtjg: float,
                     gdh: str = "", ddlx: int = 0) -> int:
        """The quantity the customer can trade (ordinary orders)."""
        return self.operation("SECMOLRA_TradableQty", customer, False, jys=jys, zqdm=zqdm,
                              jylb=jylb, wtjg=wtjg, ddlx=ddlx, gdh=gdh)

    # ---- clock ------------------------------------------------------------------------

    def revise_time(self) -> str:
        """The back end's time as the kit has corrected it."""
        buf = ctypes.create_string_buffer(64)
        self.kit.SECMOLRA_GetReviseTime(buf)
        return decode(buf.value)
