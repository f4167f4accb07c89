"""The files that packages install, as the programs that read them do: GLib's key files and command lines, and the
desktop's own checker."""
import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import gi
gi.require_version("Gio", "2.0")
from gi.repository import GLib

SOURCE = Path(os.environ["OSTRA_SOURCE"])
BUNDLE = """<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>
<key>NIVEQuickAction</key><string>grayscale</string>
<key>CFBundleDisplayName</key><string>Sepia; \\ 100% ü</string></dict></plist>"""
ODD = "/opt/my $HOME `x` \"q\" \\ 50%f's"


def key_file(path):
    file = GLib.KeyFile()
    file.load_from_file(str(path), GLib.KeyFileFlags.KEEP_TRANSLATIONS)
    return file


class StaticFiles(unittest.TestCase):
    """Made of the program's bundles and an eighth one, for a program in a place with an odd name."""

    @classmethod
    def setUpClass(cls):
        cls._folder = tempfile.TemporaryDirectory(prefix="ostra-menus-")
        folder = Path(cls._folder.name)
        shutil.copytree(SOURCE / "bundles", folder / "bundles")
        (folder / "bundles/sepia").mkdir()
        (folder / "bundles/sepia/Info.plist").write_text(BUNDLE)
        cls.made = folder / "made"
        subprocess.run([os.environ["OSTRA_MAKE_MENUS"], cls.made, SOURCE / "desktop/menu", folder / "bundles",
                        ODD + "/ostra", ODD], check=True, timeout=60)
        cls.bundles = sorted(path.name for path in (folder / "bundles").iterdir())

    @classmethod
    def tearDownClass(cls):
        cls._folder.cleanup()

    def test_the_extensions_key_file_names_every_bundle(self):
        menu = key_file(self.made / "ostra/menu.ini")
        self.assertEqual(menu.get_string_list("Menu", "Entries"), self.bundles)
        self.assertEqual(menu.get_string("Menu", "Program"), ODD + "/ostra")
        self.assertIn("image/png", menu.get_string_list("Menu", "MimeTypes"))
        self.assertEqual(menu.get_locale_string("Menu", "Name", "de"), "Bild umwandeln")
        for bundle in self.bundles:
            self.assertEqual(menu.get_string("Entry " + bundle, "Bundle"), f"{ODD}/{bundle}")
            self.assertTrue(menu.get_string("Entry " + bundle, "Tooltip"))
        self.assertEqual(menu.get_string("Entry sepia", "Name"), "Sepia; \\ 100% ü")
        self.assertEqual(menu.get_locale_string("Entry invert", "Name", "de"), "Farben umkehren")

    def test_the_service_menu_names_every_bundle(self):
        path = self.made / "kio/servicemenus/org.ostra.Ostra.desktop"
        menu = key_file(path)
        self.assertEqual(menu.get_string_list("Desktop Entry", "Actions"), self.bundles)
        for bundle in self.bundles:
            self.assert_runs(menu.get_string("Desktop Action " + bundle, "Exec"), bundle)
        self.assertEqual(menu.get_locale_string("Desktop Entry", "X-KDE-Submenu", "de"), "Bild umwandeln")
        self.assertEqual(menu.get_locale_string("Desktop Action invert", "Name", "de"), "Farben umkehren")

    def test_every_bundle_is_a_file_managers_action_in_the_menu(self):
        folder = self.made / "file-manager/actions"
        menu = key_file(folder / "org.ostra.menu.desktop")
        items = menu.get_string_list("Desktop Entry", "ItemsList")
        self.assertEqual(items, ["org.ostra.action." + bundle for bundle in self.bundles])
        self.assertEqual(len(list(folder.iterdir())), len(items) + 1)
        for bundle, item in zip(self.bundles, items):
            action = key_file(folder / (item + ".desktop"))
            self.assertEqual(action.get_string("Desktop Entry", "Name"), action.get_string("Desktop Entry", "Tooltip"))
            self.assertNotIn("Schemes", action.get_keys("X-Action-Profile main")[0])
            self.assert_runs(action.get_string("X-Action-Profile main", "Exec"), bundle)

    # The checker knows applications, links and folders only: what it says of the others' own keys is left out.
    def test_the_checker_of_desktop_entries_finds_nothing_else(self):
        known = ("but the type is \"Service\"", "is not a registered type value", "should start with \"X-\"",
                 "actions with no corresponding group")
        for path in self.made.rglob("*.desktop"):
            output = subprocess.run(["desktop-file-validate", path], capture_output=True, text=True, timeout=60).stdout
            self.assertEqual([line for line in output.splitlines()
                              if ": error:" in line and not any(each in line for each in known)], [])

    def assert_runs(self, command, bundle):
        """A command line of a desktop entry: words as of a shell, a percent sign twice."""
        words = GLib.shell_parse_argv(command)[1]
        self.assertEqual(words.pop(), "%F")
        self.assertEqual([word.replace("%%", "%") for word in words],
                         [ODD + "/ostra", "--ui=desktop", "--bundle", f"{ODD}/{bundle}", "--"])
        self.assertNotIn("%f", command.replace("%%", ""))


if __name__ == "__main__":
    unittest.main(verbosity=2)
