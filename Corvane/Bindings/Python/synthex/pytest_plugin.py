"""Gives tests the fixture `synthex_clip`. Known to pytest when the package is installed."""

from typing import Any, Callable

import pytest

from . import Clip


@pytest.fixture
def synthex_clip(request: "pytest.FixtureRequest") -> Callable[..., Clip]:
    """Makes clips: `synthex_clip(width=720, height=576, fields="upper")` takes what `synthex.Clip` does.

    They are called by the test's name in sentences, and have 64 x 48 pixels and 10 frames unless they are told others.
    """

    def make(**settings: Any) -> Clip:
        usual: "dict[str, Any]" = {"name": request.node.name, "width": 64, "height": 48}
        if "duration" not in settings:
            usual["frames"] = 10
        return Clip(**{**usual, **settings})

    return make
