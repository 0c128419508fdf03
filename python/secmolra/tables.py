"""Text tables of models for a terminal, and output that survives the terminal's encoding.

    print(table(session.positions("1001")))

Chinese characters count two columns wide. The kit's texts are decoded from GBK when they
are read; :func:`terminal_safe` makes printing them work on a terminal whose encoding cannot
show them (they print as "?").
"""
from __future__ import annotations

import io
import sys
import unicodedata
from enum import Enum
from typing import Any, Dict, Iterable, List, Optional, Sequence, TextIO, Tuple, Union

Column = Union[str, Tuple[str, str]]  # a field name, or (field name, heading)


def width(text: str) -> int:
    """The columns `text` takes on a terminal (East Asian wide characters take two)."""
    return sum(2 if unicodedata.east_asian_width(ch) in "WF" else 1 for ch in text)


def pad(text: str, columns: int) -> str:
    """`text` padded with spaces to `columns` terminal columns."""
    return text + " " * (columns - width(text))


def fit(text: str, columns: int) -> str:
    """`text` cut to at most `columns` terminal columns."""
    while width(text) > columns:
        text = text[:-1]
    return text


def cell(value: Any) -> str:
    """A value as table text: floats with three decimals, enums by name, None as ""."""
    if value is None:
        return ""
    if isinstance(value, Enum):
        return value.name if value.value != "" else ""
    if isinstance(value, float):
        return f"{value:.3f}"
    return str(value)


def _row(item: Any) -> Dict[str, Any]:
    if isinstance(item, dict):
        return item
    as_dict = getattr(item, "as_dict", None)
    if callable(as_dict):
        out: Dict[str, Any] = as_dict()
        return {k: getattr(item, k, v) for k, v in out.items()}  # keep enums for cell()
    return dict(vars(item))


def table(items: Iterable[Any], columns: Optional[Sequence[Column]] = None,
          title: str = "") -> str:
    """A text table of models (or dicts, or dataclasses): one row per item, the given
    columns (default: every field but ``raw``)."""
    rows = [_row(item) for item in items]
    chosen: List[Tuple[str, str]] = [c if isinstance(c, tuple) else (c, c)
                                      for c in (columns or (list(rows[0]) if rows else []))]
    cells = [[cell(row.get(name)) for name, _ in chosen] for row in rows]
    widths = [max([width(head)] + [width(r[i]) for r in cells])
              for i, (_, head) in enumerate(chosen)]
    lines = [title] if title else []
    lines.append("  ".join(pad(head, w) for (_, head), w in zip(chosen, widths)).rstrip())
    lines.append("  ".join("-" * w for w in widths))
    lines += ["  ".join(pad(v, w) for v, w in zip(r, widths)).rstrip() for r in cells]
    if not rows:
        lines.append("(none)")
    return "\n".join(lines)


def can_show(text: str, stream: Optional[TextIO] = None) -> bool:
    """True when the stream's encoding can show `text`."""
    encoding = getattr(stream or sys.stdout, "encoding", None) or "utf-8"
    try:
        text.encode(encoding)
        return True
    except (UnicodeEncodeError, LookupError):
        return False


def terminal_safe(*streams: TextIO) -> None:
    """Makes stdout and stderr (or the given streams) replace the characters their encoding
    cannot show instead of raising UnicodeEncodeError."""
    for stream in streams or (sys.stdout, sys.stderr):
        if isinstance(stream, io.TextIOWrapper) and not can_show("客户", stream):
            stream.reconfigure(errors="replace")
