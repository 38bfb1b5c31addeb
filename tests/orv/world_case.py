"""A test case with its own folder, which contains each entry of `worlds` as a scenario file."""
import json
import pathlib
import tempfile
import unittest


class WorldCase(unittest.TestCase):
    worlds = {}

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        for name, world in self.worlds.items():
            (self.folder / f"{name}.json").write_text(json.dumps({"title": name, **world}))
