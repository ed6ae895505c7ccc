"""Folders for a run: in memory where the system has such a volume, and on the disk. They go with it."""
import contextlib
import pathlib
import tempfile

SHARED = pathlib.Path("/dev/shm")


@contextlib.contextmanager
def one():
    with tempfile.TemporaryDirectory(prefix="fault", dir=SHARED if SHARED.is_dir() else None) as near:
        yield pathlib.Path(near)


@contextlib.contextmanager
def two():
    """On two volumes, if there are two."""
    with one() as near, tempfile.TemporaryDirectory(prefix="fault") as far:
        yield near, pathlib.Path(far)


def layouts(near, far):
    """Those that a pair of folders allows; see run.py."""
    return ["one", "two"] if near.stat().st_dev != far.stat().st_dev else ["one"]
