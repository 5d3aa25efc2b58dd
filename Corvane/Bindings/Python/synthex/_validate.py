"""The checks that a host makes of a plug-in."""

import os
import shutil
import subprocess
from pathlib import Path
from typing import NamedTuple, Optional

from . import _words
from ._engine import Error


class Check(NamedTuple):
    """One check of a plug-in."""

    sentence: str
    """What should be so and, if it is not, why."""
    passed: bool


def _program() -> str:
    # lib/python3/dist-packages/synthex of where bin/synthex is; else the one on the path.
    installed = Path(__file__).resolve().parents[4] / "bin" / "synthex"
    found = str(installed) if installed.is_file() else shutil.which("synthex")
    if found is None:
        raise Error("The program synthex is not installed, which makes the checks; install it.")
    return found


def validate(bundle: "Optional[_words.Path]" = None, *, time_limit: float = 20,
             sequences: int = 500) -> "list[Check]":
    """Checks a plug-in as a host does, and returns all checks, passed or not.

    They are made in processes of their own: a plug-in that hangs or crashes is a check that has not passed.

    bundle: the plug-in; the one that is in use if it is not given.
    time_limit: seconds for all checks together.
    sequences: how many random sequences of requests are sent.
    Raises Error if there is nothing to check.
    """
    command = [_program(), "validate", "--time-limit", str(time_limit), "--sequences", str(sequences)]
    if bundle is not None:
        command.append(os.fsdecode(_words.path_bytes(bundle)))
    if any("\0" in word for word in command):
        raise Error("There is a zero byte in a name or a path; leave it out.")
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, errors="replace", check=False)
    lines = [line for line in done.stdout.splitlines() if line.startswith(("pass  ", "FAIL  "))]
    if not lines:
        raise Error(done.stderr.strip().removeprefix("synthex: ") or "The checks could not be made.")
    return [Check(line[6:], line.startswith("pass")) for line in lines]
