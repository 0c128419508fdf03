#!/usr/bin/env python3
"""The interface reference (docs/interface.md), generated from the comments of secmolra.h.

    python3 scripts/interface_doc.py            writes docs/interface.md
    python3 scripts/interface_doc.py --check    fails when docs/interface.md is not what the
                                                header gives (the test command runs this)
    python3 scripts/interface_doc.py --header H --output O
    python3 scripts/interface_doc.py --windows-readme TEMPLATE OUT

Every export needs its comment: the comment block right above its declaration, or, for the
Ex, _ASync and Ex_ASync forms of an operation, the comment of the form declared right above
it. A comment followed by a blank line introduces what follows and belongs to no export. An
export without a comment is an error.
"""
from __future__ import annotations

import argparse
import re
import sys
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
HEADER = ROOT / "include" / "secmolra.h"
OUTPUT = ROOT / "docs" / "interface.md"

SECTION_RE = re.compile(r"^/\* -{2,} (.*?) -{2,} \*/$")
MARKER_RE = re.compile(r"^/\* @[\w-]+@ \*/$")
EXPORT_RE = re.compile(r"^SECMOLRA_API\b")
NAME_RE = re.compile(r"\b((?:PY)?SECMOLRA_\w+)\s*\(")
ERROR_RE = re.compile(r"^#define (SECMOLRA_ERR_\w+) \((-?\d+)\)\s*/\*\s*(.*?)\s*\*/")
CALLBACK_RE = re.compile(r"^typedef \w+ \(\*(\w+)\)")
RECORD_RE = re.compile(r"^typedef struct (\w+) \{")
SIZE_RE = re.compile(r"SECMOLRA_STATIC_ASSERT\(sizeof\((\w+)\) == (\d+)")


@dataclass
class Comment:
    """One /* ... */ block: its text and whether a blank line follows it."""

    text: str
    line: int
    detached: bool = False


@dataclass
class Entry:
    """A documented item: an export group, a record or a callback."""

    kind: str  # "export", "record" or "callback"
    names: list[str]
    doc: str
    code: list[str]
    size: int = 0


@dataclass
class Section:
    """A part of the header under a "/* ---- title ---- */" line."""

    title: str
    intro: list[str] = field(default_factory=list)
    entries: list[Entry] = field(default_factory=list)


@dataclass
class Interface:
    """Everything read from the header."""

    overview: list[str] = field(default_factory=list)
    errors: list[tuple[str, str, str]] = field(default_factory=list)
    sections: list[Section] = field(default_factory=list)
    problems: list[str] = field(default_factory=list)

    def exports(self) -> list[tuple[str, str]]:
        """(name, declaration) of every export, in header order."""
        return [(n, c) for s in self.sections for e in s.entries if e.kind == "export"
                for n, c in zip(e.names, e.code)]


def base_name(name: str) -> str:
    """The operation an export belongs to: its name without the Ex and _ASync suffixes."""
    name = name.removesuffix("_ASync")
    return name.removesuffix("Ex")


def comment_text(lines: list[str]) -> str:
    """The text of a comment block, its lines joined."""
    parts = []
    for n, raw in enumerate(lines):
        line = raw.strip()
        if n == 0:
            line = line.removeprefix("/*")
        if n == len(lines) - 1:
            line = line.removesuffix("*/")
        line = line.strip()
        if n > 0 and line == "*":
            line = "\n\n"  # an empty comment line separates paragraphs
        elif n > 0 and line.startswith("* "):
            line = line[2:]
        parts.append(line.strip(" "))
    return " ".join(p for p in parts if p).replace(" \n\n ", "\n\n")


def read_block(lines: list[str], i: int, end: str) -> tuple[list[str], int]:
    """Lines from i up to and including the first that contains `end`; the next index."""
    block = []
    while i < len(lines):
        block.append(lines[i])
        i += 1
        if end in block[-1]:
            break
    return block, i


