#!/usr/bin/env python3
"""Writes the changelog of a Debian package from what CHANGELOG.md says of its version.

usage: changelog.py CHANGELOG.md PACKAGE VERSION CONTACT OUT.gz

The day is that of the section's heading, "## VERSION, YYYY-MM-DD"; of a version that is not released, the first day
of Unix time, so that equal trees make equal packages.
"""

import datetime
import email.utils
import gzip
import pathlib
import re
import sys
import textwrap


def main():
    source, package, version, contact, out = sys.argv[1:]
    heading = re.compile(rf"^## {re.escape(version)}, (unreleased|\d{{4}}-\d\d-\d\d)$", re.MULTILINE)
    text = pathlib.Path(source).read_text()
    found = heading.search(text)
    if not found:
        sys.exit(f"{source}: there is no section '## {version}, YYYY-MM-DD' or '## {version}, unreleased'; write it")
    section = text[found.end():].split("\n## ")[0]
    day = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
    if found[1] != "unreleased":
        day = datetime.datetime.fromisoformat(found[1] + "T12:00:00+00:00")
    lines = [f"{package} ({version}) unstable; urgency=medium", ""]
    for item in re.split(r"\n- ", "\n" + section.strip())[1:]:
        plain = " ".join(item.replace("`", "").split())
        lines += textwrap.wrap(plain, 76, initial_indent="  * ", subsequent_indent="    ", break_on_hyphens=False)
    lines += ["", f" -- {contact}  {email.utils.format_datetime(day)}", ""]
    pathlib.Path(out).write_bytes(gzip.compress("\n".join(lines).encode(), 9, mtime=0))


if __name__ == "__main__":
    main()
