"""A volume with an update on it, as a stick that was put in before the start."""
import subprocess


class Stick:
    def __init__(self, place):
        self.place = place
        place.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "stick", str(place)], check=True)
        self.is_in = True
        self.folder = place / "QuorvanerUpdate"
        self.folder.mkdir()
        self.manifest = self.folder / "manifest.json"

    def publish(self, manifest):
        self.manifest.write_text(manifest, encoding="utf-8")

    def pull_out(self):
        """Also while a program still holds a file on it open."""
        if self.is_in:
            subprocess.run(["umount", "--lazy", str(self.place)], check=True)
        self.is_in = False
