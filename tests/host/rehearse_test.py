#!/usr/bin/env python3
"""What scripts/rehearse and scripts/build-preset do, in a clone of their own.

Arguments: the host, the folder of the tests' plug-ins, the folder of the models
that go with them.
"""

import os
import pathlib
import pty
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"

DEMO = ('<demo xmlns="urn:demo"><item><id>1</id><label>one</label></item>'
        "</demo>")

# Exits with the number in the configuration's name, after printing its words.
# The help has options as the real one prints them.
FAKE_HOST = """#!/bin/bash
if [ "$2" = --help ]; then
  printf '  %s\\n' '-h,--help           Print this' '-o,--output FILE    Write' \\
    '--timeout S=60      Give up' '--json Excludes: --quiet'
  exit
fi
printf '<%s>' "$@"; echo
for config; do :; done
code=${config//[!0-9]/}
exit "${code:-0}"
"""

PRESETS = """{"version": 6, "configurePresets": [
  {"name": "mini", "generator": "Ninja",
   "binaryDir": "${sourceDir}/build/mini"}],
  "buildPresets": [{"name": "mini", "configurePreset": "mini"}]}"""

PROJECT = """cmake_minimum_required(VERSION 3.25)
project(mini LANGUAGES NONE)
add_custom_command(OUTPUT made COMMAND ${CMAKE_COMMAND} -E touch made)
add_custom_target(everything ALL DEPENDS made)
"""


def default_signals():
    signal.signal(signal.SIGINT, signal.SIG_DFL)


class Clone(unittest.TestCase):

    def setUp(self):
        # pylint: disable-next=consider-using-with
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = pathlib.Path(self.folder.name).resolve() / "clone"
        (self.root / "scripts").mkdir(parents=True)
        for script in "rehearse", "build-preset":
            shutil.copy(SCRIPTS / script, self.root / "scripts")

    def script(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(0o755)

    def start(self, name, *args, **options):
        return subprocess.Popen(
            [self.root / "scripts" / name, *args], cwd=self.root,
            start_new_session=True, preexec_fn=default_signals, text=True,
            stdout=subprocess.PIPE,
            **{"stderr": subprocess.PIPE, **options})

    def run_script(self, name, *args):
        process = self.start(name, *args)
        out, err = process.communicate()
        return process.returncode, out, err


class RehearseTest(Clone):

    def setUp(self):
        super().setUp()
        self.script("scripts/setup", "#!/bin/bash\n")
        self.script("build/release/bin/ospf-upgrade", FAKE_HOST)

    def rehearse(self, *args):
        self.script("scripts/build-preset", "#!/bin/bash\n")
        return self.run_script("rehearse", *args)

    def test_the_worst_of_all_statuses_is_the_scripts(self):
        code, out, _ = self.rehearse("a1.xml", "b5.xml", "c2.xml", "d0.xml")
        self.assertEqual(code, 5)
        self.assertIn("== d0.xml\n<run><d0.xml>\n", out)

    def test_success_of_all_is_success(self):
        self.assertEqual(self.rehearse("a0.xml", "b0.xml")[0], 0)

    def test_options_are_the_hosts(self):
        rows = [
            (["--json", "a.xml"], ["<run><--json><a.xml>"]),
            (["a.xml", "--json"], ["<run><--json><a.xml>"]),
            (["--timeout", "5", "a.xml", "b.xml"],
             ["<run><--timeout><5><a.xml>", "<run><--timeout><5><b.xml>"]),
            (["--timeout=5", "a.xml"], ["<run><--timeout=5><a.xml>"]),
            (["-o", "out 1", "a.xml"], ["<run><-o><out 1><a.xml>"]),
            (["--output", "x", "-"], ["<run><--output><x><->"]),
            (["--json", "--", "-a.xml"], ["<run><--json><./-a.xml>"]),
            (["--json"], ["<run><--json><examples/branch-router.xml>"]),
            ([], ["<run><examples/branch-router.xml>"]),
        ]
        for args, expected in rows:
            with self.subTest(args=args):
                code, out, err = self.rehearse(*args)
                calls = [line for line in out.splitlines()
                         if not line.startswith("==")]
                self.assertEqual((code, calls), (0, expected), err)

    def test_an_option_without_its_value_is_a_usage_error(self):
        code, out, err = self.rehearse("--timeout")
        self.assertEqual((code, out), (3, ""))
        self.assertIn("--timeout needs a value", err)

    def test_help_says_what_there_is_without_building(self):
        self.script("scripts/setup", "#!/bin/bash\nexit 1\n")
        code, out, _ = self.run_script("rehearse", "--help")
        self.assertEqual(code, 0)
        self.assertIn("rehearse [OPTION...] [CONFIG...]", out)

    def test_a_build_that_fails_runs_no_old_host(self):
        (self.root / "build/release/build.log").mkdir()
        code, out, err = self.run_script("rehearse", "a.xml")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("build/release/build.log cannot be written", err)

    def test_a_signal_to_the_host_is_the_end(self):
        self.script("build/release/bin/ospf-upgrade",
                    FAKE_HOST.replace("exit \"", "kill -TERM $$; : \""))
        code, out, _ = self.rehearse("a.xml", "b.xml")
        self.assertEqual(code, 128 + signal.SIGTERM)
        self.assertNotIn("== b.xml", out)

    def test_ctrl_c_ends_the_script_and_all_of_the_run(self):
        host, plugins, models = ARGUMENTS
        self.script("scripts/build-preset", "#!/bin/bash\n")
        self.script("build/release/bin/ospf-upgrade",
                    f'#!/bin/bash\nexec {host} "$@"\n')
        for name in "a.xml", "b.xml":
            (self.root / name).write_text(DEMO)
        log = self.root / "log"
        process = self.start(
            "rehearse", "--plugin", f"{plugins}/hangs.so", "--yang-before",
            f"{models}/before", "--yang-after", f"{models}/after", f"--log={log}",
            "--timeout", "20", "a.xml", "b.xml")
        deadline = time.monotonic() + 20
        while not (log.exists() and "started" in log.read_text()):
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)
        os.killpg(process.pid, signal.SIGINT)
        out, _ = process.communicate()
        self.assertEqual(process.returncode, -signal.SIGINT)
        self.assertNotIn("== b.xml", out)


