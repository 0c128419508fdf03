"""Python binding of the molra trading kit.

    from secmolra import Session
    with Session("build", transport_dir="build", profile_path="conf") as s:
        s.login("SIM", "1001", "111111")
        print(s.funds("1001"))
"""
from .exports import BY_NAME, EXPORTS, Export
from .library import Kit, KitError, LibraryNotFound, find_library
from .records import (PSQY, AccInfo, BatchOrderRow, CusLoginInfo, CusNodeInfo, ETFShare,
                      FundInfo, MatchInfo, OrderInfo, PositionInfo)
from .session import (CONN, PUSH, PUSH_TYPES, REPLY, REPLY_TYPE, Event, EventLog, Session,
                      TransportNotFound)

__all__ = ["AccInfo", "BatchOrderRow", "BY_NAME", "CONN", "CusLoginInfo", "CusNodeInfo",
           "ETFShare", "Event", "EventLog", "EXPORTS", "Export", "FundInfo", "Kit", "KitError",
           "LibraryNotFound", "MatchInfo", "OrderInfo", "PositionInfo", "PSQY", "PUSH",
           "PUSH_TYPES", "REPLY", "REPLY_TYPE", "Session", "TransportNotFound", "find_library"]
