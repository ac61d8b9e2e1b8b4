"""The Debian packages: made, looked over, installed and removed."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import programs

AS_ROOT = [] if os.geteuid() == 0 else ["fakeroot"]


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="orvane-package-")
        programs.output("cpack", "-G", "DEB", "-B", cls.folder, cwd=programs.BUILD)
        machine = programs.output("dpkg", "--print-architecture").strip()
        cls.files = {name: os.path.join(cls.folder, f"{name}_{programs.VERSION}_{machine}.deb")
                     for name in ("orvane", "orvane-cli")}

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def field(self, package, name):
        value = programs.output("dpkg-deb", "--field", self.files[package], name).strip()
        return [part.strip() for part in value.split(",")]

    def test_the_reviewer_has_nothing_to_say(self):
        allowed = ["--allow-root"] if os.geteuid() == 0 else []
        said = programs.output("lintian", *allowed, "--display-info", "--pedantic",
                               *self.files.values())
        self.assertEqual(said, "")

    def test_they_need_what_is_loaded_at_run_time(self):
        needed = self.field("orvane", "Depends")
        self.assertIn(f"orvane-cli (= {programs.VERSION})", needed)
        self.assertIn("qt6-speech-speechd-plugin", needed)
        for package, libraries in (("orvane", ["libqt6widgets6", "libqt6svg6", "libpulse0"]),
                                   ("orvane-cli", ["libsndfile1", "libpulse0"])):
            for library in libraries:
                self.assertTrue(any(part.startswith(library + " ")
                                    for part in self.field(package, "Depends")), library)
        self.assertIn("qt6-wayland", self.field("orvane", "Recommends"))

    def test_the_terminal_program_needs_no_window_toolkit(self):
        for part in self.field("orvane-cli", "Depends"):
            self.assertNotIn("qt", part)
            self.assertNotIn("xcb", part)

    def test_no_file_is_in_both(self):
        contents = []
        for path in self.files.values():
            packed = subprocess.run(["dpkg-deb", "--fsys-tarfile", path], check=True,
                                    stdout=subprocess.PIPE).stdout
            contents.append(set(subprocess.run(["tar", "-t"], input=packed, check=True,
                                               stdout=subprocess.PIPE).stdout.split(b"\n")))
        common = contents[0] & contents[1]
        self.assertEqual([name for name in common if name and not name.endswith(b"/")], [])

    def test_installed_they_run_and_removed_they_leave_nothing(self):
        if AS_ROOT and shutil.which("fakeroot") is None:
            self.skipTest("neither root nor fakeroot to install as")
        root = os.path.join(self.folder, "root")
        database = os.path.join(root, "var", "lib", "dpkg")
        os.makedirs(os.path.join(database, "updates"))
        os.makedirs(os.path.join(database, "info"))
        # What they depend on has to be there, but only to be installed here.
        shutil.copy("/var/lib/dpkg/status", database)
        open(os.path.join(database, "available"), "wb").close()
        dpkg = [*AS_ROOT, "dpkg", f"--root={root}", "--force-not-root"]
        programs.output(*dpkg, "--install", *self.files.values())
        for name in self.files:
            said = programs.output(os.path.join(root, "usr", "bin", name), "--version")
            self.assertEqual(said, f"{name} {programs.VERSION}\n")
        self.assertIn("\n    cents = (", programs.output(
            os.path.join(root, "usr", "bin", "orvane-cli"), "temperaments"))
        programs.output(*dpkg, "--remove", *self.files)
        self.assertFalse(os.path.exists(os.path.join(root, "usr")))


if __name__ == "__main__":
    unittest.main(verbosity=2)
