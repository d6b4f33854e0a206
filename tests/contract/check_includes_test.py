#!/usr/bin/env python3
"""check-includes finds what it is for, and leaves the rest alone."""

import pathlib
import subprocess
import tempfile
import unittest

CHECK = (pathlib.Path(__file__).resolve().parents[2] / "scripts" /
         "check-includes")

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
    # Layers of the stand-in.
    ("kit/confd/keypath/keypath.cc", '"kit/confd/model/schema.h"'),
    ("kit/confd/keypath/keypath.cc", '"kit/confd/api/handles.h"'),
    ("kit/confd/keypath/keypath.cc", "<libyang/libyang.h>"),
    ("kit/confd/keypath/keypath.cc", "<confd_lib.h>"),
    ("kit/confd/text/number.cc", '"kit/confd/keypath/keypath.h"'),
    ("kit/confd/tree/data.cc", '"kit/confd/api/handles.h"'),
    ("kit/confd/tree/data.cc", '"kit/confd/control/control.h"'),
    ("kit/confd/tree/data.cc", '"../api/handles.h"'),
    ("kit/confd/api/cdb.cc", "<libyang/libyang.h>"),
    ("kit/confd/api/cdb.cc", '"kit/confd/control/control.h"'),
    ("kit/confd/tree/data.cc", '"kit/confd/document/document.h"'),
    ("kit/confd/document/document.cc", '"kit/confd/upgrade/database.h"'),
    ("kit/confd/tree/data.cc", "<libyang/libyang.h>"),
    ("kit/confd/control/control.cc", "<libyang/libyang.h>"),
    ("kit/log/src/zqconfd.cc", "<confd_lib.h>"),
    # Kit and host keep apart, and from the plug-in.
    ("kit/confd/tree/data.cc", '"kit/host/text.h"'),
    ("kit/confd/tree/data.cc", '"config_update/update_logger.h"'),
    ("kit/host/main.cc", '"kit/confd/tree/data.h"'),
    ("kit/host/main.cc", '"kit/confd/control/private.h"'),
    ("kit/host/main.cc", '"config_update/update.h"'),
    ("kit/host/main.cc", "<confd_lib.h>"),
    # Nothing leans on tests, however it is written.
    ("kit/host/main.cc", '"tests/support/fixture.h"'),
    ("src/config-update/update.cc", '"tests/support/fixture.h"'),
    ("kit/host/main.cc", "<gtest/gtest.h>"),
    ("kit/host/main.cc", '  "tests/support/fixture.h" // for now'),
    # A folder that the rules do not know.
    ("kit/new/thing.cc", '"kit/confd/tree/data.h"'),
]

GOOD = [
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
    ("kit/confd/keypath/keypath.cc", '"kit/confd/text/number.h"'),
    ("kit/confd/tree/data.cc", '"kit/confd/keypath/keypath.h"'),
    ("kit/confd/api/value_text.cc", "<confd_lib.h>"),
    ("kit/confd/control/control.cc", '"kit/confd/api/handles.h"'),
    ("kit/confd/api/cdb.cc", '"kit/confd/tree/data.h"'),
    ("kit/confd/control/control.cc", '"kit/confd/tree/data.h"'),
    ("kit/host/main.cc", '"kit/confd/control/control.h"'),
    ("kit/host/main.cc", '"kit/host/text.h"'),
    ("kit/host/main.cc", "<zqconfd_sink.h>"),
    ("kit/host/main.cc", "<string>"),
    ("tests/unit/data_test.cc", '"kit/confd/tree/data.h"'),
    ("fuzz/keypath_fuzz.cc", '"kit/confd/keypath/keypath.h"'),
]


def check(path, included):
    """Exit status and output for a tree with this one file."""
    with tempfile.TemporaryDirectory() as root:
        (pathlib.Path(root) / "include").mkdir()
        file = pathlib.Path(root) / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(f"// A comment.\n#include {included}\n")
        done = subprocess.run([CHECK, "--root", root], capture_output=True,
                              text=True, check=False)
        return done.returncode, done.stdout + done.stderr


class CheckIncludesTest(unittest.TestCase):

    def test_reports_each_forbidden_include_with_file_and_line(self):
        for path, included in BAD:
            with self.subTest(path=path, included=included):
                status, output = check(path, included)
                self.assertEqual(status, 1)
                self.assertTrue(
                    output.startswith(f"{path}:2: must not include "), output)

    def test_accepts_each_permitted_include(self):
        for path, included in GOOD:
            with self.subTest(path=path, included=included):
                self.assertEqual(check(path, included), (0, ""))

    def test_refuses_a_folder_without_sources(self):
        with tempfile.TemporaryDirectory() as root:
            done = subprocess.run([CHECK, "--root", root], check=False,
                                  capture_output=True)
            self.assertEqual(done.returncode, 2)


if __name__ == "__main__":
    unittest.main()
