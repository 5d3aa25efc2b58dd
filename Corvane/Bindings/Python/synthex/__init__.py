"""Clips of the Synthex plug-in: every frame is made of a few settings, exact to the byte.

    import synthex

    clip = synthex.open("bars.synthex")
    clip = synthex.Clip(width=720, height=576, rate=25, fields="upper", color="#ff8040")
    frame = clip[42]                                # a NumPy array (rows, columns, 4)
    clip.render("bars.mkv", codec="ffv1")

Everything that fails raises `synthex.Error` with one sentence that names the file and the remedy. Clips may be used by
many threads at once.
"""

from ._clip import Clip, Fields, FrameIndexError, FrameRange, Info, Rendered, open, text
from ._engine import Error
from ._formats import PixelFormat, all_formats, rates
from ._validate import Check, validate

formats: tuple[PixelFormat, ...]
"""All pixel formats, in the host's order."""

__all__ = [
    "Check", "Clip", "Error", "Fields", "FrameIndexError", "FrameRange", "Info", "PixelFormat", "Rendered",
    "formats", "open", "rates", "text", "validate",
]


def __getattr__(name: str) -> tuple[PixelFormat, ...]:
    # They ask the plug-in: a package without one can be imported all the same.
    if name == "formats":
        return all_formats()
    raise AttributeError(f"module 'synthex' has no attribute '{name}'")
