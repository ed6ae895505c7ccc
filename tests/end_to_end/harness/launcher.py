"""The launcher as its user has it: started, looked at, pressed and closed from outside."""
import os
import pathlib
import signal
import subprocess
import time

from harness import screen_reader
from harness.translation import say
from harness.waiting import POLL_SECONDS, wait_for

# An ordinary user owns the installation and may do nothing that takes a privilege. Inside the
# namespace every account bears the number 0; what makes root is the capabilities.
WITHOUT_PRIVILEGE = ["setpriv", "--bounding-set=-all", "--inh-caps=-all", "--no-new-privs", "--"]

TITLE = "Quorvane 启动器"
STATUS_COUNTDOWN = "将在 %1 秒后自动启动（F8 = 修复模式）"
STATUS_MONITOR = "正在监护目标进程。日志：%1"
STATUS_REPAIR = "修复模式：选择 yslib、查看日志或手动启动。"
CANCEL_TASK = "取消更新任务"
BUTTON_LAUNCH = "立即启动"
BUTTON_BROWSE = "浏览 yslib…"

MOST_CLOSING_KEYS = 5
CLOSING_SECONDS = 5


class Launcher:
    def __init__(self, desktop, reader, installation, locale, more_environment):
        self.desktop, self.reader, self.installation = desktop, reader, installation
        self.locale = locale  # in which its texts are expected
        self.output = open(installation.root / "output.log", "ab")
        environment = dict(desktop.environment)
        environment["XDG_DATA_HOME"] = str(installation.data_home)
        environment.update(more_environment)
        account = [] if os.environ["QUORVANE_ACCOUNT"] == "root" else WITHOUT_PRIVILEGE
        self.process = subprocess.Popen([*account, str(installation.program)], env=environment,
                                        cwd="/", stdin=subprocess.DEVNULL, stdout=self.output,
                                        stderr=self.output)
        self.pid = self.process.pid

    # What can be seen -------------------------------------------------------------------------

    def say(self, source, *values):
        return say(self.locale, source, *values)

    def windows(self):
        """Its windows that can be seen: the dialog, and message boxes over it."""
        program = self.reader.program(self.pid)
        children = program.children() if program else []
        return [window for window in children if window.has(screen_reader.SHOWING)]

    def window_titled(self, title):
        return next((window for window in self.windows() if window.name() == title), None)

    def texts(self):
        """All names that can be read on its windows."""
        return [node.name() for window in self.windows() for node in window.showing()]

    def path_field(self):
        """The field of the project's path in the repair panel."""
        return next((node for window in self.windows() for node in window.showing()
                     if node.role() == "text" and node.has(screen_reader.EDITABLE)), None)

    def control(self, name):
        """The button, box or field of this name that can be seen, or None."""
        for window in self.windows():
            for node in window.showing():
                if node.name() == name and node.role() not in ("label", "alert", "dialog", "frame"):
                    return node
        return None

    def children_pids(self):
        try:
            listed = pathlib.Path(f"/proc/{self.pid}/task/{self.pid}/children").read_text()
        except OSError:
            return []
        return [int(pid) for pid in listed.split()]

    def has_open(self, path):
        """Whether it holds this file open."""
        return str(path) in self._open_files()

    def connections(self):
        """How many connections to a server it holds."""
        sockets = {file for file in self._open_files() if file.startswith("socket:")}
        table = pathlib.Path(f"/proc/{self.pid}/net/tcp").read_text().splitlines()[1:]
        return sum(f"socket:[{line.split()[9]}]" in sockets for line in table)

    def _open_files(self):
        names = []
        for link in pathlib.Path(f"/proc/{self.pid}/fd").iterdir():
            try:
                names.append(os.readlink(link))
            except OSError:
                pass  # closed since
        return names

    def is_running(self):
        return self.process.poll() is None

    # Waiting ----------------------------------------------------------------------------------

    def wait_for_window(self):
        return wait_for(lambda: self.window_titled(self.say(TITLE)),
                        "the launcher's window", told=self.situation)

    def wait_for_text(self, source, *values, seconds=30):
        text = self.say(source, *values)
        wait_for(lambda: text in self.texts(), f"the text {text!r}", seconds, self.situation)

    def wait_for_box(self, title):
        """A message box with this title; gives all that can be read in it."""
        box = wait_for(lambda: self.window_titled(self.say(title)), f"a message box {title!r}",
                       told=self.situation)
        return [node.name() for node in box.showing()]

    def wait_until_closed(self, title):
        wait_for(lambda: not self.window_titled(self.say(title)), f"{title!r} closed",
                 told=self.situation)

    def wait_for_log(self, line, seconds=30):
        wait_for(lambda: line in self.installation.log(), f"the log line {line!r}", seconds,
                 self.situation)

    def wait_until_logged(self, start, times=1, seconds=30):
        """Waits for so many log lines with this start."""
        wait_for(lambda: sum(line.startswith(start) for line in self.installation.log()) >= times,
                 f"{times} log lines {start!r}", seconds, self.situation)

    def wait_for_countdown(self):
        self.wait_for_window()
        prefix = self.say(STATUS_COUNTDOWN).split("%1")[0]
        wait_for(lambda: any(text.startswith(prefix) for text in self.texts()), "the countdown",
                 told=self.situation)

    def wait_for_monitor(self):
        self.wait_for_text(STATUS_MONITOR, self.installation.log_file)

    def wait_for_end(self, seconds=30):
        """Its exit code."""
        wait_for(lambda: not self.is_running(), "its end", seconds, self.situation)
        return self.process.returncode

    def situation(self):
        """What a failed wait tells about the launcher."""
        lines = ["its windows read:", *map(repr, self.texts()), "its log:",
                 *self.installation.log(), "its output:",
                 pathlib.Path(self.output.name).read_text(errors="replace"),
                 f"its exit code: {self.process.poll()}"]
        return "\n".join(lines)

    # Doing ------------------------------------------------------------------------------------

    def press(self, *keys):
        """Keys typed into its dialog."""
        self._focus(self.say(TITLE))
        self.desktop.key(*keys)

    def type(self, text):
        """Text typed into the field that has the focus."""
        self._focus(self.say(TITLE))
        self.desktop.type(text)

    def click(self, source, window=TITLE):
        """A click on the control with this text, in its dialog or in another of its windows."""
        self._focus(self.say(window))  # raised above whatever lay over it
        name = self.say(source)
        control = wait_for(lambda: self.control(name), f"a control {name!r}", told=self.situation)
        wait_for(lambda: control.has(screen_reader.ENABLED), f"{name!r} enabled")
        self.desktop.click(*control.centre())

    def enter_repair_mode(self):
        """F8 counts for nothing while the check for updates is under way that a start brings."""
        self.wait_for_window()
        wait_for(lambda: not self.control(self.say(CANCEL_TASK)), "the end of the check",
                 told=self.situation)
        self.press("F8")
        self.wait_for_text(STATUS_REPAIR)

    def tab_to(self, node):
        """Presses Tab until this control has the focus."""
        for _ in range(20):
            if node.has(screen_reader.FOCUSED):
                return
            before = self.focused()
            self.press("Tab")
            wait_for(lambda: self.focused() != before, "the focus moved on", told=self.situation)
        raise AssertionError(f"the Tab key never comes to {node.name()!r}\n{self.situation()}")

    def focused(self):
        return next((node.path for window in self.windows() for node in window.showing()
                     if node.has(screen_reader.FOCUSED)), None)

    def answer_box(self, title):
        """Presses Enter in a message box and waits until it is gone."""
        self._focus(self.say(title))
        self.desktop.key("Return")
        self.wait_until_closed(title)

    def close(self, again_after=CLOSING_SECONDS):
        """What the cross in its title bar does. On a busy machine the window manager misses its key now and then:
        it is pressed again where nothing has gone or come."""
        window = self._focus(self.say(TITLE))
        shown = self.desktop.windows_of(self.pid)
        for _ in range(MOST_CLOSING_KEYS):
            self.desktop.ask_to_close(window)
            deadline = time.monotonic() + again_after
            while time.monotonic() < deadline:
                if not self.is_running() or self.desktop.windows_of(self.pid) != shown:
                    return
                time.sleep(POLL_SECONDS)

    def kill(self):
        """The end of a test: whatever is left of it goes."""
        for pid in self.children_pids():
            os.kill(pid, signal.SIGKILL)
        if self.is_running():
            self.process.kill()
        self.process.wait(10)
        self.output.close()

    def _focus(self, title):
        window = wait_for(lambda: self.desktop.window_of(self.pid, title), f"a window {title!r}",
                          told=self.situation)
        self.desktop.focus(window)
        return window
