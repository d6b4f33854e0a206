#!/usr/bin/env python3
"""What scripts/setup and scripts/format do on systems of several kinds.

The commands that know the system are stand-ins on the path.
"""

import os
import pathlib
import subprocess
import tempfile
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"

EVERYWHERE = ("g++ cmake ninja-build pkg-config libpcre2-dev libcli11-dev "
              "libfmt-dev nlohmann-json3-dev libgtest-dev libgmock-dev "
              "libssl-dev python3 binutils").split()
DEBIAN_12 = EVERYWHERE + ["libyang2-dev", "libyang2-tools", "clang-format-14"]
DEBIAN_13 = EVERYWHERE + ["libyang-dev", "libyang3-tools"]

STAND_INS = {
    "id": "echo 0",
    "dpkg_query": """
for package in "$@"; do :; done
grep -qxF -- "$package" installed && printf installed""",
    "apt_cache": """
if grep -qxF -- "$2" offered; then
  printf '%s:\\n  Installed: (none)\\n  Candidate: 1.0\\n' "$2"
fi""",
    "apt_get": """
case " $* " in
  *" update "*) echo update >>done; cp mirror offered ;;
  *" install "*) echo "$@" >>done ;;
esac""",
}


class System:
    """A folder of stand-ins and what they know, to run a script in."""

    def __init__(self, **commands):
        self._folder = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self._folder.name)
        for name, body in commands.items():
            file = self.path / name.replace("_", "-")
            file.write_text(f"#!/bin/bash\ncd {self.path}\n{body}\n")
            file.chmod(0o755)

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self._folder.cleanup()

    def know(self, name, packages):
        (self.path / name).write_text("".join(p + "\n" for p in packages))

    def run(self, script, *args):
        return subprocess.run(
            [SCRIPTS / script, *args], capture_output=True, text=True,
            check=False, env={**os.environ,
                              "PATH": f"{self.path}:{os.environ['PATH']}"})


class SetupTest(unittest.TestCase):

    def installs(self, mirror, offered, installed=()):
        """The packages that setup installs, and all that apt-get did."""
        with System(**STAND_INS) as system:
            system.know("mirror", mirror)
            system.know("offered", offered)
            system.know("installed", installed)
            system.know("done", [])
            done = system.run("setup", "test")
            self.assertEqual(done.returncode, 0, done.stderr)
            calls = (system.path / "done").read_text().splitlines()
        chosen = calls[-1].split() if calls else []
        return {word for word in chosen if word in DEBIAN_12 + DEBIAN_13}, calls

    def test_takes_the_names_that_the_system_offers(self):
        for release in DEBIAN_12, DEBIAN_13:
            with self.subTest(release=release):
                packages, _ = self.installs(release, release)
                self.assertEqual(packages, set(release))

    def test_asks_a_system_that_has_not_asked_its_mirror_yet(self):
        for release in DEBIAN_12, DEBIAN_13:
            with self.subTest(release=release):
                packages, calls = self.installs(release, [])
                self.assertEqual(packages, set(release))
                self.assertEqual(calls[0], "update")

    def test_installs_what_is_missing_alone(self):
        packages, _ = self.installs(DEBIAN_13, DEBIAN_13,
                                    [p for p in DEBIAN_13 if p != "cmake"])
        self.assertEqual(packages, {"cmake"})

    def test_does_nothing_when_all_is_there(self):
        for release in DEBIAN_12, DEBIAN_13:
            with self.subTest(release=release):
                _, calls = self.installs(release, release, release)
                self.assertEqual(calls, [])


class FormatTest(unittest.TestCase):

    def run_with(self, version, *args):
        # Both names, so that the system's own do not count.
        body = f'echo "clang-format version {version}"'
        with System(clang_format=body, clang_format_14=body) as system:
            return system.run("format", *args)

    def test_is_skipped_with_a_reason_where_the_formatter_is_another(self):
        done = self.run_with("19.1.7", "--check")
        self.assertEqual(done.returncode, 77)
        self.assertIn("clang-format 14 is missing", done.stderr)

    def test_never_formats_with_another_formatter(self):
        done = self.run_with("19.1.7")
        self.assertEqual(done.returncode, 2)

    def test_a_formatter_that_disagrees_fails_the_check(self):
        done = self.run_with("14.0.6", "--check")
        self.assertEqual(done.returncode, 1)
        self.assertIn("run scripts/format", done.stderr)


if __name__ == "__main__":
    unittest.main()
