from typing import Sequence


class OrvError(OSError):
    """The exception for a failed library call.

    `kind` is "timeout", "error" if the log shows a system error, or "rejected" for any other failure.
    `log` holds the lines that the call added to the log. While the log is off, `log` is empty, and `kind` is
    "rejected" for errors, too.
    """

    def __init__(self, message: str, kind: str = "rejected", log: Sequence[str] = ()) -> None:
        super().__init__("\n    ".join([message, *log]))
        self.kind = kind
        self.log = tuple(log)


class OrvTimeout(OrvError, TimeoutError):
    """A device or the system did not answer in time, or no byte arrived in time."""

    def __init__(self, message: str, log: Sequence[str] = ()) -> None:
        super().__init__(message, "timeout", log)


class LinkInUse(OrvError):
    """This process already has a link to the device."""

    def __init__(self, message: str) -> None:
        super().__init__(message, "in use")


class Closed(ValueError):
    """The exception for a call to a closed scanner or stream."""
