"""The Python package, as a person's tests use it. `synthex_clip` is its own fixture."""

import os
import re
import resource
import signal
import subprocess
import sys
import time
from fractions import Fraction
from pathlib import Path

import numpy as np
import pytest

import synthex

SAMPLES = Path(__file__).parents[3] / "Samples"


@pytest.mark.parametrize("settings", [
    {"fields": "upper", "upper": "#ff8040", "lower": (0.1, 0.2, 0.3)},
    {"top": ("#000000", "#ffffff"), "bottom": "#204060", "format": "BGRA_4444_32f"},
    {"format": "ARGB_4444_8u", "color": "#10203080", "width": 63, "height": 47},
])
def test_frames_are_those_of_the_program(synthex_clip, tmp_path, settings):
    clip = synthex_clip(**settings)
    raw = tmp_path / "frames.raw"
    rendered = clip.render(raw, native=True)
    assert rendered.frames == len(clip) == clip.frames == 10
    frames = np.fromfile(raw, clip.info.dtype).reshape(10, clip.info.height, clip.info.width, 4)
    for index, frame in enumerate(clip):
        assert np.array_equal(frame, frames[index])
    assert np.array_equal(clip[-1], frames[9])
    assert [len(part) for part in (clip[2:8:3], clip[2:8:3][1:])] == [2, 1]
    assert np.array_equal(clip[2:8:3][-1], frames[5])


def test_a_frame_is_its_own_memory_and_goes_back(synthex_clip):
    clip = synthex_clip(fields="lower", upper=(1, 0, 0), lower=(0, 0, 1))
    frame = clip[3]
    address = frame.ctypes.data
    row = frame[5]
    assert row.ctypes.data == address + 5 * frame.strides[0]
    upper, lower = synthex.Fields(frame[0::2], frame[1::2])
    assert upper.base is not None and not upper.flags.owndata
    assert tuple(lower[0, -1]) == (255, 0, 0, 255)
    del frame, upper, lower
    # A view keeps the memory, and the next frame can't have it.
    kept = clip[4]
    assert kept.ctypes.data != address
    del row, kept
    assert address in {made.ctypes.data for made in [clip[0], clip[1]]}


def test_settings_have_the_words_of_people(tmp_path):
    clip = synthex.Clip(width=720, height=576, par=Fraction(16, 15), rate=29.97, fields="upper", duration=Fraction(1001, 3000))
    info = clip.info
    assert (info.width, info.height, info.pixel_aspect, info.rate) == (720, 576, Fraction(16, 15), Fraction(30000, 1001))
    assert (info.fields, info.frames, info.duration) == ("upper", 10, Fraction(1001, 3000))
    assert synthex.Clip(rate=23.976).info.rate == Fraction(24000, 1001)
    assert synthex.Clip(rate=12.5).info.rate == Fraction(25, 2)
    clip.save(tmp_path / "a.synthex")
    again = synthex.open(tmp_path / "a.synthex")
    assert again.info == info and again.settings == clip.settings == synthex.text(clip.settings).settings
    assert Fraction(25) in synthex.rates and len(synthex.formats) == 48
    assert all(row.delivered for row in synthex.formats)


@pytest.mark.parametrize("part, fails", [
    ("none.synthex: there is no such file", lambda: synthex.open("none.synthex")),
    ("clip: ", lambda: synthex.text("{]")),
    ("clip: rate '0' is not understood; write N/D", lambda: synthex.Clip(rate=0)),
    ("size '0x1080' is not understood", lambda: synthex.Clip(width=0)),
    ("upper 'red' is not understood; write #RRGGBB", lambda: synthex.Clip(color="red")),
    ("no such folder: there is no bundle", lambda: synthex.Clip(bundle="no such folder")),
    ("There is no frame 10; the clip has frames 0 to 9", lambda: synthex.Clip(frames=10)[10]),
    ("There is no frame -11", lambda: synthex.Clip(frames=10)[-11]),
    ("There is no frame 2 in a range of 2", lambda: synthex.Clip(frames=10)[3:5][2]),
    ("The clip is progressive", lambda: synthex.Clip().fields(0)),
    ("no such folder/a.mkv: ", lambda: synthex.Clip().render("no such folder/a.mkv")),
    (r"\xff.synthex: the name is not valid UTF-8", lambda: synthex.open(b"\xff.synthex")),
    ("zero byte", lambda: synthex.open("a.synthex\0")),
    ("zero byte", lambda: synthex.Clip().render("a.mkv", codec="ffv1\0")),
    ("clip: rate 'nan' is not understood", lambda: synthex.Clip(rate=float("nan"))),
    ("clip: par '(1, 2, 3)' is not understood", lambda: synthex.Clip(par=(1, 2, 3))),
    ("jobs is -1; choose from 0 to 4294967295.", lambda: synthex.Clip().render("a.mkv", jobs=-1)),
    ("(0, 1, 2) are not the first and the last frame", lambda: synthex.Clip().render("a.mkv", frames=(0, 1, 2))),
    ("Only frames in a row", lambda: synthex.Clip().render("a.mkv", frames=slice(0, 9, 2))),
])
def test_failures_are_sentences(part, fails):
    with pytest.raises(synthex.Error) as error:
        fails()
    assert part in str(error.value)