class BuildPresetTest(Clone):

    def setUp(self):
        super().setUp()
        (self.root / "CMakePresets.json").write_text(PRESETS)
        (self.root / "CMakeLists.txt").write_text(PROJECT)

    def test_says_that_it_builds_where_there_is_something_to_build(self):
        code, out, err = self.run_script("build-preset", "mini")
        self.assertEqual((code, out), (0, ""), err)
        self.assertEqual(
            err, "Building mini; the output goes to build/mini/build.log\n")
        self.assertEqual(self.run_script("build-preset", "mini"), (0, "", ""))

    def test_shows_how_far_it_is_on_a_terminal(self):
        master, terminal = pty.openpty()
        process = self.start("build-preset", "mini", stderr=terminal)
        os.close(terminal)
        process.communicate()
        shown = b""
        while True:
            try:
                piece = os.read(master, 4096)
            except OSError:  # the other end is closed
                break
            if not piece:
                break
            shown += piece
        os.close(master)
        self.assertEqual(process.returncode, 0)
        self.assertIn(b"Configuring mini", shown)
        self.assertIn(b"Building mini: 1/1", shown)
        self.assertTrue(shown.endswith(b"\r\033[K"), shown)

    def test_a_clone_that_has_moved_is_built_anew(self):
        self.assertEqual(self.run_script("build-preset", "mini")[0], 0)
        old_root = self.root
        self.root = old_root.with_name("moved")
        old_root.rename(self.root)
        code, out, err = self.run_script("build-preset", "mini")
        self.assertEqual((code, out), (0, ""), err)
        self.assertIn(f"were built in {old_root} before: building anew", err)
        self.assertNotIn("CMake Error", err)

    def test_a_folder_that_cannot_be_written_is_an_error(self):
        (self.root / "build/mini/build.log").mkdir(parents=True)
        code, _, err = self.run_script("build-preset", "mini")
        self.assertEqual(code, 1)
        self.assertIn("build/mini/build.log cannot be written", err)

    def test_a_failed_build_shows_why(self):
        (self.root / "CMakeLists.txt").write_text(
            PROJECT.replace("-E touch", "-E no-such-thing"))
        code, _, err = self.run_script("build-preset", "mini")
        self.assertEqual(code, 1)
        self.assertIn("no-such-thing", err)
        self.assertIn("its output is in build/mini/build.log", err)


if __name__ == "__main__":
    ARGUMENTS = sys.argv[1:4]
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
