"""Bluetooth Low Energy devices whose names begin with "ORV": scan, connect, exchange bytes."""
from ._native import QUELVIXWINLIB_VERSION as __version__
from .address import Address
from .errors import Closed, LinkInUse, OrvError, OrvTimeout
from .library import Library, library, use
from .scanner import Device, Scanner, scan
from .stream import Stream, connect

__all__ = ["Address", "Closed", "Device", "Library", "LinkInUse", "OrvError", "OrvTimeout", "Scanner",
           "Stream", "__version__", "connect", "library", "scan", "use"]
