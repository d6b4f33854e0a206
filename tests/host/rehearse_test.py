#!/usr/bin/env python3
"""What scripts/build-preset does, in a clone of its own."""

import os
import pathlib
import pty
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"

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
        shutil.copy(SCRIPTS / "build-preset", self.root / "scripts")

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
    unittest.main(argv=sys.argv[:1])
