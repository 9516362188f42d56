#!/usr/bin/env python3
"""Writes docs/performance.md and docs/performance.png from the JSON of one scripts/bench.sh run.

Usage: bench_report.py NATIVE.json FLOOR.json WINE.json MACHINE.json OUT.md OUT.png
A missing or unreadable Wine file leaves the Wine columns empty and says so.
"""
import json
import re
import sys

NOISE = re.compile(r"/(real_time|threads:\d+|iterations:\d+|repeats:\d+|min_time:[0-9.]+s?)")
UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def load(path):
    try:
        with open(path) as handle:
            return json.load(handle)
    except (OSError, ValueError):
        return None


def medians(report):
    """Median real time in ns and the counters of each benchmark, by its plain name, in run order.
    A benchmark run once (no aggregates) counts with its only run."""
    result, single = {}, {}
    for run in (report or {}).get("benchmarks", []):
        name = NOISE.sub("", run.get("run_name", run["name"]))
        if run.get("error_occurred"):
            result.setdefault(name, {"error": run.get("error_message", "error")})
            continue
        entry = {"ns": run["real_time"] * UNIT_NS[run.get("time_unit", "ns")], "counters": run}
        if run.get("run_type") == "aggregate":
            if run.get("aggregate_name") == "median":
                result[name] = entry
        else:
            single.setdefault(name, entry)
    for name, entry in single.items():
        result.setdefault(name, entry)
    return result


def human(ns):
    if ns is None:
        return "—"
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if ns >= scale:
            return f"{ns / scale:.3g} {unit}"
    return f"{ns:.3g} ns"


def ratio(a, b):
    if a is None or b is None or b == 0:
        return "—"
    return f"{a / b:.3g}×"


def split(name):
    """op/<operation>/n:<entries>/<mode> -> (operation, entries, mode)."""
    parts = name.split("/")
    return parts[1], int(parts[2][2:]), parts[3]


def ns_of(table, name):
    entry = table.get(name)
    return entry["ns"] if entry and "ns" in entry else None


