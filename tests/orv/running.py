"""Runs the program orv with simulated devices, and reads its output from a pipe or terminal meanwhile.

ORV is the path of the program, ORV_LIBRARY the path of the library. ORV_WINE is set if Wine runs orv.
"""
import os
import re
import struct
import subprocess
import threading
import unittest
from concurrent.futures import ThreadPoolExecutor

WINE = "ORV_WINE" in os.environ
ORV = ["wine"] * WINE + [os.environ["ORV"]]
ENVIRONMENT = dict(os.environ, TERM="xterm", WINEDEBUG="-all")
SECONDS = 60  # timeout of each wait


class Running:
    """A running orv, whose output a thread reads: from a pipe or, if `columns` is given, a terminal of that width.

    If `ignored` is given, orv starts with that signal ignored."""

    def __init__(self, test, line, columns=None, ignored=None):
        self.test, self.shown, self.changed = test, "", threading.Condition()
        command, streams = ORV, {}
        if columns:
            import fcntl  # exists only on systems with terminals
            import termios
            self.source, inner = os.openpty()
            fcntl.ioctl(inner, termios.TIOCSWINSZ, struct.pack("HHHH", 10, columns, 0, 0))
            self.settings = lambda: termios.tcgetattr(self.source)
            command, streams = ["setsid", "--ctty", *ORV], {"stdin": inner}
        else:
            self.source, inner = os.pipe()
            self.settings = lambda: None
        if ignored:
            command = ["sh", "-c", f'trap "" {ignored}; exec "$@"', "sh", *command]
        self.before = self.settings()
        self.process = subprocess.Popen(command + line.split(), cwd=test.folder, env=ENVIRONMENT, stdout=inner,
                                        stderr=inner, **streams)
        os.close(inner)
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()
        test.addCleanup(self.kill)

    def read(self):
        whole = b""
        try:
            while part := os.read(self.source, 65536):
                whole += part  # a part may end within a character
                with self.changed:
                    self.shown = whole.decode(errors="replace").replace("\r\n", "\n")
                    self.changed.notify_all()
        except OSError:
            pass  # orv has closed the terminal

    def kill(self):
        self.process.kill()
        self.process.wait()
        self.reader.join()
        os.close(self.source)

    def shows(self, pattern, times=1):
        """Waits until the output has `times` matches of the pattern, and returns the last one."""
        with self.changed:
            found = self.changed.wait_for(lambda: list(re.finditer(pattern, self.shown))[times - 1:times], SECONDS)
        self.test.assertTrue(found, f"{pattern} does not come: {self.shown[-2000:]!r}")
        return found[0]

    def type(self, keys):
        os.write(self.source, keys.encode())

    def ends(self, status=0):
        self.test.assertEqual(self.process.wait(SECONDS), status, self.shown)
        self.reader.join()
        self.test.assertEqual(self.settings(), self.before)


class AtOnce(unittest.TextTestRunner):
    """Runs eight tests at a time, because they spend most of their time waiting."""

    def run(self, test):
        def cases(tests):
            return [case for part in tests for case in cases(part)] if isinstance(tests, unittest.TestSuite) else [tests]

        def run_cases(result):
            with ThreadPoolExecutor(8) as pool:
                list(pool.map(lambda case: case(result), cases(test)))
        return super().run(run_cases)
