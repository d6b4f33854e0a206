#!/usr/bin/env python3
"""Fleets as a user meets them.

Takes the host and the folder with plug-ins that misbehave.
"""

import json
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PLUGINS = pathlib.Path(sys.argv.pop(2))
HOST = sys.argv.pop(1)
EXAMPLE = ROOT / "examples/branch-router.xml"
FINE = ROOT / "examples/no-ospf.xml"


def fleet(*arguments, **kwargs):
    return subprocess.run([HOST, "fleet", *map(str, arguments)],
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True, check=False, **kwargs)


def lines_of(path):
    return [json.loads(line) for line in path.read_text().splitlines()]


class FleetTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.inputs = self.folder / "in"
        self.inputs.mkdir()
        self.json = self.folder / "results.jsonl"

    def put(self, name, source=EXAMPLE):
        path = self.inputs / name
        path.parent.mkdir(exist_ok=True)
        text = source if isinstance(source, str) else source.read_text()
        path.write_text(text)
        return path

    def put_some(self, routers=6, broken=3):
        for i in range(routers):
            self.put(f"r{i}.xml", "<config>" if i == broken else EXAMPLE)

    def assert_fails(self, done, code, *words):
        self.assertEqual(done.returncode, code, done.stderr)
        for word in words:
            self.assertIn(word, done.stderr)

    def test_a_bad_file_stops_no_other_and_all_come_in_order(self):
        self.put_some()
        one = fleet(self.inputs, "--jobs", 1)
        two = fleet(self.inputs, "--jobs", 2)
        self.assertEqual(one.returncode, 3)
        self.assertEqual(one.stdout, two.stdout)
        lines = one.stdout.splitlines()
        self.assertEqual([line.split()[0] for line in lines[:6]],
                         ["look"] * 3 + ["fail"] + ["look"] * 2)
        self.assertIn("r3.xml: line 1: ", lines[3])
        self.assertEqual(lines[6],
                         "6 routers: 0 fine, 5 to look at, 1 failing")
        self.assertEqual(one.stderr, "")

    def test_results_are_those_of_single_runs(self):
        self.put("a.xml")
        self.put("b.xml", FINE)
        self.put("sub/c.xml", ROOT / "examples/provider-edge.xml")
        out = self.folder / "out"
        done = fleet(self.inputs, "-o", out, "--json", self.json)
        self.assertEqual(done.returncode, 0, done.stderr)
        header, *routers = lines_of(self.json)
        self.assertEqual((header["routers"], header["fleet"]), (3, 3))
        for router in routers:
            single = self.folder / "single.xml"
            run = subprocess.run(
                [HOST, "run", router["config"], "--json", "--force", "-o",
                 single], stdout=subprocess.PIPE, check=True)
            report = json.loads(run.stdout)
            self.assertEqual([f["rule"] for f in router["findings"]],
                             [f["rule"] for f in report["findings"]])
            self.assertEqual(router["device"], report["device"])
            written = pathlib.Path(router["output"])
            self.assertEqual(
                written,
                out / pathlib.Path(router["config"]).relative_to(self.inputs))
            self.assertEqual(written.read_bytes(), single.read_bytes())

    def test_only_the_lines_that_are_asked_for_are_printed(self):
        self.put_some()
        self.put("fine.xml", FINE)
        words = lambda *options: [
            line.split()[0]
            for line in fleet(self.inputs, *options).stdout.splitlines()
            if not line.startswith(" ")]
        self.assertEqual(words("--only", "fail"), ["fail", "7"])
        self.assertEqual(words("--only", "look"), ["look"] * 5 + ["7"])
        self.assertEqual(fleet(self.inputs, "--quiet").stdout, "")

    def test_a_plugin_that_dies_or_hangs_costs_its_own_router(self):
        for name in ("a.xml", "b.xml"):
            self.put(name)
        for plugin, code in (("aborts", 5), ("segfaults", 5), ("hangs", 5),
                             ("returns_seven", 1), ("floods", 5)):
            with self.subTest(plugin):
                done = fleet(self.inputs, "--plugin", PLUGINS / f"{plugin}.so",
                             "--timeout", 2, "--json", self.json, "--force")
                self.assertEqual(done.returncode, code, done.stderr)
                self.assertEqual(
                    [router["exit_code"] for router in lines_of(self.json)[1:]],
                    [code] * 2)

    def test_test_cases_are_well_formed_and_counted(self):
        self.put_some()
        junit = self.folder / "junit.xml"
        fleet(self.inputs, "--junit", junit)
        suite = xml.etree.ElementTree.parse(junit).getroot()[0]
        self.assertEqual((suite.get("tests"), suite.get("errors")), ("6", "1"))
        self.assertEqual([case.get("name") for case in suite],
                         [f"r{i}.xml" for i in range(6)])
        self.assertEqual(suite[3][0].get("type"), "bad-input")

    def test_the_page_links_to_a_page_of_each_router(self):
        self.put_some(routers=3, broken=1)
        self.put("<script>alert(1)<!--\u202e.xml")
        page = self.folder / "a fleet.html"
        done = fleet(self.inputs, "--report", page, "--json", self.json)
        self.assertEqual(done.returncode, 3, done.stderr)
        text = page.read_text()
        begin = text.index('id="data">') + len('id="data">')
        content = text[begin:text.index("</script>", begin)]
        for mark in ("<", "\u202e"):
            self.assertNotIn(mark, content)
        data = json.loads(content)
        self.assertEqual(len(data["routers"]), 4)
        for router, line in zip(data["routers"], lines_of(self.json)[1:]):
            link = self.folder / urllib.parse.unquote(router[4])
            self.assertEqual(str(link), line["page"])
            self.assertIn("<!DOCTYPE html>", link.read_text())
        self.assertEqual([router[2] for router in data["routers"]],
                         [1, 1, 2, 1])
        self.assertEqual(data["failures"], [["bad-input", 1]])
        again = fleet(self.inputs, "--report", page)
        self.assert_fails(again, 6, "exists already", "--report")
        self.assertEqual(page.read_text(), text)

    def test_findings_fail_where_strict(self):
        self.put("a.xml")
        self.assertEqual(fleet(self.inputs).returncode, 0)
        self.assertEqual(fleet(self.inputs, "--strict").returncode, 7)

    def interrupted(self, number):
        """Ends a run after its first results."""
        process = subprocess.Popen(
            [HOST, "fleet", self.inputs, "--jobs", "2", "--json", self.json,
             "-o", self.folder / "out"], stdout=subprocess.DEVNULL)
        deadline = time.monotonic() + 60
        while not self.json.exists() or self.json.stat().st_size < 3000:
            self.assertLess(time.monotonic(), deadline, "no results came")
            time.sleep(0.005)
        process.send_signal(number)
        self.assertEqual(process.wait(), -number)

    def test_an_interrupted_run_is_gone_on_with(self):
        self.put_some(routers=30)
        whole = self.folder / "whole.jsonl"
        fleet(self.inputs, "--json", whole, "-o", self.folder / "out")
        for number in (signal.SIGKILL, signal.SIGTERM, signal.SIGINT):
            with self.subTest(number):
                self.json.unlink(missing_ok=True)
                for output in (self.folder / "out").iterdir():
                    output.unlink()
                self.interrupted(number)
                before = self.json.read_bytes()
                self.assertLess(len(before.splitlines()), 31)
                done = fleet(self.inputs, "--json", self.json, "--resume",
                             "-o", self.folder / "out")
                self.assertEqual(done.returncode, 3, done.stderr)
                self.assertTrue(
                    self.json.read_bytes().startswith(
                        before[:before.rindex(b"\n") + 1]),
                    "what was done is done again")
                self.assertEqual(self.json.read_bytes(), whole.read_bytes())
                self.assertIn("30 routers:", done.stdout)
                self.assertEqual(len(list((self.folder / "out").iterdir())),
                                 29)

    def test_a_torn_line_is_done_again(self):
        self.put_some()
        command = (self.inputs, "--json", self.json, "-o", self.folder / "out")
        fleet(*command)
        whole = self.json.read_bytes()
        for cut in (1, 300, len(whole) - 20, len(whole)):
            with self.subTest(cut):
                self.json.write_bytes(whole[:len(whole) - cut])
                done = fleet(*command, "--resume")
                self.assertEqual(done.returncode, 3, done.stderr)
                self.assertEqual(self.json.read_bytes(), whole)

    def test_what_the_machine_prevented_is_done_again(self):
        self.put_some()
        out = self.folder / "out"
        out.write_text("no folder")
        done = fleet(self.inputs, "--json", self.json, "-o", out)
        self.assertEqual(done.returncode, 6)
        out.unlink()
        done = fleet(self.inputs, "--json", self.json, "-o", out, "--resume")
        self.assertEqual(done.returncode, 3, done.stderr)
        routers = lines_of(self.json)[1:]
        self.assertEqual([router["router"] for router in routers],
                         list(range(6)))
        self.assertEqual(len(list(out.iterdir())), 5)

    def test_only_the_same_fleet_and_upgrade_is_gone_on_with(self):
        self.put_some()
        fleet(self.inputs, "--json", self.json)
        again = ("--json", self.json, "--resume")
        self.assert_fails(fleet(self.inputs, *again, "--schemas", "none"), 3,
                          "another plug-in", "--json")
        self.assert_fails(fleet(self.inputs, *again, "--shard", "1/2"), 3,
                          "1/1")
        self.put("r9.xml")
        self.assert_fails(fleet(self.inputs, *again), 3,
                          "other configurations, 6 of them and not 7")
        header = lines_of(self.json)[0]
        header["fleet"] = header["routers"] = 10 ** 15
        self.json.write_text(json.dumps(header) + "\n")
        self.assert_fails(fleet(self.inputs, *again), 3, "makes no sense")
        self.json.write_text("something else\n")
        self.assert_fails(fleet(self.inputs, *again), 3,
                          "is no file of results")
        self.assertEqual(self.json.read_text(), "something else\n")

    def test_shards_are_merged_into_the_whole(self):
        self.put_some(routers=8)
        whole = self.folder / "whole.jsonl"
        one = fleet(self.inputs, "--json", whole)
        parts = []
        for i in (1, 2, 3):
            parts.append(self.folder / f"part{i}")
            fleet(self.inputs, "--shard", f"{i}/3", "--json", parts[-1])
        merged = fleet("--merge", *reversed(parts), "--json", self.json)
        self.assertEqual(merged.returncode, 3, merged.stderr)
        self.assertEqual(self.json.read_bytes(), whole.read_bytes())
        summary = one.stdout[one.stdout.index("8 routers"):]
        self.assertEqual(merged.stdout, summary)
        self.assert_fails(fleet("--merge", parts[0], parts[2]), 3,
                          "5 of 8 routers", "shard 2/3 is missing")
        self.assert_fails(fleet("--merge", *parts, parts[0]), 3,
                          "has shard 1/3")
        self.assert_fails(fleet("--merge", parts[0], whole), 3,
                          "is not of the fleet")
        torn = parts[1].read_bytes().splitlines(keepends=True)
        parts[1].write_bytes(b"".join(torn[:-1]))
        self.assert_fails(fleet("--merge", *parts), 3,
                          "shard 2/3 has 2 of 3 routers", "--resume")

    def test_faults_of_the_command_are_said_before_anything_is_done(self):
        empty = self.folder / "empty"
        empty.mkdir()
        self.assert_fails(fleet(empty), 3, "empty", "no configurations")
        (empty / "note.txt").write_text("x")
        self.assert_fails(fleet(empty), 3, "no configurations")
        path = self.put("a.xml")
        self.assert_fails(fleet(self.inputs, path), 3, "comes twice")
        self.assert_fails(fleet(self.inputs, "-o", self.inputs / "out"), 3,
                          "is in")
        other = self.folder / "other"
        other.mkdir()
        (other / "a.xml").write_text(EXAMPLE.read_text())
        self.assert_fails(
            fleet(path, other / "a.xml", "-o", self.folder / "out"), 3,
            "which is that of")
        self.assert_fails(fleet(other / "a.xml", "-o", other), 3,
                          "is a configuration of the fleet")
        self.json.write_text("mine")
        self.assert_fails(fleet(self.inputs, "--json", self.json), 6,
                          "exists already")
        self.assertEqual(self.json.read_text(), "mine")
        self.assert_fails(fleet(self.inputs, "--resume"), 3, "--json")
        for shard in ("0/2", "3/2", "x"):
            self.assert_fails(fleet(self.inputs, "--shard", shard), 3, "I/N")
        self.assert_fails(
            fleet(self.inputs, "--yang-before", empty, "--yang-after", empty),
            3, "models")

    def test_a_file_that_is_gone_or_closed_costs_its_own_line(self):
        path = self.put("a.xml")
        link = self.inputs / "link.xml"
        link.symlink_to(self.folder / "nowhere")
        os.mkfifo(self.inputs / "pipe.xml")
        for arguments in ((self.inputs,), (path, link)):
            done = fleet(*arguments)
            self.assertEqual(done.returncode, 3)
            lines = done.stdout.splitlines()
            self.assertIn("look  router br7-leipzig", lines[0])
            self.assertIn(f"fail  {link}: cannot be read", lines[1])
            self.assertIn("2 routers:", lines[2])

    def test_a_full_disk_leaves_whole_lines_and_says_what_to_do(self):
        self.put_some()
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (4000, 4000))
        done = fleet(self.inputs, "--json", self.json, preexec_fn=limit)
        self.assert_fails(done, 6, "results cannot be written", "--resume")
        text = self.json.read_text()
        self.assertTrue(text.endswith("\n"))
        self.assertGreater(len(lines_of(self.json)), 1)
        done = fleet(self.inputs, "--json", self.json, "--resume")
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertEqual(len(lines_of(self.json)), 7)

    def test_two_runs_do_not_write_to_one_file(self):
        self.put_some(routers=2)
        process = subprocess.Popen(
            [HOST, "fleet", self.inputs, "--json", self.json, "--plugin",
             PLUGINS / "hangs.so"], stdout=subprocess.DEVNULL)
        deadline = time.monotonic() + 60
        while not self.json.exists() or not self.json.stat().st_size:
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.005)
        done = fleet(self.inputs, "--json", self.json, "--resume")
        process.terminate()
        self.assertEqual(process.wait(), -signal.SIGTERM)
        self.assert_fails(done, 6, "another run")


if __name__ == "__main__":
    unittest.main()
