"""Every test of the build folder has a time after which it has failed."""

import json
import os
import subprocess
import unittest


def tests():
    """All that ctest would run, each as its name and its properties. A program that is not built
    stands for its tests without a command."""
    listing = subprocess.run(
        [os.environ["ORVANE_CTEST"], "--show-only=json-v1", "--test-dir", os.environ["ORVANE_BUILD"]],
        stdout=subprocess.PIPE, check=True)
    return [(test["name"], {entry["name"]: entry["value"] for entry in test["properties"]})
            for test in json.loads(listing.stdout)["tests"] if "command" in test]


class Timeouts(unittest.TestCase):
    def test_every_test_has_one(self):
        found = tests()
        self.assertIn("source-timeouts", [name for name, _ in found])
        self.assertEqual([name for name, properties in found
                          if not properties.get("TIMEOUT", 0) > 0], [])


if __name__ == "__main__":
    unittest.main()
