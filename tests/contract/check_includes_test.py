#!/usr/bin/env python3
"""check-includes finds what it is for, and leaves the rest alone."""

import importlib.machinery
import importlib.util
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = (pathlib.Path(__file__).resolve().parents[2] / "scripts" /
         "check-includes")


def load(path):
    """A script as a module, without leaving a compiled one beside it."""
    sys.dont_write_bytecode = True
    loader = importlib.machinery.SourceFileLoader("check_includes", str(path))
    module = importlib.util.module_from_spec(
        importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


check_includes = load(CHECK)

# Each arrow that must not be there: (file, what it includes).
BAD = [
    # The plug-in knows the C headers and nothing else of the kit.
    ("src/config-update/ospf_te_update.cc", "<libyang/libyang.h>"),
    ("src/config-update/ospf_te_update.cc", '"kit/confd/tree/data.h"'),
    ("src/config-update/ospf_te_update.cc", '"kit/confd/control/control.h"'),
    ("src/config-update/ospf_te_update.cc", "<kit/confd/control/control.h>"),
    ("src/config-update/ospf_te_update.cc", "<fmt/format.h>"),
    ("src/config-update/ospf_te_update.cc", "<zqconfd_log.h>"),
    ("src/config-update/update_logger.cc", "<zqconfd_sink.h>"),
    ("include/config_update/ospf_te_update.h", '"kit/host/text.h"'),
    # Passes do not reach each other.
    ("src/config-update/ospf_te_update.cc",
     '"config_update/ospf_area_update.h"'),
    ("src/config-update/ospf_area_update.cc",
     '"config_update/ospfv3_area_update.h"'),
    ("src/config-update/ospf_compound_idx_update.cc",
     '"config_update/ospf_secondary_update.h"'),
    ("src/config-update/ospf_te_update.cc", '"config_update/update.h"'),
    ("include/config_update/database_access.h",
     '"config_update/ospf_te_update.h"'),
    # A public header does not need a private one.
    ("include/config_update/ospf_te_update.h", '"private.h"'),
    ("include/config_update/ospf_te_update.h",
     '"src/config-update/private.h"'),
    ("kit/confd/control/control.h", '"kit/confd/tree/data.h"'),
    ("kit/confd/control/control.h", "<libyang/libyang.h>"),
    ("kit/confd/include/confd_lib.h", '"kit/confd/model/value.h"'),
    # Storeys of the stand-in; all pairs of them have a test of their own.
    ("kit/confd/keypath/keypath.cc", '"kit/confd/model/schema.h"'),
    ("kit/confd/keypath/keypath.cc", '"kit/confd/api/handles.h"'),
    ("kit/confd/tree/data.cc", '"kit/confd/api/handles.h"'),
    ("kit/confd/tree/data.cc", '"kit/confd/control/control.h"'),
    ("kit/confd/tree/data.cc", '"../api/handles.h"'),
    ("kit/confd/api/cdb.cc", '"kit/confd/control/control.h"'),
    ("kit/log/src/zqconfd.cc", "<confd_lib.h>"),
    # Kit and host keep apart, and from the plug-in.
    ("kit/confd/tree/data.cc", '"kit/host/text.h"'),
    ("kit/confd/tree/data.cc", '"config_update/update_logger.h"'),
    ("kit/host/main.cc", '"kit/confd/tree/data.h"'),
    ("kit/host/main.cc", '"kit/confd/control/private.h"'),
    ("kit/host/main.cc", '"config_update/update.h"'),
    ("kit/host/main.cc", "<confd_lib.h>"),
    # The host's folders.
    ("kit/host/process/worker.cc", '"kit/host/journal/journal.h"'),
    ("kit/host/journal/journal.cc", '"kit/host/report/report.h"'),
    ("kit/host/findings/rule.cc", '"kit/host/process/worker.h"'),
    ("kit/host/report/text.cc", '"kit/host/commands/options.h"'),
    # Nothing leans on tests, however it is written.
    ("kit/host/main.cc", '"tests/support/fixture.h"'),
    ("src/config-update/update.cc", '"tests/support/fixture.h"'),
    ("kit/host/main.cc", "<gtest/gtest.h>"),
    ("kit/host/main.cc", '  "tests/support/fixture.h" // for now'),
    # An example is a plug-in of somebody else's.
    ("examples/one/one.cc", '"kit/confd/control/control.h"'),
    ("examples/one/one.cc", '"config_update/update_logger.h"'),
    ("examples/one/one.cc", "<fmt/format.h>"),
    # What the rules do not know.
    ("kit/new/thing.cc", '"kit/confd/tree/data.h"'),
    ("kit/confd/new/thing.cc", '"kit/confd/text/numbers.h"'),
    ("kit/confd/tree/data.cc", "HEADER_OF_TODAY"),
]

GOOD = [
    ("kit/host/report/text.cc", '"kit/host/findings/rule.h"'),
    ("kit/host/commands/main.cc", '"kit/host/process/worker.h"'),
    ("src/config-update/update.cc", '"config_update/ospf_te_update.h"'),
    ("src/config-update/ospf_te_update.cc",
     '"config_update/ospf_te_update.h"'),
    ("src/config-update/ospf_te_update.cc",
     '"config_update/database_access.h"'),
    ("src/config-update/ospf_te_update.cc", "<confd_maapi.h>"),
    ("src/config-update/ospf_te_update.cc", "<arpa/inet.h>"),
    ("src/config-update/ospf_secondary_update.cc",
     '"config_update/ospf_compound_idx_update.h"'),
    ("src/config-update/update_logger.cc", "<zqconfd_log.h>"),
    ("kit/confd/model/schema.cc", "<libyang/libyang.h>"),
    ("kit/confd/tree/data.cc", '"kit/confd/keypath/keypath.h"'),
    ("kit/confd/control/control.cc", '"kit/confd/api/handles.h"'),
    ("kit/confd/api/cdb.cc", '"kit/confd/tree/data.h"'),
    ("kit/confd/control/control.cc", '"kit/confd/tree/data.h"'),
    ("kit/host/main.cc", '"kit/confd/control/control.h"'),
    ("kit/host/main.cc", '"kit/host/text.h"'),
    ("kit/host/main.cc", "<zqconfd_sink.h>"),
    ("kit/host/main.cc", "<string>"),
    ("examples/one/one.cc", "<confd_maapi.h>"),
    ("examples/one/one.cc", "<zqconfd_log.h>"),
    ("tests/unit/data_test.cc", '"kit/confd/tree/data.h"'),
    ("fuzz/keypath_fuzz.cc", '"kit/confd/keypath/keypath.h"'),
]


# Trees in which every file by itself may include what it includes: the files,
# and what is wrong.
INDIRECT = [
    ({"kit/confd/tree/data.h": '"kit/confd/model/schema.h"',
      "kit/confd/model/schema.h": "<libyang/libyang.h>"},
     "kit/confd/tree/data.h:2: must not include libyang/libyang.h "
     "(through kit/confd/model/schema.h)"),
    ({"kit/confd/api/call.h": '"kit/confd/session/session.h"',
      "kit/confd/session/session.h": '"kit/confd/upgrade/database.h"',
      "kit/confd/upgrade/database.h": "<libyang/libyang.h>"},
     "kit/confd/api/call.h:2: must not include libyang/libyang.h "
     "(through kit/confd/session/session.h, kit/confd/upgrade/database.h)",
     "kit/confd/session/session.h:2: must not include libyang/libyang.h "
     "(through kit/confd/upgrade/database.h)"),
    # A header beside the file, and one that is found by its folder.
    ({"src/config-update/ospf_te_update.cc": '"config_update/update_logger.h"',
      "include/config_update/update_logger.h": '"export.h"',
      "include/config_update/export.h": '"config_update/update_logger.h"'},),
    ({"src/config-update/ospf_te_update.cc":
      '"config_update/ospf_te_update.h"',
      "include/config_update/ospf_te_update.h": "<string>"},),
    ({"src/config-update/ospf_secondary_update.cc":
      '"config_update/ospf_compound_idx_update.h"',
      "include/config_update/ospf_compound_idx_update.h": "<confd_lib.h>"},),
    # The fault is said where it is, not again for each file above it.
    ({"kit/host/main.cc": '"kit/confd/control/control.h"',
      "kit/confd/control/control.h": '"kit/confd/tree/data.h"',
      "kit/confd/tree/data.h": "<string>"},
     "kit/confd/control/control.h:2: must not include kit/confd/tree/data.h"),
    # Headers that include each other come to an end.
    ({"kit/confd/tree/a.h": '"b.h"', "kit/confd/tree/b.h": '"a.h"'},),
]


def write(root, files):
    (root / "include").mkdir(exist_ok=True)
    for path, included in files.items():
        file = root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(f"// A comment.\n#include {included}\n")


def check(files):
    """What is wrong in a tree of files with one include each."""
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        write(root, files)
        return list(check_includes.violations(check_includes.Sources(root)))


def run(*arguments):
    done = subprocess.run([CHECK, *arguments], capture_output=True, text=True,
                          check=False)
    return done.returncode, done.stdout


class CheckIncludesTest(unittest.TestCase):

    def test_reports_each_forbidden_include_with_file_and_line(self):
        for path, included in BAD:
            with self.subTest(path=path, included=included):
                found = check({path: included})
                self.assertEqual(len(found), 1, found)
                self.assertTrue(
                    found[0].startswith(f"{path}:2: must not include "), found)

    def test_accepts_each_permitted_include(self):
        for path, included in GOOD:
            with self.subTest(path=path, included=included):
                self.assertEqual(check({path: included}), [])

    def test_a_storey_includes_those_before_it(self):
        order = ["text", "keypath", "model", "tree", "document", "upgrade",
                 "session", "api", "control"]
        for number, storey in enumerate(order):
            for other_number, other in enumerate(order):
                with self.subTest(storey=storey, other=other):
                    found = check({f"kit/confd/{storey}/one.cc":
                                   f'"kit/confd/{other}/other.h"'})
                    self.assertEqual(not found, other_number <= number, found)

    def test_few_storeys_see_libyang_and_the_c_headers(self):
        for storeys, included in (
                (["model", "document", "upgrade"], "<libyang/libyang.h>"),
                (["api", "control"], "<confd_maapi.h>")):
            for storey in ["text", "keypath", "model", "tree", "document",
                           "upgrade", "session", "api", "control"]:
                with self.subTest(storey=storey, included=included):
                    found = check({f"kit/confd/{storey}/one.cc": included})
                    self.assertEqual(not found, storey in storeys, found)

    def test_looks_through_all_includes(self):
        for files, *expected in INDIRECT:
            with self.subTest(files=files):
                self.assertEqual(check(files), expected)

    def test_names_each_fault_and_fails(self):
        with tempfile.TemporaryDirectory() as root:
            write(pathlib.Path(root),
                  {"kit/confd/text/a.cc": '"kit/confd/tree/data.h"',
                   "kit/confd/text/b.cc": "<libyang/libyang.h>"})
            self.assertEqual(run("--root", root), (
                1,
                "kit/confd/text/a.cc:2: must not include "
                "kit/confd/tree/data.h\n"
                "kit/confd/text/b.cc:2: must not include "
                "libyang/libyang.h\n"))

    def test_says_nothing_when_all_is_well(self):
        with tempfile.TemporaryDirectory() as root:
            write(pathlib.Path(root), {"kit/confd/text/a.cc": "<string>"})
            self.assertEqual(run("--root", root), (0, ""))

    def test_lists_the_arrows_that_it_checked(self):
        with tempfile.TemporaryDirectory() as root:
            write(pathlib.Path(root),
                  {"kit/confd/tree/data.cc": '"kit/confd/tree/data.h"',
                   "kit/confd/tree/data.h": '"kit/confd/model/schema.h"',
                   "kit/confd/model/schema.h": '"kit/confd/model/type.h"',
                   "kit/confd/model/type.h": '"kit/confd/text/numbers.h"',
                   "kit/confd/text/numbers.h": "<string>",
                   "tests/unit/data_test.cc": '"kit/confd/tree/data.h"'})
            self.assertEqual(run("--root", root, "--list"), (
                0,
                "text (1 files) -> nothing\n"
                "model (2 files) -> text (2)\n"
                "tree (2 files) -> text (2), model (2)\n"
                "10 pairs of a file and what it sees checked\n"))

    def test_refuses_a_folder_without_sources(self):
        with tempfile.TemporaryDirectory() as root:
            self.assertEqual(run("--root", root)[0], 2)


if __name__ == "__main__":
    unittest.main()
