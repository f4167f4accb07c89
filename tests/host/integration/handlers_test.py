"""A staged install never opens a picture on a double click: Ostra is nobody's handler of any type that it reads."""
import configparser
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

QUESTION = """
import sys
import gi
gi.require_version("Gio", "2.0")
from gi.repository import Gio
for mime in sys.argv[1:]:
    default = Gio.AppInfo.get_default_for_type(mime, False)
    others = Gio.AppInfo.get_all_for_type(mime) + Gio.AppInfo.get_recommended_for_type(mime)
    print(mime, default.get_id() if default else "-", *sorted({each.get_id() for each in others}))
"""


class Handlers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls._folder = tempfile.TemporaryDirectory(prefix="ostra-staged-")
        cls.staged = Path(cls._folder.name) / "root"
        subprocess.run([os.environ["CMAKE"], "--install", os.environ["OSTRA_BUILD"]], check=True, timeout=120,
                       env=os.environ | {"DESTDIR": str(cls.staged)}, stdout=subprocess.DEVNULL)
        [cls.share] = [path.parents[1] for path in cls.staged.rglob("ostra/menu.ini")]
        menu = configparser.ConfigParser(interpolation=None)
        menu.read(cls.share / "ostra/menu.ini")
        cls.types = [each for each in menu["Menu"]["MimeTypes"].split(";") if each]

    @classmethod
    def tearDownClass(cls):
        cls._folder.cleanup()

    def handlers(self):
        """What GIO answers for each type where only the staged install and the list of types are known."""
        applications = self.share / "applications"
        applications.mkdir(exist_ok=True)
        subprocess.run(["update-desktop-database", applications], check=True, timeout=60)
        home = Path(self._folder.name) / "home"
        home.mkdir(exist_ok=True)
        types = Path(self._folder.name) / "types"
        types.mkdir(exist_ok=True)
        if not (types / "mime").exists():
            (types / "mime").symlink_to("/usr/share/mime")
        environment = {"PATH": os.environ["PATH"], "HOME": str(home), "XDG_DATA_HOME": str(home / "data"),
                       "XDG_CONFIG_HOME": str(home / "config"), "XDG_CONFIG_DIRS": str(home / "none"),
                       "XDG_DATA_DIRS": f"{self.share}:{types}", "LC_ALL": "C.UTF-8"}
        answer = subprocess.run(["/usr/bin/python3", "-c", QUESTION, *self.types], env=environment, check=True,
                                capture_output=True, text=True, timeout=120).stdout
        return {line.split()[0]: line.split()[1:] for line in answer.splitlines()}

    def test_ostra_handles_no_type(self):
        self.assertGreater(len(self.types), 30)
        self.assertEqual({kind: who for kind, who in self.handlers().items() if who != ["-"]}, {})

    # Else the test above would pass for whatever is installed.
    def test_an_application_with_a_type_would_be_found(self):
        applications = self.share / "applications"
        applications.mkdir(exist_ok=True)
        entry = applications / "greedy.desktop"
        entry.write_text("[Desktop Entry]\nType=Application\nName=Greedy\nExec=true %F\nMimeType=image/png;\n")
        try:
            self.assertEqual(self.handlers()["image/png"][0], "greedy.desktop")
        finally:
            entry.unlink()

    def test_only_service_menus_name_types(self):
        for path in self.staged.rglob("*.desktop"):
            if "MimeType=" in path.read_text():
                self.assertEqual(path.parent.name, "servicemenus", path)


if __name__ == "__main__":
    unittest.main(verbosity=2)
