"""The small changes that the product's source files could have: found, chosen and written down."""
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import random
import re
import shlex
import subprocess

here = pathlib.Path(__file__).resolve().parent


def build_finder(folder):
    """The plug-in of clang's that finds them."""
    source, plugin = here / "find_points.cpp", folder / "find_points.so"
    if not plugin.exists() or plugin.stat().st_mtime < source.stat().st_mtime:
        include = subprocess.check_output(["llvm-config", "--includedir"], text=True).strip()
        subprocess.check_call(["clang++", "-std=c++17", "-O0", "-fno-rtti", "-fPIC", "-shared",
                               f"-I{include}", str(source), "-o", str(plugin)])
    return plugin


def without_comments(text):
    """On one line, so that the lines behind keep their numbers."""
    parts = re.findall(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)*\'|//[^\n]*|.', text, re.S)
    return re.sub(r"\s*\n\s*", " ", "".join(part for part in parts if not part.startswith("//")))


def find(file, command, directory, plugin, cache):
    """All changes of a file, in the order of their places."""
    words = shlex.split(re.sub(r" -Winvalid-pch -include \S*cmake_pch\.hxx", "", command))
    flags = words[1:words.index("-o")]
    key = hashlib.sha256(b"\0".join([file.read_bytes(), plugin.read_bytes(), " ".join(flags).encode()]))
    kept = cache / key.hexdigest()
    if not kept.exists():
        run = subprocess.run(
            ["clang++", *flags, "-w", "-fsyntax-only", "-Xclang", "-load", "-Xclang", str(plugin), "-Xclang",
             "-plugin", "-Xclang", "find-points", str(file)],
            cwd=directory, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if run.returncode != 0:
            raise SystemExit(f"mutate: clang cannot read {file}:\n{run.stderr.decode()}")
        cache.mkdir(parents=True, exist_ok=True)
        kept.write_bytes(run.stdout)
    changes = [json.loads(line) for line in kept.read_bytes().splitlines()]
    # A failure's text is followed by false in any case; and a raw string cannot be put on one line.
    changes = [change for change in changes
               if not re.match(r"static_cast<void>\((fail|refuse)\(.*, false$", change["now"], re.S)
               and 'R"' not in change["now"]]
    return sorted(changes, key=lambda change: (change["edits"], change["operator"]))


def find_all(entries, plugin, cache):
    """{file: changes} of the compile commands `entries`: (file, command, directory)."""
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = pool.map(lambda entry: find(*entry, plugin, cache), entries)
        return {entry[0]: changes for entry, changes in zip(entries, found)}


def choose(changes, count, seed):
    """`count` of them, as many of each operator as there are; the same for the same seed."""
    draw = random.Random(seed)
    by_operator = collections.defaultdict(list)
    for change in changes:
        by_operator[change["operator"]].append(change)
    heaps = [by_operator[name] for name in sorted(by_operator)]
    for heap in heaps:
        draw.shuffle(heap)
    chosen = []
    while len(chosen) < count and any(heaps):
        chosen += [heap.pop() for heap in heaps if heap]
    chosen = chosen[:count]
    return sorted(chosen, key=lambda change: (change["file"], change["edits"], change["operator"], change["now"]))


def name_of(change):
    """What a change is known by from one run to the next."""
    return "|".join([change["file"], str(change["line"]), str(change["column"]), change["operator"],
                     without_comments(change["now"])])


def rewrite(text, changes):
    """The bytes of a source file with all these changes in it, each behind the question for its number.
    Where two begin at one place, the longer is around the shorter; each behind its own beginning."""
    parts = []
    for order, change in enumerate(changes):
        chosen = f"::mutation::isChosen({change['number']}L)"
        for begin, end, before, behind in change["edits"]:
            before = without_comments(before).replace("CHOSEN", chosen, 1)
            parts.append(((begin, 1, -end, order), before))
            parts.append(((end, 0, -begin, -order), behind))
    result, at = bytearray(), 0
    for (place, *_), part in sorted(parts):
        result += text[at:place] + part.encode()
        at = place
    head = f'#include "{here / "chosen.h"}"\n#line 1\n'
    return head.encode() + bytes(result) + text[at:] if changes else text
