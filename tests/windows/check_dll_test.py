#!/usr/bin/env python3
"""Makes copies of the shipped DLL with one fault each. tools/check_dll must report each fault, and none
in the shipped DLL itself.

Usage: check_dll_test.py CHECK_DLL DLL DEBUG DEF HEADER VERSION
"""
import importlib.machinery
import importlib.util
import pathlib
import struct
import subprocess
import sys
import tempfile

CHECK, DLL, DEBUG, DEF, HEADER, VERSION = sys.argv[1:]
loader = importlib.machinery.SourceFileLoader("check_dll", CHECK)
check_dll = importlib.util.module_from_spec(importlib.util.spec_from_loader("check_dll", loader))
sys.dont_write_bytecode = True
loader.exec_module(check_dll)

GOOD = pathlib.Path(DLL).read_bytes()
IMAGE = check_dll.Image(GOOD)
HEADERS = IMAGE.unpack("<I", 0x3C)[0]
OPTIONAL = HEADERS + 24
SECTIONS = OPTIONAL + IMAGE.unpack("<H", HEADERS + 20)[0]
EXPORTS = IMAGE.directory(check_dll.EXPORT_TABLE)


def patched(at, value):
    return GOOD[:at] + value + GOOD[at + len(value):]


def without_bits(at, bits):
    return patched(at, struct.pack("<H", IMAGE.unpack("<H", at)[0] & ~bits))


def renamed(old, new, after):
    return patched(GOOD.index(old + b"\0", after), new)


def without_directory(number):
    return patched(OPTIONAL + 112 + 8 * number, bytes(8))


RESOURCE = IMAGE.directory(check_dll.RESOURCES)
FIXED_VERSION = GOOD.index(struct.pack("<I", 0xFEEF04BD))
NAMES = IMAGE.unpack("<I", EXPORTS + 24)[0]

# Faulty copies of the DLL, each with a part of the expected output.
FAULTS = [
    (renamed(b"OrvDevice_Flush", b"OrvDevice_Flusk", EXPORTS), "OrvDevice_Flusk is exported but not"),
    (renamed(b"OrvDevice_Flush", b"OrvDevice_Flusk", EXPORTS), "OrvDevice_Flush is in quelvixwinlib"),
    (renamed(b"OrvDevice_Flush", b"OrvDevice_Flusk", EXPORTS), "OrvDevice_Flush is in the headers"),
    (patched(EXPORTS + 24, struct.pack("<I", NAMES - 1)), "1 functions are exported without a name"),
    (without_directory(check_dll.EXPORT_TABLE), "Logging_Enable is in the headers but not"),
    (renamed(b"AcquireSRWLockExclusive", b"TlsAlloc\0", 0), "it imports TlsAlloc, as a thread"),
    (renamed(b"KERNEL32.dll", b"KERNEL99", 0), "it imports KERNEL99.dll"),
    (patched(OPTIONAL + 112 + 8 * check_dll.DELAYED_IMPORTS, IMAGE.data[OPTIONAL + 120:OPTIONAL + 128]),
     "delayed imports"),
    (without_bits(OPTIONAL + 70, 0x20), "HIGH_ENTROPY_VA is missing"),
    (without_bits(OPTIONAL + 70, 0x40), "DYNAMIC_BASE is missing"),
    (without_bits(OPTIONAL + 70, 0x100), "NX_COMPAT is missing"),
    (without_directory(check_dll.RELOCATIONS), "no relocations"),
    (patched(SECTIONS + 36, struct.pack("<I", 0xE0000020)), "both writable and executable"),
    (without_directory(check_dll.RESOURCES), "no VERSIONINFO"),
    (patched(RESOURCE + 16, struct.pack("<I", 24)), "no VERSIONINFO"),
    (patched(FIXED_VERSION + 8, struct.pack("<I", 0x90009)), "VERSIONINFO says 9.9.0 instead of"),
    (GOOD + bytes(176 * 1024), "more than 180224"),
    (patched(len(GOOD) - 1, bytes([GOOD[-1] ^ 1])), f"differs from byte {len(GOOD) - 1} on"),
    (GOOD + b"\0", f"differs from byte {len(GOOD)} on"),
    (b"MZ" + GOOD[2:200], "unpack_from requires"),
    (b"ELF" + GOOD[3:], "not a PE file"),
    (patched(HEADERS + 4, b"\x4c\x01"), "not for x86-64"),
]


GOOD_DEBUG = pathlib.Path(DEBUG).read_bytes()


def with_symbol(name):
    old = b"\0OrvDevice_Disconnect\0"
    return GOOD_DEBUG.replace(old, b"\0" + name.ljust(len(old) - 2, b"\0") + b"\0")


DEBUG_FAULTS = [
    (with_symbol(b"OrvDevice_Flusk"), "does not know OrvDevice_Disconnect"),
    (with_symbol(b"pthread_mutex_lock"), "a thread library: pthread_mutex_lock"),
    (with_symbol(b"__emutls_get_address"), "emulated thread-local storage: __emutls_get_address"),
    (with_symbol(b"__cxa_guard_acquire"), "guards of local static variables"),
    (with_symbol(b"__cxa_demangle"), "the demangler"),
    (with_symbol(b"_ZNSs4swapERSs"), "out-of-line strings"),
    (with_symbol(b"_ZNSolsEi"), "streams"),
    (GOOD_DEBUG.replace(b".rdata\0\0", b".rdatb\0\0", 1), "the debug file of another DLL"),
    (GOOD, "does not know"),  # a stripped file has no symbols
]


def run(data, folder, debug=GOOD_DEBUG):
    path = pathlib.Path(folder, "quelvixwinlib.dll")
    path.write_bytes(data)
    pathlib.Path(folder, "debug").write_bytes(debug)
    return subprocess.run([sys.executable, CHECK, str(path), "--def", DEF, "--header", HEADER,
                           "--version", VERSION, "--same-as", DLL,
                           "--symbols", str(pathlib.Path(folder, "debug"))],
                          text=True, capture_output=True, check=False)


def main():
    missed = 0
    with tempfile.TemporaryDirectory() as folder:
        good = run(GOOD, folder)
        if good.returncode != 0 or good.stdout:
            print("the unchanged DLL fails the check:", good.stdout, good.stderr)
            missed += 1
        planted = [(data, GOOD_DEBUG, text) for data, text in FAULTS]
        planted += [(GOOD, debug, text) for debug, text in DEBUG_FAULTS]
        for data, debug, text in planted:
            said = run(data, folder, debug)
            if said.returncode != 1 or text not in said.stdout:
                print(f"fault not reported: {text}\noutput: {said.stdout}{said.stderr}")
                missed += 1
    print(f"{len(planted)} faults, {missed} missed")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
