#!/usr/bin/python3
"""Runs one scenario file against a copy of an installation, as root or as an ordinary user.

    run.py --installation DIR --translation FILE --publisher KEY --update-host HOST
           --account root|user --pictures DIR SCENARIO

The installation is copied to a place outside the source tree. The scenario then runs in a user,
mount and network namespace of its own, so that it may mount what it likes and reaches no network.
Needs no privilege; started by root it takes the account `nobody` for the ordinary user.
"""
import argparse
import os
import pathlib
import pwd
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
PYTHON = "/usr/bin/python3"  # readable by every account, and has Debian's modules


def base_outside_of_source_trees():
    """A temporary folder with no folder src above it: the launcher would take that for its root."""
    for base in (tempfile.gettempdir(), "/var/tmp", os.path.expanduser("~")):
        folder = pathlib.Path(base).resolve()
        if not any((ancestor / "src").exists() for ancestor in (folder, *folder.parents)):
            return tempfile.mkdtemp(prefix="quorvaner-", dir=folder)
    sys.exit("every temporary folder lies below one that holds a folder src")


def hand_over(folder, account):
    for path in (folder, *folder.rglob("*")):
        os.chown(path, account.pw_uid, account.pw_gid, follow_symlinks=False)


def command_for(stage, scenario, account):
    inside = [PYTHON, "-m", "unittest", "-v", f"scenarios.{scenario}"]
    namespace = ["unshare", "--map-root-user", "--mount", "--net", "--"]
    drop = []
    if account == "user" and os.getuid() == 0:
        nobody = pwd.getpwnam("nobody")
        hand_over(stage, nobody)
        drop = ["setpriv", f"--reuid={nobody.pw_uid}", f"--regid={nobody.pw_gid}", "--clear-groups"]
    return [*drop, *namespace, *inside]


def environment(stage, account, update_host):
    """Nothing of the caller's surroundings reaches the launcher."""
    return {
        "PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin",
        "LANG": "C.UTF-8",
        "HOME": str(stage / "home"),
        "TMPDIR": str(stage / "tmp"),
        "XDG_RUNTIME_DIR": str(stage / "run"),
        "PYTHONDONTWRITEBYTECODE": "1",
        "QUORVANE_STAGE": str(stage),
        "QUORVANE_ACCOUNT": account,
        "QUORVANE_UPDATE_HOST": update_host,
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--installation", type=pathlib.Path, required=True)
    parser.add_argument("--translation", type=pathlib.Path, required=True)
    parser.add_argument("--publisher", type=pathlib.Path, required=True)
    parser.add_argument("--update-host", required=True)
    parser.add_argument("--account", choices=("root", "user"), required=True)
    parser.add_argument("--pictures", type=pathlib.Path, required=True)
    parser.add_argument("scenario")
    options = parser.parse_args()

    stage = pathlib.Path(base_outside_of_source_trees())
    try:
        for folder in ("home", "tmp", "run", "pictures"):
            (stage / folder).mkdir()
        (stage / "run").chmod(0o700)
        shutil.copytree(options.installation, stage / "template", symlinks=True)
        shutil.copytree(HERE, stage / "end_to_end", ignore=shutil.ignore_patterns("__pycache__"))
        shutil.copy(options.translation, stage / "quorvane_en.ts")
        shutil.copy(options.publisher, stage / "publisher.pem")
        stage.chmod(0o755)
        result = subprocess.run(command_for(stage, options.scenario, options.account),
                                env=environment(stage, options.account, options.update_host),
                                cwd=stage / "end_to_end", stdin=subprocess.DEVNULL, check=False)
        target = options.pictures / f"{options.scenario}-{options.account}"
        shutil.rmtree(target, ignore_errors=True)
        shutil.copytree(stage / "pictures", target)
        return result.returncode
    finally:
        shutil.rmtree(stage, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
