import ctypes
from types import TracebackType
from typing import Optional, Type

from .address import Address, address_number, address_text
from .errors import Closed, LinkInUse, OrvTimeout
from .library import Library, library

POLL = 0.005  # seconds between two polls of a link


class Stream:
    """The link to a device, as a stream of bytes. The end of a `with` block closes the link.

    `timeout` is how long `read` waits for a byte, in seconds; None waits without a limit. If the device goes
    out of range, no bytes arrive; the library does not report it.
    """

    def __init__(self, address: Address, native: Optional[Library] = None,
                 timeout: Optional[float] = 5.0) -> None:
        self._library = native or library()
        self._number = address_number(address)
        self.address = address_text(self._number)
        self.timeout = timeout
        self._open = False
        with self._library.lock:
            # Rejects a second link: two links would share one queue of received bytes.
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
        """Sends `data` in one write. Returns its length."""
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
        """Discards all unread bytes. Returns their number."""
        return self._library.check("flush " + self.address, "OrvDevice_Flush", self._link())

    def close(self) -> None:
        """Closes the link. If this fails, the stream stays open, and `close` can be called again."""
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
    """Connects to a device, whether or not a scan has found it."""
    return Stream(address, native, timeout)
