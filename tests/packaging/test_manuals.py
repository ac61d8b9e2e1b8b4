"""The manual pages tell every option and command, and none that there is not."""

import os
import re
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import programs


def lines_of(page):
    with open(programs.source("docs", "man", page), encoding="utf-8") as file:
        return file.read().splitlines()


def section(lines, heading):
    """The lines from the heading to the next one of any kind."""
    start = next(i for i, line in enumerate(lines) if re.match(rf"\.S[hs] {heading}$", line))
    end = next(i for i in range(start + 1, len(lines)) if re.match(r"\.S[hs] ", lines[i]))
    return lines[start + 1:end]


def options_in(line):
    return {"--" + name for name in re.findall(r"Fl Fl ([\w-]+)", line)}


def items(lines):
    """The options of each tag of a list, with the line behind the tag."""
    return [(options_in(line), lines[i + 1]) for i, line in enumerate(lines)
            if line.startswith(".It ") and options_in(line)]


class OptionsOfOrvane(unittest.TestCase):
    def setUp(self):
        self.lines = lines_of("orvane.1")

    def test_the_list_has_those_that_help_prints(self):
        tagged = set().union(*(options for options, _ in items(section(self.lines, "DESCRIPTION"))))
        self.assertEqual(tagged, programs.PROGRAM.options)

    def test_the_synopsis_has_them_too(self):
        synopsis = options_in(" ".join(section(self.lines, "SYNOPSIS")))
        self.assertEqual(synopsis, programs.PROGRAM.options)


class OptionsOfOrvaneCli(unittest.TestCase):
    def setUp(self):
        self.lines = lines_of("orvane-cli.1")

    def test_the_tuning_options_are_those_before_the_command(self):
        tagged = set().union(*(options for options, _ in items(section(self.lines, "Tuning options"))))
        self.assertEqual(tagged, programs.TUNING)

    def test_the_commands_are_those_that_help_prints(self):
        tagged = {line.removeprefix(".It Cm ") for line in section(self.lines, "DESCRIPTION")
                  if line.startswith(".It Cm ")}
        self.assertEqual(tagged, programs.TERMINAL.commands)

    def test_each_command_has_the_options_that_its_help_prints(self):
        listed = items(section(self.lines, "Options of the commands"))
        for command, its_help in programs.COMMANDS.items():
            tagged = set()
            for options, behind in listed:
                whose = re.match(r"\.Pq (?:Cm )?(.*)", behind)
                if whose and (whose[1] == "all" or command in re.findall(r"\w+", whose[1])):
                    tagged |= options
            with self.subTest(command):
                self.assertEqual(tagged, its_help.options - {"--help"})

    def test_the_synopsis_of_each_command_has_them_too(self):
        blocks = " ".join(section(self.lines, "SYNOPSIS")).split(".Nm")
        for command, its_help in programs.COMMANDS.items():
            block = next(text for text in blocks if f".Cm {command} " in text)
            with self.subTest(command):
                self.assertEqual(options_in(block), its_help.options - {"--help"})


class Pages(unittest.TestCase):
    def test_the_formatter_has_nothing_to_say(self):
        for page in os.listdir(programs.source("docs", "man")):
            said = programs.run("mandoc", "-Tlint", programs.source("docs", "man", page)).stdout
            # The two name each other, and are not installed where this is built.
            left = [line for line in said.splitlines()
                    if not re.search(r"referenced manual not found: Xr orvane(-cli)? 1\b", line)]
            with self.subTest(page):
                self.assertEqual(left, [])


if __name__ == "__main__":
    unittest.main()
