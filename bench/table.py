#!/usr/bin/env python3
"""The measured rows as tables: the floor, Little CMS and ours side by side, and the exact costs.

usage: table.py TIMES COSTS [--write PAGE]

TIMES is what Google Benchmark writes with --benchmark_out, with repetitions; medians are shown.
COSTS is what vkcl_costs prints. With --write both tables are put between their markers in PAGE.
"""
import argparse
import json
import os
import platform
import re
import sys

WAYS = ("floor", "lcms", "ours")

# Rows of benchmarks that stand alone, by way.
ALONE = {"BareFromChars": "floor", "LcmsParseTarget": "lcms", "ParseTarget": "ours"}
SIDECAR = {"PugixmlSaveAndLoad": "floor", "SidecarSaveAndLoad": "ours"}
SIDECAR_NAME = "save and load a sidecar, floor: pugixml alone"

MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}


def row_of(run_name):
    """Name of the operation and the way of a benchmark; one that stands alone is ours."""
    parts = run_name.split("/")
    if parts[0] in ALONE:
        return f"parse a target of 2,000 samples, {parts[1]} columns", ALONE[parts[0]]
    if parts[0] in SIDECAR:
        return SIDECAR_NAME, SIDECAR[parts[0]]
    if len(parts) > 1 and parts[1] in WAYS:
        return parts[0], parts[1]
    return parts[0], "ours"


def medians(path):
    """Operation -> way -> microseconds."""
    with open(path, encoding="utf-8") as file:
        report = json.load(file)
    times = {}
    for entry in report["benchmarks"]:
        row = row_of(entry["run_name"])
        if entry.get("error_occurred"):
            sys.exit(f"{entry['run_name']}: {entry.get('error_message')}")
        if entry.get("aggregate_name") != "median":
            continue
        times.setdefault(row[0], {})[row[1]] = entry["real_time"] * MICROSECONDS[entry["time_unit"]]
    return times


def number(value):
    """Three digits that count, with the thousands apart."""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.3g}" if value >= 1 else f"{value:.2f}"


def ratio(above, below):
    return f"{above / below:.2f}" if above and below else ""


def verdict(goal, ours, floor):
    if not goal or not floor:
        return ""
    return f"{goal:g}: " + ("met" if ours / floor <= goal else "missed")


def natural(name):
    """By which names with numbers are in order."""
    return [int(part) if part.isdigit() else part for part in re.split(r"(\d+)", name)]


def time_rows(times, costs):
    goals = {cost["name"]: cost["goal"] for cost in costs}
    order = [cost["name"] for cost in costs]
    names = sorted(times, key=lambda name: (order.index(name) if name in order else len(order),
                                            "floor" not in times[name], natural(name)))
    for name in names:
        row = times[name]
        floor, lcms, ours = (row.get(way) for way in WAYS)
        yield (name, *(number(value) if value else "" for value in (floor, lcms, ours)),
               ratio(ours, floor), ratio(lcms, ours), verdict(goals.get(name, 0), ours, floor))


def cost_rows(costs):
    for cost in costs:
        if "ours" not in cost:
            continue
        floor, ours = cost["floor"], cost["ours"]
        memory = number(cost["memory"] / 1024) if cost["memory"] >= 0 else ""
        yield (cost["name"], *(f"{part[key]:,}" for key in ("calls", "read", "written")
                               for part in (floor, ours)), memory)


TIME_HEAD = ("operation", "floor, µs", "Little CMS, µs", "ours, µs", "ours / floor",
             "Little CMS / ours", "goal for ours / floor")
COST_HEAD = ("operation", "calls, floor", "calls, ours", "read, floor", "read, ours",
             "written, floor", "written, ours", "memory, KiB")


def plain(head, rows):
    rows = [head, *rows]
    widths = [max(len(row[i]) for row in rows) for i in range(len(head))]
    return "\n".join("  ".join([row[0].ljust(widths[0])]
                               + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])])
                     for row in rows)


def markdown(head, rows):
    line = "| " + " | ".join(head) + " |"
    rule = "|---|" + "---:|" * (len(head) - 1)
    return "\n".join([line, rule, *("| " + " | ".join(row) + " |" for row in rows)])


def machine():
    """The machine, as the page tells it."""
    model = ""
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as file:
            found = re.search(r"^model name\s*:\s*(.+)$", file.read(), re.MULTILINE)
            model = found.group(1) if found else ""
    except OSError:
        pass
    load = os.getloadavg()[0]
    return (f"Measured on {os.cpu_count()} cores ({model or platform.machine()}), "
            f"Linux {platform.release().split('-')[0]}, with a load of {load:.1f} at the end.")


def put(page, marker, text):
    pattern = re.compile(f"(<!-- {marker} -->\n).*?(<!-- /{marker} -->)", re.DOTALL)
    if not pattern.search(page):
        sys.exit(f"there are no markers {marker}")
    return pattern.sub(lambda found: found.group(1) + text + "\n" + found.group(2), page)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("times")
    parser.add_argument("costs")
    parser.add_argument("--write", metavar="PAGE")
    arguments = parser.parse_args()
    times = medians(arguments.times)
    with open(arguments.costs, encoding="utf-8") as file:
        costs = json.load(file)
    print(plain(TIME_HEAD, time_rows(times, costs)))
    print()
    print(plain(COST_HEAD, cost_rows(costs)))
    if arguments.write:
        with open(arguments.write, encoding="utf-8") as file:
            page = file.read()
        shown = machine() + "\n\n" + markdown(TIME_HEAD, time_rows(times, costs))
        page = put(page, "times", shown)
        page = put(page, "costs", markdown(COST_HEAD, cost_rows(costs)))
        with open(arguments.write, "w", encoding="utf-8") as file:
            file.write(page)


if __name__ == "__main__":
    main()
