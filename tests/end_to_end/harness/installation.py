"""One installation with a data folder of its own, and everything that lies on disk there."""
import os
import pathlib
import shutil
import sqlite3
import tempfile

STAGE = pathlib.Path(os.environ["QUORVANE_STAGE"])
CASES = STAGE / "cases"


class Installation:
    def __init__(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="case-", dir=CASES))
        shutil.copytree(STAGE / "template", self.root / "Quorvaner", symlinks=True)
        self.move_to(self.root / "Quorvaner")
        self.data_home = self.root / "data"
        self.data_home.mkdir()
        self.data = self.data_home / "Quorvane"
        self.log_file = self.data / "launcher.log"
        self.database = self.data / "Quorvane.db"
        self.runtime_ends(exit_code=0)

    def move_to(self, folder):
        """Where it lies from now on; moving it there is the caller's."""
        self.program_folder = folder / "bin"
        self.program = self.program_folder / "Quorvaner"
        self.runtime = self.program_folder / "LineRunner.exe"
        self.user = folder / "USER"
        self.demo = self.user / "projects" / "demo" / "demo.yslib"

    def remove(self):
        shutil.rmtree(self.root, ignore_errors=True)

    def runtime_ends(self, exit_code=0, lifetime_ms=0, crash=False):
        """How the stand-in runtime lives and ends at its next start."""
        (self.program_folder / "LineRunner.conf").write_text(
            f"lifetime_ms = {lifetime_ms}\nexit_code = {exit_code}\ncrash = {str(crash).lower()}\n")

    def runtime_log(self):
        """What the stand-in runtime saw and did, line by line."""
        return _lines(self.program_folder / "LineRunner.log")

    def log(self):
        """The launch log, line by line, each without its time stamp."""
        stamp = len("yyyy-MM-dd HH:mm:ss ")
        return [line[stamp:] if line[:2] == "20" else line for line in _lines(self.log_file)]

    def nonce_files(self):
        return sorted(self.data.glob("launch_nonce_*.txt"))

    def query(self, statement, *values):
        with sqlite3.connect(f"file:{self.database}?mode=ro", uri=True) as connection:
            return connection.execute(statement, values).fetchall()

    def setting(self, key):
        """A value of the settings, or None."""
        try:
            rows = self.query("SELECT value FROM app_settings WHERE key=?", key)
        except sqlite3.OperationalError:
            return None  # not made yet, or being written
        return rows[0][0] if rows else None

    def store_setting(self, key, value):
        """Writes a setting as an earlier run would have."""
        self.data.mkdir(exist_ok=True)
        with sqlite3.connect(self.database) as connection:
            connection.execute(
                "CREATE TABLE IF NOT EXISTS app_settings (key TEXT PRIMARY KEY, value TEXT)")
            connection.execute("INSERT OR REPLACE INTO app_settings(key,value) VALUES(?,?)",
                               (key, value))


def _lines(path):
    try:
        return path.read_text(encoding="utf-8").splitlines()
    except OSError:
        return []
