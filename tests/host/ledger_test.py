#!/usr/bin/env python3
"""The ledger of a run accounts for every leaf of its input.

Takes the host and runs it on every example and on the configuration of every
upgrade case. What a ledger says is
compared with the files: the leaves of the input and of the output are counted
here, in the XML.
"""

import collections
import ipaddress
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
HOST = sys.argv.pop(1)

# Elements around a configuration, which are no part of it.
ENVELOPES = {"{http://tail-f.com/ns/config/1.0}config"}


def folder_of(models):
    for folder in (ROOT / "yang" / models, ROOT / "tests/models" / models):
        if folder.is_dir():
            return folder
    raise ValueError(models)


def configurations():
    """Each with the folders of its models, before and after."""
    own = {"before": "before", "after": "after"}
    for config in sorted((ROOT / "examples").glob("*.xml")):
        yield config, folder_of("before"), folder_of("after")
    for config in sorted((ROOT / "tests/cases").glob("*/before.xml")):
        case = json.loads((config.parent / "case.json").read_text())
        models = {**own, **case.get("models", {})}
        yield config, folder_of(models["before"]), folder_of(models["after"])


def run(config, *options):
    done = subprocess.run([HOST, "run", str(config), "--json", *options],
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          check=False)
    return json.loads(done.stdout)


def keys_of_lists(models):
    """Name of each list -> names of its keys."""
    keys = {}
    for module in models.glob("*.yang"):
        lists = re.finditer(r'\blist\s+(\S+)\s*\{\s*key\s+"([^"]*)"',
                            module.read_text())
        keys.update((one.group(1), one.group(2).split()) for one in lists)
    return keys


def containers_with_presence(models):
    """Their names: to be there says something, as a leaf does."""
    names = set()
    for module in models.glob("*.yang"):
        names.update(re.findall(r"\bcontainer\s+(\S+)\s*\{\s*presence\b",
                                module.read_text()))
    return names


def canonical(text):
    """The form that a value is written in, whatever it was read in."""
    text = (text or "").strip()
    if text.count(":") < 2:
        return text
    try:
        return (str(ipaddress.IPv6Interface(text)) if "/" in text
                else str(ipaddress.IPv6Address(text)))
    except ValueError:
        return text


def quoted(key):
    if key and not re.search(r'[\s{}"\\]', key):
        return key
    return '"' + re.sub(r'(["\\])', r"\\\1", key) + '"'


class Leaves:
    """Path of each leaf of a file -> its value; a leaf-list is one leaf."""

    def __init__(self, file, models):
        self._keys = keys_of_lists(models)
        self._present = containers_with_presence(models)
        self._texts = collections.defaultdict(list)
        text = re.sub(r"<\?xml.*?\?>", "", pathlib.Path(file).read_text())
        for element in ElementTree.fromstring("<all>" + text + "</all>"):
            if element.tag in ENVELOPES:
                for inner in element:
                    self._take(inner, "")
            else:
                self._take(element, "")
        self.values = {
            path: texts[0] if len(texts) == 1 else "[" + " ".join(texts) + "]"
            for path, texts in self._texts.items()}

    def _take(self, element, path):
        name = element.tag.rsplit("}", 1)[-1]
        path += "/" + name
        if name in self._present:
            self._texts[path].append("")
        elif len(element) == 0:
            self._texts[path].append(canonical(element.text))
            return
        texts = {child.tag.rsplit("}", 1)[-1]: canonical(child.text)
                 for child in element}
        if name in self._keys:
            path += "{%s}" % " ".join(
                quoted(texts[key]) for key in self._keys[name])
        for child in element:
            self._take(child, path)


def plain(path):
    """Without the prefixes that tell names of several modules apart."""
    return path and re.sub(r"/[\w-]+:(?=[\w-]+[/{]|[\w-]+$)", "/", path)


def entry_of(path):
    """The path of the list entry that a leaf stands in, "" for none."""
    return path[:path.rfind("}") + 1]


