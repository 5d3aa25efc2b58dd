"""Clips and their frames."""

import operator
from collections.abc import Callable, Iterator, Sequence
from fractions import Fraction
from typing import Any, NamedTuple, Optional, Union, overload

import numpy as np
import numpy.typing as npt

from . import _engine
from ._formats import format_of
from ._words import (Color, Number, Path, aspect_word, color_word, duration_word, optional_path, optional_text, pair, path_bytes,
                     rate_word, text_bytes)

Frame = npt.NDArray[Any]

_FIELDS = ("progressive", "upper", "lower", "interlaced")
_TICKS = 254016000000


class FrameIndexError(_engine.Error, IndexError):
    """There is no frame of that index; also an IndexError, as of a list."""


class Info(NamedTuple):
    """What a clip is."""

    width: int
    """Pixels."""
    height: int
    """Rows."""
    pixel_aspect: Optional[Fraction]
    """Width of a pixel over its height; None if there is none."""
    rate: Optional[Fraction]
    """Frames a second; None if there is none."""
    fields: str
    """"progressive", "upper" or "lower" (the field that comes first), "interlaced" if nobody says which."""
    format: str
    """The pixel format that the settings name."""
    delivered_format: str
    """The one in which frames come; "" if none can be made."""
    components: str
    """Letters in the order of a frame's last axis: "BGRA", "VUYA"."""
    dtype: Optional["np.dtype[Any]"]
    """Of frames: uint8 or float32."""
    frames: int
    """Whole frames; 0 if there are none."""
    duration: Fraction
    """Seconds, exact."""


class Fields(NamedTuple):
    """The fields of an interlaced frame: views of every other row."""

    upper: Frame
    """The even rows, counted from 0: (rows / 2, columns, 4)."""
    lower: Frame
    """The odd rows."""


class Rendered(NamedTuple):
    """What was rendered."""

    frames: int
    bytes: int
    """Of all files together."""
    loses_alpha: bool
    """Whether the clip is not opaque and the output has no place for its alpha."""


def _ratio(numerator: int, denominator: int) -> Optional[Fraction]:
    return Fraction(numerator, denominator) if numerator and denominator else None


def _count(name: str, value: int, bits: int) -> int:
    if not 0 <= operator.index(value) < 2**bits:
        raise _engine.Error(f"{name} is {value}; choose from 0 to {2**bits - 1}.")
    return value


class FrameRange(Sequence[Frame]):
    """Some frames of a clip: made when they are asked for, and not kept."""

    def __init__(self, clip: "Clip", indices: range) -> None:
        self._clip = clip
        self.indices = indices
        """Of the frames in the clip."""

    def __len__(self) -> int:
        return len(self.indices)

    @overload
    def __getitem__(self, index: int) -> Frame: ...
    @overload
    def __getitem__(self, index: slice) -> "FrameRange": ...
    def __getitem__(self, index: Union[int, slice]) -> "Union[Frame, FrameRange]":
        if isinstance(index, slice):
            return FrameRange(self._clip, self.indices[index])
        try:
            inside = self.indices[index]
        except IndexError:
            raise FrameIndexError(f"There is no frame {index} in a range of {len(self)}.") from None
        return self._clip[inside]


