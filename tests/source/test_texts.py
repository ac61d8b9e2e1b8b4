"""The sources have the project's format, and the documents and comments are spelt right."""

import os
import subprocess
import unittest

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# Words of the code, in lower case, that look like misspelt ones.
NO_MISTAKES = ["atleast", "doubleclick", "nd", "passtime", "siz", "te"]


def files(*endings):
    """All of the project with these endings, but what is built or made up by the fuzzer."""
    for folder, folders, names in os.walk(SOURCE):
        folders[:] = [name for name in folders
                      if not name.startswith((".", "build")) and name != "corpus"]
        for name in names:
            if name.endswith(endings):
                yield os.path.join(folder, name)


def findings(command, names):
    """What the command says of the files, which is nothing when they are as they should be."""
    run = subprocess.run([*command, *sorted(names)], text=True, cwd=SOURCE,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return run.stdout.replace(SOURCE + os.sep, "")


class Texts(unittest.TestCase):
    maxDiff = None

    def test_sources_are_formatted(self):
        self.assertEqual(findings(["clang-format", "--dry-run", "-Werror"],
                                  files(".c", ".cpp", ".h")), "")

    def test_words_are_spelt_right(self):
        self.assertEqual(findings(["codespell", "-L", ",".join(NO_MISTAKES)],
                                  files(".md", ".1", ".c", ".cpp", ".h", ".py", ".sh", ".txt", ".ui",
                                        ".xml", ".desktop", ".cmake")), "")


if __name__ == "__main__":
    unittest.main()
