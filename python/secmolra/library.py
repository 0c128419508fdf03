"""Finding and loading the kit, binding its exports from the table in exports.py."""
from __future__ import annotations

import ctypes
import os
import sys
import threading
from pathlib import Path

from .exports import EXPORTS, Export
from .records import decode

LIBRARY_ENV = "SECMOLRA_LIBRARY"
TRANSPORT_FILE = "kelapi50.dll"  # the kit loads "./kelapi50.dll" from the current directory
if sys.platform == "win32":
    _BUILD_NAMES = ("src/secmolra.dll", "secmolra.dll", "bin/secmolra.dll")
else:
    _BUILD_NAMES = ("src/libsecmolra.so",)

# Large enough for any last-error message: an answer's error text may be up to 1 MiB.
_ERROR_BUFFER_SIZE = 2 * 1024 * 1024


class KitError(Exception):
    """A failure reported by the kit: its code and message (decoded from GBK)."""

    def __init__(self, code: int, message: str, function: str = ""):
        self.code = code
        self.message = message
        self.function = function
        where = f"{function}: " if function else ""
        super().__init__(f"{where}[{code}] {message}")


class LibraryNotFound(FileNotFoundError):
    pass


def _repository_root() -> Path:
    return Path(__file__).resolve().parents[2]


def build_library(build_dir) -> Path | None:
    """The kit inside a build folder, or None."""
    for name in _BUILD_NAMES:
        path = Path(build_dir) / name
        if path.is_file():
            return path
    return None


def find_library(path=None) -> Path:
    """The kit to load: the given path (a file or a build folder), else $SECMOLRA_LIBRARY,
    else the build folder of the current directory or of this source checkout."""
    tried = []
    for candidate in (path, os.environ.get(LIBRARY_ENV)):
        if not candidate:
            continue
        candidate = Path(candidate)
        found = build_library(candidate) if candidate.is_dir() else candidate
        if found and found.is_file():
            return found
        tried.append(str(candidate))
    for build in (Path.cwd() / "build", _repository_root() / "build"):
        found = build_library(build)
        if found:
            return found
        tried.append(str(build))
    raise LibraryNotFound("the kit library was not found; give its path, set "
                          f"{LIBRARY_ENV}, or build it (tried: {', '.join(tried)})")


class MissingExport:
    """Stands for an export that this build of the kit does not have."""

    def __init__(self, name: str, path: Path):
        self.name, self.path = name, path

    def __call__(self, *args):
        raise AttributeError(f"{self.name} is not exported by {self.path}")


class Kit:
    """The loaded kit: every export of the table is an attribute with exact argtypes and
    restype (``kit.SECMOLRA_OrderEntrust``). Exports the library lacks are listed in
    ``missing`` and raise AttributeError when called."""

    def __init__(self, path=None):
        self.path = find_library(path)
        self.dll = ctypes.CDLL(str(self.path))
        self.exports: dict[str, Export] = {}
        self.missing: list[str] = []
        self._local = threading.local()
        for export in EXPORTS:
            self._bind(export)

    def _bind(self, export: Export) -> None:
        try:
            fn = getattr(self.dll, export.name)
        except AttributeError:
            self.missing.append(export.name)
            setattr(self, export.name, MissingExport(export.name, self.path))
            return
        fn.argtypes = export.argtypes
        fn.restype = export.restype
        self.exports[export.name] = export
        setattr(self, export.name, fn)

    def last_error(self) -> tuple[int, str]:
        """The last error the kit recorded on the calling thread, as (code, message); reading
        does not clear it. Another thread's failure never shows here."""
        buf = getattr(self._local, "buf", None)
        if buf is None:
            buf = self._local.buf = ctypes.create_string_buffer(_ERROR_BUFFER_SIZE)
        code = self.SECMOLRA_GetThreadLastError(buf, _ERROR_BUFFER_SIZE)
        return code, decode(buf.value)

    def error(self, function: str = "") -> KitError:
        code, message = self.last_error()
        return KitError(code, message, function)
