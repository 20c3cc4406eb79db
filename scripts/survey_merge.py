#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
"""Merges the command surveys of two supplicant builds into one document, a row per command and
state where the builds agree, one per build where they differ. Each build is surveyed more than
once: a cell that differs between runs of one build (the size of a BSS entry depends on which
frames the station last heard, counters count) is the run's, not the build's, and is merged.

  survey_merge.py --device A.md [B.md ...] --desktop C.md [D.md ...] > COMMANDS.md
"""
import argparse
import re

BUILDS = ("device", "desktop")
ABOUT = (
    "**Two builds.** Every row was measured on both builds of Debian's wpa_supplicant 2.10 source "
    "that `scripts/radio-lab.sh` runs: **device**, built as devices build it, with `ANDROID` "
    "defined (`scripts/radio-lab/supplicant.sh`), and **desktop**, Debian's `wpasupplicant` "
    "package. The build column says where a row holds: `both`, or the one build it was measured "
    "on when they differ. Each build was surveyed {runs} times; a cell that differed between "
    "runs of one build is marked *(varies from run to run)*, with the range of its sizes, and "
    "is not a difference of builds. What AOSP's own fork does differently, not measured here, is in "
    "[FORK.md](FORK.md).\n")


def sections(path):
    """The lines before the first bold paragraph (title, what was measured), and the rest."""
    lines = open(path).read().split("\n")
    first = next(i for i, l in enumerate(lines) if l.startswith("**"))
    return lines[:first], lines[first:]


def blocks(lines):
    """Lines in blocks: a table's rows together, every other line alone."""
    out = []
    for line in lines:
        if line.startswith("|") and out and out[-1][0].startswith("|"):
            out[-1].append(line)
        else:
            out.append([line])
    return out


def merge(device, desktop):
    """The documents of every run of each build, as line lists, merged into one."""
    out = []
    runs_a, runs_b = [blocks(r) for r in device], [blocks(r) for r in desktop]
    for n in range(max(len(runs_a[0]), len(runs_b[0]))):
        a = runs_a[0][n] if n < len(runs_a[0]) else None
        b = runs_b[0][n] if n < len(runs_b[0]) else None
        if a is not None and a[0].startswith("|"):
            out += table([r[n] for r in runs_a], [r[n] for r in runs_b if n < len(r)])
        elif a == b:
            out += a
        else:
            for build, block in zip(BUILDS, (a, b)):
                for line in block or []:
                    out.append(f"*{build} build:* {line}" if line.startswith("**") else line)
    return out


def cells(row):
    return row[2:-2].split(" | ")


def row_of(cells):
    return "| " + " | ".join(cells) + " |"


def merged_cell(values):
    """One cell for values that differ from run to run."""
    distinct = list(dict.fromkeys(values))
    sized = [re.match(r"(\d+) B: (.*)", v) for v in distinct]
    if all(sized) and len({m.group(2) for m in sized}) == 1:
        sizes = sorted(int(m.group(1)) for m in sized)
        return f"{sizes[0]}–{sizes[-1]} B *(varies from run to run)*: {sized[0].group(2)}"
    return f"{distinct[0]} *(varies from run to run)*"


def settle(runs_a, runs_b):
    """The rows of one key from every run of each build, with columns that vary within a build
    merged over all runs: (device row, desktop row), either None where that build lacks it."""
    if not runs_a or not runs_b:
        return (runs_a or [None])[0], (runs_b or [None])[0]
    split_a, split_b = [cells(r) for r in runs_a], [cells(r) for r in runs_b]
    if len({len(c) for c in split_a + split_b}) != 1:
        return runs_a[0], runs_b[0]
    first_a, first_b = list(split_a[0]), list(split_b[0])
    for col in range(len(first_a)):
        varies = any(len({c[col] for c in runs}) > 1 for runs in (split_a, split_b))
        if varies:
            first_a[col] = first_b[col] = merged_cell([c[col] for c in split_a + split_b])
    return row_of(first_a), row_of(first_b)


def keyed(rows):
    """Rows by their first cell and, for a first cell that recurs, its occurrence."""
    seen = {}
    out = {}
    for row in rows[2:]:
        first = row.split("|")[1]
        seen[first] = seen.get(first, 0) + 1
        out[(first, seen[first])] = row
    return out


def table(runs_a, runs_b):
    """A table from every run of each build, as lists of rows."""
    head, rule = runs_a[0][0], runs_a[0][1]
    out = [head.replace("| ", "| build | ", 1), rule + "---|"]
    keyed_a, keyed_b = [keyed(rows) for rows in runs_a], [keyed(rows) for rows in runs_b]
    for k in dict.fromkeys(k for rows in keyed_a + keyed_b for k in rows):
        row, twin = settle([rows[k] for rows in keyed_a if k in rows],
                           [rows[k] for rows in keyed_b if k in rows])
        if twin == row:
            out.append(row.replace("| ", "| both | ", 1))
            continue
        if row is not None:
            out.append(row.replace("| ", "| device | ", 1))
        if twin is not None:
            out.append(twin.replace("| ", "| desktop | ", 1))
    return out


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--device", nargs="+", required=True)
    parser.add_argument("--desktop", nargs="+", required=True)
    args = parser.parse_args()
    intro, _ = sections(args.device[0])
    device = [sections(path)[1] for path in args.device]
    desktop = [sections(path)[1] for path in args.desktop]
    about = ABOUT.format(runs=min(len(args.device), len(args.desktop)))
    print("\n".join(intro + [about] + merge(device, desktop)).rstrip("\n"))


if __name__ == "__main__":
    main()
