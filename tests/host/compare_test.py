#!/usr/bin/env python3
"""What differs between two ways to upgrade.

Takes the host, the plug-in, and the folder with plug-ins that misbehave.
"""

import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PLUGINS = pathlib.Path(sys.argv.pop(3))
PLUGIN = sys.argv.pop(2)
HOST = sys.argv.pop(1)
EXAMPLES = sorted((ROOT / "examples").glob("*.xml"))
EXAMPLE = ROOT / "examples/provider-edge.xml"


def compare(*arguments):
    return subprocess.run([HOST, "compare", *map(str, arguments)],
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True, check=False)


class CompareTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_two_builds_of_one_source_give_nothing(self):
        other = self.folder / "other.so"
        shutil.copy(PLUGIN, other)
        done = compare("--plugin", PLUGIN, "--plugin", other, EXAMPLE)
        self.assertEqual((done.stdout, done.stderr, done.returncode),
                         ("", "", 0))

    def test_all_that_differs_is_shown_and_nothing_else(self):
        done = compare("--plugin", PLUGIN, "--plugin", PLUGINS / "fails.so",
                       "--json", EXAMPLE)
        self.assertEqual(done.returncode, 1, done.stderr)
        report = json.loads(done.stdout)
        parts = {part["what"]: part for part in report["differs"]}
        self.assertEqual(set(parts), {"verdict", "findings", "log", "calls"})
        self.assertIn("upgrade fails", parts["verdict"]["b"][0])
        self.assertGreater(len(parts["calls"]["a"]), 1000)

    def test_results_that_differ_are_told_by_their_entries(self):
        done = compare("--plugin", PLUGIN, "--plugin",
                       PLUGINS / "idle.so", EXAMPLE)
        self.assertEqual(done.returncode, 1, done.stderr)
        result = done.stdout[done.stdout.index("  result:"):]
        self.assertIn("A  > /VX-OSPF-MIB/ospfPmEntTable", result)
        self.assertIn("... and", result)

    def test_schemas_that_matter_are_shown(self):
        done = compare("--schemas", *EXAMPLES)
        self.assertEqual(done.returncode, 1)
        for name, differs in (("provider-edge", True), ("no-ospf", False)):
            self.assertEqual(f"{name}.xml differs" in done.stdout, differs)
        self.assertIn("A is schemas loaded", done.stdout)
        calls = done.stdout[done.stdout.index("  calls, from line"):]
        first_of_b = [line for line in calls.splitlines()
                      if line.startswith("    B")][0]
        self.assertIn("confd_vformat_keypath", first_of_b)

    def test_a_saved_result_is_compared_byte_by_byte(self):
        saved = self.folder / "saved.xml"
        subprocess.run([HOST, "run", "--quiet", EXAMPLE, "-o", saved],
                       check=True)
        done = compare("--before", saved, EXAMPLE)
        self.assertEqual((done.stdout, done.returncode), ("", 0), done.stderr)
        text = saved.read_text()
        saved.write_text(text.replace("<interface>", "<interface >", 1))
        done = compare("--before", saved, EXAMPLE)
        self.assertEqual(done.returncode, 1)
        self.assertIn("A    <interface >", done.stdout)
        saved.write_text(text + "\n")
        self.assertEqual(compare("--before", saved, EXAMPLE).returncode, 1)

    def test_secrets_of_either_side_are_not_shown(self):
        saved = self.folder / "saved.xml"
        subprocess.run([HOST, "run", "--quiet", EXAMPLE, "-o", saved],
                       check=True)
        text = saved.read_text()
        self.assertIn("<ospfPmIfAuthKey>bb-ams<", text)
        saved.write_text(text.replace("<ospfPmIfAuthKey>bb-ams<",
                                      "<ospfPmIfAuthKey>former-key<"))
        done = compare("--before", saved, EXAMPLE)
        self.assertEqual(done.returncode, 1)
        self.assertIn("A  ****", done.stdout)
        self.assertNotIn("bb-ams", done.stdout)
        self.assertNotIn("former-key", done.stdout)

    def test_what_can_not_be_compared_is_no_difference(self):
        broken = self.folder / "broken.xml"
        broken.write_text("<config>")
        two = ("--plugin", PLUGIN, "--plugin", PLUGIN)
        done = compare(*two, broken, EXAMPLE)
        self.assertEqual((done.stdout, done.returncode), ("", 3))
        self.assertIn("broken.xml: line 1", done.stderr)
        done = compare("--plugin", PLUGIN, "--plugin", self.folder / "no.so",
                       EXAMPLE)
        self.assertEqual(done.returncode, 4, done.stderr)
        done = compare("--before", self.folder / "none.xml", EXAMPLE)
        self.assertEqual(done.returncode, 3)
        self.assertIn("none.xml", done.stderr)

    def test_one_question_is_asked_at_a_time(self):
        for arguments in ((), ("--plugin", PLUGIN), ("--schemas", "--before",
                                                     EXAMPLE),
                          ("--before", EXAMPLE, EXAMPLE)):
            with self.subTest(arguments):
                done = compare(*arguments, EXAMPLE)
                self.assertEqual((done.stdout, done.returncode), ("", 3))
                self.assertIn("--help", done.stderr)


if __name__ == "__main__":
    unittest.main()
