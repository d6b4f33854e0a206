#!/usr/bin/env python3
"""The differences of the passes, one after another, are those of the run.

Takes the host and runs it on every example and on the configuration of every
upgrade case that the models of this repository take.
"""

import json
import pathlib
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tests/support"))
from examples import examples  # noqa: E402

HOST = sys.argv.pop(1)


def run(config, diff, *options):
    done = subprocess.run([HOST, "run", str(config), "--json", diff, *options],
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          check=False)
    return json.loads(done.stdout)


def configurations():
    """Of each the file and the options that it is run with."""
    yield from examples()
    for file in sorted((ROOT / "tests/cases").glob("*/before.xml")):
        yield file, []


class Entry:
    """What became of an entry since the start: its old path, and of each leaf
    the first and the last value."""

    def __init__(self, old_path):
        self.old_path = old_path  # None for one that was not there
        self.leaves = {}

    def take(self, leaves):
        for leaf in leaves:
            first = self.leaves.get(leaf["leaf"], (leaf["before"],))[0]
            self.leaves[leaf["leaf"]] = (first, leaf["after"])


def compose(entries):
    """Path of each entry that differs -> (old path, leaves), of one that is
    gone None."""
    there = {}
    gone = set()
    for entry in entries:
        path, old_path = entry["path"], entry["old_path"]
        if entry["change"] == "created":
            there[path] = Entry(None)
        elif entry["change"] == "deleted":
            known = there.pop(path, Entry(path))
            if known.old_path is not None:
                gone.add(known.old_path)
            continue
        elif entry["change"] == "rekeyed":
            there[path] = there.pop(old_path, Entry(old_path))
        there.setdefault(path, Entry(path)).take(entry["leaves"])
    result = {path: None for path in gone}
    for path, entry in there.items():
        leaves = {name: values for name, values in entry.leaves.items()
                  if values[0] != values[1]}
        if path != entry.old_path or leaves:
            result[path] = (entry.old_path, leaves)
    return result


class DifferencesTest(unittest.TestCase):
    def test_those_of_the_passes_add_up_to_those_of_the_run(self):
        compared = 0
        for config, options in configurations():
            with self.subTest(config=str(config.relative_to(ROOT))):
                whole = run(config, "--diff", *options)
                if whole["exit_code"] != 0:
                    continue
                by_pass = run(config, "--diff=pass", *options)
                passes = [entry["pass"] for entry in by_pass["entries"]]
                self.assertEqual(passes, sorted(passes))
                self.assertEqual(compose(by_pass["entries"]),
                                 compose(whole["entries"]))
                compared += len(whole["entries"])
        self.assertGreater(compared, 100)

    def test_a_failed_run_shows_how_far_it_came(self):
        config = ROOT / "examples/branch-router.xml"
        report = run(config, "--diff=pass", "--schemas", "none")
        self.assertEqual(report["exit_code"], 1)
        self.assertEqual({entry["pass"] for entry in report["entries"]},
                         {1, 3})


if __name__ == "__main__":
    unittest.main()