class Reader:
    """Walks the header line by line, attaching comments to what they describe."""

    def __init__(self, text: str) -> None:
        self.lines = text.splitlines()
        self.api = Interface()
        self.section = Section("Overview")
        self.pending: list[Comment] = []
        self.last: Entry | None = None  # the export declared on the line right above

    def read(self) -> Interface:
        i = 0
        while i < len(self.lines):
            i = self.step(i)
        self.close_section()
        declared = sum(1 for ln in self.lines if EXPORT_RE.match(ln))
        if declared != len(self.api.exports()):
            self.api.problems.append(f"read {len(self.api.exports())} of {declared} exports")
        return self.api

    def step(self, i: int) -> int:
        line = self.lines[i]
        stripped = line.strip()
        if stripped == "":
            if self.pending:
                self.pending[-1].detached = True
            self.last = None
            return i + 1
        if MARKER_RE.match(stripped):
            return i + 1
        heading = SECTION_RE.match(stripped)
        if heading:
            self.close_section()
            self.section = Section(heading.group(1)[:1].upper() + heading.group(1)[1:])
            self.last = None
            return i + 1
        if line.startswith("/*"):
            block, nxt = read_block(self.lines, i, "*/")
            self.pending.append(Comment(comment_text(block), i + 1))
            self.last = None
            return nxt
        if EXPORT_RE.match(line):
            block, nxt = read_block(self.lines, i, ";")
            self.export(block, i + 1)
            return nxt
        error = ERROR_RE.match(line)
        if error:
            self.api.errors.append((error.group(2), error.group(1), error.group(3)))
            return i + 1
        if RECORD_RE.match(line) or CALLBACK_RE.match(line):
            end = "} " if RECORD_RE.match(line) else ";"
            block, nxt = read_block(self.lines, i, end)
            self.typedef(block)
            return nxt
        size = SIZE_RE.search(line)
        if size:
            for entry in self.section.entries:
                if entry.names == [size.group(1)]:
                    entry.size = int(size.group(2))
        self.flush_intro()
        self.last = None
        return i + 1

    def doc_comment(self) -> str | None:
        """The comment right above the current line, after moving the others to the intro."""
        doc = self.pending.pop() if self.pending and not self.pending[-1].detached else None
        self.flush_intro()
        return doc.text if doc else None

    def flush_intro(self) -> None:
        for c in self.pending:
            if not self.api.sections and not self.api.overview and not self.section.entries:
                self.api.overview.append(c.text)
            else:
                self.section.intro.append(c.text)
        self.pending = []

    def export(self, block: list[str], line: int) -> None:
        decl = "\n".join([block[0].removeprefix("SECMOLRA_API ")] +
                         ["    " + ln.strip() for ln in block[1:]])
        found = NAME_RE.search(decl)
        name = found.group(1) if found else decl
        doc = self.doc_comment()
        if doc is not None:
            self.last = Entry("export", [name], doc, [decl])
            self.section.entries.append(self.last)
        elif self.last is not None and base_name(self.last.names[0]) == base_name(name):
            self.last.names.append(name)
            self.last.code.append(decl)
        else:
            self.api.problems.append(f"secmolra.h:{line}: {name} has no comment")
            self.last = Entry("export", [name], "", [decl])
            self.section.entries.append(self.last)

    def typedef(self, block: list[str]) -> None:
        record = RECORD_RE.match(block[0])
        kind, name = ("record", record.group(1)) if record else ("callback", "")
        if not record:
            found = CALLBACK_RE.match(block[0])
            name = found.group(1) if found else block[0]
        self.section.entries.append(Entry(kind, [name], self.doc_comment() or "", block))
        self.last = None

    def close_section(self) -> None:
        self.flush_intro()
        if self.section.intro or self.section.entries:
            self.api.sections.append(self.section)


