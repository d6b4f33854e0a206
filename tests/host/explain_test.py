#!/usr/bin/env python3
"""What explain says of an entry is what --diff says of it.

Takes the host. The entries are all that differ in the examples, and one of each
upgrade case that the models of this repository take.
"""

import concurrent.futures
import json
import pathlib
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
HOST = sys.argv.pop(1)


def call(*args):
    done = subprocess.run([HOST, *args, "--json"], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    return json.loads(done.stdout)


def path_at_start(entry, steps):
    """Back through the passes from a path at the end; None for a new one."""
    path = entry["path"]
    for step in reversed(steps):
        if step["path"] == path and step["change"] == "rekeyed":
            path = step["old_path"]
        elif step["path"] == path and step["change"] == "created":
            return None
    return path


def passes_of(entry, steps):
    """Passes and changes of an entry, by the differences of the passes."""
    if entry["change"] == "deleted":
        path, found = entry["path"], []
        for step in steps:
            if path == step["old_path"]:
                path = step["path"]
            elif path != step["path"]:
                continue
            found.append((step["pass"], step["change"]))
        return found
    path, found = entry["path"], []
    for step in reversed(steps):
        if step["path"] != path:
            continue
        found.insert(0, (step["pass"], step["change"]))
        if step["change"] == "created":
            break
        path = step["old_path"] or path
    return found


class ExplainTest(unittest.TestCase):
    def check(self, config, entry, steps):
        explanation = call("explain", str(config), entry["path"])
        with self.subTest(config=str(config.relative_to(ROOT)),
                          entry=entry["path"]):
            self.assertEqual(explanation["kind"], entry["change"])
            if entry["change"] in ("rekeyed", "deleted", "changed"):
                self.assertEqual(explanation["old_path"],
                                 entry["old_path"] or entry["path"])
            self.assertEqual(explanation["old_path"],
                             path_at_start(entry, steps))
            self.assertEqual([(step["pass"], step["change"])
                              for step in explanation["steps"]],
                             passes_of(entry, steps))

    def check_all(self, pairs):
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for job in [pool.submit(self.check, *pair) for pair in pairs]:
                job.result()

    def test_on_the_examples(self):
        pairs = []
        for config in sorted((ROOT / "examples").glob("*.xml")):
            steps = call("run", str(config), "--diff=pass")["entries"]
            entries = call("run", str(config), "--diff")["entries"]
            pairs += [(config, entry, steps) for entry in entries]
        self.assertGreater(len(pairs), 200)
        self.check_all(pairs)

    def test_on_an_entry_of_each_case(self):
        pairs = []
        cases = sorted((ROOT / "tests/cases").glob("*/before.xml"))
        for number, config in enumerate(cases):
            whole = call("run", str(config), "--diff")
            if whole["exit_code"] != 0 or not whole["entries"]:
                continue
            steps = call("run", str(config), "--diff=pass")["entries"]
            entry = whole["entries"][number % len(whole["entries"])]
            pairs.append((config, entry, steps))
        self.assertGreater(len(pairs), 30)
        self.check_all(pairs)


if __name__ == "__main__":
    unittest.main()
