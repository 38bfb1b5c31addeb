"""The simulated world, and a pytest fixture that gives each test an empty world with simulated time.

To use the fixture `simulated_world`, a test module sets `pytest_plugins = ["quelvixwinlib.simulated"]`.
"""
import ctypes
import json
import os
import tempfile
from typing import Any, Dict, Iterator, Optional

from .errors import OrvError
from .library import Library, use

try:
    import pytest
except ImportError:  # World works without pytest
    pytest = None  # type: ignore[assignment]


class World:
    """The simulated world: radios and devices. quelvixwinlib_simulated.h describes its functions."""

    def __init__(self, library: Optional[Library] = None) -> None:
        self.library = library or Library("simulated")

    def reset(self, simulated_time: bool = True) -> None:
        """Creates an empty world with a radio that is on."""
        self.play({"title": "Empty"}, simulated_time)

    def play(self, scenario: Dict[str, Any], simulated_time: bool = True) -> None:
        """Creates the world of a scenario; use `json.load` to read a scenario file."""
        error = ctypes.create_string_buffer(400)
        file, path = tempfile.mkstemp(".json")
        try:
            with os.fdopen(file, "w", encoding="utf-8") as stream:
                json.dump(scenario, stream)
            if self.call("OrvWorld_PlayScenario", os.fsencode(path), int(simulated_time), error,
                         len(error)) < 0:
                raise OrvError("the scenario is wrong: " + error.value.decode())
        finally:
            os.unlink(path)

    def pass_time(self, seconds: float) -> None:
        """Advances the clock by `seconds` and handles all due events."""
        self.call("OrvWorld_PassTime", round(seconds * 1000))

    def now(self) -> float:
        """Returns the time on the world's clock, in seconds since the world's creation."""
        result: float = self.call("OrvWorld_Now") / 1000
        return result

    def call(self, name: str, *arguments: Any) -> Any:
        """Calls any OrvWorld_ function. Pass addresses as numbers and texts as UTF-8 bytes."""
        return self.library.call(name, *arguments)


if pytest is not None:
    @pytest.fixture
    def simulated_world() -> Iterator[World]:
        """An empty world with simulated time, which `scan` and `connect` use during the test."""
        world = World()
        use(world.library)
        world.reset()
        yield world
        world.library.disable_log()
        for address in list(world.library.open_addresses):  # streams that the test left open
            world.call("OrvDevice_Disconnect", address)
        world.call("OrvWorld_Default")
