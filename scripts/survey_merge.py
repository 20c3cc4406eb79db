#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
"""Merges the command surveys of two supplicant builds into one document, a row per command and
state where the builds agree, one per build where they differ.

  survey_merge.py DEVICE.md DESKTOP.md > COMMANDS.md
"""
import sys

BUILDS = ("device", "desktop")
ABOUT = (
    "**Two builds.** Every row was measured on both builds of Debian's wpa_supplicant 2.10 source "
    "that `scripts/radio-lab.sh` runs: **device**, built as devices build it, with `ANDROID` "
    "defined (`scripts/radio-lab/supplicant.sh`), and **desktop**, Debian's `wpasupplicant` "
    "package. The build column says where a row holds: `both`, or the one build it was measured "
    "on when they differ. What AOSP's own fork does differently, not measured here, is in "
    "[FORK.md](FORK.md).\n")


def sections(path):
    """(intro lines, [(heading or None, [lines])]) with tables kept as line lists."""
    lines = open(path).read().split("\n")
    first = next(i for i, l in enumerate(lines) if l.startswith("**"))
    return lines[:first], lines[first:]


def merge(device, desktop):
    out = []
    i = j = 0
    while i < len(device) or j < len(desktop):
        a = device[i] if i < len(device) else None
        b = desktop[j] if j < len(desktop) else None
        if a is not None and a.startswith("|"):
            # A table: the rows of both, keyed by their first cell, in the device build's order.
            rows_a, rows_b = [], []
            while i < len(device) and device[i].startswith("|"):
                rows_a.append(device[i])
                i += 1
            while j < len(desktop) and desktop[j].startswith("|"):
                rows_b.append(desktop[j])
                j += 1
            out += table(rows_a, rows_b)
            continue
        if a == b:
            out.append(a)
        else:
            for build, line in zip(BUILDS, (a, b)):
                if line:
                    out.append(f"*{build} build:* {line}" if line.startswith("**") else line)
        i += 1
        j += 1
    return out


def table(rows_a, rows_b):
    head, rule = rows_a[0], rows_a[1]
    out = [head.replace("| ", "| build | ", 1), rule + "---|"]
    key = lambda row: row.split("|")[1]
    pending_b = list(rows_b[2:])
    for row in rows_a[2:]:
        twin = next((r for r in pending_b if key(r) == key(row)), None)
        if twin is not None:
            pending_b.remove(twin)
        if twin == row:
            out.append(row.replace("| ", "| both | ", 1))
            continue
        out.append(row.replace("| ", "| device | ", 1))
        if twin is not None:
            out.append(twin.replace("| ", "| desktop | ", 1))
    out += [r.replace("| ", "| desktop | ", 1) for r in pending_b]
    return out


def main():
    intro, device = sections(sys.argv[1])
    _, desktop = sections(sys.argv[2])
    print("\n".join(intro + [ABOUT] + merge(device, desktop)).rstrip("\n"))


if __name__ == "__main__":
    main()
