#!/usr/bin/env python3
"""Lets neovim edit a copy of the demo project without a screen, with the language server beside it.

It is set up as the page on projects says. What it does there stands in neovim.lua, which ends with status 0
if all was as it should be."""
import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

parser = argparse.ArgumentParser()
for option in ("neovim", "tool", "page", "project"):
    parser.add_argument(f"--{option}", required=True)
given = parser.parse_args()
settings = re.findall(r"^```lua\n(.*?)^```$", pathlib.Path(given.page).read_text(), re.DOTALL | re.MULTILINE)
if len(settings) != 1:
    sys.exit(f"{len(settings)} blocks of settings in {given.page}, not one")

with tempfile.TemporaryDirectory() as folder:
    project = pathlib.Path(folder).resolve() / "demo"
    shutil.copytree(given.project, project)
    before = {path: path.read_bytes() for path in project.rglob("*") if path.is_file()}
    settings_file = pathlib.Path(folder) / "init.lua"
    settings_file.write_text(settings[0])
    path = f"{pathlib.Path(given.tool).parent}:{os.environ['PATH']}"
    # Nothing of whoever runs it.
    environment = dict(os.environ, HOME=folder, XDG_CONFIG_HOME=f"{folder}/config",
                       XDG_DATA_HOME=f"{folder}/data", XDG_STATE_HOME=f"{folder}/state",
                       XDG_CACHE_HOME=f"{folder}/cache", PATH=path,
                       PROJECT=str(project), LC_ALL="C.UTF-8")
    script = pathlib.Path(__file__).with_name("neovim.lua")
    done = subprocess.run(
        [given.neovim, "--headless", "-u", settings_file, "-i", "NONE", "-n", "-c", f"luafile {script}"],
        env=environment, cwd=project, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT, text=True, timeout=240)
    print(done.stdout)
    after = {path: path.read_bytes() for path in project.rglob("*") if path.is_file()}
    if done.returncode == 0 and before != after:
        sys.exit("the project on the disk is another, though nobody saved it")
    sys.exit(done.returncode)
