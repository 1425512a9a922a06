#!/usr/bin/env python3
"""The question of vaskel-proof before it replaces older files, as it is asked
on a terminal and not asked elsewhere.

    overwrite_cli_test.py PROGRAM SAMPLE_FOLDER
"""

import os
import pty
import select
import signal
import subprocess
import sys
import time
import unittest

from scratch import ScratchCase

PROGRAM = SAMPLES = ""
OLD = b"the older one"
BITMAP = b"P4 16 16\n" + b"\0\0" * 4 + b"\x0f\xf0" * 8 + b"\0\0" * 4


class Overwrite(ScratchCase):
    def setUp(self):
        super().setUp()
        self.path("in.pbm", BITMAP)
        self.trace = ["trace", "in.pbm", "--resolution", "300", "-q"]

    def older(self, *names):
        for name in names:
            self.path(name, OLD)
        return [word for name in names for word in ("-o", name)]

    def answered(self, answers, *arguments, limit=60):
        """Runs on a pseudo-terminal, answering each question; returns the exit
        code and what was shown."""
        main, other = pty.openpty()
        process = subprocess.Popen([PROGRAM, *arguments], stdin=other, stderr=other,
                                   stdout=subprocess.DEVNULL, cwd=self.folder,
                                   start_new_session=True)
        os.close(other)
        answers, text, asked, end = list(answers), "", 0, time.monotonic() + limit
        try:
            while time.monotonic() < end:
                if not select.select([main], [], [], 0.2)[0]:
                    if process.poll() is not None:
                        break
                    continue
                try:
                    piece = os.read(main, 65536)
                except OSError:
                    break
                if not piece:
                    break
                text += piece.decode()
                if text.count("no] ") + text.count("none] ") > asked:
                    asked += 1
                    answer = answers.pop(0)
                    if answer is None:
                        process.send_signal(signal.SIGINT)
                    else:
                        os.write(main, answer)
            code = process.wait(10)
        finally:
            process.kill()
            os.close(main)
        self.assertEqual(answers, [], text)
        return code, text.replace("\r\n", "\n")

    def test_one_question_is_asked_for_several_files_and_its_answer_holds_for_all(self):
        for answer in (b"all\n", b"a\n", b"yes\n", b"Y\n", b"  all  \n"):
            with self.subTest(answer):
                outputs = self.older("out.svg", "out.pdf")
                code, text = self.answered([answer], *self.trace, *outputs)
                self.assertEqual(code, 0, text)
                self.assertIn("out.svg and out.pdf exist. Replace them? [all/none] ", text)
                self.assertIn(b"<svg", self.read("out.svg"))
                self.assertIn(b"%PDF", self.read("out.pdf"))

    def test_a_no_leaves_all_files_as_they_are(self):
        for answer in (b"none\n", b"no\n", b"N\n", b"\n", b"\x04"):
            with self.subTest(answer):
                outputs = self.older("out.svg", "out.pdf")
                code, text = self.answered([answer], *self.trace, *outputs, "-o", "new.svg")
                self.assertEqual(code, 1, text)
                self.assertIn("nothing was written: out.svg and out.pdf exist", text)
                self.assertEqual((self.read("out.svg"), self.read("out.pdf")), (OLD, OLD))
                self.assertEqual(sorted(os.listdir(self.folder)),
                                 ["in.pbm", "out.pdf", "out.svg"])

    def test_what_is_no_answer_is_asked_again(self):
        outputs = self.older("out.svg")
        code, text = self.answered([b"perhaps\n", b"yesterday\n", b"yes\n"], *self.trace, *outputs)
        self.assertEqual(code, 0, text)
        self.assertEqual(text.count("out.svg exists. Replace it? [yes/no] "), 3)
        self.assertIn(b"<svg", self.read("out.svg"))

    def test_ctrl_c_at_the_question_ends_the_program(self):
        outputs = self.older("out.svg")
        code, text = self.answered([None], *self.trace, *outputs)
        self.assertEqual(code, -signal.SIGINT, text)
        self.assertEqual(self.read("out.svg"), OLD)

    def test_without_a_terminal_nothing_is_asked_or_replaced(self):
        for command in ([*self.trace, *self.older("out.svg", "out.pdf")],
                        ["convert", "in.pbm", "--to", "hex", "-o", "out.svg"],
                        ["make", "-o", "new.pdf", "--ps", "out.svg", "--json", "out.pdf"]):
            with self.subTest(command[0]):
                done = subprocess.run([PROGRAM, *command], cwd=self.folder, input=b"yes\n",
                                      capture_output=True, timeout=120)
                self.assertEqual((done.returncode, done.stdout), (1, b""))
                self.assertEqual(done.stderr.count(b"\n"), 1)
                self.assertRegex(done.stderr.decode(), r"nothing was written: out\.svg( and "
                                 r"out\.pdf)? exists? \(--force replaces (it|them)\)\n$")
                self.assertEqual((self.read("out.svg"), self.read("out.pdf")), (OLD, OLD))

    def test_force_replaces_without_a_question(self):
        outputs = self.older("out.svg", "out.pdf")
        for flag in ("-f", "--force"):
            code, text = self.answered([], *self.trace, *outputs, flag)
            self.assertEqual((code, "Replace" in text), (0, False))
            self.assertIn(b"<svg", self.read("out.svg"))
            self.older("out.svg", "out.pdf")
        self.path("in.txt", b"text")
        code, text = self.answered([], "convert", "in.txt", "-q", "-o", "out.svg", "--force")
        self.assertEqual((code, text), (0, ""))
        self.assertEqual(self.read("out.svg"), b"text")

    def test_the_proof_asks_once_for_its_three_files(self):
        self.older("p.pdf", "p.ps", "p.json")
        names = ["-o", "p.pdf", "--ps", "p.ps", "--json", "p.json", "-q"]
        code, text = self.answered(
            [b"all\n"], "make", *names, "--scan", "in.pbm", "--image", SAMPLES + "/picture.jpg",
            "--cmyk-profile", SAMPLES + "/FOGRA39L_coated.icc")
        self.assertEqual(code, 0, text)
        self.assertIn("p.pdf, p.ps and p.json exist. Replace them? [all/none] ", text)
        self.assertEqual(text.count("Replace"), 1)
        self.assertIn(b"%PDF", self.read("p.pdf"))
        self.assertIn(b"%!PS", self.read("p.ps"))


if __name__ == "__main__":
    PROGRAM, SAMPLES = (os.path.abspath(name) for name in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
