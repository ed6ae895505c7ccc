"""A screen, a window manager and a session bus for one run, and the keys and eyes of its user."""
import os
import pathlib
import subprocess

from harness.waiting import wait_for

SOCKETS = pathlib.Path("/tmp/.X11-unix")
# Where a server's keyboard is compiled to, into a file named after its screen.
KEYBOARDS = pathlib.Path("/var/lib/xkb")
STAGE = pathlib.Path(os.environ["QUORVANE_STAGE"])


class Desktop:
    def __init__(self):
        self.processes = []
        self.log = open(STAGE / "desktop.log", "ab")
        subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
        # Servers of several runs, each of screen 0, would take each other's sockets and keyboards.
        SOCKETS.mkdir(mode=0o1777, exist_ok=True)
        for folder in (SOCKETS, KEYBOARDS):
            subprocess.run(["mount", "-t", "tmpfs", "none", str(folder)], check=True)
        self.environment = dict(os.environ)
        self.environment["DISPLAY"] = ":" + self._answer_of(
            lambda fd: ["Xvfb", "-displayfd", str(fd), "-screen", "0", "1600x1200x24",
                        "-nolisten", "tcp", "-ac",
                        # A server that starts anew when its last client leaves throws out the next.
                        "-noreset"])
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self._answer_of(
            lambda fd: ["dbus-daemon", "--session", "--nofork", f"--print-address={fd}",
                        f"--address=unix:path={STAGE}/run/bus"])
        # What a screen reader asks of every program.
        self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        self._start(["openbox"])
        wait_for(lambda: self._output(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"]).find("#") > 0,
                 "a window manager", told=(STAGE / "desktop.log").read_text)

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
        for process in self.processes:
            process.wait(10)
        self.log.close()

    def key(self, *keys):
        """Presses keys, one after the other, in the window that has the focus."""
        self._output(["xdotool", "key", "--clearmodifiers", *keys])

    def type(self, text):
        """Types into whatever has the focus."""
        self._output(["xdotool", "type", "--clearmodifiers", text])

    def click(self, x, y):
        self._output(["xdotool", "mousemove", str(x), str(y), "click", "1"])

    def windows_of(self, pid):
        """The visible windows of a process, the newest last."""
        return self._output(["xdotool", "search", "--all", "--onlyvisible", "--pid", str(pid),
                             "--name", ""]).split()

    def window_of(self, pid, title):
        """The newest visible window of a process with exactly this title, or None."""
        for window in reversed(self.windows_of(pid)):
            if self._output(["xdotool", "getwindowname", window]).rstrip("\n") == title:
                return window
        return None

    def focus(self, window):
        self._output(["xdotool", "windowactivate", "--sync", window])

    def ask_to_close(self, window):
        """What the cross in a title bar does."""
        self.focus(window)
        self.key("alt+F4")

    def picture(self, name):
        self._output(["import", "-window", "root", "-define", "png:compression-level=1",
                      str(STAGE / "pictures" / f"{name}.png")])

    def _output(self, command):
        """What a command prints; nothing if it hangs, which the next wait will tell."""
        try:
            return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, stderr=self.log, check=False,
                                  timeout=20).stdout.decode()
        except subprocess.TimeoutExpired:
            return ""

    def _start(self, command, **more):
        process = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL,
                                   stdout=self.log, stderr=self.log, **more)
        self.processes.append(process)
        return process

    def _answer_of(self, command):
        """Starts a server that writes one line to a file descriptor once it is ready."""
        read, write = os.pipe()
        self._start(command(write), pass_fds=(write,))
        os.close(write)
        with os.fdopen(read) as answer:
            return answer.readline().strip()
