"""Loads the native library, calls its functions, and turns failures into exceptions."""
import ctypes
import os
import pathlib
import sys
import threading
import time
from typing import Any, List, Optional, Set

from . import _native
from .errors import OrvError, OrvTimeout

_NAME = "quelvixwinlib.dll" if sys.platform == "win32" else "libquelvixwinlib.so"
_LIMIT = 2.0  # seconds after which the library stops waiting for a system operation


class Library:
    """One native library: flavour `radio` uses the system's Bluetooth, `simulated` a simulated world."""

    def __init__(self, flavour: str = "radio", path: Optional[str] = None) -> None:
        file = path or os.environ.get("QUELVIXWINLIB") or str(
            pathlib.Path(__file__).with_name("native") / flavour / _NAME)
        if not os.path.exists(file):
            raise OrvError("the %s library is not in this package: %s. Use the simulated one, or set "
                           "QUELVIXWINLIB to the path of a library." % (flavour, file))
        self._native = ctypes.CDLL(os.path.abspath(file))
        self.log_path = os.path.abspath(file) + ".log"
        self.open_addresses: Set[int] = set()
        self.lock = threading.Lock()
        self._logging = False
        for name, (result, arguments) in _native.FUNCTIONS.items():
            function = getattr(self._native, name, None)  # the library for a radio lacks the OrvWorld_ functions
            if function is not None:
                function.restype, function.argtypes = result, arguments
        self.simulated = hasattr(self._native, "OrvWorld_PassTime")

    def call(self, name: str, *arguments: Any) -> Any:
        """Calls a function of the C header and returns its result."""
        return getattr(self._native, name)(*arguments)

    def check(self, action: str, name: str, *arguments: Any) -> int:
        """Like `call`, but raises an error that states why `action` failed."""
        start, end_of_log = self.now(), self._log_size()
        result: int = self.call(name, *arguments)
        if result != _native.ORV_FAILED:
            return result
        log = self._log_since(end_of_log)
        if any("\tException: " in line for line in log):
            raise OrvError("cannot %s: the system reported an error" % action, "error", log)
        if self.now() - start >= _LIMIT:
            raise OrvTimeout("cannot %s: no answer within %g s" % (action, _LIMIT), log)
        raise OrvError("cannot %s: the device or the system rejected it" % action, "rejected", log)

    def available(self) -> bool:
        """Returns whether a Bluetooth radio is on."""
        return bool(self.call("BluetoothAvailable") != _native.ORV_FAILED)

    def _clock_is_simulated(self) -> bool:
        return self.simulated and bool(self.call("OrvWorld_TimeIsSimulated"))

    def now(self) -> float:
        """Returns the time in seconds on the clock that the timeouts use."""
        if self._clock_is_simulated():
            return float(self.call("OrvWorld_Now")) / 1000
        return time.monotonic()

    def sleep(self, seconds: float) -> None:
        """Waits on the clock that `now` reads; simulated seconds take no real time."""
        if self._clock_is_simulated():
            self.call("OrvWorld_PassTime", max(1, round(seconds * 1000)))
        else:
            time.sleep(seconds)

    def enable_log(self) -> str:
        """Empties and enables the log. Returns its path."""
        self.check("write the log " + self.log_path, "Logging_Enable")
        self._logging = True
        return self.log_path

    def disable_log(self) -> None:
        """Disables the log and keeps its file."""
        self._logging = False
        self.call("Logging_Disable")

    def log(self, text: str) -> None:
        """Appends a line to the log if it is enabled."""
        line = text.encode()
        self.call("Logging_AppendLine", line, len(line))

    def _log_size(self) -> int:
        try:
            return os.path.getsize(self.log_path) if self._logging else 0
        except OSError:  # the log was moved away
            return 0

    def _log_since(self, offset: int) -> List[str]:
        if not self._logging:
            return []
        try:
            with open(self.log_path, "rb") as file:
                file.seek(offset)
                return file.read().decode(errors="replace").splitlines()
        except OSError:
            return []


_loaded: Optional[Library] = None
_loading = threading.Lock()


def library() -> Library:
    """Returns the library that `scan` and `connect` use: the one set by `use`, or else one for a radio."""
    global _loaded
    with _loading:
        if _loaded is None:
            _loaded = Library()
        return _loaded


def use(chosen: Library) -> Library:
    """Sets and returns the library that later calls to `scan` and `connect` use."""
    global _loaded
    with _loading:
        _loaded = chosen
    return chosen
