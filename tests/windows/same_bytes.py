#!/usr/bin/env python3
"""The package and the installer, made once more, have the same bytes; and each program is signed once where
there is something to sign with.

    same_bytes.py --cpack CPACK --config CPackConfig.cmake --builder build-installer --placer placer.exe
                  --version X.Y.Z --packages FOLDER
"""
import argparse
import hashlib
import os
import pathlib
import subprocess
import sys
import tempfile


def hash_of(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def make(wish, folder, **variables):
    environment = {**os.environ, **variables}
    subprocess.run([wish.cpack, "--config", wish.config, "-B", folder], check=True, env=environment,
                   stdout=subprocess.DEVNULL)
    (package,) = folder.glob("*.zip")
    subprocess.run([wish.builder, "--package", package, "--placer", wish.placer, "--version", wish.version,
                    "--out", folder], check=True, env=environment, stdout=subprocess.DEVNULL)


def same_bytes(wish, folder):
    for path in (*folder.glob("*.zip"), *folder.glob("*.exe")):
        first, second = hash_of(wish.packages / path.name), hash_of(path)
        print(f"{path.name}: {path.stat().st_size} bytes, SHA-256 {first}, and again {second}")
        if first != second:
            sys.exit(f"{path.name} is another one the second time")


def signed(wish, folder):
    """The command only writes down what it is called with."""
    told = folder / "signed"
    command = folder / "sign"
    command.write_text(f'#!/bin/sh\n[ -s "$1" ] && basename "$1" >>{told}\n')
    command.chmod(0o755)
    make(wish, folder, QUORVANE_SIGN_COMMAND=str(command))
    expected = ["Quorvaner.exe", "placer.exe", f"quorvaner-setup-{wish.version}.exe", "quorvanectl.exe",
                "uninstall.exe"]
    if sorted(told.read_text().split()) != sorted(expected):
        sys.exit(f"signed: {told.read_text().split()}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("--builder", "--config", "--placer", "--packages"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    for name in ("--cpack", "--version"):
        parser.add_argument(name, required=True)
    wish = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="quorvane_bytes_") as name:
        # The command changes no byte, so one more making shows both.
        signed(wish, pathlib.Path(name))
        same_bytes(wish, pathlib.Path(name))


if __name__ == "__main__":
    sys.exit(main())