def main():
    native_path, floor_path, wine_path, machine_path, out_md, out_png = sys.argv[1:7]
    native, floor, wine = medians(load(native_path)), medians(load(floor_path)), medians(load(wine_path))
    machine = load(machine_path) or {}

    rows, grows, misses, commits_of = [], {}, [], {}
    for name in native:
        if not name.startswith("op/"):
            continue
        operation, entries, mode = split(name)
        here, there = ns_of(native, name), ns_of(wine, name)
        floor_name = f"floor/{operation}/n:{entries}"
        floor_entry = floor.get(floor_name, {}) if mode == "1thread" else {}
        floor_ns = floor_entry.get("ns")
        counters = floor_entry.get("counters", {})
        commits = counters.get("commits")
        if counters.get("refused"):
            floor_ns = None  # LMDB refused part of the replay: no floor to compare with
        rows.append((operation, entries, mode, here, there, floor_ns, commits, native[name].get("error")))
        if mode == "1thread":
            grows.setdefault(operation, {})[entries] = (here, there)
            commits_of[(operation, entries)] = commits
        # The targets, checked where they apply: reads make no commit.
        if mode == "1thread" and commits == 0:
            if there is not None and here is not None and there / here < 100:
                misses.append(f"`{operation}` n={entries}: only {there / here:.3g}× faster than Wine")
            if floor_ns and here and here / floor_ns > 5:
                misses.append(f"`{operation}` n={entries}: {here / floor_ns:.3g}× its LMDB floor")
        if mode == "1thread" and re.match(r"(int|str)Get", operation) and here and here > 1000:
            misses.append(f"`{operation}` n={entries}: {human(here)} for a present value")
        if mode == "1thread" and commits is not None and commits > 1:
            misses.append(f"`{operation}` n={entries}: {commits:g} commits per call")

    misses += per_entry_misses(grows, commits_of)
    lines = ["# Performance", ""]
    lines += [
        "Every operation of `ZETSettings` and `ZETConfigParam::LoadFromRegistry`, natively on the portable",
        "registry (LMDB) and, cross-built with MinGW-w64, under Wine on Wine's registry, in one run of",
        "one command. Regenerate this page and its plot with:",
        "",
        "    scripts/bench.sh",
        "",
        "(`scripts/bench.sh --quick` for a short trial run; it leaves out the 10,000-entry stores.)",
        "",
        "## The machine of this run",
        "",
    ]
    for key in ("date", "cpu", "cores", "kernel", "load_at_start", "wine", "mode", "note"):
        if key in machine:
            lines.append(f"- {key.replace('_', ' ')}: {machine[key]}")
    if not wine:
        lines.append("- Wine: **no results** (the Wine run failed or was left out; see the script's output)")
    lines += [
        "",
        "## How to read the table",
        "",
        "- Times are medians of the repetitions, wall-clock time per call.",
        "- n: entries in the store the operation works on (profiles, users, keys, records, list entries, alerts).",
        "- 1thread: one caller. 4threads: four threads of one process calling at once; the time is the wall",
        "  time per call of all four together. 4processes: the time of one call of the measuring process",
        "  while three more processes call the same operation on the same store.",
        "- Floor: one call's LMDB traffic, recorded at the LMDB interface as the registry issued it and",
        "  replayed directly on the same store (`zetsettings_floor`); commits is the number of durable",
        "  write transactions (each one fsync) of that call. No floor: the operation makes no LMDB call.",
        "  The floor is LMDB alone: the decryption of the encrypted records (login, profiles, user",
        "  settings, fallback keys) and the parsing of whole-map records are the library's own work above it.",
        "  The call recorded follows an unrelated commit, so it looks everything up; in the suite's steady",
        "  state a thread answers a repeated read from the key paths and the value it remembers while",
        "  nothing was committed, which can bring a read below its floor.",
        "- Wine/native: how many times slower Wine's registry is; native/floor: how far above LMDB alone.",
        "- A durable commit (fsync) on a shared virtual disk takes anywhere from a quarter of a millisecond",
        "  to several milliseconds from one minute to the next: ratios of writes to their floor, measured",
        "  minutes apart, say little; the commits per call are exact.",
        "",
        "## Targets not met in this run",
        "",
    ]
    lines += [f"- {miss}" for miss in misses] or ["- none"]
    lines += [
        "",
        "Targets: a read at least 100× faster than on Wine and within 5× its LMDB floor; a getter of a",
        "present value 1 µs or less; one commit per write.",
        "",
        "## All operations",
        "",
        "| operation | n | callers | native | Wine | Wine/native | floor | native/floor | commits |",
        "|---|---:|---|---:|---:|---:|---:|---:|---:|",
    ]
    for operation, entries, mode, here, there, floor_ns, commits, error in rows:
        native_text = f"error: {error}" if error else human(here)
        commits_text = "—" if commits is None else f"{commits:g}"
        lines.append(
            f"| `{operation}` | {entries} | {mode} | {native_text} | {human(there)} | {ratio(there, here)} | "
            f"{human(floor_ns)} | {ratio(here, floor_ns)} | {commits_text} |")

    lines += rewrite_section(native)
    lines += ["", "## Memory over a long run", ""]
    for label, table in (("native", native), ("Wine", wine)):
        entry = next((v for k, v in table.items() if k.startswith("MemoryGrowth")), None)
        if not entry or "counters" not in entry:
            lines.append(f"- {label}: not measured")
            continue
        c = entry["counters"]
        text = (f"- {label}: {c.get('operations', 0):,.0f} mixed operations (99 reads to 1 write) in "
                f"{human(entry['ns'])}; resident memory {c.get('resident_bytes', 0) / 1048576:.1f} MiB, "
                f"grown by {c.get('resident_growth_bytes', 0) / 1024:.0f} KiB after the first tenth")
        if "store_growth_bytes" in c:
            text += (f"; store files {c.get('store_bytes', 0) / 1024:.0f} KiB, grown by "
                     f"{c['store_growth_bytes'] / 1024:.0f} KiB after the first tenth")
        lines.append(text)
    lines += per_entry_section(grows)
    lines += ["", "## Cost against store size", "",
              "The operations whose time at the largest store is at least twice that at one entry.", "",
              "![cost against store size](performance.png)", ""]

    with open(out_md, "w") as handle:
        handle.write("\n".join(lines))
    plot(grows, out_png)


def growing(grows):
    """The operations measured at more than one size whose native time at the largest is at
    least twice that at the smallest: {operation: {entries: (native ns, Wine ns)}}."""
    result = {}
    for operation, sizes in sorted(grows.items()):
        measured = sorted(n for n in sizes if sizes[n][0])
        if len(measured) > 1 and sizes[measured[-1]][0] >= 2 * sizes[measured[0]][0]:
            result[operation] = sizes
    return result


