"""Faults sought: times and timecodes that mean another frame, files that are replaced without a word or kept against
one, codecs in the list that can't be used as it says."""

import json
import subprocess

import pytest

from programs import BUILD, SOURCE, run_on_terminal, synthex

PROGRAM = BUILD / "bin/synthex"
NTSC, PAL = 8475667200, 10160640000


def write_clip(path, ticks_per_frame=PAL, seconds=1):
    settings = json.loads((SOURCE / "Samples/defaults.synthex").read_text())
    settings.update(mFrameWidth=96, mFrameHeight=64, mVideoDuration={"ticks": seconds * 254016000000},
                    mVideoFrameRate={"ticksperframe": ticks_per_frame})
    path.write_text(json.dumps(settings))
    return path


@pytest.mark.parametrize("ticks, said, frames", [
    (PAL, "0:05", "0:5"), (PAL, "7-9", "7:9"),
    (PAL, "2.5s", "62"), (PAL, "0.04s", "1"), (PAL, "0:00:05", "125"), (PAL, "0:01-0:02", "25:49"),
    (PAL, "20-1.6s", "20:39"), (PAL, "0:01:00-1:00.08", "1500:1501"),
    (PAL, "00:00:01:24-00:00:02:00", "49:50"),
    (NTSC, "1s", "29"), (NTSC, "0:01-0:02", "29:59"), (NTSC, "00:00:01:00", "30"), (NTSC, "00:01:00:00", "1800"),
    (NTSC, "00:00:59;29-00:01:00;02", "1799:1800"), (NTSC, "00:10:00;00", "17982"), (NTSC, "00:11:00;02", "19782"),
])
def test_times_and_timecodes_name_frames(tmp_path, ticks, said, frames):
    clip = write_clip(tmp_path / "a.synthex", ticks, 720)
    shown = [synthex("render", clip, "-", "--format", "raw", "--frames", text, text=False).stdout
             for text in (said, frames)]
    assert shown[0] == shown[1] and len(shown[0]) > 0


@pytest.mark.parametrize("ticks, said, why", [
    (PAL, "00:00:00:25", "from 00 to 24"), (PAL, "00:00:01;02", "no semicolon"),
    (NTSC, "00:01:00;00", "a dropped number"), (NTSC, "00:00:00:30", "from 00 to 29"),
    (PAL, "2s-20", "name a later end"), (PAL, "0:01-", "FIRST:LAST"), (PAL, "1:75-2:00", "FIRST:LAST"),
    (PAL, "1;00:00:00", "FIRST:LAST"), (PAL, "1e3s", "FIRST:LAST"), (PAL, "-5", "--frames"),
    (PAL, "0:58-1:02", "choose from 0:1499"),
])
def test_times_that_are_none_are_wrong_usage(tmp_path, ticks, said, why):
    clip = write_clip(tmp_path / "a.synthex", ticks, 60)
    result = synthex("render", clip, tmp_path / "a.raw", "--frames", said)
    assert result.returncode == 2 and why in result.stderr, result.stderr
    assert not (tmp_path / "a.raw").exists()


def test_a_person_is_asked_before_a_file_is_replaced(tmp_path):
    clip, out = write_clip(tmp_path / "a.synthex"), tmp_path / "a.raw"

    def on_terminal(typed, *options, output=out):
        return run_on_terminal([PROGRAM, "render", clip, output, "--frames", "0:2", "--quiet", *options], typed)

    assert on_terminal(b"") == (0, "")
    out.write_text("old")
    for typed in b"n\n", b"\n", b"\x04":
        status, shown = on_terminal(typed)
        assert (status, out.read_text()) == (1, "old")
        assert f"{out} exists; replace it? [y/N]" in shown and "is kept; answer y" in shown
    assert on_terminal(b"y\n")[0] == 0 and out.stat().st_size > 3
    # Of pictures, those that would be written count.
    (tmp_path / "7.png").write_text("old")
    numbered = tmp_path / "%d.png"
    assert on_terminal(b"", output=numbered)[0] == 0
    assert "0.png exists; replace it?" in on_terminal(b"n\n", output=numbered)[1]
    assert on_terminal(b"", "-y", output=numbered) == (0, "")
    # Where nobody can be asked.
    for options, status, left in ([], 0, False), (["-y"], 0, False), (["-n"], 1, True), (["-y", "-n"], 2, True):
        out.write_text("old")
        assert synthex("render", clip, out, *options, stdin=subprocess.DEVNULL).returncode == status
        assert (out.stat().st_size == 3) == left, options


