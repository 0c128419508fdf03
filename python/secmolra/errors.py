"""The exceptions of the package: the kit's failures by code family, and the package's own.

Every kit failure is a :class:`KitError` with the kit's ``code``, its ``message`` (decoded
from GBK) and the ``function`` that failed; :func:`error_for` picks the subclass from the
code, and for the connection layer's code 0 from the message.
"""
from __future__ import annotations

from typing import Dict, Tuple, Type


class KitError(Exception):
    """A failure reported by the kit: its code, message and the function that failed."""

    def __init__(self, code: int, message: str, function: str = "") -> None:
        self.code = code
        self.message = message
        self.function = function
        where = f"{function}: " if function else ""
        super().__init__(f"{where}[{code}] {message}")


class InvalidArgument(KitError):
    """The kit refused an argument (-221), or a customer with several nodes gave none (-226)."""


class NotSupported(KitError):
    """The kit does not offer this (-222), e.g. a trade category outside a family's set."""


class NotLoggedIn(KitError):
    """The customer is not logged in (-203), or has no connection (code 0, "not connected")."""


class NoSession(KitError):
    """No request session could be had on the customer's connection (-202)."""


class SendFailed(KitError):
    """The transport could not send the request (-204)."""


class BadReply(KitError):
    """An answer or asynchronous reply was malformed (-205)."""


class ConfigError(KitError):
    """molra.ini could not be read (-206), an unknown system type (-223) or no connection
    settings for the customer (-224)."""


class TransportError(KitError):
    """The transport library could not be bound (-200), or a connection failed (code 0 with
    the connection layer's message)."""


class InternalError(KitError):
    """A failure inside the kit (-299, or -1 when the connection pool cannot be created)."""


class Refused(KitError):
    """The back end refused: ``code`` is its answer code (0 or negative), or the exchange's
    declaration result (SBJG 3 or 9) when the exchange refused an accepted order."""


_BY_CODE: Dict[int, Type[KitError]] = {
    -200: TransportError, -202: NoSession, -203: NotLoggedIn, -204: SendFailed,
    -205: BadReply, -206: ConfigError, -221: InvalidArgument, -222: NotSupported,
    -223: ConfigError, -224: ConfigError, -226: InvalidArgument, -299: InternalError,
}

# The connection layer reports with code 0; its message tells what failed.
_CODE_ZERO: Tuple[Tuple[str, Type[KitError]], ...] = (
    ("客户未连接登录", NotLoggedIn),        # customer not connected: no connection set
    ("未连接，无法发起会话", NotLoggedIn),  # not connected, no session can be opened
    ("connect failed.", TransportError),
    ("conn bind customer failed", TransportError),
    ("认证管理连接已失效", TransportError),  # the management connection is down
    ("交易、订阅连接已失效", TransportError),  # the trade or subscribe connection is down
    ("主备连接系统类型不一致", TransportError),  # main and backup differ in system type
    ("发起会话失败", TransportError),        # opening a session failed
)

# The kit's own codes (-227: the customer is not enabled for trading on the back office);
# any other negative code is an answer code of the back end.
KIT_CODES = frozenset(_BY_CODE) | {-227}


def error_class(code: int, message: str, function: str = "") -> Type[KitError]:
    """The KitError subclass for a failure with this code and message."""
    if code in _BY_CODE:
        return _BY_CODE[code]
    if function == "SECMOLRA_Init":
        return InternalError if code == -1 else TransportError
    if code == 0:
        return next((cls for prefix, cls in _CODE_ZERO if message.startswith(prefix)), Refused)
    if code < 0 and code not in KIT_CODES:
        return Refused
    return KitError


def error_for(code: int, message: str, function: str = "") -> KitError:
    """The exception for a failure of the kit (see :func:`error_class`)."""
    return error_class(code, message, function)(code, message, function)


class LibraryNotFound(FileNotFoundError):
    """The kit library was not found where the package looked (the message lists where)."""


class TransportNotFound(FileNotFoundError):
    """No kelapi50.dll in the folder the kit would load it from."""


class ProfileNotFound(FileNotFoundError):
    """No molra.ini in the profile folder the kit would read."""


class OrderTimeout(TimeoutError):
    """An order did not reach the awaited status in time; the message lists what did arrive
    for it, and ``order`` is the order."""

    def __init__(self, message: str, order: object) -> None:
        super().__init__(message)
        self.order = order


class OrderEnded(Exception):
    """An order ended in another status than the one awaited (withdrawn while waiting for
    the fill, say); ``order`` is the order."""

    def __init__(self, message: str, order: object) -> None:
        super().__init__(message)
        self.order = order
