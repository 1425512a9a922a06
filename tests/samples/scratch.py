"""Tests of a command that read and write files: each has a folder of its own."""

import os
import tempfile
import unittest


class ScratchCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="vaskel-proof-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name, content=None):
        """The place of a file, which gets content if there is some."""
        path = os.path.join(self.folder, name)
        if content is not None:
            with open(path, "wb") as file:
                file.write(content if isinstance(content, bytes) else content.encode())
        return path

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()
