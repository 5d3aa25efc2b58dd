"""The GStreamer plug-in as its own tools see it."""

import signal
import subprocess

import pytest

import synthex


@pytest.mark.parametrize("name, parts", [
    ("synthex", ["application/vnd.synthex.settings+json: synthex", "synthexdec: ", "synthexsrc: ", "3 features"]),
    ("synthexsrc", ["Rank                     none", "Source/Video", "SRC template: 'src'", "RGBA64_LE", "  location  ",
                    "  settings  ", "  bundle  ", "  is-live  ", "  num-buffers  "]),
    ("synthexdec", ["Rank                     primary", "Codec/Demuxer", "Availability: Sometimes",
                    "application/vnd.synthex.settings+json"]),
])
def test_they_describe_it(name, parts):
    done = subprocess.run(["gst-inspect-1.0", name], check=True, capture_output=True, text=True)
    assert not done.stderr
    assert not [part for part in parts if part not in done.stdout]


@pytest.mark.parametrize("source", ["synthexsrc location={}", "uridecodebin uri=file://{}"])
def test_a_pipeline_that_is_ended_leaves_a_whole_file(tmp_path, source):
    clip, movie = tmp_path / "long.synthex", tmp_path / "a.mkv"
    synthex.Clip(width=64, height=48, rate=25, fields="upper", upper="#ff8040", duration=2000).save(clip)
    command = f"gst-launch-1.0 -e {source.format(clip)} ! videoconvert ! jpegenc ! matroskamux ! filesink location={movie}"
    pipeline = subprocess.Popen(command.split(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    try:
        while not (movie.exists() and movie.stat().st_size > 100000):
            assert pipeline.poll() is None
        pipeline.send_signal(signal.SIGINT)
        said, _ = pipeline.communicate(timeout=30)
    finally:
        pipeline.kill()
    assert pipeline.returncode == 0 and "EOS received" in said, said
    subprocess.run(["ffmpeg", "-v", "error", "-xerror", "-i", movie, "-f", "null", "-"], check=True)
