#!/usr/bin/env python3
"""Holds scripts/benchmark and the table of docs/performance.md to each other.

    benchmark_rows.py SOURCE_TREE

Both have the same rows in the same order: what is measured, against what, and the reach. And a row's figure is
filled from what its command printed, by medians where that ran several times.
"""
import importlib.machinery
import importlib.util
import pathlib
import re
import sys

# Name, pattern, figure, what was printed, the figure that comes of it.
FIGURES = [
    ("one output", r"ratio ([\d.]+), on (\w+)", "{0} on {1}", ["ratio 0.80, on tmpfs\n"], "0.80 on tmpfs"),
    ("the middle of several", r"ratio ([\d.]+) on (\w+)", "{0} on {1}",
     ["ratio 3.00 on ext4\n", "ratio 0.50 on ext4\n", "ratio 1.25 on ext4\n"], "1.25 on ext4"),
    ("a line among others", r"^ratio ([\d.]+)", "{0}", ["the ratio 1 of before\nratio 2.00\n"], "2.00"),
    ("nothing was printed", r"ratio ([\d.]+)", "{0}", [""], "?"),
    ("one of several broke off", r"ratio ([\d.]+)", "{0}", ["ratio 2.00\n", "killed\n"], "?"),
]


def load(path):
    sys.dont_write_bytecode = True
    loader = importlib.machinery.SourceFileLoader("benchmark", str(path))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("benchmark", loader))
    loader.exec_module(module)
    return module


def rows_of(page):
    table = page.read_text().split("\n| What ", 1)[1].split("\n\n", 1)[0]  # the page has others behind it
    for line in table.split("\n")[1:]:
        if line.startswith("| "):
            yield tuple(cell.strip() for cell in re.split(r"(?<!\\)\|", line[1:-1])[:3])


def differences(tree, script):
    told = [(row.what, row.against, row.reach) for row in script.ROWS]
    written = list(rows_of(tree / "docs/performance.md"))
    for row in told:
        if row not in written:
            yield f"docs/performance.md lacks the row {row}"
    for row in written:
        if row not in told:
            yield f"scripts/benchmark lacks the row {row}"
    if sorted(told) == sorted(written) and told != written:
        yield "the rows stand in two orders"


def wrong_figures(script):
    for name, measured, figure, outputs, expected in FIGURES:
        row = script.Row("", "", "", "", "", measured, figure)
        if script.figure(row, outputs) != expected:
            yield f"{name}: {script.figure(row, outputs)}, not {expected}"


def main():
    tree = pathlib.Path(sys.argv[1])
    script = load(tree / "scripts/benchmark")
    wrong = [*differences(tree, script), *wrong_figures(script)]
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
