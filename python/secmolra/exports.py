"""Every C-callable export of the kit, with its argument names and ctypes types: one table.

The exports that take a ``std::vector`` are left out (only a C++ host built with the kit's
standard library can call them); their ``PYSECMOLRA_`` adapters are here instead.

Families follow the kit's naming: ``Ex`` forms take a ``CusLoginInfo*`` in place of the
customer number and drop the shareholder account; ``_ASync`` forms add ``nKFSBDBH`` last.
"""
from __future__ import annotations

import ctypes
from ctypes import POINTER, c_bool, c_char, c_char_p, c_double, c_int32, c_int64, c_uint64, c_void_p
from typing import Any, Dict, List, NamedTuple, Tuple

from .records import (AccountRecord, BatchOrderRow, CusLoginInfo, CusNodeInfo, ETFShareRecord,
                      FundRecord, MatchRecord, OrderRecord, PositionRecord, PSQYRecord)

# Callback types; called with no argument they make the null pointer that switches one off.
MsgCallback: Any = ctypes.CFUNCTYPE(None, c_char_p, c_char_p, c_int32)
FuncCallback: Any = MsgCallback
ConnEventCallback: Any = ctypes.CFUNCTYPE(None, c_char_p, c_char_p, c_int32, c_int32)

S, I32, I64, U64, F64, B, CH = c_char_p, c_int32, c_int64, c_uint64, c_double, c_bool, c_char
ACCOUNT = POINTER(CusLoginInfo)


Args = Tuple[Tuple[str, Any], ...]


class Export(NamedTuple):
    """One export: its name, ctypes result type and (argument name, ctypes type) pairs."""

    name: str
    restype: Any
    args: Args

    @property
    def argtypes(self) -> List[Any]:
        """The ctypes argument types, in order."""
        return [t for _, t in self.args]


def _args(spec: str, types: Dict[str, Any]) -> Args:
    """'khh jys wtsl:I64' -> ((khh, S), (jys, S), (wtsl, c_int64)); untyped names are texts."""
    out = []
    for item in spec.split():
        name, _, kind = item.partition(":")
        out.append((name, types[kind] if kind else S))
    return tuple(out)


_TYPES = {"I32": I32, "I64": I64, "U64": U64, "F64": F64, "B": B, "CH": CH, "V": c_void_p,
          "ACC": ACCOUNT, "BUF": ctypes.c_char_p, "PI32": POINTER(c_int32),
          "MSG": MsgCallback, "FUNC": FuncCallback, "CONN": ConnEventCallback,
          "NODES": POINTER(CusNodeInfo), "FUNDS": POINTER(FundRecord),
          "ACCS": POINTER(AccountRecord), "PSQYS": POINTER(PSQYRecord),
          "ORDERS": POINTER(OrderRecord), "MATCHS": POINTER(MatchRecord),
          "POSITIONS": POINTER(PositionRecord), "ETFSHARES": POINTER(ETFShareRecord),
          "ROWS": POINTER(BatchOrderRow)}


def one(name: str, restype: Any, spec: str = "") -> List[Export]:
    """A single export."""
    return [Export(name, restype, _args(spec, _TYPES))]


def family(name: str, spec: str, *, restype: Any = I64, ex: bool = True,
           asynchronous: bool = True, async_arg: bool = True) -> List[Export]:
    """The plain form and its Ex, _ASync and Ex_ASync forms."""
    plain = _args(spec, _TYPES)
    forms = [Export(name, restype, plain)]
    if ex:
        ex_args = tuple(("account", ACCOUNT) if a == "khh" else (a, t)
                        for a, t in plain if a != "gdh")
        forms.append(Export(name + "Ex", restype, ex_args))
    if asynchronous:
        extra = (("kfsbdbh", I64),) if async_arg else ()
        forms += [Export(f.name + "_ASync", restype, f.args + extra) for f in list(forms)]
    return forms


