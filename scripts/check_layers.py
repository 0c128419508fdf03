#!/usr/bin/env python3
"""Checks that the kit's layers only include downward (README.md, "Layout").

Each folder of src/ has a rank; a file may include headers of its own folder and of folders
of a lower rank only. Prints every include that points sideways or up; exits 1 if any.
"""
import pathlib
import re
import sys

RANKS = {
    "util": 0,
    "core": 1,
    "config": 2,
    "comm": 3,
    "push": 4,
    "account": 5,
    "query": 6,
    "trade": 6,
    "api": 7,
}


def violations(src: pathlib.Path) -> list[str]:
    """The includes of src/ that leave a file's layer for one above it or beside it."""
    found = []
    for path in sorted(src.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        folder = path.relative_to(src).parts[0]
        if folder not in RANKS:
            found.append(f"{path.relative_to(src)}: the folder {folder}/ has no layer")
            continue
        for match in re.finditer(r'#include "([a-z_]+)/', path.read_text(encoding="utf-8")):
            target = match.group(1)
            if target == folder or target not in RANKS:
                continue
            if RANKS[target] >= RANKS[folder]:
                found.append(f"{path.relative_to(src)} includes {target}/")
    return found


def main() -> None:
    """Prints the violations of the tree given (default: src/ beside this script)."""
    src = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent / "src"
    found = violations(src)
    for line in found:
        print(line)
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
