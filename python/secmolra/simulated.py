"""The simulated back end's connection profile (built-in addresses of the sim transport)."""
from __future__ import annotations

from pathlib import Path

SIM_KEY = "SIM"
SIM_ADDRESSES = {
    "addr": "127.0.0.1:9101",           # management
    "tradeaddr": "127.0.0.1:9102",      # trade
    "queryaddr": "127.0.0.1:9103",      # query
    "subscribeaddr": "127.0.0.1:9104",  # subscribe
}
SIM_CUSTOMERS = {"1001": "111111", "1002": "222222", "1003": "333333", "1004": "444444"}


def write_profile(folder, key: str = SIM_KEY, global_settings: dict | None = None,
                  **settings) -> Path:
    """Writes folder/molra.ini with a GLOBAL section and one connection section `key` for
    the simulated back end; extra settings override or add keys. Returns the folder."""
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    section = {"Name": key, "SystemType": "4", **SIM_ADDRESSES, **settings}
    lines = ["[GLOBAL]"] + [f"{k}={v}" for k, v in (global_settings or {}).items()]
    lines += ["", f"[{key}]"] + [f"{k}={v}" for k, v in section.items()]
    (folder / "molra.ini").write_bytes(("\r\n".join(lines) + "\r\n").encode("gbk"))
    return folder
