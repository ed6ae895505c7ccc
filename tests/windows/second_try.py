#!/usr/bin/env python3
"""Runs tests by ctest, and those of a list that failed a second time.

    second_try.py --tree TREE [--list FILE] [--changed] [CTEST_ARGUMENT...]

A line of the list is the name of a test and the reason why it may fail without a fault of its own. The
run fails if any other test did, if more than two needed a second try, or if one of these failed again.
--changed leaves out what scripts/run-tests knows to have passed.
"""
import argparse
import pathlib
import re
import subprocess
import sys

MOST = 2
LIST = pathlib.Path(__file__).with_suffix(".txt")
RUNNER = pathlib.Path(__file__).resolve().parents[2] / "scripts/run-tests"


def refuse(reason):
    sys.exit(f"second_try: {reason}")


def read_list(path):
    """Name -> reason."""
    reasons = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        name, _, reason = line.partition(" ")
        if name.startswith("#") or not name:
            continue
        if not reason.strip():
            refuse(f"{path.name} has no reason for {name}")
        if name in reasons:
            refuse(f"{path.name} names {name} twice")
        reasons[name] = reason.strip()
    return reasons


def tests_of(tree):
    listed = subprocess.run(["ctest", "--test-dir", tree, "-N"], check=True, stdout=subprocess.PIPE,
                            text=True).stdout
    return set(re.findall(r"^ *Test +#\d+: (.+)$", listed, re.M))


class Run:
    def __init__(self, tree, arguments, changed):
        self.changed = ["--changed"] if changed else []
        self.arguments = [str(tree), *arguments]
        self.failures = pathlib.Path(tree, "Testing/Temporary/LastTestsFailed.log")

    def first(self):
        """The exit status and the names of the tests that failed."""
        self.failures.unlink(missing_ok=True)
        status = subprocess.run([RUNNER, *self.changed, *self.arguments], check=False).returncode
        lines = self.failures.read_text().splitlines() if self.failures.exists() else []
        return status, [line.split(":", 1)[1] for line in lines]

    def second(self):
        """The exit status of those that failed."""
        return subprocess.run([RUNNER, *self.arguments, "--rerun-failed"], check=False).returncode


def judge(run, reasons):
    """The exit status of the whole run."""
    status, failed = run.first()
    if not failed:
        return status
    if any(name not in reasons for name in failed):
        print("second_try: none, since a test failed that has no reason to")
        return status
    if len(failed) > MOST:
        print(f"second_try: none, since {len(failed)} tests need it and {MOST} may")
        return status
    for name in failed:
        print(f"second_try: {name}: {reasons[name]}", flush=True)
    status = run.second()
    if status == 0:
        print(f"second_try: {len(failed)} passed")
    return status


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tree", required=True)
    parser.add_argument("--list", type=pathlib.Path, default=LIST)
    parser.add_argument("--changed", action="store_true")
    options, arguments = parser.parse_known_args()
    reasons = read_list(options.list)
    unknown = sorted(set(reasons) - tests_of(options.tree))
    if unknown:
        refuse(f"{options.list.name} names {', '.join(unknown)}, and there is no such test")
    return judge(Run(options.tree, arguments, options.changed), reasons)


if __name__ == "__main__":
    sys.exit(main())
