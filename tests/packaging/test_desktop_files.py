"""What the desktop and software catalogues read about the program."""

import configparser
import os
import sys
import unittest
import xml.etree.ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import programs

NAME = "org.velmora.Orvane"
DESKTOP_FILE = programs.source("packaging", "desktop", NAME + ".desktop")
CATALOGUE_FILE = programs.source("packaging", "desktop", NAME + ".metainfo.xml")
SITE = "https://velmora.org/orvane/"


class DesktopFile(unittest.TestCase):
    def test_the_validator_has_nothing_to_say(self):
        self.assertEqual(programs.output("desktop-file-validate", DESKTOP_FILE), "")

    def test_it_starts_the_program_and_names_the_icon_that_is_installed(self):
        parser = configparser.ConfigParser(interpolation=None)
        parser.read(DESKTOP_FILE)
        entry = parser["Desktop Entry"]
        self.assertEqual((entry["Exec"], entry["Icon"]), ("orvane", NAME))


class CatalogueFile(unittest.TestCase):
    def setUp(self):
        self.root = xml.etree.ElementTree.parse(CATALOGUE_FILE).getroot()

    def test_the_validator_has_nothing_to_say(self):
        said = programs.output("appstreamcli", "validate", "--no-net", "--pedantic",
                               CATALOGUE_FILE, env={**os.environ, "LC_ALL": "C.UTF-8"})
        # The name of the program has a capital letter, and it keeps it.
        left = [line for line in said.splitlines() if line
                and not line.endswith("cid-contains-uppercase-letter " + NAME)]
        self.assertEqual(left, ["✔ Validation was successful: pedantic: 1"])

    def test_its_pictures_are_there_in_the_size_it_says(self):
        images = list(self.root.iter("image"))
        self.assertTrue(images)
        for image in images:
            self.assertTrue(image.text.startswith(SITE), image.text)
            with open(programs.source(image.text.removeprefix(SITE)), "rb") as file:
                header = file.read(24)
            size = [int.from_bytes(header[k:k + 4], "big") for k in (16, 20)]
            self.assertEqual(size, [int(image.get("width")), int(image.get("height"))], image.text)

    def test_its_newest_release_is_this_version(self):
        self.assertEqual(self.root.find("releases/release").get("version"), programs.VERSION)


if __name__ == "__main__":
    unittest.main()
