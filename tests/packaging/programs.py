"""The programs under test, and what they say of their own options."""

import os
import re
import subprocess

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.environ["ORVANE_BUILD"]
VERSION = os.environ["ORVANE_VERSION"]
PROGRAMS = os.path.join(BUILD, "bin")


def source(*parts):
    return os.path.join(SOURCE, *parts)


def run(*command, **options):
    """The finished process, with what it wrote on either output in stdout."""
    return subprocess.run(command, text=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=300, **options)


def output(*command, **options):
    finished = run(*command, **options)
    if finished.returncode != 0:
        raise AssertionError(f"{command} ended with {finished.returncode}:\n{finished.stdout}")
    return finished.stdout


class Help:
    """What --help prints of a program or of one of its commands."""

    def __init__(self, program, *command):
        text = output(os.path.join(PROGRAMS, program), *command, "--help")
        # Each in a line of its own, behind its short form if it has one.
        self.options = set(re.findall(r"^ +(?:-\w,)?(--[\w-]+)", text, re.MULTILINE))
        subcommands = text.partition("Subcommands:\n")[2]
        self.commands = set(re.findall(r"^ +(\w+)  ", subcommands, re.MULTILINE))


PROGRAM = Help("orvane")
TERMINAL = Help("orvane-cli")
COMMANDS = {name: Help("orvane-cli", name) for name in TERMINAL.commands}
# Those that may stand before or behind a command.
TUNING = TERMINAL.options - {"--help", "--version"}


def accepted(command):
    """Every option that the command of orvane-cli takes."""
    return COMMANDS[command].options | TUNING
