"""Waiting for something to become true, and never for time to pass."""
import time

POLL_SECONDS = 0.05
# A look at every control of a window takes the launcher's time too: most of it stays with the launcher.
SHARE_OF_LOOKS = 1 / 4
LONGEST_PAUSE_SECONDS = 0.2


def wait_for(condition, what, seconds=30, told=lambda: "", poll_seconds=POLL_SECONDS,
             share_of_looks=SHARE_OF_LOOKS):
    """The first true value of `condition`; in the end fails with `what` and what `told` adds."""
    deadline = time.monotonic() + seconds
    while True:
        began = time.monotonic()
        value = condition()
        if value:
            return value
        ended = time.monotonic()
        if ended > deadline:
            raise AssertionError(f"{seconds} s went by without: {what}\n{told()}")
        fair = (ended - began) * (1 / share_of_looks - 1)
        time.sleep(max(poll_seconds, min(fair, LONGEST_PAUSE_SECONDS)))


def stays_true(condition, what, seconds):
    """For what must not happen: `condition` holds at every look during `seconds`."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if not condition():
            raise AssertionError(f"no longer true: {what}")
        time.sleep(POLL_SECONDS)
