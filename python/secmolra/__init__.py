"""Python binding of the molra trading kit.

    from secmolra import Session
    with Session("build", transport_dir="build", profile_path="conf") as s:
        s.login("SIM", "1001", "111111")
        print(s.funds("1001"))
"""
from .exports import BY_NAME, EXPORTS, Export
from .library import Kit, KitError, LibraryNotFound, find_library
from .records import (PSQY, Account, BatchOrder, CusLoginInfo, CusNode, ETFShare, Fund, Login,
                      Match, Order, Position)
from .session import (CONN, PUSH, PUSH_TYPES, REPLY, REPLY_TYPE, Event, EventLog, Session,
                      TransportNotFound)

__all__ = ["Account", "BatchOrder", "BY_NAME", "CONN", "CusLoginInfo", "CusNode", "ETFShare",
           "Event", "EventLog", "EXPORTS", "Export", "Fund", "Kit", "KitError",
           "LibraryNotFound", "Login", "Match", "Order", "Position", "PSQY", "PUSH",
           "PUSH_TYPES", "REPLY", "REPLY_TYPE", "Session", "TransportNotFound", "find_library"]
