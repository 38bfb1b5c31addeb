#!/usr/bin/env python3
"""Runs the recipes of a document in a shell. Each must print the text that the device echoes.

Replaces only the ports and the pseudo-terminal's path, because other programs may use them.

Usage: recipes_test.py DOCUMENT ORV
"""
import os
import pathlib
import re
import socket
import subprocess
import sys
import tempfile
import unittest

DOCUMENT, ORV = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]).absolute()


def reserve_port(test):
    """Reserves a port for the test and returns it. A bound socket that does not listen keeps other programs from
    getting the port, but not the recipe, which asks for this port."""
    reservation = socket.socket()
    test.addCleanup(reservation.close)
    reservation.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    reservation.bind(("127.0.0.1", 0))
    return str(reservation.getsockname()[1])


class RecipeTest(unittest.TestCase):
    def test_recipes(self):
        recipes = re.findall(r"## Recipe: (.*?)\n.*?```sh\n(.*?)```", DOCUMENT.read_text(), re.DOTALL)
        self.assertEqual(len(recipes), 3)
        for name, commands in recipes:
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                for place, free in (("1884", reserve_port(self)), ("7000", reserve_port(self)), ("/tmp/", f"{folder}/")):
                    commands = commands.replace(place, free)
                environment = dict(os.environ, PATH=f"{ORV.parent}:{os.environ['PATH']}:/usr/sbin")
                # The shell needs its own session, because the recipes use job control.
                shell = subprocess.Popen(["bash", "-mc", commands + "wait\n"], cwd=folder, env=environment, text=True,
                                         stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True)
                try:
                    shown, errors = shell.communicate(timeout=60)
                except subprocess.TimeoutExpired:
                    subprocess.run(["ps", "-o", "pid,etime,args", "-s", str(shell.pid)], stdout=sys.stderr)
                    subprocess.run(["pkill", "-KILL", "-s", str(shell.pid)])
                    shown, errors = shell.communicate()
                self.assertRegex(shown, r"(?m)^hello$", errors)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
