"""What people write, as the engine takes it: settings become words, and it is the engine that says which it understands."""

import os
from collections.abc import Callable, Sequence
from fractions import Fraction
from typing import Any, Optional, Union

from ._engine import Error

Path = Union[str, bytes, "os.PathLike[str]"]
Color = Union[str, Sequence[float]]
Number = Union[int, float, Fraction, str]


def path_bytes(path: Path) -> bytes:
    try:
        return os.fsencode(path)
    except UnicodeError:
        raise Error(f"{path!r} is no path.") from None


def text_bytes(text: str) -> bytes:
    """What is no text in it is left to the engine, which refuses it."""
    return str.encode(text, "utf-8", "surrogatepass")


def optional_path(path: Optional[Path]) -> Optional[bytes]:
    return None if path is None else path_bytes(path)


def optional_text(text: Optional[str]) -> Optional[bytes]:
    return None if text is None else text_bytes(text)


def _word(make: Callable[[Any], str], value: object) -> str:
    """Of a value that is no number, such as NaN, the word is what it is called."""
    try:
        return make(value)
    except (ValueError, OverflowError):
        return str(value)


def _rate(rate: float) -> str:
    """29.97 and 23.976 are what people call 30000/1001 and 24000/1001."""
    television = Fraction(round(rate * 1.001) * 1000, 1001)
    return str(television if abs(television - rate) < 0.004 else Fraction(rate).limit_denominator(1000))


def rate_word(rate: Number) -> str:
    return _word(_rate, rate) if isinstance(rate, float) else str(rate)


def _aspect(aspect: Any) -> str:
    numerator, denominator = aspect if isinstance(aspect, tuple) else Fraction(aspect).as_integer_ratio()
    return f"{numerator}:{denominator}"


def aspect_word(aspect: Union[Number, tuple[int, int]]) -> str:
    return aspect if isinstance(aspect, str) else _word(_aspect, aspect)


def color_word(color: Color) -> str:
    return color if isinstance(color, str) else _word(lambda parts: ":".join(repr(float(part)) for part in parts), color)


def duration_word(duration: Number) -> str:
    def seconds(number: Any) -> str:
        return "{}/{}".format(*Fraction(str(number)).as_integer_ratio())

    return duration if isinstance(duration, str) else _word(seconds, duration)


def pair(colors: Union[Color, tuple[Color, Color]]) -> tuple[Color, Color]:
    """Start and end of a color that may be the same all the time."""
    if not isinstance(colors, str) and len(colors) == 2:
        return colors[0], colors[1]  # type: ignore[return-value]
    return colors, colors  # type: ignore[return-value]
