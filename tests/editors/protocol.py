#!/usr/bin/env python3
"""Speaks with the language server by the protocol's own library, in its own language: see protocol/.

Ends with 77 where that library cannot be had."""
import argparse
import os
import pathlib
import subprocess
import sys

import npm_project

parser = argparse.ArgumentParser()
for option in ("tool", "project", "folder"):
    parser.add_argument(f"--{option}", required=True)
given = parser.parse_args()
node = npm_project.compiled(pathlib.Path(__file__).with_name("protocol"), given.folder)
version = subprocess.run([given.tool, "--version"], check=True, stdout=subprocess.PIPE, text=True).stdout.split()[-1]
environment = dict(os.environ, TOOL=given.tool, PROJECT=given.project, VERSION=version)
sys.exit(subprocess.run([node, "out/conformance.test.js"], cwd=given.folder, env=environment).returncode)
