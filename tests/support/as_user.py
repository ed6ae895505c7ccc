#!/usr/bin/env python3
"""Runs a test program once more where the tests run as root: as an ordinary user, whom permissions keep out.

    as_user.py PROGRAM

Its rows on permissions are passed over when root runs it. Ends as the program does, and with 77 where no
second run is needed, since the first was an ordinary user's.
"""
import os
import pathlib
import pwd
import subprocess
import sys
import tempfile


def main():
    program = pathlib.Path(sys.argv[1])
    if os.geteuid() != 0:
        print("the tests run as an ordinary user, so the first run had these rows too")
        return 77
    user = pwd.getpwnam("nobody")
    become = ["setpriv", f"--reuid={user.pw_uid}", f"--regid={user.pw_gid}", "--clear-groups"]
    if subprocess.run([*become, "test", "-x", program], check=False).returncode != 0:
        sys.exit(f"{user.pw_name} cannot start {program}: rows on permissions need a tree that everybody may "
                 "enter, and a root that can become somebody else")
    with tempfile.TemporaryDirectory() as home:
        os.chown(home, user.pw_uid, user.pw_gid)
        # Counts of coverage go with it: those of the tree are root's.
        surroundings = dict(os.environ, HOME=home, TMPDIR=home, GCOV_PREFIX=home)
        return subprocess.run([*become, program], env=surroundings, cwd=home, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