def slope(sizes, index):
    """What each entry adds between the two largest sizes measured, in ns; None without two."""
    points = sorted((n, times[index]) for n, times in sizes.items() if times[index])
    if len(points) < 2:
        return None
    (n1, t1), (n2, t2) = points[-2], points[-1]
    return (t2 - t1) / (n2 - n1)


def per_entry_misses(grows, commits_of):
    misses = []
    for operation, sizes in growing(grows).items():
        largest = max(sizes)
        if commits_of.get((operation, largest)) == 0 and sizes[largest][0] / largest > 1000:
            misses.append(f"`{operation}` n={largest}: {human(sizes[largest][0] / largest)} per stored entry")
    return misses


def rewrite_section(native):
    """setFallbackSettings against the size of the database it rewrites whole."""
    prefix = "BM_FallbackDatabase_rewrite/records:"
    runs = sorted((int(name[len(prefix):]), entry) for name, entry in native.items()
                  if name.startswith(prefix) and "ns" in entry)
    if not runs:
        return []
    lines = ["", "## One commit for a whole rewrite", "",
             "`setFallbackSettings` reads and rewrites every record of the fallback database (100 owners),",
             "as one write batch: one commit, whatever the number of records. Native, one caller.", "",
             "| records | per call | per record | commits per call |", "|---:|---:|---:|---:|"]
    for records, entry in runs:
        commits = entry["counters"].get("commits")
        lines.append(f"| {records:,} | {human(entry['ns'])} | {human(entry['ns'] / records)} | "
                     f"{'—' if commits is None else f'{commits:g}'} |")
    return lines


def per_entry_section(grows):
    lines = ["", "## Cost per stored entry", "",
             "The operations whose time grows with the store (at least twice the time at the largest store",
             "as at the smallest): the time per call divided by the entries stored, and what each further",
             "entry adds between the two largest stores. Target for the reads, which make no commit: 1 µs or",
             "less per stored entry.", "",
             "| operation | n | native per entry | native per further entry | Wine per entry | Wine per further entry |",
             "|---|---:|---:|---:|---:|---:|"]
    for operation, sizes in growing(grows).items():
        further = (slope(sizes, 0), slope(sizes, 1))
        for n in sorted(sizes):
            if n == 1:
                continue
            here, there = sizes[n]
            last = n == max(sizes)
            lines.append(
                f"| `{operation}` | {n} | {human(here / n if here else None)} | "
                f"{human(further[0]) if last else ''} | {human(there / n if there else None)} | "
                f"{human(further[1]) if last else ''} |")
    return lines


def plot(grows, out_png):
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt

    def grown(sizes, index):
        times = [sizes[n][index] for n in sorted(sizes) if sizes[n][index]]
        return len(times) > 1 and times[-1] / times[0] >= 2

    # Only what grows with the store (at least twice the time at the largest size as at one
    # entry, natively or under Wine): the rest would be flat lines hiding the others.
    sized = {op: sizes for op, sizes in grows.items() if len(sizes) > 1 and (grown(sizes, 0) or grown(sizes, 1))}
    styles = ["-", "--", ":", "-."]
    figure, axes = plt.subplots(1, 2, figsize=(16, 8), sharey=True)
    for index, (title, axis) in enumerate((("portable registry (native)", axes[0]), ("Wine's registry", axes[1]))):
        for number, (operation, sizes) in enumerate(sorted(sized.items())):
            points = sorted((n, times[index]) for n, times in sizes.items() if times[index])
            if points:
                axis.plot([p[0] for p in points], [p[1] / 1e3 for p in points], marker="o", label=operation,
                          linestyle=styles[number // 10 % len(styles)])
        axis.set_xscale("log")
        axis.set_yscale("log")
        axis.set_xlabel("entries in the store")
        axis.set_title(title)
        axis.grid(True, which="both", alpha=0.3)
    axes[0].set_ylabel("median time per call (µs)")
    axes[1].legend(fontsize=7, loc="center left", bbox_to_anchor=(1.0, 0.5))
    figure.tight_layout()
    figure.savefig(out_png, dpi=110)


if __name__ == "__main__":
    main()
