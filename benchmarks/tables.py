#!/usr/bin/env python3
"""Makes the tables of docs/measured/speed.md from what runs on several processors have measured.

    tables.py PAGE RESULTS FOLDER

For each marker "<!-- measured NAME -->" of PAGE, the file FOLDER/NAME gets the table NAME. RESULTS is the folder with a file
PROCESSOR.tsv for each processor, whose lines are

    fact   NAME  TEXT
    value  TABLE  ROW  COLUMN  VALUE  TARGET        ROW: one or more cells with " | " between; TARGET may be empty

With several processors, each has a letter and columns of its own. Values beyond their target are bold.
"""

import collections
import pathlib
import re
import sys

# What the cells of the rows are.
ROW_HEADS = {
    "facts": "",
    "openfoam": "mesh, cells | field | scheme | OpenFOAM's own",
    "openfoam-schemes": "mesh, cells | field | scheme",
    "openfoam-memory": "mesh, cells | scheme",
    "openfoam-client": "mesh, cells | field | scheme",
    "walks": "mesh | method",
    "walks-ranks": "mesh, ranks | method",
    "set-up": "mesh, cells | operator, method",
    "application": "mesh, cells | operator, method",
    "cells": "mesh, cells | operator",
    "again": "",
    "search-tree": "mesh, cells | operator, method",
    "powers": "ns a number",
    "systems": "ns a system",
    "threads": "ranks",
    "reading": "MB/s",
    "case": "",
}


class Results:
    """What one processor has measured: tables[NAME][ROW][COLUMN] = (value, target)."""

    def __init__(self, path):
        self.tables = collections.defaultdict(lambda: collections.defaultdict(dict))
        for line in path.read_text().splitlines():
            kind, *cells = line.split("\t")
            if kind == "fact":
                self.tables["facts"][cells[0]][""] = (cells[1], "")
            elif kind == "value":
                table, row, column, value, target = cells
                self.tables[table][row][column] = (value, target)


def in_order(sequences):
    """All elements in the order of first appearance."""
    return list(dict.fromkeys(x for sequence in sequences for x in sequence))


def shown(value, target):
    return "**%s**" % value if target and float(value) > float(target) else value


def table(name, results, letters):
    tables = [r.tables.get(name, {}) for r in results]
    rows = in_order(tables)
    if not rows:
        return "Not measured."
    columns = in_order(cells for t in tables for cells in t.values())
    has_target = any(target for t in tables for cells in t.values() for _, target in cells.values())
    heads = [ROW_HEADS[name]]
    for letter, measured in zip(letters, tables):
        if measured:
            heads += [(letter + ": " if letter and column else letter) + column for column in columns]
    if has_target:
        heads.append("target")
    lines = ["| %s |" % " | ".join(heads)]
    lines.append("|" + "---|" * (lines[0].count("|") - 1))
    for row in rows:
        cells, targets = [row], []
        for measured in tables:
            if not measured:
                continue
            for column in columns:
                value, target = measured.get(row, {}).get(column, ("", ""))
                cells.append(shown(value, target))
                targets += [target] if target else []
        if has_target:
            cells.append(", ".join(dict.fromkeys(targets)))
        lines.append("| %s |" % " | ".join(cells))
    return "\n".join(lines)


def main():
    page, folder, output = map(pathlib.Path, sys.argv[1:])
    results = [Results(path) for path in sorted(folder.glob("*.tsv"))]
    letters = [chr(ord("A") + i) for i in range(len(results))] if len(results) > 1 else [""]
    for name in re.findall(r"^<!-- measured ([a-z-]+) -->$", page.read_text(), re.M):
        if name not in ROW_HEADS:
            sys.exit("tables.py: %s asks for the unknown table %s" % (page, name))
        (output / name).write_text(table(name, results, letters) + "\n")


if __name__ == "__main__":
    main()