def anchor(title: str) -> str:
    """GitHub's anchor of a heading."""
    return re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")


def render_entry(entry: Entry) -> list[str]:
    if entry.kind == "export":
        title = f"`{entry.names[0]}`"
        forms = [n.removeprefix(base_name(entry.names[0])) for n in entry.names[1:]]
        if forms:
            listed = forms[0] if len(forms) == 1 else ", ".join(forms[:-1]) + " and " + forms[-1]
            title += f" and its {listed} form" + ("s" if len(forms) > 1 else "")
        code = entry.code
    else:
        title = f"`{entry.names[0]}`" + (f" ({entry.size} bytes)" if entry.size else "")
        code = entry.code
    out = [f"### {title}", ""]
    if entry.kind == "export" and any("std::vector" in c for c in entry.code):
        out += ["C++ hosts built with the kit's C++ standard library only (takes a `std::vector`).",
                ""]
    if entry.doc:
        out += [entry.doc, ""]
    return out + ["```c", *code, "```", ""]


def render(api: Interface) -> str:
    out = ["# Interface reference", "",
           "Generated by `python3 scripts/interface_doc.py` from the comments of",
           "`include/secmolra.h`: edit the header, not this file.", ""]
    out += [p + "\n" for p in api.overview]
    out += ["## Contents", "", "- [Error codes](#error-codes)"]
    out += [f"- [{s.title}](#{anchor(s.title)})" for s in api.sections]
    out += ["", "## Error codes", "", "| Code | Name | Meaning |", "|---|---|---|"]
    out += [f"| {code} | `{name}` | {text} |" for code, name, text in api.errors]
    out.append("")
    for s in api.sections:
        out += [f"## {s.title}", ""]
        out += [p + "\n" for p in s.intro]
        for entry in s.entries:
            out += render_entry(entry)
    return "\n".join(out).rstrip() + "\n"


def vector_table(api: Interface) -> str:
    """Markdown table: each std::vector export and the plain-array form other hosts use."""
    names = {n for n, _ in api.exports()}
    rows = ["| Export (takes `std::vector`) | Plain-array form for other hosts |", "|---|---|"]
    for name, decl in api.exports():
        if "std::vector" not in decl:
            continue
        forms = ["PY" + name, "PY" + name.replace("Ex_ASync", "_ASync").removesuffix("Ex")]
        other = next((f for f in forms if f in names), None)
        note = "none" if other is None else f"`{other}`" + (
            "" if other == "PY" + name else " (customer by number)")
        rows.append(f"| `{name}` | {note} |")
    return "\n".join(rows)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--header", type=Path, default=HEADER)
    parser.add_argument("--output", type=Path, default=OUTPUT)
    parser.add_argument("--check", action="store_true",
                        help="compare with --output instead of writing it")
    parser.add_argument("--windows-readme", nargs=2, type=Path, metavar=("TEMPLATE", "OUT"),
                        help="fill @VECTOR_EXPORTS@ of TEMPLATE, write OUT")
    args = parser.parse_args()

    api = Reader(args.header.read_text(encoding="utf-8")).read()
    if api.problems:
        print("\n".join(api.problems), file=sys.stderr)
        print("every export needs a comment right above it (see scripts/interface_doc.py)",
              file=sys.stderr)
        return 1
    if args.windows_readme:
        template, out = args.windows_readme
        text = template.read_text(encoding="utf-8")
        out.write_text(text.replace("@VECTOR_EXPORTS@", vector_table(api)), encoding="utf-8")
        return 0
    text = render(api)
    if args.check:
        current = args.output.read_text(encoding="utf-8") if args.output.exists() else ""
        if current != text:
            print(f"{args.output} is not what {args.header} gives: "
                  "run python3 scripts/interface_doc.py", file=sys.stderr)
            return 1
        print(f"{args.output}: {len(api.exports())} exports, each with its comment")
        return 0
    args.output.write_text(text, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
