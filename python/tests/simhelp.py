"""Test helpers run inside scenario processes: the sim transport's control interface
(KelSim_ functions of kelapi50.dll, the same module the kit loads) and a started session."""
from __future__ import annotations

import ctypes
import struct
from ctypes import c_char_p, c_int32, c_int64
from pathlib import Path

from secmolra import Session
from secmolra.simulated import SIM_KEY, write_profile

_SIGNATURES = {
    "KelSim_ConnectionByAddr": (c_int64, [c_char_p, c_int32]),
    "KelSim_BreakConnection": (None, [c_int64, c_int32]),
    "KelSim_RestoreConnection": (None, [c_int64]),
    "KelSim_WaitIdle": (None, []),
    "KelSim_OpenSessions": (c_int32, []),
    "KelSim_ConnectionCount": (c_int32, []),
    "KelSim_PushRecord": (None, [c_char_p, c_int32, c_char_p, c_int32]),
}


class Sim:
    def __init__(self, build: Path):
        self.dll = ctypes.CDLL(str(Path(build).resolve() / "kelapi50.dll"))
        for name, (restype, argtypes) in _SIGNATURES.items():
            fn = getattr(self.dll, name, None)
            if fn is not None:
                fn.restype, fn.argtypes = restype, argtypes
                setattr(self, name[len("KelSim_"):], fn)


def push_record(khh: str, wth: int, zqdm: str = "600000", note: str = "",
                cjsl: int = 0) -> bytes:
    """A 402-byte confirmation/match record as the back end pushes it."""
    raw = bytearray(402)
    raw[0:len(khh)] = khh.encode()
    struct.pack_into("<q", raw, 44, wth)
    raw[57:59] = b"SH"
    raw[82:82 + len(zqdm)] = zqdm.encode()
    struct.pack_into("<q", raw, 192, cjsl)
    raw[240] = 1
    struct.pack_into("<i", raw, 245, 2)
    jgsm = note.encode("gbk")[:60]
    raw[249:249 + len(jgsm)] = jgsm
    return bytes(raw)


def session(build: Path, work: Path, **kwargs) -> Session:
    """A started session on the simulated back end, molra.ini written into work/profile."""
    profile = write_profile(Path(work) / "profile", **kwargs.pop("profile_settings", {}))
    s = Session(build, transport_dir=build, profile_path=profile,
                log_path=Path(work) / "log", **kwargs)
    return s.start()


KEY = SIM_KEY
