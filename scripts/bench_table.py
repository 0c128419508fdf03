#!/usr/bin/env python3
"""Prints the benchmark table from Google Benchmark JSON files (molra_bench output).

Each row pairs a kit benchmark with its floor. Times are medians over the repetitions:
of the per-thread CPU time for paths that run wholly on the calling thread, of the
per-iteration median ("p50_ns") for the manual-time paths (pushes and replies). Scaling
compares items per second (wall clock) of two threads with one; memory reads the counters
of the memory runs.

usage: bench_table.py [--markdown] FILE.json...
"""
import json
import sys

# (label, kit benchmark, floor benchmark, kind, target)
#   kind "time":    kit and floor times; target ("ratio", r) or ("extra_us", us) or None
#   kind "scaling": throughput with 2 threads over 1 thread, the kit's beside the floor's;
#                   target ("min", r): the kit's at least r of the floor's
#   kind "allocations": heap allocations per order on the calling thread; the kit's own
#                   (above the floor's, which are the transport's) must be none
#   kind "memory":  peak and resident memory after 100k and 1M orders; target "flat"
#   kind "alone":   a part of a kit path measured on its own (no floor)
ROWS = [
    ("OrderEntrust sync, log off", "entrust:kit_log_off", "entrust:floor", "time", ("ratio", 1.4)),
    ("OrderEntrust sync, log off, floor with the 4 Kel_IsConnect checks", "entrust:kit_log_off",
     "entrust:floor_with_connection_checks", "time", None),
    ("OrderEntrust sync, log on", "entrust:kit_log_on", "entrust:floor", "time", ("extra_us", 0.7)),
    ("OrderEntrust_ASync send, log off", "send:kit", "send:floor", "time", ("ratio", 1.5)),
    ("OrderEntrust sync, heap allocations per order, log off", "allocations:entrust_kit",
     "allocations:entrust_floor", "allocations", None),
    ("OrderEntrust_ASync send, heap allocations per order, log off", "allocations:send_kit",
     "allocations:send_floor", "allocations", None),
    ("logger alone, one entrust-sized line", "log_line:logger_only", None, "alone", None),
    ("OrderWithdraw sync, log off", "withdraw:kit_log_off", "withdraw:floor", "time", None),
    ("OrderWithdraw sync, log on", "withdraw:kit_log_on", "withdraw:floor", "time", None),
    ("QueryFundInfo, 1 row", "fund_query_1:kit", "fund_query_1:floor", "time", None),
    ("QueryFundInfo, 1000 rows", "fund_query_1000:kit", "fund_query_1000:floor", "time", None),
    ("confirmation push, 402-byte record (subscription)", "push_402:kit", "push_402:floor", "time",
     ("ratio", 1.3)),
    ("confirmation push, 415-byte record (structured)", "push_415:kit", "push_415:floor", "time",
     ("ratio", 1.3)),
    ("asynchronous entrust reply", "reply:kit", "reply:floor", "time", ("ratio", 1.3)),
    ("BatchOrderEntrust, 100 rows", "batch_100:kit", "batch_100:floor", "time", None),
    ("OrderEntrust sync, 2 threads / 1 thread throughput", "entrust_threads:kit",
     "entrust_threads:floor", "scaling", ("min", 0.95)),
    ("memory, 100k -> 1M orders", "memory:kit", "memory:floor", "memory", "flat"),
]

FLAT_TOLERANCE_KIB = 512  # growth below this over 900k further orders counts as none

UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def load(paths):
    """Median entries by (base name, threads); single runs stand for their own median."""
    found = {}
    for path in paths:
        with open(path, encoding="utf-8") as f:
            data = json.load(f)
        for b in data.get("benchmarks", []):
            if b.get("error_occurred"):
                key = (b["run_name"].split("/")[0], b.get("threads", 1))
                found[key] = {"error": b.get("error_message", "error")}
                continue
            is_median = b.get("run_type") == "aggregate" and b.get("aggregate_name") == "median"
            single = b.get("run_type") == "iteration" and b.get("repetitions", 1) <= 1
            if is_median or single:
                found[(b["run_name"].split("/")[0], b.get("threads", 1))] = b
    return found


