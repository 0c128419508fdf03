"""Enumerations of the trading layer, each mapped once to the back end's codes."""
from __future__ import annotations

from enum import Enum, IntEnum
from typing import Dict, Optional, Tuple


class Side(IntEnum):
    """Buy or sell: the trade category (JYLB) of ordinary orders."""

    BUY = 1
    SELL = 2

    @classmethod
    def of(cls, category: int) -> Optional["Side"]:
        """The side of a trade category, None for categories that are neither."""
        return cls(category) if category in (1, 2) else None

    def __str__(self) -> str:
        return self.name


class Exchange(str, Enum):
    """Exchange code (JYS). Codes this enumeration does not name still convert, to a member
    whose value is the code itself."""

    SH = "SH"
    SZ = "SZ"
    NONE = ""

    @classmethod
    def _missing_(cls, value: object) -> Optional["Exchange"]:
        if not isinstance(value, str):
            return None
        member = str.__new__(cls, value)
        member._name_ = value
        member._value_ = value
        return member

    def __str__(self) -> str:
        return str(self.value)


# Security code prefixes of each exchange, longest first: only a guess from the numbering
# plan, used when the caller gives no exchange.
_PREFIXES: Tuple[Tuple[str, Exchange], ...] = (
    ("204", Exchange.SH), ("200", Exchange.SZ), ("6", Exchange.SH), ("5", Exchange.SH),
    ("9", Exchange.SH), ("11", Exchange.SH), ("0", Exchange.SZ), ("1", Exchange.SZ),
    ("3", Exchange.SZ),
)


def exchange_of(code: str) -> Optional[Exchange]:
    """The exchange a six-digit security code most likely belongs to, None if unknown."""
    if len(code) != 6 or not code.isdigit():
        return None
    return next((ex for prefix, ex in _PREFIXES if code.startswith(prefix)), None)


class OrderStatus(str, Enum):
    """Where an order stands, from the replies and pushes that reached it."""

    PENDING = "pending"                          # sent, no answer yet
    ACCEPTED = "accepted"                        # the back end took it
    PARTIALLY_FILLED = "partially_filled"
    FILLED = "filled"
    PARTIALLY_WITHDRAWN = "partially_withdrawn"  # withdrawn after part of it matched
    WITHDRAWN = "withdrawn"
    REJECTED = "rejected"                        # refused by the back end or the exchange

    @property
    def final(self) -> bool:
        """True when nothing more will happen to the order."""
        return self in _FINAL

    def __str__(self) -> str:
        return self.name


_FINAL = frozenset({OrderStatus.FILLED, OrderStatus.PARTIALLY_WITHDRAWN, OrderStatus.WITHDRAWN,
                    OrderStatus.REJECTED})


def derive_status(accepted: bool, rejected: bool, quantity: int, filled: int,
                  withdrawn: int) -> OrderStatus:
    """The status that follows from what is known of an order; it only moves forward as
    facts are added."""
    if rejected:
        return OrderStatus.REJECTED
    if withdrawn > 0:
        return OrderStatus.PARTIALLY_WITHDRAWN if filled > 0 else OrderStatus.WITHDRAWN
    if filled > 0:
        return OrderStatus.FILLED if filled >= quantity > 0 else OrderStatus.PARTIALLY_FILLED
    return OrderStatus.ACCEPTED if accepted else OrderStatus.PENDING


class Business(str, Enum):
    """The order families of the kit."""

    ORDINARY = "ordinary"        # OrderEntrust
    BATCH = "batch"              # BatchOrderEntrust
    ETF_CREATE = "etf_create"    # ETFEntrust, category 29
    ETF_REDEEM = "etf_redeem"    # ETFEntrust, category 30
    REPO = "repo"                # ZQHGEntrust
    PLEDGE = "pledge"            # ZQHGCrk: collateral in or out for repurchase
    LOF = "lof"                  # Lof: listed funds
    AFTER_HOURS = "after_hours"  # PHDJEntrust: after-hours at the closing price
    ISSUE = "issue"              # FXYW: issuance business
    NON_TRADING = "non_trading"  # FJY
    BLOCK_TRADE = "block_trade"  # DZJY

    def __str__(self) -> str:
        return self.name


# The business code (JYLX) of an asynchronous reply: (business, is a withdrawal).
REPLY_BUSINESS: Dict[int, Tuple[Business, bool]] = {
    30: (Business.ORDINARY, False), 31: (Business.ETF_CREATE, False),
    32: (Business.ETF_REDEEM, False), 33: (Business.REPO, False), 34: (Business.PLEDGE, False),
    35: (Business.LOF, False), 36: (Business.AFTER_HOURS, False), 37: (Business.ISSUE, False),
    38: (Business.NON_TRADING, False), 40: (Business.ORDINARY, True),
    41: (Business.BATCH, True), 42: (Business.ETF_CREATE, True), 43: (Business.REPO, True),
    44: (Business.LOF, True), 45: (Business.AFTER_HOURS, True), 46: (Business.ISSUE, True),
}


class PushType(IntEnum):
    """The type of a push (message callback)."""

    CONFIRMATION = 8
    WITHDRAWAL = 9   # confirmation of a withdrawal
    MATCH = 10
    REFUSED = 11     # the exchange refused the declaration

    def __str__(self) -> str:
        return self.name.lower()


class Category(IntEnum):
    """Trade categories (JYLB) the families admit, named after the kit's own names."""

    BUY = 1
    SELL = 2
    REPO_LEND = 4         # JYLB_HGRQ
    REPO_BORROW = 5       # JYLB_HGRZ
    ETF_CREATE = 29       # JYLB_ETFG
    ETF_REDEEM = 30       # JYLB_ETFSH
    PLEDGE_IN = 37        # JYLB_ZYQRK
    PLEDGE_OUT = 38       # JYLB_ZYQCK
    FUND_SUBSCRIBE_NEW = 41   # JYLB_JJRG
    FUND_SUBSCRIBE = 42   # JYLB_JJSG
    FUND_REDEEM = 43      # JYLB_JJSH
    FUND_SPLIT = 47       # JYLB_JJFC
    FUND_MERGE = 48       # JYLB_JJHB
