"""secmolra.frames with pandas (skipped cleanly where pandas is not installed), and text
output on a terminal that cannot show the kit's Chinese texts."""
import io

import pytest

from secmolra import records as rec
from secmolra.enums import Business, Exchange
from secmolra.frames import to_frame
from secmolra.models import OrderInfo, Position
from secmolra.orders import Order
from secmolra.tables import table, terminal_safe

ROWS = [rec.PositionRecord.Data(KHH="1001", JYS="SH", ZQDM="600000", ZQMC="浦发银行",
                                GFYE=10000, KMSL=8000, ZXJ=10.0, ZXSZ=100000.0),
        rec.PositionRecord.Data(KHH="1001", JYS="SZ", ZQDM="000001", GFYE=500, ZXJ=12.5)]


def test_models_become_data_frames():
    pd = pytest.importorskip("pandas")
    frame = to_frame([Position.from_record(r) for r in ROWS])
    assert list(frame.columns) == ["customer", "exchange", "account", "code", "name",
                                   "quantity", "sellable", "cost_price", "price",
                                   "market_value", "profit", "currency"]
    assert frame["exchange"].tolist() == ["SH", "SZ"] and frame["quantity"].sum() == 10500
    assert pd.api.types.is_float_dtype(frame["price"])
    assert list(to_frame([], model=OrderInfo).columns)[:3] == ["customer", "exchange", "account"]
    assert to_frame([Position.from_record(ROWS[0])], columns=["code", "name"]).values.tolist() \
        == [["600000", "浦发银行"]]
    order = Order("1001", Business.ORDINARY, "600000", Exchange.SH, "A1", 1, 100, 10.0)
    assert to_frame([order])[["side", "status", "business"]].values.tolist() == \
        [["BUY", "pending", "ordinary"]]


def test_texts_print_on_a_terminal_that_cannot_show_them():
    stream = io.TextIOWrapper(io.BytesIO(), encoding="ascii")
    terminal_safe(stream)
    print(table([Position.from_record(ROWS[0])], ["code", "name"]), file=stream)
    stream.flush()
    assert stream.buffer.getvalue().decode("ascii").splitlines()[2] == "600000  ????"
    shown = io.TextIOWrapper(io.BytesIO(), encoding="gbk")
    terminal_safe(shown)
    assert shown.errors == "strict"  # left alone: GBK shows them
