"""What an update removes, it removes only after the copy that takes its place is on the disk.

  order.py REFERENCE_APPLY INTERPOSER

Reads the file operations of a whole update, on one volume and on two: between the last data moved and
the first removal in the project or in the backup the volume has to be waited for.
"""
import pathlib
import subprocess
import sys

MOVE = {"write", "pwrite64", "sendfile", "sendfile64", "copy_file_range"}
REMOVE = {"unlink", "unlinkat", "rmdir", "remove"}


def operations():
    """The layout -> (name, path) of each of its operations, in order."""
    found = {}
    run = [sys.executable, pathlib.Path(__file__).with_name("run.py"), "--list", *sys.argv[1:]]
    for line in subprocess.run(run, check=True, capture_output=True, text=True).stdout.splitlines():
        if line.startswith("layout "):
            continue
        layout, _, name, *path = line.split(" ", 3)
        found.setdefault(layout, []).append((name, path[0] if path else ""))
    return found


def early_removals(listed):
    """The removals in the project and the backup that the disk was not waited for."""
    moved_and_not_waited_for = False
    for name, path in listed:
        if name in MOVE:
            moved_and_not_waited_for = True
        elif name == "syncfs":
            moved_and_not_waited_for = False
        elif name in REMOVE and moved_and_not_waited_for and ("/project" in path or "/backup/" in path):
            yield f"{name} {path}"


def main():
    status = 0
    for layout, listed in operations().items():
        early = list(early_removals(listed))
        waits = sum(name == "syncfs" for name, _ in listed)
        removals = sum(name in REMOVE for name, _ in listed)
        print(f"layout {layout}: {waits} waits, {removals} removals, {len(early)} of them too early")
        print("\n".join(early[:5]))
        if early or not removals:
            status = 1
    return status


sys.exit(main())