# A sanitizer keeps what was given back.
@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="memory is not given back")
def test_failures_leave_no_memory_behind():
    def fail(times):
        for _ in range(times):
            with pytest.raises(IndexError):
                synthex.Clip(width=8, height=8, frames=1)[1]
            for bad in (lambda: synthex.text("{]"), lambda: synthex.Clip(rate=0), lambda: synthex.open("none.synthex")):
                with pytest.raises(synthex.Error):
                    bad()
        return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss

    before = fail(250)
    assert fail(2500) - before < 4096  # KiB


def test_rendering_tells_its_progress_and_ends_by_what_it_raises(synthex_clip, tmp_path):
    clip = synthex_clip(frames=300)
    told = []
    assert clip.render(tmp_path / "a.mkv", codec="ffv1", frames=range(5, 25), progress=lambda *done: told.append(done)).frames == 20
    assert told[-1] == (20, 20)
    with pytest.raises(ZeroDivisionError):
        clip.render(tmp_path / "b.mkv", progress=lambda done, total: 1 / 0)

    def interrupt(done, total):
        if done == 3:
            os.kill(os.getpid(), signal.SIGINT)
        time.sleep(0.01)

    with pytest.raises(KeyboardInterrupt):
        clip.render(tmp_path / "c.mkv", progress=interrupt)
    assert [path.name for path in tmp_path.iterdir()] == ["a.mkv"]


def test_checks_tell_a_sound_plug_in_from_none():
    checks = synthex.validate(sequences=5)
    assert len(checks) > 20 and all(check.passed for check in checks)
    [check] = synthex.validate("no such folder")
    assert not check.passed and "there is no bundle here" in check.sentence


def test_a_lossless_codec_gives_the_frames_back(synthex_clip, tmp_path):
    clip = synthex_clip(top=("#ff0000", "#0000ff"), bottom="#00ff00")
    clip.render(tmp_path / "clip.mkv", codec="ffv1")
    raw = subprocess.run(["ffmpeg", "-v", "error", "-i", tmp_path / "clip.mkv", "-f", "rawvideo", "-pix_fmt", "bgra", "-"],
                         check=True, capture_output=True).stdout
    decoded = np.frombuffer(raw, np.uint8).reshape(-1, clip.info.height, clip.info.width, 4)
    assert len(decoded) == len(clip)
    assert all(np.array_equal(frame, picture) for frame, picture in zip(clip, decoded))


def blocks(document, language):
    text = (Path(__file__).parents[3] / document).read_text()
    return re.findall(rf"^```{language}\n(.*?)^```", text, re.MULTILINE | re.DOTALL)


def run_c(code, folder):
    source = folder / "example.c"
    source.write_text(code)
    library = Path(synthex.__file__).parents[3]
    interface = Path(__file__).parents[3] / "Corvane/Bindings/C"
    subprocess.run(["cc", f"-I{interface}", "-o", folder / "example", source, f"-L{library}", "-lcorvane-engine",
                    f"-Wl,-rpath,{library}"], check=True)
    return subprocess.run([folder / "example"], check=True, capture_output=True, text=True, cwd=folder).stdout


@pytest.mark.parametrize("document", ["README.md", "Docs/Python.md", "Docs/CInterface.md"])
def test_examples_run_as_they_stand(document, tmp_path):
    scripts, programs = blocks(document, "python"), blocks(document, "c")
    assert scripts or programs
    for number, code in enumerate(scripts):
        example = tmp_path / f"test_{number}.py"
        example.write_text(code)
        runner = ["-m", "pytest", "-q", "-p", "no:cacheprovider"] if "def test_" in code else []
        subprocess.run([sys.executable, *runner, example], check=True, cwd=tmp_path)
    for code in blocks(document, "bash"):
        subprocess.run(["bash", "-e", "-c", code], check=True, cwd=tmp_path)
    assert all(run_c(code, tmp_path).startswith("720 x 576, ") for code in programs)
