#!/usr/bin/env python3
"""tidy.py BUILD TARGET: clang-tidy over the sources of a target, as the build folder compiles them.

Most of its time goes into the headers of the system, so that all sources are looked at as one text.
Those that use a name which another uses for itself are looked at apart from it."""

import json
import os
import re
import shlex
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def sources_and_flags(build, target):
    """The target's own sources, and what the compiler takes for all of them."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        commands = [entry for entry in json.load(file)
                    if f"CMakeFiles/{target}.dir/" in entry["command"]
                    and not entry["file"].startswith(build + os.sep)]
    words = shlex.split(commands[0]["command"])
    flags = [word for word in words if re.match(r"-(D|I|std=)", word)]
    for k, word in enumerate(words):
        if word == "-isystem":
            flags += words[k:k + 2]
    return sorted(entry["file"] for entry in commands), flags


def tidy(sources, flags, folder):
    """Whether there is nothing to say of them; what there is goes to standard output."""
    text = os.path.join(folder, "sources.cpp")
    with open(text, "w", encoding="utf-8") as file:
        file.writelines(f'#include "{source}"\n' for source in sources)
    parse = subprocess.run(["clang++", "-fsyntax-only", "-w", *flags, text],
                           text=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    clashing = {name for name in re.findall(r"^(.*?):\d+:\d+: error: redef", parse.stderr, re.M)
                if name in sources}
    if clashing and len(clashing) < len(sources):
        parts = ([name for name in sources if name not in clashing], sorted(clashing))
        # Both, whatever the first has to say.
        return all([tidy(part, flags, folder) for part in parts])
    run = subprocess.run(
        ["clang-tidy", "--quiet", f"--config-file={SOURCE}/.clang-tidy",
         f"--header-filter={SOURCE}/", text, "--", "-w", *flags],
        stderr=subprocess.DEVNULL)
    return run.returncode == 0


def main():
    build, target = os.path.realpath(sys.argv[1]), sys.argv[2]
    sources, flags = sources_and_flags(build, target)
    with tempfile.TemporaryDirectory() as folder:
        return 0 if tidy(sources, flags, folder) else 1


if __name__ == "__main__":
    sys.exit(main())
