"""Converts device addresses between text and number."""
import re
from typing import Union

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
    return ":".join("%02X" % byte for byte in address.to_bytes(6, "big"))
