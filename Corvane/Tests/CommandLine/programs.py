"""Runs the program, and others, as people do."""

import os
import pathlib
import pty
import subprocess

BUILD = pathlib.Path(os.environ["SYNTHEX_BUILD_DIR"])
SOURCE = pathlib.Path(os.environ["SYNTHEX_SOURCE_DIR"])


def synthex(*arguments, **options):
    options = {"capture_output": True, "text": True, "timeout": 60, **options}
    return subprocess.run([BUILD / "bin/synthex", *arguments], **options)


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, timeout=60, check=True, **options).stdout


def run_on_terminal(command, typed, **options):
    """The exit status of a program whose input and output are a terminal, and what it writes."""
    parent, child = pty.openpty()
    process = subprocess.Popen(command, stdin=child, stdout=child, stderr=child, start_new_session=True, **options)
    os.close(child)
    os.write(parent, typed)
    shown = b""
    try:
        while part := os.read(parent, 4096):
            shown += part
    except OSError:  # the terminal's end once nobody has it open
        pass
    os.close(parent)
    return process.wait(60), shown.decode()
