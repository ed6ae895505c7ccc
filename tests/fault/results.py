"""What came of each point of a long run, kept in a file, so that a run goes on where one stopped.

A line for each point, as JSON, written when the point is done. Two runs on one file would do the same
work twice: the second is refused.
"""
import collections
import concurrent.futures
import contextlib
import fcntl
import json
import multiprocessing
import os
import pathlib
import signal
import sys

# name: the outcome, None for one that may not be. said: what helps to understand that one. kills: how
# many recoveries were killed on the way; a file does not keep it.
Result = collections.namedtuple("Result", "name said kills", defaults=(0,))


def add_options(parser):
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--results", metavar="FILE")


def add_programs(parser):
    """The tool, the update and what lets it fail."""
    for name in ("tool", "program", "interposer"):
        parser.add_argument(name, type=pathlib.Path)


class Results:
    """Without a path they are kept for this run alone."""

    def __init__(self, path):
        self.done = {}
        self.file = None
        if path is None:
            return
        self.file = open(path, "a+", encoding="utf-8")
        try:
            fcntl.flock(self.file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            self.file.close()
            sys.exit(f"another run writes to {path}")
        self.read()

    def read(self):
        """A run that was killed may have left half a line: that point is tried again."""
        self.file.seek(0)
        text = self.file.read()
        whole = text[:text.rfind("\n") + 1]
        for line in whole.splitlines():
            result = json.loads(line)
            self.done[result["point"]] = Result(result["outcome"], result["said"])
        if whole != text:
            self.file.truncate(len(whole.encode()))

    def add(self, point, operation, result):
        self.done[point] = result
        if self.file:
            record = {"point": point, "operation": operation, "outcome": result.name,
                      "said": result.said if result.name is None else ""}
            self.file.write(json.dumps(record, ensure_ascii=False) + "\n")
            self.file.flush()

    def close(self):
        if self.file:
            self.file.close()


def end_on_request():
    """Asked to end, a run clears its folders away, as it does after Ctrl-C."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))


# What a process of the pool does with a number: set before they part, since a function of the moment cannot be
# handed over.
_try_one = None


def _tried(number):
    return _try_one(number)


def results_of(numbers, try_one, jobs):
    """Pairs of a number and its Result, in the order in which they come. Each job is a process of its own: most
    of a point is what Python does with its folders. One alone needs none."""
    global _try_one
    if jobs == 1:
        yield from ((number, try_one(number)) for number in numbers)
        return
    _try_one = try_one
    pool = concurrent.futures.ProcessPoolExecutor(jobs, multiprocessing.get_context("fork"))
    try:
        tried = {pool.submit(_tried, number): number for number in numbers}
        for future in concurrent.futures.as_completed(tried):
            yield tried[future], future.result()
    finally:
        pool.shutdown(cancel_futures=True)


def run_points(options, points, try_one, unlisted):
    """Tries all points that the file does not know yet, then tells of all. `points` is a list of pairs,
    a point's text and its operation; `try_one` gives the Result of a point by its number in the list;
    `unlisted` stands in the table for outcomes that may not be. How many of these there are."""
    results = Results(options.results)
    left = [number for number, point in enumerate(points) if point[0] not in results.done]
    print(f"{len(points)} runs, {len(points) - len(left)} of them done before", flush=True)
    try:
        with contextlib.closing(results_of(left, try_one, options.jobs)) as found:
            for number, result in found:
                results.add(*points[number], result)
    finally:
        results.close()
    return tell(points, results, unlisted)


def tell(points, results, unlisted):
    counts = collections.Counter(results.done[point].name or unlisted for point, _ in points)
    for name, number in counts.most_common():
        print(f"{number:7}  {name}")
    kills = sum(results.done[point].kills for point, _ in points)
    if kills:
        print(f"{kills} recoveries were killed themselves")
    bad = [(point, operation) for point, operation in points if results.done[point].name is None]
    for point, operation in bad[:20]:
        print(f"{unlisted.lower()}: --only {point}: {operation}\n{results.done[point].said}")
    return len(bad)
