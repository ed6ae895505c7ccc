"""Runs test programs with one change at a time, where they can do no harm, and tells which see it."""
import dataclasses
import os
import pathlib
import selectors
import signal
import subprocess
import tempfile
import time

# All that a trial reads of ours lies in there.
root = pathlib.Path(__file__).resolve().parents[2]

# A changed program may remove or kill anything. So a trial can write to nothing of this machine's: it has
# a /tmp, a network and processes of its own, which end with it. $1, if any, is where it says what it reached;
# $2 is what has to be seen even if it lies below /tmp. The program is not the first of its processes, which
# signals do not end.
cell = """
set -e
trap 'exit 199' EXIT
exec 9<"$2"
[ -z "$1" ] || mount --bind "$1" "$1"
mount -t tmpfs tmpfs /tmp
case "$2" in /tmp/*) mkdir -p "$2" && mount -c --bind /proc/self/fd/9 "$2" ;; esac
exec 9<&-
[ -z "$1" ] || { mkdir /tmp/reached && mount --bind "$1" /tmp/reached; }
awk '$2 != "/tmp" && $2 != "/tmp/reached" { print $2 }' /proc/self/mounts | sort -u | while read -r place; do
    mount -o remount,bind,ro "$place" 2>/dev/null || [ "$place" != / ]
done
mount -t proc proc /proc
mount -t tmpfs tmpfs /dev/shm
chmod 1777 /tmp /dev/shm
ip link set lo up
shift 2
trap - EXIT
"$@" || exit $?
"""


def in_cell(command, folder=""):
    """`folder` is where a program says what it reached."""
    user = [] if os.getuid() == 0 else ["--user", "--map-root-user"]
    return ["unshare", *user, "--mount", "--pid", "--net", "--fork", "--kill-child", "sh", "-c", cell, "cell",
            str(folder), str(root), *command]


@dataclasses.dataclass
class Trial:
    """A test program, or one function of it, and what is known of its ordinary run."""
    name: str
    command: list
    environment: dict
    stamp: str
    seconds: float = 0
    reached: frozenset = frozenset()

    def limit(self):
        # The machine may be several times busier than it was; what hangs, hangs for longer.
        return 20 + 8 * self.seconds


def run(trial, limit, variables, folder=""):
    """How a trial ends: "passed", "failed", "crashed" or "hung". The first failure ends it."""
    process = subprocess.Popen(in_cell(trial.command, folder), stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                               env={**os.environ, **trial.environment, **variables}, start_new_session=True)
    text, deadline, outcome = b"", time.monotonic() + limit, None
    with selectors.DefaultSelector() as waiting:
        waiting.register(process.stdout, selectors.EVENT_READ)
        while outcome is None:
            if not waiting.select(max(0, deadline - time.monotonic())):
                outcome = "hung"
                break
            piece = os.read(process.stdout.fileno(), 1 << 16)
            text = (text + piece)[-1 << 17:]
            if b"\nFAIL!" in text or b"\nXPASS" in text:
                outcome = "failed"
            elif not piece:
                break
    if outcome is not None:
        os.killpg(process.pid, signal.SIGKILL)
    process.stdout.close()
    try:
        process.wait(max(1, deadline - time.monotonic()))
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return "hung"
    if process.returncode == 199 and outcome is None:
        raise SystemExit(f"mutate: no place to try changes in could be made:\n{text.decode(errors='replace')}")
    if outcome is None:
        outcome = "passed" if process.returncode == 0 else "failed" if 0 < process.returncode < 125 else "crashed"
    return outcome


def record(trial, count):
    """Runs it as it is; its time and what it reaches are noted. Whether it passed."""
    with tempfile.TemporaryDirectory(dir="/dev/shm", prefix="quorvane-mutate-") as name:
        folder = pathlib.Path(name)
        reached = folder / "reached"
        reached.write_bytes(bytes(count))
        # A test may become an ordinary user.
        folder.chmod(0o777)
        reached.chmod(0o666)
        begin = time.monotonic()
        outcome = run(trial, 600, {"MUTATE_REACHED": "/tmp/reached/reached"}, folder)
        trial.seconds = time.monotonic() - begin
        trial.reached = frozenset(i for i, byte in enumerate(reached.read_bytes()) if byte)
    return outcome == "passed"


def judge(number, room, trials):
    """(outcome, name of the trial that saw it, how many ran). Shortest first; those of the change's own
    folder see most of its changes, and count as a quarter as long."""
    meeting = [trial for trial in trials if number in trial.reached]
    meeting.sort(key=lambda trial: trial.seconds * (1 if trial.name.startswith(room + "/") else 4))
    for ran, trial in enumerate(meeting, 1):
        outcome = run(trial, trial.limit(), {"MUTATE_CHOSEN": str(number)})
        if outcome != "passed":
            return outcome, trial.name, ran
    return ("survived" if meeting else "not reached"), "", len(meeting)
