#!/usr/bin/env python3
"""What is compiled in a copy of the source tree that lies elsewhere is the same, byte for byte.

    other_folder.py --source TREE --tree BUILD_TREE --qt QT --crypto CRYPTO

A few files stand for all: those whose warnings tell where they stand, and the resources, in which the times of
files could be. windows/same_bytes has the rest of the way, to package and installer.
"""
import argparse
import os
import pathlib
import subprocess
import sys
import tempfile

OBJECTS = (
    "product/frame/CMakeFiles/quorvane_settings.dir/Unity/unity_0_cxx.cxx.obj",
    "product/library/CMakeFiles/quorvane_library.dir/Unity/unity_0_cxx.cxx.obj",
    "resources/CMakeFiles/quorvane_resources.dir/qrc_quorvane.cpp.obj",
    "tools/quorvanectl/CMakeFiles/quorvane_ctl_shell.dir/Unity/unity_1_cxx.cxx.obj",
)
# What goes into them, which is made first. The libraries that the build would make before, a dozen objects, do not.
PARTS = (
    "product/CMakeFiles/quorvane_product_headers.dir/cmake_pch.hxx.gch",
    "resources/qrc_quorvane.cpp",
    "tools/quorvanectl/qrc_function_library.cpp",
)


def copy_of(source, folder):
    """What belongs to the tree, with other times."""
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=source, check=True,
                            stdout=subprocess.PIPE).stdout
    names = [name for name in listed.split(b"\0") if name and (source / os.fsdecode(name)).is_file()]
    copied = subprocess.run(["tar", "-c", "--null", "-T", "-"], cwd=source, input=b"\0".join(names), check=True,
                            stdout=subprocess.PIPE).stdout
    folder.mkdir(parents=True)
    subprocess.run(["tar", "-x", "-m", "-C", folder], input=copied, check=True)


def make_alone(tree, path, environment):
    told = subprocess.run(["ninja", "-C", tree, "-t", "commands", "-s", path], env=environment, check=True,
                          stdout=subprocess.PIPE, text=True)
    (tree / path).parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(told.stdout, shell=True, cwd=tree, env=environment, check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("--source", "--tree", "--qt", "--crypto"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    wish = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="quorvane_other_") as name:
        # Compiled anew: what ccache keeps is of the first folder.
        values = {**os.environ, "CCACHE_DISABLE": "1", "QT_MINGW_ROOT": str(wish.qt),
                  "CRYPTO_MINGW_ROOT": str(wish.crypto)}
        copy = pathlib.Path(name) / "far/deeper/copy"
        copy_of(wish.source, copy)
        subprocess.run(["cmake", "--preset", "windows"], cwd=copy, env=values, check=True,
                       stdout=subprocess.DEVNULL)
        other = copy / "build/windows"
        for path in (*PARTS, *OBJECTS):
            make_alone(other, path, values)
        differing = [path for path in OBJECTS if (wish.tree / path).read_bytes() != (other / path).read_bytes()]
    print(f"{len(OBJECTS)} objects compared")
    if differing:
        sys.exit("another one in another folder: " + ", ".join(differing))


if __name__ == "__main__":
    main()
