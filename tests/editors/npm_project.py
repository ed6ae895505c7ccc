"""A project of npm's, made in the build tree: the versions that its lock file names, and nothing in the source tree."""
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys

OLDEST_NODE = 18
# What npm ends with where nobody has the packages for it.
UNREACHABLE = re.compile(r"npm (?:error|ERR!) code (E(?:AI_AGAIN|CONN\w+|HOSTUNREACH|NETUNREACH|NOTFOUND|TIMEDOUT|"
                         r"NOTCACHED|40[1347]|5\d\d)|ERR_SOCKET_TIMEOUT)\b")


def skip(reason):
    """77 is ctest's word for skipped."""
    print(f"skipped: {reason}")
    sys.exit(77)


def lack(reason):
    """Skipped where somebody chose to do without; the continuous integration has all that the setup brings."""
    if os.environ.get("CI"):
        sys.exit(f"{reason}, which the continuous integration needs")
    skip(reason)


def programs():
    """The paths of node and npm."""
    node, npm = shutil.which("node"), shutil.which("npm")
    if not node or not npm:
        lack("no node or no npm here")
    told = subprocess.run([node, "--version"], check=True, stdout=subprocess.PIPE, text=True).stdout
    if int(re.match(r"v(\d+)", told).group(1)) < OLDEST_NODE:
        lack(f"node {told.strip()} is older than {OLDEST_NODE}")
    return node, npm


def install(npm, folder):
    """What the lock file names, each held to its hash; again only when the lock file is another."""
    lock = hashlib.sha256((folder / "package-lock.json").read_bytes()).hexdigest()
    installed = folder / "node_modules" / "installed"
    if installed.exists() and installed.read_text() == lock:
        return
    done = subprocess.run([npm, "ci", "--ignore-scripts", "--no-audit", "--no-fund", "--prefer-offline"],
                          cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        print(done.stdout)
        unreachable = UNREACHABLE.search(done.stdout)
        if unreachable:
            skip(f"the packages cannot be had ({unreachable.group(1)})")
        sys.exit(1)
    installed.write_text(lock)


def copy_sources(source, folder):
    """As they are now: what an earlier version had is gone, what was installed stays."""
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.iterdir():
        if old.name == "node_modules":
            continue
        shutil.rmtree(old) if old.is_dir() else old.unlink()
    shutil.copytree(source, folder, dirs_exist_ok=True, ignore=shutil.ignore_patterns("node_modules", "out"))


def compiled(source, folder):
    """Makes the project of `source` in `folder` and gives node's path."""
    source, folder = pathlib.Path(source), pathlib.Path(folder)
    node, npm = programs()
    copy_sources(source, folder)
    install(npm, folder)
    subprocess.run([npm, "run", "--silent", "compile"], cwd=folder, check=True)
    return node
