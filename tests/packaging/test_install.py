"""What is installed runs by itself: nothing of the source tree or the build is looked for."""

import configparser
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import programs


class Display:
    """A screen of its own, without a window manager.

    Without -noreset it begins anew, and refuses connections, whenever its last client goes."""

    def __enter__(self):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1024x768x24",
             "-nolisten", "tcp", "-noreset"], pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as numbers:
            self.name = ":" + numbers.readline().strip()
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="orvane-install-")
        cls.prefix = os.path.join(cls.folder, "prefix")
        programs.output("cmake", "--install", programs.BUILD, "--prefix", cls.prefix)
        cls.recording = os.path.join(cls.folder, "Recording.flac")
        shutil.copy(programs.source("resources", "Recording.flac"), cls.recording)
        home = os.path.join(cls.folder, "home")
        settings = os.path.join(home, ".config", "velmora")
        os.makedirs(settings)
        runtime = os.path.join(cls.folder, "runtime")
        os.mkdir(runtime, 0o700)
        # Speaks as soon as there is something to say.
        with open(os.path.join(settings, "Orvane.ini"), "w", encoding="utf-8") as file:
            file.write("[General]\norg.velmora.TuneSpeechKey=true\n")
        cls.environment = {
            name: value for name, value in os.environ.items()
            if not name.startswith(("XDG_", "ORVANE", "QT_", "DISPLAY", "WAYLAND", "SPEECHD"))}
        cls.environment.update(HOME=home, XDG_RUNTIME_DIR=runtime, LC_ALL="C.UTF-8",
                               PULSE_SERVER="unix:/nonexistent/native", SPEECHD_CMD="/bin/false",
                               DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/bus")

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def setUp(self):
        self.trace = os.path.join(self.folder, "trace")

    def program(self, name):
        return os.path.join(self.prefix, "bin", name)

    def traced(self, name):
        return ["strace", "--follow-forks", "--trace=%file", "--output", self.trace, "--quiet=all",
                self.program(name)]

    def named_files(self):
        """Every path that the traced processes named, whether it was there or not."""
        with open(self.trace, encoding="utf-8", errors="replace") as file:
            return re.findall(r'"(/[^"]*)"', file.read())

    def check_that_nothing_else_is_needed(self):
        files = [os.path.normpath(path) for path in self.named_files()]
        self.assertIn(os.path.join(self.prefix, "share/orvane/Temperaments.txt"), files)
        built = (programs.SOURCE + os.sep, os.path.normpath(programs.BUILD) + os.sep)
        self.assertEqual([path for path in files if path.startswith(built)], [])

    def run_terminal(self, *arguments):
        return programs.output(*self.traced("orvane-cli"), *arguments, env=self.environment,
                               cwd=self.folder)

    def test_both_tell_their_version(self):
        for name in ("orvane", "orvane-cli"):
            said = programs.output(self.program(name), "--version", env=self.environment)
            self.assertEqual(said, f"{name} {programs.VERSION}\n")

    def test_both_tell_their_options(self):
        for name in ("orvane", "orvane-cli"):
            said = programs.output(self.program(name), "--help", env=self.environment)
            self.assertIn(f"Usage: {name} [OPTIONS]", said)

    def test_the_terminal_program_reads_its_temperaments(self):
        self.assertIn("\n    cents = (", self.run_terminal("temperaments"))
        self.check_that_nothing_else_is_needed()

    def test_the_terminal_program_reads_a_recording(self):
        said = self.run_terminal("analyze", self.recording)
        # A piano's, in the order they are struck.
        notes = re.findall(r"^ *[\d.]+ s  ([A-G]♯?\d)", said, re.MULTILINE)
        self.assertEqual(list(dict.fromkeys(notes)), ["F♯3", "A3", "F♯4"])
        self.check_that_nothing_else_is_needed()

    def test_the_window_opens_speaks_and_is_the_one_of_the_desktop_file(self):
        with Display() as display:
            tuner = subprocess.Popen(
                [*self.traced("orvane"), "--input", self.recording],
                env={**self.environment, "DISPLAY": display.name}, cwd=self.folder,
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            try:
                window = self.wait_for_window(display, tuner)
                self.wait_for_helper()
                pid = int(re.search(r"_NET_WM_PID\(CARDINAL\) = (\d+)", window)[1])
                os.kill(pid, signal.SIGTERM)
                said, _ = tuner.communicate(timeout=60)
            finally:
                tuner.kill()
                tuner.communicate()
        self.assertEqual((tuner.returncode, said), (0, b""))
        self.check_that_nothing_else_is_needed()
        parser = configparser.ConfigParser(interpolation=None)
        parser.read(os.path.join(self.prefix, "share/applications/org.velmora.Orvane.desktop"))
        known_as = parser["Desktop Entry"]["StartupWMClass"]
        self.assertIn(f'WM_CLASS(STRING) = "orvane", "{known_as}"', window)

    def wait_for_window(self, display, tuner):
        """The properties of the main window, which is the one of that title with a class."""
        tree = None
        end = time.monotonic() + 60
        while time.monotonic() < end and tuner.poll() is None:
            # It fails when a window goes while it looks at it.
            tree = programs.run("xwininfo", "-display", display.name, "-root", "-tree")
            window = re.search(r'(0x\w+) "Orvane": \("', tree.stdout)
            if window is not None:
                return programs.output("xprop", "-display", display.name, "-id", window[1])
            time.sleep(0.1)
        raise AssertionError("no window" + (f" in:\n{tree.stdout}" if tree else ""))

    def wait_for_helper(self):
        helper = os.path.join(self.prefix, "libexec/orvane/orvane-speech")
        end = time.monotonic() + 60
        while time.monotonic() < end:
            with open(self.trace, encoding="utf-8", errors="replace") as file:
                if re.search(rf'execve\("{re.escape(helper)}".* = 0$', file.read(), re.MULTILINE):
                    return
            time.sleep(0.1)
        raise AssertionError("the helper that speaks was not started")


class Version(unittest.TestCase):
    def first(self, pattern, *parts):
        with open(programs.source(*parts), encoding="utf-8") as file:
            return re.search(pattern, file.read(), re.MULTILINE)[1]

    def test_is_the_same_in_every_kind_of_package(self):
        self.assertEqual(self.first(r"^orvane \((.*?)\)", "packaging", "debian", "changelog"),
                         programs.VERSION)
        self.assertEqual(self.first(r"^Version: *(\S+)$", "packaging", "orvane.spec"),
                         programs.VERSION)


class InstalledFiles(unittest.TestCase):
    def test_are_where_the_conventions_want_them(self):
        with tempfile.TemporaryDirectory() as prefix:
            programs.output("cmake", "--install", programs.BUILD, "--prefix", prefix)
            found = {os.path.relpath(os.path.join(folder, name), prefix)
                     for folder, _, names in os.walk(prefix) for name in names}
        outside = {path for path in found if not path.startswith("share/orvane/")}
        self.assertEqual(outside, {
            "bin/orvane",
            "bin/orvane-cli",
            "libexec/orvane/orvane-speech",
            "share/applications/org.velmora.Orvane.desktop",
            "share/bash-completion/completions/orvane",
            "share/bash-completion/completions/orvane-cli",
            "share/doc/orvane/CHANGELOG.md",
            "share/doc/orvane/LICENSE",
            "share/fish/vendor_completions.d/orvane-cli.fish",
            "share/fish/vendor_completions.d/orvane.fish",
            "share/icons/hicolor/scalable/apps/org.velmora.Orvane.svg",
            "share/icons/hicolor/symbolic/apps/org.velmora.Orvane-symbolic.svg",
            "share/man/man1/orvane-cli.1",
            "share/man/man1/orvane.1",
            "share/metainfo/org.velmora.Orvane.metainfo.xml",
            "share/zsh/site-functions/_orvane",
            "share/zsh/site-functions/_orvane-cli",
        })


if __name__ == "__main__":
    unittest.main()
