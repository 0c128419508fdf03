"""Finding and loading the kit, binding its exports from the table in exports.py."""
from __future__ import annotations

import ctypes
import os
import sys
import threading
from pathlib import Path
from typing import Any, Dict, List, Optional, Tuple, Union

from .errors import KitError, LibraryNotFound, error_for
from .exports import EXPORTS, Export
from .records import decode

__all__ = ["BUNDLED_DIR", "Kit", "KitError", "LIBRARY_ENV", "LibraryNotFound", "TRANSPORT_FILE",
           "build_library", "bundled_library", "bundled_transport_dir", "find_library",
           "transport_beside"]

PathLike = Union[str, "os.PathLike[str]"]
LIBRARY_ENV = "SECMOLRA_LIBRARY"
TRANSPORT_FILE = "kelapi50.dll"  # the kit loads "./kelapi50.dll" from the current directory
# An installed wheel carries the kit and the simulated transport here.
BUNDLED_DIR = Path(__file__).resolve().parent / "_lib"
if sys.platform == "win32":
    LIBRARY_FILE = "secmolra.dll"
    _BUILD_NAMES: Tuple[str, ...] = ("src/secmolra.dll", "secmolra.dll", "bin/secmolra.dll")
else:
    LIBRARY_FILE = "libsecmolra.so"
    _BUILD_NAMES = ("src/libsecmolra.so",)

# Large enough for any last-error message: an answer's error text may be up to 1 MiB.
_ERROR_BUFFER_SIZE = 2 * 1024 * 1024


def _repository_root() -> Path:
    return Path(__file__).resolve().parents[2]


def build_library(build_dir: PathLike) -> Optional[Path]:
    """The kit inside a build folder, or None."""
    for name in _BUILD_NAMES:
        path = Path(build_dir) / name
        if path.is_file():
            return path
    return None


def bundled_library() -> Optional[Path]:
    """The kit carried inside the installed package (a wheel), or None."""
    path = BUNDLED_DIR / LIBRARY_FILE
    return path if path.is_file() else None


def bundled_transport_dir() -> Optional[Path]:
    """The folder of the simulated transport carried inside the package, or None."""
    return BUNDLED_DIR if (BUNDLED_DIR / TRANSPORT_FILE).is_file() else None


def transport_beside(library: Path) -> Optional[Path]:
    """The folder of the kelapi50.dll that comes with a kit: the package's own folder, or
    the build folder of a kit built at BUILD/src."""
    for folder in (library.parent, library.parent.parent):
        if (folder / TRANSPORT_FILE).is_file():
            return folder
    return None


def find_library(path: Optional[PathLike] = None) -> Path:
    """The kit to load: the given path (a file or a build folder), else $SECMOLRA_LIBRARY,
    else the one inside the package, else the build folder of the current directory or of
    this source checkout."""
    tried: List[str] = []
    for given in (path, os.environ.get(LIBRARY_ENV)):
        if not given:
            continue
        candidate = Path(given)
        found = build_library(candidate) if candidate.is_dir() else candidate
        if found is not None and found.is_file():
            return found
        tried.append(str(candidate))
    bundled = bundled_library()
    if bundled is not None:
        return bundled
    tried.append(str(BUNDLED_DIR / LIBRARY_FILE))
    for build in (Path.cwd() / "build", _repository_root() / "build"):
        found = build_library(build)
        if found is not None:
            return found
        tried.append(str(build))
    raise LibraryNotFound("the kit library was not found; give its path, set "
                          f"{LIBRARY_ENV}, or build it (tried: {', '.join(tried)})")


class MissingExport:
    """Stands for an export that this build of the kit does not have."""

    def __init__(self, name: str, path: Path) -> None:
        self.name, self.path = name, path

    def __call__(self, *args: Any) -> Any:
        raise AttributeError(f"{self.name} is not exported by {self.path}")


class Kit:
    """The loaded kit: every export of the table is an attribute with exact argtypes and
    restype (``kit.SECMOLRA_OrderEntrust``). Exports the library lacks are listed in
    ``missing`` and raise AttributeError when called."""

    def __init__(self, path: Optional[PathLike] = None) -> None:
        self.path = find_library(path)
        self.dll = ctypes.CDLL(str(self.path))
        self.exports: Dict[str, Export] = {}
        self.missing: List[str] = []
        self._local = threading.local()
        for export in EXPORTS:
            self._bind(export)

    def __getattr__(self, name: str) -> Any:
        # Only reached for names that are not bound: every export is set in __init__.
        raise AttributeError(f"{name} is not an export of the kit's table")

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

    def last_error(self) -> Tuple[int, str]:
        """The last error the kit recorded on the calling thread, as (code, message), read
        through SECMOLRA_GetThreadLastError: another thread's failure never shows here.
        Reading does not clear it."""
        buf = getattr(self._local, "buf", None)
        if buf is None:
            buf = self._local.buf = ctypes.create_string_buffer(_ERROR_BUFFER_SIZE)
        code = self.SECMOLRA_GetThreadLastError(buf, len(buf))
        return int(code), decode(buf.value)

    def error(self, function: str = "") -> KitError:
        """The calling thread's last error as the exception of its code family."""
        code, message = self.last_error()
        return error_for(code, message, function)
