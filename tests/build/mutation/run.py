#!/usr/bin/env python3
"""Changes planted.cpp as scripts/mutate changes the product, in each way that there is, and compares what its
test sees with what is known beforehand: run.py ROOT FOLDER, FOLDER for what is built."""
import pathlib
import subprocess
import sys

root, folder = (pathlib.Path(word).resolve() for word in sys.argv[1:])
sys.dont_write_bytecode = True
sys.path.insert(0, str(root / "scripts/mutation"))
import changes as small_changes  # noqa: E402
import trials as test_trials  # noqa: E402

here = pathlib.Path(__file__).resolve().parent
test_trials.root = folder
folder.mkdir(parents=True, exist_ok=True)
planted = here / "planted.cpp"
plugin = small_changes.build_finder(folder)
found = small_changes.find(planted, f"c++ -std=c++17 -I{here} -o planted.o", folder, plugin, folder / "points")
found = [{"file": "planted.cpp", **change} for change in found]
assert small_changes.choose(found, 9, 5) == small_changes.choose(list(reversed(found))[::-1], 9, 5)
assert small_changes.choose(found, 9, 5) != small_changes.choose(found, 9, 6)
chosen = small_changes.choose(found, 1000, 1)
for number, change in enumerate(chosen):
    change["number"] = number

(folder / "planted.cpp").write_bytes(small_changes.rewrite(planted.read_bytes(), chosen))
program = folder / "planted"
subprocess.check_call(["c++", "-std=c++17", f"-I{here}", str(folder / "planted.cpp"), str(here / "planted_main.cpp"),
                       "-o", str(program)])
trial = test_trials.Trial("planted", [str(program)], {}, "")
assert test_trials.record(trial, len(chosen)), "the planted program fails as it is"

def end_of(script, limit=60):
    return test_trials.run(test_trials.Trial("sh", ["sh", "-c", script], {}, ""), limit, {})


assert end_of("exit 0") == "passed"
assert end_of("exit 3") == "failed"
assert end_of("echo; echo 'FAIL!  : it is seen before the end'; sleep 600") == "failed"
assert end_of("kill -SEGV $$") == "crashed"
assert end_of("sleep 600", 2) == "hung"
# What a changed program might remove.
for target in (planted, "/dev/mutate", "/etc/mutate"):
    assert end_of(f"touch {target} 2>/dev/null") == "failed", target

found_out = set()
for change in chosen:
    outcome, _, _ = test_trials.judge(change["number"], "", [trial])
    found_out.add((change["line"], change["operator"], small_changes.without_comments(change["now"]), outcome))
expected = set()
for line in (here / "expected.txt").read_text().splitlines():
    number, *rest = line.split(" | ")
    expected.add((int(number), *rest))
for sign, entries in (("-", expected - found_out), ("+", found_out - expected)):
    for entry in sorted(entries):
        print(sign, " | ".join(map(str, entry)))
sys.exit(expected != found_out)
