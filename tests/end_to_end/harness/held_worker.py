"""Holds the launcher's work in the background at a moment that can be seen from outside.

As a disk would that takes its time, and without a guess at how long anything takes: the threads of
the pool are stopped, one by one, while the rest of the program runs on and can be pressed.
"""
import ctypes
import os
import pathlib

from harness.waiting import wait_for

SEIZE, INTERRUPT, DETACH = 0x4206, 0x4207, 17
WAIT_FOR_ALL = 0x40000000  # also for threads
POOL_THREAD = "Thread (pooled)"
PTRACE = ctypes.CDLL(None, use_errno=True).ptrace
PTRACE.argtypes = [ctypes.c_long, ctypes.c_long, ctypes.c_void_p, ctypes.c_void_p]
PTRACE.restype = ctypes.c_long


class HeldWorker:
    """Stops the pool as soon as `moment` is true, until the end of the `with`."""

    def __init__(self, launcher, moment, what):
        self.launcher, self.moment, self.what = launcher, moment, what
        self.threads = []

    def __enter__(self):
        wait_for(self.moment, self.what, told=self.launcher.situation, poll_seconds=0.0005)
        for task in pathlib.Path(f"/proc/{self.launcher.pid}/task").iterdir():
            if (task / "comm").read_text().strip() == POOL_THREAD:
                self._stop(int(task.name))
        return self

    def __exit__(self, *_):
        for thread in self.threads:
            if PTRACE(DETACH, thread, None, None) != 0:
                os.waitpid(thread, WAIT_FOR_ALL)  # it was killed: its end is ours to note

    def _stop(self, thread):
        for request in (SEIZE, INTERRUPT):
            if PTRACE(request, thread, None, None) != 0:
                raise OSError(ctypes.get_errno(), f"thread {thread} cannot be held")
        os.waitpid(thread, WAIT_FOR_ALL)
        self.threads.append(thread)
