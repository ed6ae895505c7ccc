#!/usr/bin/env python3
"""Makes the installer as it ships, if it was not made of the same the last time: that takes half a minute of
processor time. windows/same_bytes makes it anew each time, and finds whether the two differ.

    setup_program.py --builder build-installer --package PACKAGE.zip --placer placer.exe --version X.Y.Z
                     --out FOLDER
"""
import argparse
import hashlib
import os
import pathlib
import subprocess
import sys


def told_by(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


def hash_of(*parts):
    return hashlib.sha256(repr(parts).encode()).hexdigest()


def hash_of_inputs(wish):
    """Of everything that its bytes depend on, what makes it among it."""
    folder = wish.builder.parent
    files = [wish.package, wish.placer, *sorted(path for path in folder.iterdir() if path.is_file())]
    return hash_of(wish.version, os.environ.get("QUORVANE_SIGN_COMMAND"), told_by(folder / "source-date"),
                   told_by("makensis", "-VERSION"), told_by("x86_64-w64-mingw32-strip", "--version"),
                   *((path.name, path.read_bytes()) for path in files))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("--builder", "--package", "--placer", "--out"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    parser.add_argument("--version", required=True)
    wish = parser.parse_args()
    installer = wish.out / f"quorvaner-setup-{wish.version}.exe"
    made = installer.with_suffix(".made")  # the hashes of inputs and installer, once it is whole
    inputs = hash_of_inputs(wish)
    if made.exists() and installer.exists():
        if made.read_text() == f"{inputs} {hash_of(installer.read_bytes())}\n":
            print(f"{installer} is made of the same as before, and kept")
            return
    made.unlink(missing_ok=True)
    subprocess.run([wish.builder, "--package", wish.package, "--placer", wish.placer, "--version", wish.version,
                    "--out", wish.out], check=True)
    made.write_text(f"{inputs} {hash_of(installer.read_bytes())}\n")


if __name__ == "__main__":
    sys.exit(main())
