"""Waiting for something to become true, and never for time to pass."""
import time

POLL_SECONDS = 0.05


def wait_for(condition, what, seconds=30, told=lambda: "", poll_seconds=POLL_SECONDS):
    """The first true value of `condition`; in the end fails with `what` and what `told` adds."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"{seconds} s went by without: {what}\n{told()}")
        time.sleep(poll_seconds)


def stays_true(condition, what, seconds):
    """For what must not happen: `condition` holds at every look during `seconds`."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if not condition():
            raise AssertionError(f"no longer true: {what}")
        time.sleep(POLL_SECONDS)
