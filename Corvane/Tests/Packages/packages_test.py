"""Faults sought: files that no package holds or two do, dependencies that are not told, rules of Debian that are
broken, and packages whose parts don't find each other where the system puts them."""

import os
import pathlib
import re
import subprocess

import pytest

BUILD = pathlib.Path(os.environ["SYNTHEX_BUILD_DIR"])
SOURCE = pathlib.Path(os.environ["SYNTHEX_SOURCE_DIR"])
SAMPLE = SOURCE / "Samples/pal-upper-first.synthex"
NEEDS = {
    "synthex": {"libqt6widgets6", "libavcodec59", "libzimg2"},
    "libcorvane-engine1": {"synthex"},
    "libcorvane-engine-dev": {"libcorvane-engine1"},
    "gstreamer1.0-synthex": {"libcorvane-engine1", "libgstreamer1.0-0"},
    "python3-synthex": {"libcorvane-engine1", "python3-numpy"},
}


def run(*words, **options):
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True, **options)
    assert done.returncode == 0, f"{words}: {done.stdout}{done.stderr}"
    return done.stdout


@pytest.fixture(scope="module")
def packages(tmp_path_factory):
    """All packages, by their names."""
    folder = tmp_path_factory.mktemp("packages")
    run("cpack", "--config", BUILD / "CPackConfig.cmake", "-D", f"CPACK_OUTPUT_FILE_PREFIX={folder}",
        "-B", folder / "work", cwd=folder)
    return {run("dpkg-deb", "-f", path, "Package").strip(): path for path in folder.rglob("*.deb")}


def test_dependencies_are_told(packages):
    assert packages.keys() == NEEDS.keys()
    for name, needed in NEEDS.items():
        assert needed <= set(re.findall(r"[a-z][a-z0-9.+-]+", run("dpkg-deb", "-f", packages[name], "Depends"))), name


def test_debian_finds_no_error(packages):
    found = subprocess.run(["lintian", "--allow-root", "--fail-on", "error", *packages.values()],
                           capture_output=True, text=True, check=False)
    assert found.returncode == 0, found.stdout + found.stderr
    run("appstreamcli", "validate", "--no-net", SOURCE / "Corvane/Desktop/Data/org.synthex.Synthex.metainfo.xml")


def test_what_is_unpacked_works(packages, tmp_path):
    root = tmp_path / "root"
    seen = set()
    for path in packages.values():
        files = {line.split(maxsplit=5)[5] for line in run("dpkg-deb", "-c", path).splitlines() if line[0] != "d"}
        assert not files & seen
        seen |= files
        run("dpkg-deb", "-x", path, root)
    # Nothing of the installed tree is left out. Names of links end in what they point to.
    run("cmake", "--install", BUILD, "--prefix", tmp_path / "tree/usr")
    whole = {path.relative_to(tmp_path / "tree").as_posix() for path in (tmp_path / "tree").rglob("*") if not path.is_dir()}
    held = {re.sub(r"/(x86_64|aarch64)-linux-gnu/", "/", re.sub(r" -> .*", "", name)[2:]) for name in seen}
    assert {name for name in whole if name not in held and f"{name}.gz" not in held} == set()

    lib = root / "usr/lib"
    plugins = next(lib.rglob("libgstsynthex.so")).parent
    environment = dict(os.environ, LD_LIBRARY_PATH=str(lib), PYTHONPATH=str(lib / "python3/dist-packages"),
                       GST_PLUGIN_PATH=str(plugins), GST_REGISTRY=str(tmp_path / "registry"))
    assert "720 x 576" in run(root / "usr/bin/synthex", "info", SAMPLE, env=environment)
    run(root / "usr/bin/synthex", "render", "--quiet", "--native", "--frames", "3", SAMPLE, tmp_path / "a.raw",
        env=environment)
    expected = (tmp_path / "a.raw").read_bytes()
    run("/usr/bin/python3", "-c", "import sys, synthex\nopen(sys.argv[2], 'wb').write(synthex.open(sys.argv[1])[3].tobytes())",
        SAMPLE, tmp_path / "b.raw", env=environment, cwd=tmp_path)
    assert (tmp_path / "b.raw").read_bytes() == expected
    run("gst-launch-1.0", "-q", "synthexsrc", f"location={SAMPLE}", "num-buffers=4", "!", "filesink",
        f"location={tmp_path / 'c.raw'}", env=environment)
    assert (tmp_path / "c.raw").read_bytes()[-len(expected):] == expected
