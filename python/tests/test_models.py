"""Models, enums and error classes, without the kit: what the kit's records and JSON texts
turn into."""
import json
import struct

import pytest

from secmolra import records as rec
from secmolra.enums import Business, Exchange, OrderStatus, PushType, Side, derive_status
from secmolra.enums import exchange_of
from secmolra.errors import (BadReply, ConfigError, InternalError, InvalidArgument, KitError,
                             NoSession, NotLoggedIn, NotSupported, Refused, SendFailed,
                             TransportError, error_for)
from secmolra.models import (Fund, OrderInfo, Position, Push, Reply, connection_event,
                             parse_event)
from secmolra.tables import table

CONFIRMATION = {"TYPE": 8, "SYS_TYPE": 4, "KHH": "1001", "WTH": 12, "JYS": "SH",
                "GDH": "A000001001", "ZQDM": "600000", "CXBZ": "O", "WTJG": 10.5, "WTSL": 300,
                "CDSL": 0, "ZCJSL": 100, "ZCJJE": 1050.0, "JYLB": 2, "SBJG": 2, "JGSM": "已报",
                "CXWTH": 0, "LSH": 0, "KFSBDBH": "931050000000042", "PARSE_COST": 0}


@pytest.mark.parametrize("kind,msg_type,data,expected", [
    ("push", 8, CONFIRMATION,
     {"push_type": PushType.CONFIRMATION, "order_no": 12, "request_no": 931050000000042,
      "side": Side.SELL, "exchange": Exchange.SH, "quantity": 300, "filled_quantity": 100,
      "note": "已报", "keys": {"order_no": 12, "request_no": 931050000000042}}),
    # a withdrawal is found by the order it withdraws
    ("push", 9, {**CONFIRMATION, "WTH": 13, "CXWTH": 12, "CDSL": 200, "KFSBDBH": ""},
     {"push_type": PushType.WITHDRAWAL, "withdrawn_quantity": 200, "request_no": 0,
      "keys": {"order_no": 12}}),
    ("push", 10, {**CONFIRMATION, "CJBH": "M7", "CJSL": 100, "CJJG": 10.5, "CJJE": 1050.0},
     {"push_type": PushType.MATCH, "match_no": "M7", "match_quantity": 100}),
    # the same request number as an integer in a reply
    ("reply", 14, {"TYPE": 14, "JYLX": 30, "KFSBDBH": 931050000000042, "KHH": "1001",
                   "WTH": 12, "WTSJ": "093105", "DJZJ": 3150.0, "RETCODE": 1,
                   "RETNOTE": "ok"},
     {"business": Business.ORDINARY, "withdrawal": False, "request_no": 931050000000042,
      "ok": True, "frozen": 3150.0, "keys": {"request_no": 931050000000042, "order_no": 12}}),
    ("reply", 14, {"TYPE": 14, "JYLX": 44, "KFSBDBH": 5, "KHH": "1001", "WTH": 0,
                   "RETCODE": -107, "RETNOTE": "gone"},
     {"business": Business.LOF, "withdrawal": True, "ok": False, "code": -107}),
    ("reply", 14, {"TYPE": 14, "JYLX": 30, "WTPCH": 8, "KFSBDBH": 0, "RETCODE": 1,
                   "Success": 2, "orders": {"2": {"WTH": 31, "NOTE": "b"},
                                            "1": {"WTH": 30, "NOTE": "a"}}},
     {"business": Business.BATCH, "batch_no": 8, "accepted_count": 2,
      "batch": [(30, "a"), (31, "b")], "keys": {"request_no": 0, "batch_no": 8}}),
])
def test_callback_texts_become_typed_events(kind, msg_type, data, expected):
    event = parse_event(kind, msg_type, "093105.123", json.dumps(data, ensure_ascii=False))
    assert isinstance(event, Push if kind == "push" else Reply)
    assert event.raw == data and event.customer == data.get("KHH", "")
    for name, value in expected.items():
        if name == "keys":
            assert event.keys() == value
        elif name == "batch":
            assert [(b.order_no, b.note) for b in event.batch_orders] == value
        else:
            assert getattr(event, name) == value, name