def time_ns(b):
    if "p50_ns" in b:
        return b["p50_ns"]
    return b["cpu_time"] * UNIT_NS[b.get("time_unit", "ns")]


def fmt_us(ns):
    return f"{ns / 1000:.2f} µs"


def time_row(label, kit, floor, target):
    k, f = time_ns(kit), time_ns(floor)
    ratio = k / f
    if target is None:
        return [label, fmt_us(k), fmt_us(f), f"{ratio:.2f}", "-", "-"]
    kind, limit = target
    if kind == "ratio":
        return [label, fmt_us(k), fmt_us(f), f"{ratio:.2f}", f"≤ {limit}×", yes(ratio <= limit)]
    extra = (k - f) / 1000
    return [label, fmt_us(k), fmt_us(f), f"{ratio:.2f} (+{extra:.2f} µs)",
            f"≤ +{limit} µs", yes(extra <= limit)]


def scaling(found, name):
    one, two = found.get((name, 1)), found.get((name, 2))
    if one is None or two is None or "error" in one or "error" in two:
        return None
    return two["items_per_second"] / one["items_per_second"]


def scaling_row(label, found, kit, floor, target):
    k, f = scaling(found, kit), scaling(found, floor)
    if k is None or f is None:
        return [label, "missing", "missing", "-", "-", "-"]
    limit = target[1]
    return [label, f"{k:.2f}×", f"{f:.2f}×", f"{k / f:.2f}", f"≥ {limit}", yes(k / f >= limit)]


def allocations_row(label, kit, floor):
    k, f = kit["allocs_per_order"], floor["allocs_per_order"]
    return [label, f"{k:.2f}", f"{f:.2f}", f"+{k - f:.2f}", "+0 (kit's own)", yes(k - f < 0.005)]


def mib(kib):
    return f"{kib / 1024:.1f}"


def memory_cell(b):
    return (f"HWM {mib(b['hwm_100k_kib'])} → {mib(b['hwm_1m_kib'])} MiB, "
            f"RSS {mib(b['rss_100k_kib'])} → {mib(b['rss_1m_kib'])} MiB")


def memory_row(label, kit, floor):
    growth = max(kit["hwm_1m_kib"] - kit["hwm_100k_kib"], kit["rss_1m_kib"] - kit["rss_100k_kib"])
    return [label, memory_cell(kit), memory_cell(floor), f"{kit['hwm_1m_kib'] / floor['hwm_1m_kib']:.2f}",
            "no growth", yes(growth < FLAT_TOLERANCE_KIB)]


def yes(ok):
    return "yes" if ok else "NO"


def rows(found):
    out = []
    for label, kit, floor, kind, target in ROWS:
        if kind == "scaling":
            out.append(scaling_row(label, found, kit, floor, target))
            continue
        if kind == "alone":
            k = found.get((kit, 1))
            out.append([label, fmt_us(time_ns(k)) if k and "error" not in k else "missing",
                        "-", "-", "-", "-"])
            continue
        k, f = found.get((kit, 1)), found.get((floor, 1))
        if k is None or f is None:
            out.append([label, "missing" if k is None else "", "missing" if f is None else "",
                        "-", "-", "-"])
        elif "error" in k or "error" in f:
            out.append([label, k.get("error", ""), f.get("error", ""), "-", "-", "-"])
        elif kind == "memory":
            out.append(memory_row(label, k, f))
        elif kind == "allocations":
            out.append(allocations_row(label, k, f))
        else:
            out.append(time_row(label, k, f, target))
    return out


HEADER = ["path", "kit", "floor", "kit/floor", "target", "met"]


def print_markdown(table):
    print("| " + " | ".join(HEADER) + " |")
    print("|" + "|".join("---" for _ in HEADER) + "|")
    for r in table:
        print("| " + " | ".join(r) + " |")


def print_text(table):
    widths = [max(len(r[i]) for r in [HEADER] + table) for i in range(len(HEADER))]
    for r in [HEADER] + table:
        print("  ".join(c.ljust(w) for c, w in zip(r, widths)).rstrip())


def main(argv):
    markdown = "--markdown" in argv
    paths = [a for a in argv if a != "--markdown"]
    if not paths:
        print(__doc__, file=sys.stderr)
        return 2
    table = rows(load(paths))
    (print_markdown if markdown else print_text)(table)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