def total(rows, fate=None):
    return sum(row["leaves"] for row in rows if fate in (None, row["fate"]))


class LedgerTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.output = pathlib.Path(folder.name, "upgraded.xml")

    def test_it_accounts_for_every_leaf_of_every_configuration(self):
        whole = 0
        for config, old_models, new_models in configurations():
            with self.subTest(config=str(config.relative_to(ROOT))):
                report = run(config, "--ledger", "--diff", "--force",
                             "--yang-before", str(old_models),
                             "--yang-after", str(new_models),
                             "-o", str(self.output))
                ledger = report["ledger"]
                before = Leaves(config, old_models).values
                self.check_totals(ledger, len(before))
                self.assertEqual(ledger["whole"], report["valid"] is not None)
                if report["exit_code"] != 0:
                    continue
                after = Leaves(self.output, new_models).values
                self.assertEqual(ledger["result"], len(after))
                self.check_places(report, before, after)
                whole += 1
        self.assertGreater(whole, 30)

    def check_totals(self, ledger, leaves):
        self.assertTrue(ledger["balances"])
        self.assertEqual(ledger["input"], leaves)
        self.assertEqual(total(ledger["fates"]), leaves)
        self.assertEqual(sum(one["input"] for one in ledger["lists"]), leaves)
        for one in ledger["lists"]:
            self.assertEqual(total(one["fates"]), one["input"], one["list"])
        for fate in ("changed", "dropped"):
            told = [leaf for leaf in ledger["leaves"] if leaf["fate"] == fate]
            self.assertEqual(total(ledger["fates"], fate), len(told))

    def check_places(self, report, before, after):
        """Looks for each leaf of the input where the ledger says that it is."""
        ledger = report["ledger"]
        told = {plain(leaf["path"]): leaf for leaf in ledger["leaves"]}
        moves = {plain(entry["old_path"]): plain(entry["path"])
                 for entry in report["entries"] if entry["change"] == "rekeyed"}
        moved = kept = by_default = 0
        for path, value in before.items():
            leaf = told.pop(path, None)
            entry = entry_of(path)
            if leaf is not None:
                self.assertEqual(leaf["before"], value)
                if leaf["fate"] == "dropped":
                    # Nor may it have gone along with its entry.
                    new_path = moves.get(entry, entry) + path[len(entry):]
                    left = [one for one in (path, new_path) if one in after]
                    self.assertEqual(left, [])
                elif not leaf["by_default"]:
                    self.assertEqual(after[plain(leaf["new_path"]) or path],
                                     leaf["after"])
            elif entry in moves:
                moved += 1
                new_path = moves[entry] + path[len(entry):]
                is_key = after[new_path] in re.findall(r"[^{} ]+", moves[entry])
                self.assertTrue(after[new_path] == value or is_key, new_path)
            else:
                kept += 1
                by_default += path not in after
                self.assertEqual(after.get(path, value), value, path)
        self.assertEqual(told, {})
        self.assertEqual(moved, total(ledger["fates"], "moved"))
        self.assertEqual(kept, total(ledger["fates"], "kept"))
        self.assertEqual(by_default,
                         sum(row["by_default"] for row in ledger["fates"]
                             if row["fate"] == "kept"))

    def test_a_failed_run_shows_how_far_it_came(self):
        config = ROOT / "examples/branch-router.xml"
        report = run(config, "--ledger", "--schemas", "none")
        self.assertEqual(report["exit_code"], 1)
        ledger = report["ledger"]
        self.assertFalse(ledger["whole"])
        self.assertIsNone(ledger["result"])
        self.check_totals(ledger, len(Leaves(config, folder_of("before")).values))
        self.assertGreater(total(ledger["fates"], "dropped"), 0)

    def test_without_a_readable_input_there_is_none(self):
        report = run("/nonexistent", "--ledger")
        self.assertEqual(report["exit_code"], 3)
        self.assertIsNone(report["ledger"])


if __name__ == "__main__":
    unittest.main()
