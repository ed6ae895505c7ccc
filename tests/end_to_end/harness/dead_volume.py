"""A mounted volume that never answers, like a network drive whose server is gone."""
import ctypes
import os

LIBRARY = ctypes.CDLL(None, use_errno=True)
DETACH = 2


class NoDeadVolume(Exception):
    """This machine has no device for it, or keeps it for others."""


class DeadVolume:
    """A file system of a process's own (FUSE) of which nobody reads the questions."""

    def __init__(self, place):
        place.mkdir()
        self.place = str(place).encode()
        try:
            self.device = os.open("/dev/fuse", os.O_RDWR | os.O_CLOEXEC)
        except OSError as error:
            raise NoDeadVolume(f"no file system that never answers: {error}") from error
        options = f"fd={self.device},rootmode=40000,user_id=0,group_id=0".encode()
        if LIBRARY.mount(b"dead", self.place, b"fuse", 0, options) != 0:
            reason = os.strerror(ctypes.get_errno())
            os.close(self.device)
            raise NoDeadVolume(f"no file system that never answers: {reason}")

    def remove(self):
        """Whoever still asks gets an error."""
        LIBRARY.umount2(self.place, DETACH)
        os.close(self.device)
