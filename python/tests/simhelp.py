"""Test helpers run inside scenario processes: the sim transport's control interface
(KelSim_ functions of kelapi50.dll, the same module the kit loads) and a started session."""
from __future__ import annotations

import ctypes
import struct
from ctypes import c_char_p, c_int32, c_int64
from pathlib import Path

from secmolra import KitSession, Session
from secmolra.simulated import SIM_CUSTOMERS, SIM_KEY, write_profile

_SIGNATURES = {
    "KelSim_ConnectionByAddr": (c_int64, [c_char_p, c_int32]),
    "KelSim_BreakConnection": (None, [c_int64, c_int32]),
    "KelSim_RestoreConnection": (None, [c_int64]),
    "KelSim_WaitIdle": (None, []),
    "KelSim_OpenSessions": (c_int32, []),
    "KelSim_ConnectionCount": (c_int32, []),
    "KelSim_PushRecord": (None, [c_char_p, c_int32, c_char_p, c_int32]),
    "KelSim_SetPrice": (None, [c_char_p, c_char_p, ctypes.c_double]),
    "KelSim_SetLiquidity": (None, [c_char_p, c_char_p, c_int64]),
    "KelSim_SetMatchVolume": (None, [c_int64]),
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


def session(build: Path, work: Path, kind=Session, **kwargs):
    """A started trading session (or KitSession) on the simulated back end, molra.ini
    written into work/profile."""
    profile = write_profile(Path(work) / "profile", **kwargs.pop("profile_settings", {}))
    s = kind(build, transport_dir=build, profile_path=profile, log_path=Path(work) / "log",
             **kwargs)
    return s.start()


def records_session(build: Path, work: Path, **kwargs) -> KitSession:
    """A started record-level session whose callback texts are kept in `texts`."""
    texts = []
    s = session(build, work, KitSession, on_text=lambda *a: texts.append(a), **kwargs)
    s.texts = texts
    return s


def logged_in(build: Path, work: Path, khh: str = "1001", **kwargs) -> Session:
    """A started trading session with the customer logged in."""
    s = session(build, work, **kwargs)
    s.login(SIM_KEY, khh, SIM_CUSTOMERS[khh])
    return s


KEY = SIM_KEY