def test_unreadable_texts_and_connection_events():
    broken = parse_event("push", 8, "t", "{not json")
    assert broken.data is None and broken.order_no == 0 and broken.keys() == {"order_no": 0}
    odd = parse_event("push", 12, "t", json.dumps({"TYPE": 12, "WTH": "x", "CJSL": None}))
    assert (odd.push_type, odd.order_no, odd.match_quantity) == (PushType.CONFIRMATION, 0, 0)
    down, up = connection_event("1001", "SIM", 7), connection_event("1001", "SIM", 0)
    assert (down.kind, down.code, down.recovered, up.recovered) == ("conn", 7, False, True)
    assert json.loads(down.text) == {"KHH": "1001", "NAME": "SIM", "EVENT": 7}


def test_query_records_become_english_named_models():
    fund = rec.FundRecord.Data(KHH="1001", ZJZH="Z1", BZ="RMB", Amount1=100.0, Amount2=100.0,
                               Amount3=900.0, Amount4=95.0, Amount7=500.0, Amount8=880.0,
                               Amount9=20.0, Total=620.0)
    model = Fund.from_record(fund)
    assert (model.available, model.balance, model.withdrawable, model.market_value,
            model.opening_balance, model.frozen, model.total) == \
        (100.0, 900.0, 95.0, 500.0, 880.0, 20.0, 620.0)
    assert model.raw is fund and "raw" not in model.as_dict()
    raw = rec.PositionRecord.from_bytes(
        b"1001".ljust(16, b"\0") + b"SZ".ljust(4, b"\0") + b"0000001001".ljust(12, b"\0") +
        b"000001".ljust(9, b"\0") + "平安银行".encode("gbk").ljust(33, b"\0") +
        struct.pack("<qq4d", 5000, 4000, 11.0, 12.0, 60000.0, 5000.0) + b"RMB\0" + bytes(258))
    position = Position.from_record(raw.to_data())
    assert (position.exchange, position.code, position.name, position.quantity,
            position.sellable, position.cost_price, position.price) == \
        (Exchange.SZ, "000001", "平安银行", 5000, 4000, 11.0, 12.0)
    lines = table([position], ["code", "name", "quantity"]).splitlines()
    assert [len(line) for line in lines[:2]] == [len("code    name      quantity")] * 2
    assert lines[2].split() == ["000001", "平安银行", "5000"]


@pytest.mark.parametrize("fields,status", [
    ({"WTSL": 300, "CJSL": 0, "CDSL": 0, "SBJG": 2}, OrderStatus.ACCEPTED),
    ({"WTSL": 300, "CJSL": 100, "CDSL": 0, "SBJG": 2}, OrderStatus.PARTIALLY_FILLED),
    ({"WTSL": 300, "CJSL": 300, "CDSL": 0, "SBJG": 2}, OrderStatus.FILLED),
    ({"WTSL": 300, "CJSL": 100, "CDSL": 200, "SBJG": 2}, OrderStatus.PARTIALLY_WITHDRAWN),
    ({"WTSL": 300, "CJSL": 0, "CDSL": 300, "SBJG": 2}, OrderStatus.WITHDRAWN),
    ({"WTSL": 300, "CJSL": 0, "CDSL": 0, "SBJG": 3}, OrderStatus.REJECTED),
    ({"WTSL": 300, "CJSL": 0, "CDSL": 0, "SBJG": 9}, OrderStatus.REJECTED),
])
def test_an_order_row_shows_its_status(fields, status):
    row = OrderInfo.from_record(rec.OrderRecord.Data(KHH="1001", JYS="SH", WTH=1, JYLB=1,
                                                     KFSBDBH=77, CXBZ="O", **fields))
    assert row.status is status and row.side is Side.BUY and row.request_no == 77
    assert row.as_dict()["status"] == status.value


