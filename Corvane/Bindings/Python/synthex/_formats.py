"""What a pixel is, and which rates the host names."""

import functools
from fractions import Fraction
from typing import NamedTuple, Optional

import numpy as np
import numpy.typing as npt

from . import _engine

_COLORS = ("rgb", "rgb-linear", "ycbcr-601", "ycbcr-709")
_ALPHAS = ("straight", "premultiplied", "ignored")


class PixelFormat(NamedTuple):
    """A pixel format of the host."""

    name: str
    """Such as "BGRA_4444_8u"."""
    code: int
    """The host's code of four characters, as a number."""
    components: str
    """Letters in the order of the last axis of a frame: "BGRA", "VUYA"; X if it is ignored. "" if no frames come so."""
    dtype: "npt.DTypeLike"
    """Of frames: uint8 (0 to 255) or float32 (0 to 1)."""
    color: str
    """"rgb", "rgb-linear", "ycbcr-601" or "ycbcr-709"."""
    alpha: str
    """"straight", "premultiplied" or "ignored"."""
    delivered: str
    """The name of the format in which frames of such clips come; "" if they can't be made."""


@functools.cache
def all_formats() -> "tuple[PixelFormat, ...]":
    """All pixel formats, in the host's order."""
    rows = _engine.formats(None)
    names = {row[0]: row[1] for row in rows}
    return tuple(
        PixelFormat(name, code, letters, np.dtype(np.float32 if size == 4 else np.uint8), _COLORS[color], _ALPHAS[alpha],
                    names.get(delivered, ""))
        for code, name, letters, size, color, alpha, delivered in rows)



def format_of(code: int) -> Optional[PixelFormat]:
    """The format of a code; None if there is none."""
    return next((row for row in all_formats() if row.code == code), None)


rates = tuple(Fraction(numerator, denominator) for numerator, denominator in _engine.rates())
"""The frame rates that the host names, the slowest first. Clips may have any rate whose frames last whole ticks."""
