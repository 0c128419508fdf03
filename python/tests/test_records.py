"""Record decoding and encoding, without the kit (layouts: test_exports.py)."""
import struct

import pytest

from secmolra import records as rec
from secmolra.records import CusLoginInfo


def _fund_bytes(amounts, khh=b"1001", bz="人民".encode("gbk")):
    head = khh.ljust(16, b"\0") + b"Z001".ljust(16, b"\0") + bz.ljust(4, b"\0") + \
        b"X".ljust(16, b"\0")
    body = struct.pack("<9d", *amounts[:9])
    return head + body + b"\xee" * 88 + struct.pack("<d", amounts[9]) + b"\xee" * 16


def test_fund_record_decodes_numbers_and_gbk_text():
    amounts = [100.5, 100.5, 3.0, 4.0, 5.0, 6.0, 7.25, 8.0, 9.0, 10.0]
    fund = rec.FundRecord.from_bytes(_fund_bytes(amounts)).to_data()
    assert fund.KHH == "1001" and fund.ZJZH == "Z001" and fund.BZ == "人民"
    assert (fund.Amount1, fund.Amount2, fund.Total, fund.Amount9) == (100.5, 100.5, 7.25, 10.0)
    assert not any(name.startswith("Reserved") for name in vars(fund))


def test_text_filling_its_whole_width_is_kept_whole():
    raw = bytearray(28)
    raw[0:16] = b"1234567890ABCDEF"  # 16 bytes, no terminating NUL
    raw[16:20] = struct.pack("<i", 4)
    raw[20:24] = b"\xff\xff\xff\xff"  # the reserved int is not part of the data
    raw[24:28] = struct.pack("<i", 7)
    node = rec.CusNodeInfo.from_bytes(bytes(raw)).to_data()
    assert (node.KHH, node.SystemType, node.NodeID) == ("1234567890ABCDEF", 4, 7)
    assert not hasattr(node, "Reserved")


def test_undecodable_bytes_do_not_raise():
    raw = b"\x81" + b"\0" * 47  # a lone GBK lead byte
    assert rec.PSQYRecord.from_bytes(raw).to_data().KHH == "\ufffd"


def test_short_input_is_refused():
    with pytest.raises(ValueError, match="48 bytes"):
        rec.PSQYRecord.from_bytes(b"\0" * 47)


def test_batch_row_round_trip_encodes_gbk_and_bounds_texts():
    row = rec.BatchOrder(Jys="SH", Zqdm="600000", Jylb=1, Wtjg=10.5, Wtsl=100, Ddlx=0,
                            Msg="成交" * 100)
    raw = rec.BatchOrderRow.from_data(row)
    assert bytes(raw)[0:3] == b"SH\0" and bytes(raw)[3:10] == b"600000\0"
    assert struct.unpack_from("<idqi", bytes(raw), 10) == (1, 10.5, 100, 0)
    assert bytes(raw)[53:181] == ("成交" * 32).encode("gbk")  # cut at 128 bytes
    back = raw.to_data()
    assert (back.Jys, back.Zqdm, back.Wtjg, back.Wtsl) == ("SH", "600000", 10.5, 100)


def test_login_record_builder_sets_defaults_the_kit_expects():
    info = CusLoginInfo.of("1001", gdh="A001", password="111111")
    assert (info.KHH, info.GDH, info.Password) == (b"1001", b"A001", b"111111")
    assert (info.NodeID, info.Token, info.ErrorCode) == (-1, -1, 0)
    assert bytes(info)[77:333] == b"\0" * 256


def test_texts_are_read_as_gbk_or_as_the_kits_own_utf8():
    assert rec.decode("客户未登录".encode("gbk")) == "客户未登录"
    assert rec.decode("客户未登录".encode("utf-8") + b"\0junk") == "客户未登录"
    assert rec.decode(b"ABC") == "ABC"
