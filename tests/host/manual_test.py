#!/usr/bin/env python3
"""The manual pages and completions say what --help does, and nothing else.

manual_test.py PROGRAM SHARE: the program and the folder with what was made.
"""

import gzip
import pathlib
import re
import subprocess
import sys
import unittest

PROGRAM = sys.argv[1]
SHARE = pathlib.Path(sys.argv[2])


def text_of(*command):
    return subprocess.run(command, capture_output=True, text=True,
                          check=True).stdout


def help_of(command):
    return text_of(PROGRAM, *([command] if command else []), "--help")


def commands_of_help():
    listed = re.search(r"Subcommands:\n((?:  .*\n)+)", help_of("")).group(1)
    return [line.split()[0] for line in listed.splitlines() if line[2] != " "]


COMMANDS = commands_of_help()


def options_of_help(command):
    """All names of options, short ones too, of the list of options."""
    entries = re.findall(r"^ {2,12}(-\S+(?:, +--\S+)?)", help_of(command), re.M)
    return {re.sub(r"[\[=].*", "", name)
            for entry in entries for name in re.split(", *", entry)}


def page_of(command):
    name = "ospf-upgrade" + (f"-{command}" if command else "")
    with gzip.open(SHARE / f"man/man1/{name}.1.gz", "rt") as file:
        return file.read().replace("\\-", "-").replace("\\&", "").replace(
            "\\e", "\\")


class PageTest(unittest.TestCase):

    def test_there_is_one_for_each_command(self):
        for command in ["", *COMMANDS]:
            self.assertIn("\n.SH NAME\nospf-upgrade", page_of(command))
        names = {path.name for path in (SHARE / "man/man1").iterdir()}
        self.assertIn("run", COMMANDS)
        self.assertEqual(names, {"ospf-upgrade.1.gz"} | {
            f"ospf-upgrade-{command}.1.gz" for command in COMMANDS})

    def test_has_all_options_and_no_others(self):
        for command in ["", *COMMANDS]:
            names = re.findall(r"^\.TP\n\.B (-.*)$", page_of(command), re.M)
            options = {re.sub(r"[\[=].*", "", option) for name in names
                       for option in name.split()[0].split(",")}
            self.assertEqual(options, options_of_help(command), command)

    def test_says_the_words_of_help(self):
        for command in ["", *COMMANDS]:
            page = re.sub(r"^\.(SH|TH) .*|^\.\w+ ?", "", page_of(command),
                          flags=re.M).split()
            spoken = re.sub(r"^(Usage|[A-Z][a-z ]+):", "", help_of(command),
                            flags=re.M)
            self.assertEqual([word for word in spoken.split()
                              if word not in page], [], command)


class CompletionTest(unittest.TestCase):

    def complete(self, *words):
        script = ('. "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
                  '_ospf_upgrade; printf "%s\\n" "${COMPREPLY[@]}"')
        file = SHARE / "bash-completion/completions/ospf-upgrade"
        return set(text_of("bash", "-c", script, str(file), "ospf-upgrade",
                           *words).split())

    def test_bash_knows_all_options_and_no_others(self):
        for command in COMMANDS:
            self.assertEqual(self.complete(command, "-"),
                             options_of_help(command))

    def test_bash_knows_commands_and_values(self):
        self.assertLessEqual({*COMMANDS, *options_of_help("")},
                             self.complete(""))
        self.assertEqual(self.complete("run", "--format", ""), {"xml", "json"})
        self.assertEqual(self.complete("run", "--format", "x"), {"xml"})
        self.assertEqual(self.complete("run", "--output", ""), set())

    def test_fish_and_zsh_know_all_long_options(self):
        fish = (SHARE / "fish/vendor_completions.d/ospf-upgrade.fish").read_text()
        zsh = (SHARE / "zsh/vendor-completions/_ospf-upgrade").read_text()
        for command in COMMANDS:
            of_fish = {f"--{name}" for name in re.findall(
                rf"_from {command}'.* -l (\S+)", fish)}
            options = {name for name in options_of_help(command)
                       if name.startswith("--")}
            self.assertEqual(of_fish, options)
            of_zsh = zsh.split(f"\n  {command})\n")[1].split(";;")[0]
            self.assertEqual(
                set(re.findall(r"'(?:\([^)]*\))?(--[\w-]+)", of_zsh)), options)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
