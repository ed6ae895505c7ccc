"""Holds the launcher's work in the background at a moment that can be seen from outside.

As a disk would that takes its time, and without a guess at how long anything takes: the threads of
the pool are stopped, one by one, while the rest of the program runs on and can be pressed.

A thread may hold a lock that the rest needs, inside the C library too: for memory, or for the time
zone, which an archive's entries are asked for. So each is stopped where it enters a system call that
nobody makes with such a lock: one that works on files, or waits.
"""
import ctypes
import os
import pathlib

from harness.waiting import wait_for

SEIZE, INTERRUPT, DETACH, TO_NEXT_CALL, CALL_INFO = 0x4206, 0x4207, 17, 24, 0x420E
MARK_CALLS = 1  # an option of SEIZE
AT_ENTRY = 1  # as CALL_INFO tells
WAIT_FOR_ALL = 0x40000000  # also for threads
POOL_THREAD = "Thread (pooled)"
PTRACE = ctypes.CDLL(None, use_errno=True).ptrace
PTRACE.argtypes = [ctypes.c_long, ctypes.c_long, ctypes.c_void_p, ctypes.c_void_p]
PTRACE.restype = ctypes.c_long

# By their numbers on x86-64.
READ, WRITE, POLL, RENAME, MKDIR, UNLINK, FUTEX, GETDENTS, RESTART = 0, 1, 7, 82, 83, 87, 202, 217, 219
OPENAT, UNLINKAT, PPOLL = 257, 263, 271
GOOD_CALLS = {READ, WRITE, POLL, RENAME, MKDIR, UNLINK, FUTEX, GETDENTS, RESTART, OPENAT, UNLINKAT,
              PPOLL}


class CallInfo(ctypes.Structure):
    """The head of the kernel's ptrace_syscall_info."""
    _fields_ = [("op", ctypes.c_uint8), ("arch", ctypes.c_uint32),
                ("instruction", ctypes.c_uint64), ("stack", ctypes.c_uint64),
                ("number", ctypes.c_uint64), ("arguments", ctypes.c_uint64 * 6)]


class HeldWorker:
    """Stops the pool as soon as `moment` is true, until the end of the `with`."""

    def __init__(self, launcher, moment, what):
        self.launcher, self.moment, self.what = launcher, moment, what
        self.threads = []

    def __enter__(self):
        wait_for(self.moment, self.what, told=self.launcher.situation, poll_seconds=0.0005,
                 share_of_looks=1)
        for task in pathlib.Path(f"/proc/{self.launcher.pid}/task").iterdir():
            if (task / "comm").read_text().strip() == POOL_THREAD:
                self._stop(int(task.name))
        return self

    def __exit__(self, *_):
        for thread in self.threads:
            if PTRACE(DETACH, thread, None, None) != 0:
                os.waitpid(thread, WAIT_FOR_ALL)  # it was killed: its end is ours to note

    def _stop(self, thread):
        ask(SEIZE, thread, data=MARK_CALLS)
        ask(INTERRUPT, thread)
        os.waitpid(thread, WAIT_FOR_ALL)
        while not enters_good_call(thread):
            ask(TO_NEXT_CALL, thread)
            os.waitpid(thread, WAIT_FOR_ALL)
        self.threads.append(thread)


def ask(request, thread, address=None, data=None):
    if PTRACE(request, thread, address, data) < 0:
        raise OSError(ctypes.get_errno(), f"thread {thread} cannot be held")


def enters_good_call(thread):
    info = CallInfo()
    ask(CALL_INFO, thread, ctypes.sizeof(info), ctypes.addressof(info))
    return info.op == AT_ENTRY and info.number in GOOD_CALLS
