"""Scans for devices, and provides the byte stream of a device."""
import ctypes
import re
from dataclasses import dataclass, field
from typing import Generator, List, Optional, Set, Type, Union
from types import TracebackType

from . import _native
from .errors import Closed, LinkInUse, OrvTimeout
from .library import Library, library

POLL = 0.005  # seconds between two polls of a link
Address = Union[str, int]


def address_number(address: Address) -> int:
    """Returns the number of an address such as "A0:B1:C2:D3:E4:F5"."""
    if isinstance(address, str):
        if not re.fullmatch(r"[0-9A-Fa-f]{2}(:[0-9A-Fa-f]{2}){5}", address):
            raise ValueError("not an address such as A0:B1:C2:D3:E4:F5: %r" % address)
        return int(address.replace(":", ""), 16)
    if not 0 <= address < 1 << 48:
        raise ValueError("not an address of 48 bits: %r" % address)
    return address


def address_text(address: int) -> str:
    """Returns the text of an address, such as "A0:B1:C2:D3:E4:F5"."""
    return ":".join("%02X" % byte for byte in address.to_bytes(6, "big"))


@dataclass(frozen=True)
class Device:
    """One device with its latest values, which the C header describes."""

    address: str
    name: str
    rssi: int
    value0500: int
    value1130: int
    data1118: bytes
    _library: Library = field(repr=False, compare=False)

    def connect(self) -> "Stream":
        """Connects to the device."""
        return Stream(self.address, self._library)


class Scanner:
    """A scanner session with its own list of devices. A `with` block starts and ends the scan."""

    def __init__(self, native: Optional[Library] = None) -> None:
        self._library = native or library()
        self._id = self._library.check("create a scanner", "OrvScanner_Initialize")
        self._open = True

    def start(self) -> None:
        """Empties the list and starts the scan."""
        self._library.check("start the scan", "OrvScanner_Start", self._session())

    def stop(self) -> None:
        """Ends the scan and keeps the list."""
        self._library.check("stop the scan", "OrvScanner_Stop", self._session())

    def devices(self) -> List[Device]:
        """Returns all devices found since the start, in the order in which they were found."""
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


class Stream:
    """The link to a device, as a stream of bytes. The end of a `with` block closes the link.

    `timeout` is how long `read` waits for a byte, in seconds; None waits without a limit. If the device goes
    out of range, no bytes arrive, and the library does not report it in any other way.
    """

    def __init__(self, address: Address, native: Optional[Library] = None,
                 timeout: Optional[float] = 5.0) -> None:
        self._library = native or library()
        self._number = address_number(address)
        self.address = address_text(self._number)
        self.timeout = timeout
        self._open = False
        with self._library.lock:
            # Rejects a second link, because the library would use the queue of the first link for both.
            if self._number in self._library.open_addresses:
                raise LinkInUse("cannot connect to %s: this process is already connected to it" % self.address)
            self._library.open_addresses.add(self._number)
        try:
            self._library.check("connect to " + self.address, "OrvDevice_Connect", self._number)
            self._open = True
        finally:
            if not self._open:
                self._library.open_addresses.discard(self._number)

    def write(self, data: bytes) -> int:
        """Sends one block in one write. Returns its length."""
        block = bytes(data)
        return self._library.check("send to " + self.address, "OrvDevice_Send", self._link(), len(block),
                                   block)

    def read(self, size: int = 65536, timeout: Optional[float] = -1) -> bytes:
        """Waits for the first byte, then returns the bytes that have arrived, at most `size`.

        `timeout` replaces the stream's timeout. With 0 the call does not wait and may return b"".
        """
        if size < 1:
            raise ValueError("size must be at least 1: %r" % size)
        limit = self.timeout if timeout == -1 else timeout
        end = None if limit is None else self._library.now() + limit
        buffer = (ctypes.c_uint8 * size)()
        while True:
            count = self._library.check("receive from " + self.address, "OrvDevice_Receive",
                                        self._link(), size, buffer)
            if count or limit == 0:
                return ctypes.string_at(buffer, count)
            if end is not None and self._library.now() >= end:
                raise OrvTimeout("nothing received from %s within %g s" % (self.address, limit or 0))
            self._library.sleep(POLL)

    def flush(self) -> int:
        """Discards the received bytes that were not read. Returns their number."""
        return self._library.check("flush " + self.address, "OrvDevice_Flush", self._link())

    def close(self) -> None:
        """Closes the link. After an error the stream stays open and can be closed again."""
        with self._library.lock:
            if not self._open:
                return
            self._open = False
        try:
            self._library.check("disconnect from " + self.address, "OrvDevice_Disconnect", self._number)
        except BaseException:
            self._open = True
            raise
        self._library.open_addresses.discard(self._number)

    def _link(self) -> int:
        if not self._open:
            raise Closed("the stream to %s is closed" % self.address)
        return self._number

    def __enter__(self) -> "Stream":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()


def connect(address: Address, native: Optional[Library] = None,
            timeout: Optional[float] = 5.0) -> Stream:
    """Connects to a device. It need not have been found by a scan."""
    return Stream(address, native, timeout)
