"""The base of all scenarios: one desktop for a file, one fresh installation for a test."""
import subprocess
import unittest

from harness.desktop import Desktop
from harness.installation import CASES, Installation
from harness.launcher import Launcher
from harness.screen_reader import ScreenReader


class Scenario(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # In memory, so that no run depends on how busy the disk is.
        CASES.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "cases", str(CASES)], check=True)
        cls.desktop = Desktop()
        cls.addClassCleanup(cls.desktop.close)
        cls.reader = ScreenReader(cls.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])

    def setUp(self):
        self.installation = Installation()
        self.addCleanup(self.installation.remove)

    def start_launcher(self, locale="en", **environment):
        """`locale` is the one its texts are expected in; the rest is added to its environment."""
        launcher = Launcher(self.desktop, self.reader, self.installation, locale, environment)
        self.addCleanup(launcher.kill)
        return launcher

    def picture(self, name):
        self.desktop.picture(f"{self.id().rsplit('.', 1)[-1]}-{name}")
