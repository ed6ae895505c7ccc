#!/usr/bin/python3
"""Runs the command blocks of a page, in order and word for word, in a folder of their own.

    run_blocks.py PAGE --tool FILE --project DIR

Each ```sh block must succeed; a ```text block behind it is what it prints, with an ellipsis for what
differs from run to run. The folder holds a copy of DIR, under its own name. Runs in a network of its
own, so that a server on the page meets no other.
"""
import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
PROGRESS = re.compile(r"^.+: \d+ (s|%)\n", re.MULTILINE)  # of what took longer than a second
IN_A_NAMESPACE = "QUORVANE_IN_A_NAMESPACE"


def blocks(page, language="sh"):
    """Pairs of a command block and its output, or None where the page shows none."""
    fences = FENCE.findall(page.read_text(encoding="utf-8"))
    for at, (kind, text) in enumerate(fences):
        if kind == language:
            shown = fences[at + 1] if at + 1 < len(fences) else ("", "")
            yield text, shown[1] if shown[0] == "text" else None


def run(commands, folder, environment):
    """What the commands print, both streams as a terminal shows them."""
    result = subprocess.run(["bash", "-euo", "pipefail", "-c", commands], cwd=folder,
                            env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, timeout=120, check=False)
    return result.returncode, result.stdout.decode()


def is_as_shown(printed, shown):
    pattern = ".+".join(re.escape(part) for part in shown.split("…"))
    return re.fullmatch(pattern, PROGRESS.sub("", printed).replace("\r", "")) is not None


def run_page(page, tool, project):
    environment = {"PATH": f"{tool.parent}:/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8"}
    count = 0
    with tempfile.TemporaryDirectory() as folder:
        environment["HOME"] = folder
        shutil.copytree(project, pathlib.Path(folder) / project.name)
        for commands, shown in blocks(page):
            status, printed = run(commands, folder, environment)
            print(f"$ {commands}{printed}", end="")
            if status != 0:
                sys.exit(f"\nexit status {status}")
            if shown is not None and not is_as_shown(printed, shown):
                sys.exit(f"\nthe page says:\n{shown}")
            count += 1
    print(f"\n{count} blocks")
    if count == 0:
        sys.exit("the page has no block to run")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("page", type=pathlib.Path)
    parser.add_argument("--tool", type=pathlib.Path, required=True)
    parser.add_argument("--project", type=pathlib.Path, required=True)
    options = parser.parse_args()
    if IN_A_NAMESPACE not in os.environ:
        os.environ[IN_A_NAMESPACE] = "1"
        os.execvp("unshare", ["unshare", "--map-root-user", "--net", sys.executable, *sys.argv])
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    run_page(options.page, options.tool.resolve(), options.project.resolve())


if __name__ == "__main__":
    main()