def test_status_moves_only_forward_as_facts_are_added():
    steps = [(False, False, 0, 0), (True, False, 0, 0), (True, False, 40, 0),
             (True, False, 100, 0)]
    seen = [derive_status(a, r, 100, f, w) for a, r, f, w in steps]
    assert seen == [OrderStatus.PENDING, OrderStatus.ACCEPTED, OrderStatus.PARTIALLY_FILLED,
                    OrderStatus.FILLED]
    assert [s.final for s in seen] == [False, False, False, True]


@pytest.mark.parametrize("code,exchange", [
    ("600000", Exchange.SH), ("510050", Exchange.SH), ("204001", Exchange.SH),
    ("000001", Exchange.SZ), ("159919", Exchange.SZ), ("300750", Exchange.SZ),
    ("200002", Exchange.SZ), ("ABC", None), ("60000", None)])
def test_exchange_from_the_security_code(code, exchange):
    assert exchange_of(code) is exchange


def test_exchange_codes_the_enum_does_not_name_still_convert():
    other = Exchange("BJ")
    assert other == "BJ" and other.value == "BJ" and str(other) == "BJ"
    assert Exchange("SH") is Exchange.SH


@pytest.mark.parametrize("code,message,function,cls", [
    (-221, "非法参数", "SECMOLRA_OrderEntrust", InvalidArgument),
    (-226, "客户存在多个节点，未指定交易节点", "SECMOLRA_TradeLogin", InvalidArgument),
    (-222, "功能未实现", "", NotSupported),
    (-203, "客户未登录", "", NotLoggedIn),
    (0, "客户未连接登录，无法获取连接", "QueryZjxx", NotLoggedIn),
    (-202, "未连接，无法发起会话", "OrderEntrust", NoSession),
    (-204, "发送请求失败", "", SendFailed),
    (-205, "应答数据包不正确1", "Sc_Order_AsyncFuncProcess", BadReply),
    (-206, "读取配置文件[x]失败", "", ConfigError),
    (-223, "未知系统类型", "", ConfigError),
    (-224, "无法获取到连接信息", "", ConfigError),
    (0, "connect failed.refused[key:SIM,addr:127.0.0.1:1]", "SECMOLRA_TradeLogin",
     TransportError),
    (-200, "加载kelapi.dll失败，错误码：2", "", TransportError),
    (0, "", "SECMOLRA_Init", TransportError),
    (-1, "创建连接池失败", "SECMOLRA_Init", InternalError),
    (-299, "内部错误", "", InternalError),
    (-103, "insufficient funds", "OrderEntrust", Refused),
    (-1, "unknown function", "QueryZjxx", Refused),
    (0, "answer code 0", "OrderEntrust", Refused),
    (-227, "客户未开通WOQ交易", "", KitError),
])
def test_each_code_family_has_its_class(code, message, function, cls):
    error = error_for(code, message, function)
    assert type(error) is cls and isinstance(error, KitError)
    assert (error.code, error.message, error.function) == (code, message, function)
    assert str(error) == (f"{function}: " if function else "") + f"[{code}] {message}"


def test_every_public_name_of_the_package_has_a_docstring():
    import importlib
    import inspect
    import pkgutil

    import secmolra
    missing = []
    for info in pkgutil.iter_modules(secmolra.__path__):
        module = importlib.import_module(f"secmolra.{info.name}")
        missing += [] if module.__doc__ else [module.__name__]
        for name, obj in vars(module).items():
            if name.startswith("_") or getattr(obj, "__qualname__", None) != name or \
                    obj.__module__ != module.__name__:
                continue  # private, or defined elsewhere
            members = [(name, obj)] + [(f"{name}.{m}", getattr(v, "__func__", v))
                                       for m, v in vars(obj).items() if not m.startswith("_")
                                       and inspect.isclass(obj)]
            missing += [f"{module.__name__}.{n}" for n, o in members
                        if (inspect.isclass(o) or inspect.isfunction(o) or
                            isinstance(o, property)) and not o.__doc__]
    assert missing == []
