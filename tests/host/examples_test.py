#!/usr/bin/env python3
"""The examples are as their index says. Takes the host."""

import json
import pathlib
import re
import shlex
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tests/support"))
from examples import EXAMPLES, examples  # noqa: E402

HOST = sys.argv.pop(1)

# | [name](file) | what it shows | `options of run` | findings |
ROW = re.compile(r"\| \[(?P<name>[^]]*)\]\((?P<file>[^)]*\.xml)\) \| (?P<shows>[^|]+) "
                 r"\| `ospf-upgrade run (?P<arguments>[^`]*)` "
                 r"\| (?P<findings>[^|]*) \|")


def run(*arguments):
    return subprocess.run([HOST, "run", *arguments], cwd=ROOT, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          check=False)


def rows():
    text = (EXAMPLES / "README.md").read_text()
    return [ROW.fullmatch(line) for line in text.splitlines()
            if line.startswith("| [") and ".xml)" in line]


class ExamplesTest(unittest.TestCase):
    def test_each_is_in_the_index_once(self):
        self.assertNotIn(None, rows())
        self.assertEqual(sorted(row["file"] for row in rows()),
                         sorted(str(file.relative_to(EXAMPLES))
                                for file, _ in examples()))

    def test_each_says_first_what_it_shows(self):
        for file, _ in examples():
            with self.subTest(example=file.name):
                self.assertRegex(file.read_text(), r"\A<!-- [A-Z][^<]+\. -->\n")

    def test_the_command_of_each_is_that_of_its_release(self):
        options = {str(file.relative_to(EXAMPLES)): options
                   for file, options in examples()}
        for row in rows():
            with self.subTest(example=row["name"]):
                self.assertEqual(shlex.split(row["arguments"]),
                                 options[row["file"]] +
                                 ["examples/" + row["file"]])

    def test_each_succeeds_and_points_out_what_the_index_says(self):
        for row in rows():
            with self.subTest(example=row["name"]):
                done = run("--json", *shlex.split(row["arguments"]))
                self.assertEqual(done.returncode, 0, done.stderr)
                findings = json.loads(done.stdout)["findings"]
                rules = sorted({found["rule"] for found in findings})
                self.assertEqual(" ".join(rules) or "nothing", row["findings"])

    def test_one_of_another_release_is_told_from_those_of_before(self):
        told = 0
        for file, options in examples():
            if not options:
                continue
            with self.subTest(example=file.name):
                done = run(str(file))
                self.assertEqual(done.returncode, 3)
                self.assertIn("use " + shlex.join(options), done.stderr)
                told += 1
        self.assertGreater(told, 0)


if __name__ == "__main__":
    unittest.main()
