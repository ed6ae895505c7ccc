#!/usr/bin/env python3
"""Each test with rows that root passes over is run by an ordinary user too, and no other is.

    rows_for_a_user.py SOURCE_TREE BUILD_TREE
"""
import pathlib
import re
import subprocess
import sys

ASKS = "permissionsKeepOut()"
SECOND = "/as_user"


def tests_that_ask(tests):
    """The names of those whose source asks whether permissions keep anybody out."""
    return {source.relative_to(tests).as_posix()[:-len("_test.cpp")]
            for source in tests.rglob("*_test.cpp") if ASKS in source.read_text(encoding="utf-8")}


def tests_run_twice(tree):
    listed = subprocess.run(["ctest", "--test-dir", tree, "-N"], check=True, stdout=subprocess.PIPE,
                            text=True).stdout
    return set(re.findall(rf"^ *Test +#\d+: (.+){SECOND}$", listed, re.M))


def main():
    asking = tests_that_ask(pathlib.Path(sys.argv[1], "tests"))
    twice = tests_run_twice(sys.argv[2])
    for name in sorted(asking - twice):
        print(f"{name} has rows that root passes over, and nobody else runs it")
    for name in sorted(twice - asking):
        print(f"{name} is run twice, and has no row that root passes over")
    return 0 if asking and asking == twice else 1


if __name__ == "__main__":
    sys.exit(main())
