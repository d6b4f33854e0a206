"""The examples and how to run them."""

import pathlib

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
EXAMPLES = ROOT / "examples"
RELEASES = ("before", "intermediate", "after")


def examples():
    """The file of each example and the options that it is run with: those of
    another release than `before` are in a folder that is called after it."""
    for release in RELEASES:
        folder, options = EXAMPLES, []
        if release != "before":
            folder, options = EXAMPLES / release, ["--from", release]
        for file in sorted(folder.glob("*.xml")):
            yield file, options
