import ctypes
from dataclasses import dataclass, field
from types import TracebackType
from typing import Generator, List, Optional, Set, Type

from . import _native
from .address import address_text
from .errors import Closed
from .library import Library, library
from .stream import Stream


@dataclass(frozen=True)
class Device:
    """One device and its latest values; the C header describes them."""

    address: str
    name: str
    rssi: int
    value0500: int
    value1130: int
    data1118: bytes
    _library: Library = field(repr=False, compare=False)

    def connect(self) -> Stream:
        return Stream(self.address, self._library)


class Scanner:
    """A scanner session with its own list of devices. A `with` block starts and ends the scan."""

    def __init__(self, native: Optional[Library] = None) -> None:
        self._library = native or library()
        self._id = self._library.check("create a scanner", "OrvScanner_Initialize")
        self._open = True

    def start(self) -> None:
        """Empties the device list and starts the scan."""
        self._library.check("start the scan", "OrvScanner_Start", self._session())

    def stop(self) -> None:
        """Ends the scan and keeps the list."""
        self._library.check("stop the scan", "OrvScanner_Stop", self._session())

    def devices(self) -> List[Device]:
        """Returns all devices found since `start`, in the order of their discovery."""
        result: List[Device] = []
        record = _native.DiscoveredDevice()
        while self._library.call("OrvScanner_GetDeviceInfo", self._session(), len(result),
                                 ctypes.byref(record)) == 0:
            result.append(Device(address_text(record.address), record.name.decode(errors="replace"),
                                 record.rssi, record.value0500, record.value1130,
                                 bytes(record.data1118), self._library))
        return result

    def close(self) -> None:
        """Stops the scan and removes the session."""
        with self._library.lock:
            if not self._open:
                return
            self._open = False
        self._library.call("OrvScanner_Stop", self._id)
        self._library.call("OrvScanner_Deinitialize", self._id)

    def _session(self) -> int:
        if not self._open:
            raise Closed("the scanner is closed")
        return self._id

    def __enter__(self) -> "Scanner":
        self.start()
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()


def scan(seconds: float = 2.0, native: Optional[Library] = None) -> Generator[Device, None, None]:
    """Scans for `seconds` and yields each device when it is found."""
    seen: Set[str] = set()
    with Scanner(native) as scanner:
        loaded = scanner._library
        end = loaded.now() + seconds
        while True:
            last = loaded.now() >= end
            for device in scanner.devices():
                if device.address not in seen:
                    seen.add(device.address)
                    yield device
            if last:
                return
            loaded.sleep(min(0.05, max(end - loaded.now(), 0.001)))