def test_a_new_clip_takes_the_place_of_another_if_a_person_says_so(tmp_path):
    clip = write_clip(tmp_path / "a.synthex")
    before = clip.read_text()
    new = ["new", clip, "--rate", "119.88", "--do", "frameWidthID=64"]
    for options in [], ["-n"]:
        assert synthex(*new, *options, stdin=subprocess.DEVNULL).returncode == 1
    assert run_on_terminal([PROGRAM, *new], b"n\n")[0] == 1
    assert clip.read_text() == before
    assert run_on_terminal([PROGRAM, *new], b"y\n")[0] == 0
    facts = json.loads(synthex("info", "--json", clip).stdout)
    assert (facts["width"], facts["scale"], facts["sampleSize"]) == (64, 120000, 1001)


def test_rates_are_written_with_decimals(tmp_path):
    for said, scale, size in (("29.97", 30000, 1001), ("23.976", 24000, 1001), ("23.98", 24000, 1001),
                              ("59.94", 60000, 1001), ("12.5", 25, 2), ("14.985", 15000, 1001), ("30", 30, 1)):
        clip = tmp_path / f"{said}.synthex"
        assert synthex("new", clip, "--rate", said, "--do", "frameWidthID=64").returncode == 0
        facts = json.loads(synthex("info", "--json", clip).stdout)
        assert (facts["scale"], facts["sampleSize"]) == (scale, size), said


def test_several_clips_go_into_a_folder(tmp_path):
    clips = [write_clip(tmp_path / f"{name}.synthex") for name in "ab"]
    folder = tmp_path / "made/here"
    bad = tmp_path / "bad.synthex"
    bad.write_text("{")
    result = synthex("render", *clips, bad, "--out-dir", folder, "--format", "mkv", "--codec", "ffv1")
    assert result.returncode == 1 and str(bad) in result.stderr
    assert sorted(path.name for path in folder.iterdir()) == ["a.mkv", "b.mkv"]
    assert synthex("render", *clips, "--out-dir", folder, "--format", "png", "--frames", "0:1").returncode == 0
    assert len(list(folder.glob("[ab].0000[01].png"))) == 4
    (tmp_path / "c").mkdir()
    twin = write_clip(tmp_path / "c/a.synthex")
    for arguments in [clips[0], twin, "--out-dir", folder, "--format", "raw"], [*clips, "--out-dir", folder], \
            [*clips, tmp_path / "x.raw"], [clips[0]]:
        assert synthex("render", *arguments).returncode == 2, arguments


def test_codecs_can_be_used_as_the_list_says(tmp_path):
    clip = write_clip(tmp_path / "a.synthex")
    codecs = [json.loads(line) for line in synthex("codecs", "--json").stdout.splitlines()]
    text = synthex("codecs").stdout
    names = {}
    for codec in codecs:
        out = tmp_path / f"{codec['name']}.{codec['format']}"
        made = synthex("render", clip, out, "--codec", codec["example"], "--frames", "0")
        assert made.returncode == 0, made.stderr
        probe = ["ffprobe", "-v", "error", "-show_entries", "stream=codec_name,pix_fmt", "-of", "csv=p=0", out]
        names[codec["name"]] = subprocess.run(probe, capture_output=True, text=True, check=True).stdout.strip()
        assert codec["example"] in text and all(option in text for option in codec["options"])
    assert names == {"h264": "h264,yuv420p", "prores": "prores,yuva444p12le", "v210": "v210,yuv422p10le",
                     "ffv1": "ffv1,bgra", "hevc": "hevc,yuv420p10le", "h265": "hevc,yuv420p", "av1": "av1,yuv420p",
                     "exr": "exr,gbrapf32le", "dpx": "dpx,gbrp12le", "tiff": "tiff,rgba"}
