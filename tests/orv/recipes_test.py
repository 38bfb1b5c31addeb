#!/usr/bin/env python3
"""Runs the recipes of a document in a shell. Each must print the text that the device echoes.

Usage: recipes_test.py DOCUMENT ORV
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

DOCUMENT, ORV = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]).absolute()


class RecipeTest(unittest.TestCase):
    def test_recipes(self):
        recipes = re.findall(r"## Recipe: (.*?)\n.*?```sh\n(.*?)```", DOCUMENT.read_text(), re.DOTALL)
        self.assertEqual(len(recipes), 3)
        for name, commands in recipes:
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                environment = dict(os.environ, PATH=f"{ORV.parent}:{os.environ['PATH']}:/usr/sbin")
                # The shell needs its own session, because the recipes use job control.
                run = subprocess.run(["bash", "-mc", commands + "wait\n"], cwd=folder, env=environment, timeout=60,
                                     capture_output=True, text=True, start_new_session=True)
                self.assertRegex(run.stdout, r"(?m)^hello$", run.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
