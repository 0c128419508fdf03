#!/usr/bin/env python3
"""Writes a row of the kit's message table (src/core/messages.h) for a text.

    python3 scripts/gbk_literal.py kName "文本"

The row holds the text itself and its GBK bytes as a C literal; the kit compiles the bytes,
a test checks them against the text.
"""
import sys


def gbk_literal(text: str) -> str:
    """The C string literal of the GBK bytes of `text` (ASCII kept readable)."""
    out = []
    hex_open = False  # a hex escape just ended: a hex digit after it would join the escape
    for byte in text.encode("gb18030"):
        ch = chr(byte)
        if byte >= 0x80:
            out.append(f"\\x{byte:02X}")
            hex_open = True
            continue
        if hex_open and ch in "0123456789abcdefABCDEF":
            out.append('" "')
        hex_open = False
        out.append({"\\": "\\\\", '"': '\\"', "\n": "\\n"}.get(ch, ch))
    return '"' + "".join(out) + '"'


def table_row(name: str, text: str) -> str:
    """The two lines of the table row: name and text, then the bytes."""
    escaped = text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n")
    return f'  X({name}, "{escaped}", \\\n    {gbk_literal(text)}) \\'


def main() -> None:
    """Prints the table row of the name and text given on the command line."""
    print(table_row(sys.argv[1], sys.argv[2]))


if __name__ == "__main__":
    main()
