"""pandas DataFrames of models, when pandas is installed (it is not a dependency).

    from secmolra.frames import to_frame
    df = to_frame(session.positions("1001"))
"""
from __future__ import annotations

import dataclasses
import importlib
from typing import Any, Iterable, List, Optional, Sequence


def pandas() -> Any:
    """The pandas module; ImportError saying what to install when it is missing."""
    try:
        return importlib.import_module("pandas")
    except ImportError as exc:
        raise ImportError("secmolra.frames needs pandas (pip install pandas, or Debian's "
                          "python3-pandas)") from exc


def to_frame(items: Iterable[Any], columns: Optional[Sequence[str]] = None,
             model: Optional[type] = None) -> Any:
    """A DataFrame with one row per model (or Order, or event), its fields as columns
    (enums as their values, ``raw`` left out). `columns` picks and orders columns; `model`
    names the columns of an empty list."""
    rows: List[dict[str, Any]] = [item.as_dict() if hasattr(item, "as_dict") else
                                  dataclasses.asdict(item) for item in items]
    if not rows and model is not None and dataclasses.is_dataclass(model):
        columns = columns or [f.name for f in dataclasses.fields(model) if f.name != "raw"]
    frame = pandas().DataFrame(rows, columns=list(columns) if columns else None)
    return frame
