"""The completions offer, in real shells, what the programs take."""

import os
import pty
import re
import select
import sys
import time
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import programs

FOLDER = programs.source("packaging", "completions")
ENVIRONMENT = {**os.environ, "PATH": programs.PROGRAMS + ":" + os.environ["PATH"],
               "PULSE_SERVER": "unix:/nonexistent/native", "LC_ALL": "C.UTF-8"}


def temperaments():
    text = programs.output(os.path.join(programs.PROGRAMS, "orvane-cli"), "temperaments")
    return [line for line in text.splitlines() if not line.startswith(" ")]


def options(words):
    return {word for word in words if word.startswith("--")}


def expected(command=None):
    if command is None:
        return programs.TERMINAL.options
    return programs.accepted(command)


class Bash(unittest.TestCase):
    # Sources the file of the program, completes the last word as the shell would, and prints what it
    # got: as it stands, and as the shell takes it when it stands in a command line.
    SCRIPT = """
        source "$1/$2.bash"; shift
        COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
        function=$(complete -p "$1") && function=${function#*-F } && ${function%% *}
        for reply in "${COMPREPLY[@]}"; do eval "printf '%s\\n' $reply"; done
    """

    def complete(self, *words):
        text = programs.output("bash", "--norc", "-c", self.SCRIPT, "bash", FOLDER, *words,
                               env=ENVIRONMENT)
        return text.splitlines()

    def test_the_options_of_orvane(self):
        self.assertEqual(options(self.complete("orvane", "--")), programs.PROGRAM.options)

    def test_the_commands_and_options_of_orvane_cli(self):
        offered = self.complete("orvane-cli", "")
        self.assertEqual(options(offered), expected())
        self.assertEqual({word for word in offered if word[0] != "-"}, programs.TERMINAL.commands)

    def test_the_options_of_each_command(self):
        for command in programs.COMMANDS:
            with self.subTest(command):
                self.assertEqual(options(self.complete("orvane-cli", command, "--")),
                                 expected(command))

    def test_a_command_is_known_behind_options(self):
        self.assertEqual(options(self.complete("orvane-cli", "--tonic", "D", "listen", "--")),
                         expected("listen"))

    def test_what_is_typed_narrows_the_choice(self):
        self.assertEqual(self.complete("orvane-cli", "li"), ["listen"])

    def test_temperaments_by_name_with_spaces_and_without_regard_to_case(self):
        self.assertEqual(self.complete("orvane-cli", "--temperament", ""), temperaments())
        name = next(name for name in temperaments() if " " in name)
        self.assertIn(name, self.complete("orvane-cli", "--temperament", name.split()[0].upper()))
        self.assertIn(name, self.complete("orvane-cli", "--temperament", "=", name.split()[0]))
        self.assertIn(name, self.complete("orvane-cli", "--temperament", "'" + name[:-1]))

    def test_files_behind_the_first_one_to_import(self):
        self.assertEqual(self.complete("orvane-cli", "temperaments", "--import", "a.scl", ""), [])

    def test_tonics_by_name(self):
        offered = self.complete("orvane-cli", "listen", "--tonic", "E")
        self.assertEqual(sorted(offered), ["E", "Eb"])


class Fish(unittest.TestCase):
    def complete(self, line):
        text = programs.output(
            "fish", "--no-config", "-c", "source $argv[1]; complete -C $argv[2]",
            os.path.join(FOLDER, line.split()[0] + ".fish"), line, env=ENVIRONMENT)
        return [offer.partition("\t")[0] for offer in text.splitlines()]

    def test_the_options_of_orvane(self):
        self.assertEqual(options(self.complete("orvane --")), programs.PROGRAM.options)

    def test_the_commands_and_options_of_orvane_cli(self):
        self.assertEqual(options(self.complete("orvane-cli --")), expected())
        self.assertEqual(set(self.complete("orvane-cli ")), programs.TERMINAL.commands)

    def test_the_options_of_each_command(self):
        for command in programs.COMMANDS:
            with self.subTest(command):
                self.assertEqual(options(self.complete(f"orvane-cli {command} --")),
                                 expected(command))

    def test_temperaments_by_name(self):
        self.assertEqual(sorted(self.complete("orvane-cli --temperament ")), sorted(temperaments()))


class Zsh(unittest.TestCase):
    """A shell at a terminal, which is asked for the list of choices by key."""

    SET_UP = """
        PS1='ready>'; setopt auto_list no_beep list_rows_first
        LISTMAX=1000; fpath=({folder} $fpath); autoload -U compinit; compinit -u -D
        zstyle ':completion:*' verbose no; zstyle ':completion:*' list-grouped no
        bindkey '^D' list-choices; stty -echo cols 400 rows 1000; print set''-up
    """

    def setUp(self):
        child, self.terminal = pty.fork()
        if child == 0:
            os.execvpe("zsh", ["zsh", "-f", "-i"], {**ENVIRONMENT, "TERM": "dumb"})
        self.child = child
        for line in self.SET_UP.format(folder=FOLDER).strip().splitlines():
            os.write(self.terminal, line.strip().encode() + b"\n")
        self.read_until(r"set-up[\s\S]*ready>")

    def tearDown(self):
        os.close(self.terminal)
        os.waitpid(self.child, 0)

    def read_until(self, pattern, seconds=30):
        text = ""
        end = time.monotonic() + seconds
        while not re.search(pattern, text):
            ready, _, _ = select.select([self.terminal], [], [], max(0.0, end - time.monotonic()))
            if not ready:
                raise AssertionError(f"no {pattern!r} in {text!r}")
            text += os.read(self.terminal, 65536).decode(errors="replace")
        return text

    def complete(self, line):
        os.write(self.terminal, line.encode() + b"\x04")
        # The prompt and what was typed stand below the list again.
        offered = self.read_until("ready>" + re.escape(line)).replace("\r", "")
        os.write(self.terminal, b"\x15print next''-one\n")
        self.read_until(r"next-one[\s\S]*ready>")
        return offered.partition("\n")[2].rpartition("\n")[0]

    def options(self, line):
        return set(re.findall(r"--[a-z][\w-]*", self.complete(line)))

    def test_the_options_of_orvane(self):
        self.assertEqual(self.options("orvane --"), programs.PROGRAM.options)

    def test_the_options_of_each_command(self):
        for command in programs.COMMANDS:
            with self.subTest(command):
                self.assertEqual(self.options(f"orvane-cli {command} --"), expected(command))


if __name__ == "__main__":
    unittest.main()
