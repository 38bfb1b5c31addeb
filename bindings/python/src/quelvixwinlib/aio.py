"""The binding for asyncio. Functions that may wait run on a thread of the event loop's executor."""
import asyncio
from types import TracebackType
from typing import AsyncIterator, Optional, Type

from . import scanner, stream as streams
from .address import Address
from .library import Library
from .scanner import Device


async def scan(seconds: float = 2.0, native: Optional[Library] = None) -> AsyncIterator[Device]:
    """Scans for `seconds` and yields each device when it is found."""
    found = scanner.scan(seconds, native)
    try:
        while True:
            device: Optional[Device] = await asyncio.to_thread(lambda: next(found, None))
            if device is None:
                return
            yield device
    finally:
        await asyncio.to_thread(found.close)


class Stream:
    """The link to a device. A cancelled `read` loses no bytes: the next `read` returns them."""

    def __init__(self, stream: streams.Stream) -> None:
        self._stream = stream
        self._late: Optional["asyncio.Task[bytes]"] = None

    @property
    def address(self) -> str:
        return self._stream.address

    async def write(self, data: bytes) -> int:
        """Sends `data` in one write. Returns its length."""
        return await asyncio.to_thread(self._stream.write, data)

    async def read(self, size: int = 65536, timeout: Optional[float] = -1) -> bytes:
        """Like `quelvixwinlib.Stream.read`, but the first call after a cancelled read returns the bytes of that
        read, even if they are more than `size`."""
        reading = self._late or asyncio.ensure_future(
            asyncio.to_thread(self._stream.read, size, timeout))
        self._late = reading
        result = await asyncio.shield(reading)
        self._late = None
        return result

    async def flush(self) -> int:
        """Discards all unread bytes. Returns their number."""
        return await asyncio.to_thread(self._stream.flush)

    async def close(self) -> None:
        await asyncio.to_thread(self._stream.close)

    async def __aenter__(self) -> "Stream":
        return self

    async def __aexit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                        trace: Optional[TracebackType]) -> None:
        await self.close()


async def connect(address: Address, native: Optional[Library] = None,
                  timeout: Optional[float] = 5.0) -> Stream:
    """Connects to a device, whether or not a scan has found it."""
    return Stream(await asyncio.to_thread(streams.connect, address, native, timeout))