_ENTRUST = "khh jys zqdm jylb:I32 wtsl:I64 wtjg:F64 ddlx:I64 gdh"
_TRADABLE = "khh jys zqdm jylb:I32 wtjg:F64 ddlx:I32 gdh"
_TRADABLE_SHORT = "khh jys zqdm jylb:I32 gdh"
_WITHDRAW = "khh jys cxwth:I64"
_WITHDRAW_BY_KFSBDBH = "khh jys cxkfsbdbh:I64"
_LIST_QUERY = "khh type:I32 sort:I32 rowcount:I32 browindex:I32 jys zqdm wth:I64"

EXPORTS: List[Export] = [
    # lifecycle, last error, settings
    *one("SECMOLRA_Init", B),
    *one("SECMOLRA_Exit", B),
    *one("SECMOLRA_GetLastError", I64, "buf:BUF"),
    *one("SECMOLRA_GetThreadLastError", I64, "msg:BUF cap:I32"),
    *one("SECMOLRA_SetLastError", None, "code:I64 msg func account:ACC"),
    *one("SECMOLRA_SetWriteLog", None, "enable:B"),
    *one("SECMOLRA_SetKelWriteLog", B, "enable:B"),
    *one("SECMOLRA_SetProfilePath", None, "path"),
    *one("SECMOLRA_SetLogPath", None, "path"),
    *one("SECMOLRA_SetMsgCallback", None, "callback:MSG"),
    *one("SECMOLRA_SetFuncCallback", None, "callback:FUNC"),
    *one("SECMOLRA_SetConnEventCallback", None, "callback:CONN"),
    *one("SECMOLRA_SetNode", B, "node"),
    *one("SECMOLRA_SetWTFS", B, "wtfs"),
    # clock and date
    *one("SECMOLRA_GetTickCount", U64),
    *one("SECMOLRA_GetDoubleTickCount", U64),
    *one("SECMOLRA_GetSystemDate", I64),
    *one("SECMOLRA_GetReviseTime", None, "buf:BUF"),
    *one("SECMOLRA_GetReviseTimeAsLong", I64),
    *one("SECMOLRA_OpenQuoteLink", B),
    *one("SECMOLRA_GetQuote", I64, "codes records:V count:PI32"),
    # login, logout, tokens, nodes
    *one("SECMOLRA_TradeLogin", I64, "key khh password"),
    *one("SECMOLRA_TradeLoginEx", I64, "key account:ACC"),
    *one("SECMOLRA_TradeLogout", I64, "khh"),
    *one("SECMOLRA_SetCusToken", B, "khh token:I64"),
    *one("SECMOLRA_SetCusNodeID", B, "khh node_id:I32"),
    *one("SECMOLRA_GetTradeDate", I64),
    # account management
    *one("SECMOLRA_ModifyPwd", I64, "khh old_password new_password kind:I32"),
    *one("SECMOLRA_FundTransIn", I64, "khh password amount:F64 zjzh text5 text6 remark"),
    *one("SECMOLRA_FundTransOut", I64, "khh password amount:F64 zjzh text5 text6 remark"),
    *one("SECMOLRA_FundTransBetweenNodes", I64,
         "system_type:I32 khh zjzh amount:F64 node1:I64 node2:I64 remark"),
    *one("SECMOLRA_ModifyZJHBCL", I64,
         "system_type:I32 khh zjzh node1:I64 node2:I64 ratio1:F64 ratio2:F64 remark"),
    # reference-data tables: a cursor over the rows of any key/value request
    *one("SECMOLRA_BeginQuery", I64, "khh func_code request"),
    *one("SECMOLRA_GetQueryCount", I64, "cursor:I64"),
    *one("SECMOLRA_GetQuery", I64, "cursor:I64 row:I32 field_id:I32 buf:BUF cap:I32"),
    *one("SECMOLRA_EndQuery", I64, "cursor:I64"),
    # scripting adapters: plain arrays of records
    *one("PYSECMOLRA_QueryCusNodeinfo", I32, "key khh records:NODES capacity:I32"),
    *one("PYSECMOLRA_QueryFundInfo", I64, "khh records:FUNDS capacity:I32"),
    *one("PYSECMOLRA_QueryAccInfo", I64, "khh records:ACCS capacity:I32"),
    *one("PYSECMOLRA_QueryOrders", I64, _LIST_QUERY + " records:ORDERS capacity:I32"),
    *one("PYSECMOLRA_QueryMatchs", I64, _LIST_QUERY + " records:MATCHS capacity:I32"),
    *one("PYSECMOLRA_QueryPositions", I64,
         "khh sort:I32 rowcount:I32 browindex:I32 gdh jys zqdm exeflag:I32"
         " records:POSITIONS capacity:I32"),
    *one("PYSECMOLRA_QueryPSQY", I64, "khh jys gdh records:PSQYS capacity:I32"),
    *one("PYSECMOLRA_QueryETFShare", I64, "khh jjdm records:ETFSHARES capacity:I32"),
    *one("PYSECMOLRA_BatchOrderEntrust", I64, "khh wtpch:I64 rows:ROWS count:I32"),
    *one("PYSECMOLRA_BatchOrderEntrust_ASync", I64, "khh wtpch:I64 rows:ROWS count:I32"),
    # orders
    *family("SECMOLRA_OrderEntrust", _ENTRUST),
    *family("SECMOLRA_ETFEntrust", "khh jys zqdm jylb:I32 wtsl:I32 gdh step"),
    *family("SECMOLRA_ETFBasketEntrust", "khh jys etf_code gdh units:I32 price:F64 ddlx:I64",
            asynchronous=False),
    *family("SECMOLRA_ZQHGEntrust", "khh jys zqdm jylb:I32 wtsl:I32 wtjg:F64 ddlx:I64 gdh"),
    *family("SECMOLRA_ZQHGCrk", "khh jys zqdm jylb:I32 wtsl:I32 gdh"),
    *family("SECMOLRA_FXYW", _ENTRUST),
    *family("SECMOLRA_DZJY", _ENTRUST + " dfxw lxr lxdh hyh dfgdh pddm:I32 tdbz:I32",
            asynchronous=False),
    *family("SECMOLRA_Lof", "khh jys zqdm jylb:I32 wtsl:I32 wtjg:F64 flag:CH gdh"),
    *family("SECMOLRA_PHDJEntrust", _ENTRUST),
    *family("SECMOLRA_FJY", _ENTRUST),
    # withdrawals
    *family("SECMOLRA_OrderWithdraw", _WITHDRAW),
    *family("SECMOLRA_OrderWithdrawByKFSBDBH", _WITHDRAW_BY_KFSBDBH),
    *family("SECMOLRA_ETFWithdraw", _WITHDRAW),
    *family("SECMOLRA_ETFWithdrawByKFSBDBH", _WITHDRAW_BY_KFSBDBH),
    *family("SECMOLRA_ZQHGWithdraw", _WITHDRAW),
    *family("SECMOLRA_ZQHGWithdrawByKFSBDBH", _WITHDRAW_BY_KFSBDBH),
    *family("SECMOLRA_LOFWithdraw", _WITHDRAW),
    *family("SECMOLRA_LOFWithdrawByKFSBDBH", _WITHDRAW_BY_KFSBDBH),
    *family("SECMOLRA_PHDJWithdraw", _WITHDRAW),
    *family("SECMOLRA_FXYWWithdraw", _WITHDRAW),
    *family("SECMOLRA_FJYWithdraw", _WITHDRAW),
    *family("SECMOLRA_BatchOrderWithdraw", "khh lsh:I64", async_arg=False),
    # tradable quantity
    *family("SECMOLRA_TradableQty", _TRADABLE, asynchronous=False),
    *family("SECMOLRA_ETFTradableQty", _TRADABLE_SHORT, asynchronous=False),
    *family("SECMOLRA_ZQHGTradableQty", _TRADABLE_SHORT, asynchronous=False),
    *family("SECMOLRA_LOFTradableQty", _TRADABLE, asynchronous=False),
    *family("SECMOLRA_PHDJTradableQty", _TRADABLE, asynchronous=False),
    *family("SECMOLRA_FXYWTradableQty", _TRADABLE, asynchronous=False),
    *family("SECMOLRA_FJYTradableQty", _TRADABLE, asynchronous=False),
]

BY_NAME = {e.name: e for e in EXPORTS}
assert len(BY_NAME) == len(EXPORTS), "an export is listed twice"
