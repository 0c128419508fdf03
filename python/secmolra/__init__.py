"""Python layer of the molra trading kit.

    from secmolra import Session, OrderStatus
    from secmolra.tables import table

    with Session(transport_dir="build", profile_path="conf") as s:
        s.login("SIM", "1001", "111111")
        order = s.buy("1001", "600000", 100, 10.0)
        order.wait(OrderStatus.FILLED, timeout=10)
        print(table(s.positions("1001")))

Layers, top down: :class:`Session` (typed models, orders that track themselves, events),
:mod:`secmolra.aio` (asyncio), :mod:`secmolra.frames` (pandas); below them ``Session.records``
(:class:`secmolra.session.KitSession`: the kit's records as dataclasses,
:mod:`secmolra.records`), ``Session.api`` (any export by name, checked) and ``Session.raw``
(the ctypes functions, :mod:`secmolra.exports`).
"""
from .enums import Business, Category, Exchange, OrderStatus, PushType, Side
from .errors import (BadReply, ConfigError, InternalError, InvalidArgument, KitError,
                     LibraryNotFound, NoSession, NotLoggedIn, NotSupported, OrderEnded,
                     OrderTimeout, ProfileNotFound, Refused, SendFailed, TransportError,
                     TransportNotFound)
from .events import EventBuffer, Subscription
from .exports import BY_NAME, EXPORTS, Export
from .library import Kit, find_library
from .models import (Account, BatchItem, BatchResult, ConnectionEvent, EtfShare, Event, Fund,
                     Match, Node, OrderInfo, PlacementQuota, Position, Push, Quote, Reply)
from .orders import Order
from .records import PSQY, BatchOrder, CusLoginInfo, CusNode, ETFShare, Login
from .session import CONN, PUSH, PUSH_TYPES, REPLY, REPLY_TYPE, KitSession
from .trading import Session

__version__ = "0.2.0"

__all__ = [
    "Session", "Order", "OrderStatus", "Side", "Exchange", "Business", "Category", "PushType",
    "Fund", "Account", "Position", "OrderInfo", "Match", "Quote", "EtfShare", "PlacementQuota",
    "Node", "BatchItem", "BatchResult", "Event", "Push", "Reply", "ConnectionEvent",
    "EventBuffer", "Subscription",
    "KitError", "InvalidArgument", "NotSupported", "NotLoggedIn", "NoSession", "SendFailed",
    "BadReply", "ConfigError", "TransportError", "InternalError", "Refused", "OrderTimeout",
    "OrderEnded", "LibraryNotFound", "TransportNotFound", "ProfileNotFound",
    "KitSession", "Kit", "find_library", "EXPORTS", "BY_NAME", "Export", "BatchOrder",
    "CusLoginInfo", "CusNode", "ETFShare", "Login", "PSQY", "CONN", "PUSH", "PUSH_TYPES",
    "REPLY", "REPLY_TYPE",
]
