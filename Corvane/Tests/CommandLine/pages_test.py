"""Faults sought: manual pages that groff warns of, that lack an option or that whatis can't list; completion that
offers wrong words, or that the shells themselves don't take."""

import os
import re
import subprocess

import pytest

from programs import BUILD, run, run_on_terminal

SHARE = BUILD / "share"
# What is typed, what must be offered, and what must not.
ROWS = [
    ("synthex re", {"render"}, {"info", "make-checks"}),
    ("synthex info --", {"--json", "--strict", "--bundle", "--help"}, {"--codec"}),
    ("synthex render clip.synthex a.mov --co", {"--codec"}, {"--frames"}),
    ("synthex render --codec ", {"h264", "prores", "ffv1"}, {"png", "clip.synthex"}),
    ("synthex render --format p", {"png"}, {"mp4", "prores"}),
    ("synthex new a.synthex --rate 3", {"30", "30000/1001"}, {"25"}),
    ("synthex render --frames 0:9 cl", {"clip.synthex"}, {"clip.txt"}),
    ("synthex compare clip.synthex cl", {"clip.txt", "clip.synthex"}, set()),
    ("synthex desktop cl", {"clip.synthex", "clip.cvproj"}, {"clip.txt"}),
    ("synthex sweep clip.synthex --vary ra", {"rate="}, {"size="}),
    ("synthex compare --ignore frames.m", {"frames.missing"}, {"frames.order"}),
    ("synthex schema ", {"clip", "project", "sweep"}, {"clip.txt"}),
]


@pytest.fixture
def folder(tmp_path):
    for name in "clip.synthex", "clip.cvproj", "clip.txt", "a b.synthex":
        (tmp_path / name).touch()
    return tmp_path


def test_manual_pages_are_right_and_whole():
    subcommands = re.findall(r"^  ([a-z]+) {2,}", run(BUILD / "bin/synthex", "--help"), re.M)
    assert len(subcommands) >= 10
    pages = {path.name: path for path in SHARE.glob("man/man?/*")}
    assert set(pages) == {"synthex.1", "synthex.5"} | {f"synthex-{name}.1" for name in subcommands}
    for name, path in pages.items():
        result = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", path], capture_output=True, text=True,
                                timeout=60, check=True, env={**os.environ, "MANWIDTH": "80"})
        assert result.stderr == "", name
        assert f'"{path.stem} - ' in run("lexgrog", path)
        if name.endswith(".5"):
            assert "1634887522" in result.stdout and "ticksperframe" in result.stdout
            continue
        told = run(BUILD / "bin/synthex", *path.stem.split("-")[1:], "--help")
        options = re.findall(r"(?<=[ ,])--[a-z][a-z0-9-]*", told.split("Options:")[1].split("Examples:")[0])
        assert options and all(option in result.stdout for option in options), name
        for section in "SYNOPSIS", "OPTIONS", "EXAMPLES", "EXIT STATUS", "SEE ALSO":
            assert f"\n{section}\n" in result.stdout, (name, section)


def check(line, offered):
    for typed, needed, wrong in ROWS:
        if typed == line:
            assert needed <= offered and not offered & wrong, (line, offered)


def test_bash(folder):
    script = SHARE / "bash-completion/completions/synthex"
    listing = f"""source {script}; compopt() {{ :; }}
        while IFS= read -r COMP_LINE; do
            COMP_POINT=${{#COMP_LINE}}; _synthex; echo "${{COMPREPLY[*]}}"
        done"""
    lines = run("bash", "--norc", "-c", listing, cwd=folder, input="".join(line + "\n" for line, *_ in ROWS))
    for (line, *_), offered in zip(ROWS, lines.splitlines(), strict=True):
        check(line, set(offered.split(" ")))
    # And by its line editor, which has its own mind about colons, equals signs and spaces.
    rc = folder / "rc"
    rc.write_text(f"PS1=; source {script}\nsynthex() {{ printf '<%s>' \"$@\"; exit; }}\n")
    typed = b"synthex ren\t --fram\t 0:9 --codec=pro\t a\t --vary\t\n"
    _, shown = run_on_terminal(["bash", "--rcfile", rc, "-i"], typed, cwd=folder)
    assert "<render><--frames><0:9><--codec=prores><a b.synthex><--vary>" in shown, shown


def test_zsh(folder):
    (folder / ".zshrc").write_text(f"""
fpath=({SHARE}/zsh/site-functions $fpath)
autoload -Uz compinit
compinit -u -D
compadd() {{
    local -a found
    if [[ ${{@[1,(i)(-|--)]}} != *-(O|A|D)\\ * ]]; then
        builtin compadd -O found "$@"
        print -rn -- "$found " >> {folder}/found
    fi
    builtin compadd "$@"
}}
zle-line-init() {{
    while IFS= read -r line; do
        BUFFER=$line CURSOR=$#line
        zle list-choices
        print >> {folder}/found
    done < {folder}/lines
    exit 0
}}
zle -N zle-line-init
LISTMAX=10000
""")
    (folder / "lines").write_text("".join(line + "\n" for line, *_ in ROWS))
    run_on_terminal(["zsh", "-d", "-i"], b"", cwd=folder, env={**os.environ, "ZDOTDIR": str(folder), "TERM": "xterm"})
    for (line, *_), offered in zip(ROWS, (folder / "found").read_text().splitlines(), strict=True):
        check(line, set(offered.split(" ")))


def test_fish(folder):
    script = f"source {SHARE}/fish/vendor_completions.d/synthex.fish\n" + "".join(
        f"complete -C '{line}'; echo; echo\n" for line, *_ in ROWS)
    home = {**os.environ, "HOME": str(folder), "XDG_CONFIG_HOME": str(folder), "XDG_DATA_HOME": str(folder)}
    *blocks, _ = run("fish", "--no-config", "-c", script, cwd=folder, env=home).split("\n\n")
    for (line, *_), block in zip(ROWS, blocks, strict=True):
        check(line, {offer.split("\t")[0] for offer in block.splitlines()})