class Clip(Sequence[Frame]):
    """A clip: a sequence of frames, each made when it is asked for.

    What is not given: 1920 x 1080 square pixels, 30 frames a second, 10 seconds, progressive, "BGRA_4444_8u", opaque
    black.

    width, height: pixels.
    par: the pixel aspect ratio, width of a pixel over its height: Fraction(16, 15), (16, 15) or "16:15".
    rate: frames a second: 25, Fraction(30000, 1001), "30000/1001", 29.97.
    fields: "progressive", "upper" or "lower", the field that comes first.
    format: a name of `synthex.formats`.
    color: of the whole frame; "#rrggbb", "#rrggbbaa", or numbers from 0 to 1: red, green, blue and perhaps alpha.
    upper, lower: colors of the fields of an interlaced clip. The upper field is the even rows.
    top, bottom: colors of a gradient; a tuple of two colors for the start and the end of the clip.
    frames or duration: the length, as a number of frames, or in seconds.
    name: what to call the clip in sentences.
    bundle: the plug-in; the installed one if it is not given.
    Raises Error, which says what can be written, if one is not understood.
    """

    def __init__(self, *, width: Optional[int] = None, height: Optional[int] = None,
                 par: Union[Number, tuple[int, int], None] = None, rate: Optional[Number] = None,
                 fields: Optional[str] = None, format: Optional[str] = None, color: Optional[Color] = None,
                 upper: Optional[Color] = None, lower: Optional[Color] = None,
                 top: Union[Color, tuple[Color, Color], None] = None,
                 bottom: Union[Color, tuple[Color, Color], None] = None, frames: Optional[int] = None,
                 duration: Optional[Number] = None, name: str = "clip", bundle: Optional[Path] = None) -> None:
        words: list[tuple[bytes, bytes]] = []

        def add(setting: str, value: object) -> None:
            words.append((setting.encode(), text_bytes(str(value))))

        if width is not None or height is not None:
            add("size", f"{1920 if width is None else width}x{1080 if height is None else height}")
        if par is not None:
            add("par", aspect_word(par))
        if rate is not None:
            add("rate", rate_word(rate))
        if fields is not None:
            add("fields", fields)
        if format is not None:
            add("format", format)
        for field, own in (("upper", upper), ("lower", lower)):
            if own is not None or color is not None:
                add(field, color_word(own if own is not None else color or ""))
        for edge, colors in (("top", top), ("bottom", bottom)):
            if colors is not None:
                start, end = pair(colors)
                add(edge + "-start", color_word(start))
                add(edge + "-end", color_word(end))
        if duration is not None:
            add("duration", duration_word(duration))
        if frames is not None:
            add("frames", frames)
        self._take(_engine.Clip.create(text_bytes(name), words, optional_path(bundle)))

    def _take(self, handle: _engine.Clip) -> "Clip":
        self._clip = handle
        facts = handle.info()
        delivered = format_of(facts["delivered_format"])
        asked = format_of(facts["format"])
        self._info = Info(
            width=facts["width"], height=facts["height"], pixel_aspect=_ratio(*facts["pixel_aspect"]),
            rate=_ratio(*facts["rate"]), fields=_FIELDS[facts["fields"]],
            format=asked.name if asked else f"0x{facts['format']:08X}",
            delivered_format=delivered.name if delivered else "",
            components=delivered.components if delivered else "",
            dtype=np.dtype(delivered.dtype) if delivered else None, frames=facts["frames"],
            duration=Fraction(max(facts["duration_ticks"], 0), _TICKS))
        return self

    @property
    def info(self) -> Info:
        """What the clip is."""
        return self._info

    @property
    def frames(self) -> int:
        """How many frames the clip has; `len(clip)` is the same."""
        return self._info.frames

    @property
    def settings(self) -> str:
        """The text of its settings file, which is JSON."""
        return self._clip.settings()

    def __len__(self) -> int:
        return self._info.frames

    def __repr__(self) -> str:
        info = self._info
        return (f"<synthex.Clip {info.width} x {info.height}, {info.rate} fps, {info.fields}, {info.format}, "
                f"{info.frames} frames>")

    @overload
    def __getitem__(self, index: int) -> Frame: ...
    @overload
    def __getitem__(self, index: slice) -> FrameRange: ...
    def __getitem__(self, index: Union[int, slice]) -> Union[Frame, FrameRange]:
        """Frame `index`, counted from 0, or from the end if it is negative: (rows, columns, 4), uint8 or float32.

        The array is the memory in which the plug-in made the frame; it goes back to the pool when the last view of it
        dies. A slice is a FrameRange.
        """
        if isinstance(index, slice):
            return FrameRange(self, range(len(self))[index])
        position = operator.index(index)
        inside = position + len(self) if position < 0 else position
        if not 0 <= inside < len(self):
            last = f"the clip has frames 0 to {len(self) - 1}" if len(self) else "the clip has none"
            raise FrameIndexError(f"There is no frame {position}; {last}.")
        return self._clip.frame(inside)

    def __iter__(self) -> Iterator[Frame]:
        return (self._clip.frame(index) for index in range(len(self)))

    # A clip holds every frame that it can make: comparing all of them is nothing to do by accident.
    __contains__ = None  # type: ignore[assignment]

    def fields(self, index: int) -> Fields:
        """The two fields of a frame, as views of its rows. Raises Error if the clip is progressive."""
        if self._info.fields == "progressive":
            raise _engine.Error("The clip is progressive and has no fields.")
        frame = self[index]
        return Fields(frame[0::2], frame[1::2])

    def save(self, path: Path) -> None:
        """Writes the settings file, which replaces an older file whole."""
        self._clip.save(path_bytes(path))

    def render(self, path: Path, *, codec: Optional[str] = None, format: Optional[str] = None,
               frames: Union[range, slice, tuple[int, int], None] = None, native: bool = False, jobs: int = 0,
               memory: int = 0, progress: Optional[Callable[[int, int], object]] = None) -> Rendered:
        """Renders the clip into a file, which gets its name when it is complete.

        path: the file; "name.%05d.png" is a series of pictures.
        codec, format: as `--codec` and `--format` of `synthex render`; by the suffix if they are not given.
        frames: a range or slice of step 1, or a tuple of the first and the last frame, both included.
        native: only for raw files: the bytes as the plug-in made them.
        jobs, memory: how many threads, and bytes that frames may take; 0 is as many as are of use.
        progress: called with the frames that are done and their total. What it raises ends the rendering.

        Other threads go on meanwhile. Nothing is left behind if it fails, or if Ctrl-C ends it.
        """
        done = self._clip.render(path_bytes(path), optional_text(format), optional_text(codec), self._first_and_last(frames),
                                 bool(native), _count("jobs", jobs, 32), _count("memory", memory, 64), progress)
        return Rendered(*done)

    def _first_and_last(self, frames: Union[range, slice, tuple[int, int], None]) -> Optional[tuple[int, int]]:
        if frames is None:
            return None
        if isinstance(frames, tuple):
            if len(frames) != 2 or not all(-2**63 <= index < 2**63 for index in frames):
                raise _engine.Error(f"{frames} are not the first and the last frame of some in the clip.")
            return frames
        indices = range(len(self))[frames] if isinstance(frames, slice) else frames
        if not isinstance(indices, range):
            raise TypeError("frames must be a range, a slice or a tuple of two")
        if indices.step != 1 or len(indices) == 0:
            raise _engine.Error("Only frames in a row can be rendered, and one at least.")
        return indices[0], indices[-1]


def _clip_of(handle: _engine.Clip) -> Clip:
    return Clip.__new__(Clip)._take(handle)


def open(path: Path, *, bundle: Optional[Path] = None) -> Clip:
    """Opens a settings file. Raises Error if it can't be read or holds no settings."""
    return _clip_of(_engine.Clip.open(path_bytes(path), optional_path(bundle)))


def text(settings: str, *, name: str = "clip", bundle: Optional[Path] = None) -> Clip:
    """Opens a clip of a settings text. Raises Error if the text is no settings."""
    return _clip_of(_engine.Clip.text(text_bytes(name), text_bytes(settings), optional_path(bundle)))
