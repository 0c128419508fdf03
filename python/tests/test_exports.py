"""The export table against the public header, the built library and a C compiler."""
from __future__ import annotations

import ctypes
import re
import shutil
import subprocess
import sys

import pytest

from conftest import REPO
from secmolra import exports as ex
from secmolra import records as rec
from secmolra.exports import BY_NAME, EXPORTS

HEADER = REPO / "include" / "secmolra.h"

_SCALARS = {"bool": ctypes.c_bool, "int32_t": ctypes.c_int32, "int64_t": ctypes.c_int64,
            "uint64_t": ctypes.c_uint64, "double": ctypes.c_double, "char": ctypes.c_char,
            "void": None, "char*": ctypes.c_char_p, "void*": ctypes.c_void_p,
            "int32_t*": ctypes.POINTER(ctypes.c_int32),
            "SECMOLRA_MsgCallback": ex.MsgCallback, "SECMOLRA_FuncCallback": ex.FuncCallback,
            "SECMOLRA_ConnEventCallback": ex.ConnEventCallback}


def _header_text() -> str:
    text = HEADER.read_text(encoding="utf-8")
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
    return re.sub(r"//[^\n]*", " ", text)


def _struct_sizes(text: str) -> dict:
    return {m[1]: int(m[2]) for m in re.finditer(
        r"SECMOLRA_STATIC_ASSERT\(\s*sizeof\((\w+)\)\s*==\s*(\d+)", text)}


def _type(decl: str) -> str:
    """'const char* lpKhh' -> 'char*'; 'int64_t' -> 'int64_t'."""
    decl = re.sub(r"\bconst\b", " ", decl).replace("*", " * ")
    tokens = decl.split()
    stars = tokens.count("*")
    words = [t for t in tokens if t != "*"]
    if len(words) > 1 and not words[-1].endswith("&"):
        words = words[:-1]  # drop the parameter name
    return " ".join(words) + "*" * stars


def header_exports() -> tuple[dict, set]:
    """({name: (return type, [parameter types])} of the C-callable exports, {vector ones})."""
    text = _header_text()
    found, vectors = {}, set()
    for m in re.finditer(r"SECMOLRA_API\s+([\w\s\*]+?)\s*\b((?:PY)?SECMOLRA_\w+)\s*\(([^;]*?)\)\s*;",
                         text, re.S):
        ret, name, params = m[1], m[2], m[3]
        if "std::vector" in params:
            vectors.add(name)
            continue
        plist = [] if params.strip() in ("", "void") else [_type(p) for p in params.split(",")]
        found[name] = (_type(ret), plist)
    return found, vectors


def _matches(ctype, c_type: str, sizes: dict) -> bool:
    if c_type in _SCALARS:
        return ctype is _SCALARS[c_type]
    if c_type.endswith("*") and c_type[:-1] in sizes:
        target = getattr(ctype, "_type_", None)
        return isinstance(target, type) and issubclass(target, rec.Record) and \
            ctypes.sizeof(target) == sizes[c_type[:-1]]
    return False


def test_every_c_callable_export_of_the_header_is_in_the_table_with_its_types():
    found, _ = header_exports()
    # the parser itself, or an empty result would pass
    assert found["SECMOLRA_GetLastError"] == ("int64_t", ["char*"])
    assert found["SECMOLRA_SetConnEventCallback"] == ("void", ["SECMOLRA_ConnEventCallback"])
    sizes = _struct_sizes(_header_text())
    absent = sorted(set(found) - set(BY_NAME))
    assert not absent, f"exports missing from secmolra/exports.py: {absent}"
    wrong = []
    for name, (ret, params) in found.items():
        export = BY_NAME[name]
        ok = _matches(export.restype, ret, sizes) and len(params) == len(export.args) and \
            all(_matches(t, p, sizes) for t, p in zip(export.argtypes, params))
        if not ok:
            wrong.append(f"{name}: header {ret}({', '.join(params)}), table "
                         f"{export.restype}({', '.join(str(t) for t in export.argtypes)})")
    assert not wrong, "\n".join(wrong)


def test_table_entries_not_yet_in_the_header_are_not_exported_either(kit):
    found, vectors = header_exports()
    undeclared = set(BY_NAME) - set(found)
    exported = sorted(n for n in undeclared if n not in kit.missing)
    assert not exported, f"exported but not declared in the header: {exported}"
    assert not undeclared & vectors


@pytest.mark.skipif(sys.platform == "win32" or not shutil.which("nm"), reason="needs nm")
def test_every_exported_symbol_is_in_the_table_or_a_vector_export(kit):
    out = subprocess.run(["nm", "-D", "--defined-only", str(kit.path)], capture_output=True,
                         text=True, check=True).stdout
    symbols = set(re.findall(r"\b((?:PY)?SECMOLRA_\w+)$", out, re.M))
    _, vectors = header_exports()
    assert symbols, "no exports found"
    assert not symbols - set(BY_NAME) - vectors, "exports the table does not know"


def test_table_forms_follow_the_naming_rules():
    assert [a for a, _ in BY_NAME["SECMOLRA_OrderEntrustEx_ASync"].args] == \
        ["account", "jys", "zqdm", "jylb", "wtsl", "wtjg", "ddlx", "kfsbdbh"]
    assert "SECMOLRA_OrderWithdrawByKFSBDBHEx_ASync" in BY_NAME
    assert [a for a, _ in BY_NAME["SECMOLRA_BatchOrderWithdrawEx_ASync"].args] == \
        ["account", "lsh"]
    assert "SECMOLRA_DZJY_ASync" not in BY_NAME and "SECMOLRA_TradableQty_ASync" not in BY_NAME
    assert all(not e.name.startswith("SECMOLRA_Query") for e in EXPORTS), \
        "the vector queries cannot be called from Python"


@pytest.mark.skipif(not shutil.which("cc"), reason="needs a C compiler")
def test_record_layouts_match_the_header(tmp_path):
    declared = set(re.findall(r"typedef struct (\w+)", _header_text()))
    classes = rec.RECORDS  # every record class, each laid out as the header declares it
    assert {c.__name__ for c in classes} <= declared
    lines, expected = [], []
    for cls in classes:
        lines.append(f'printf("{cls.__name__} %zu\\n", sizeof({cls.__name__}));')
        expected.append(f"{cls.__name__} {ctypes.sizeof(cls)}")
        for name, ctype in cls._fields_:
            lines.append(f'printf("{cls.__name__}.{name} %zu %zu\\n", '
                         f'offsetof({cls.__name__}, {name}), sizeof((({cls.__name__}*)0)->{name}));')
            expected.append(f"{cls.__name__}.{name} {getattr(cls, name).offset} "
                            f"{ctypes.sizeof(ctype)}")
    source = tmp_path / "layout.c"
    source.write_text("#include <stddef.h>\n#include <stdio.h>\n#include \"secmolra.h\"\n"
                      "int main(void) {\n" + "\n".join(lines) + "\nreturn 0;\n}\n")
    exe = tmp_path / "layout"
    subprocess.run(["cc", "-std=c11", "-I", str(HEADER.parent), str(source), "-o", str(exe)],
                   check=True)
    out = subprocess.run([str(exe)], capture_output=True, text=True, check=True).stdout
    assert out.split("\n")[:-1] == expected
