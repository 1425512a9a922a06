#!/usr/bin/env python3
"""vaskel-proof convert as its users see it: texts in and out, words and exit
codes; compared with Python's own codecs where these have the same rules.

    convert_cli_test.py PROGRAM
"""

import base64
import os
import random
import subprocess
import sys
import unittest

from scratch import ScratchCase

PROGRAM = ""

TEXTS = ("A", "plain text\nof two lines\n", "Grüße, Łódź\n", "Ελληνικά и кириллица\n",
         "中文字 and \u2028 separators\ufeff", "\ufffd\uffff\u0001", "\u4e00A")


def escaped(codec, mark):
    """Bytes as backslash and three octal digits; behind a zero byte the next
    one stands for itself."""
    def encode(text):
        data, out, at = mark + text.encode(codec), b"", 0
        while at < len(data):
            out += b"\\%03o" % data[at]
            if data[at] == 0 and at + 1 < len(data):
                at += 1
                if data[at] == 0:
                    return None
                out += data[at:at + 1]
            at += 1
        return out
    return encode


def marked(codec, mark):
    return lambda text: mark + text.encode(codec)


def hexed(codec, mark):
    return lambda text: (mark + text.encode(codec)).hex().upper().encode()


BE, LE = b"\xfe\xff", b"\xff\xfe"
FORMS = {
    "utf8": lambda text: text.encode(),
    "utf16be": marked("utf-16-be", BE),
    "utf16le": marked("utf-16-le", LE),
    "utf32be": marked("utf-32-be", b"\0\0" + BE),
    "utf32le": marked("utf-32-le", LE + b"\0\0"),
    "escaped": escaped("utf-16-be", BE),
    "escaped-le": escaped("utf-16-le", LE),
    "hex": hexed("utf-16-be", BE),
    "hex-le": hexed("utf-16-le", LE),
}


def convert(*arguments, data=b"", **options):
    return subprocess.run([PROGRAM, "convert", *arguments], input=data, capture_output=True,
                          timeout=120, **options)


class Convert(ScratchCase):
    def gives(self, data, *arguments):
        done = convert(*arguments, data=data)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        return done.stdout

    def fails(self, code, *arguments, data=b"", **options):
        """The one line that a failure prints."""
        done = convert(*arguments, data=data, **options)
        self.assertEqual((done.returncode, done.stdout), (code, b""), done.stderr)
        self.assertEqual(done.stderr.count(b"\n"), 1)
        return done.stderr.decode()

    def test_every_form_becomes_every_other_as_pythons_codecs_have_it(self):
        compared = 0
        for text in (TEXTS[0], "".join(TEXTS[1:5])):
            sources = {name: encode(text) for name, encode in FORMS.items()}
            for name, source in sources.items():
                for target, wanted in sources.items():
                    with self.subTest(text=text, source=name, target=target):
                        self.assertEqual(self.gives(source, "--to", target), wanted)
                        compared += 1
        self.assertEqual(compared, 2 * 81)

    def test_every_text_becomes_every_form_and_comes_back(self):
        refused = 0
        for text in TEXTS:
            for name, encode in FORMS.items():
                with self.subTest(text=text, target=name):
                    if encode(text) is None:
                        line = self.fails(1, "--to", name, data=text.encode())
                        self.assertIn("two zero bytes in a row", line)
                        refused += 1
                    else:
                        self.assertEqual(self.gives(text.encode(), "--to", name), encode(text))
                        self.assertEqual(self.gives(encode(text)), text.encode())
        self.assertEqual(refused, 1)

    def test_long_random_text_is_what_pythons_codecs_make_of_it(self):
        dice = random.Random(20)
        ranges = ((1, 0x7F), (0x80, 0x7FF), (0x800, 0xD7FF), (0xE000, 0xFFFF))
        text = "begins " + "".join(chr(dice.randint(*dice.choice(ranges))) for _ in range(200000))
        beyond = text + "".join(chr(dice.randint(0x10000, 0x10FFFF)) for _ in range(1000))
        for name, encode in FORMS.items():
            whole = beyond if "8" in name or "32" in name else text
            if "escaped" in name:
                continue
            with self.subTest(name):
                self.assertEqual(self.gives(whole.encode(), "--to", name), encode(whole))
                self.assertEqual(self.gives(encode(whole)), whole.encode())

    def test_a_file_is_read_and_written(self):
        source, target = self.path("in.txt", "Łódź".encode()), self.path("out.txt")
        done = convert(source, "--to", "UTF-16LE", "-o", target)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stdout.decode(),
                         f"{source}: UTF-8, 4 characters\nwrote {target}\n")
        self.assertEqual(self.read("out.txt"), LE + "Łódź".encode("utf-16-le"))
        self.assertEqual(self.gives(b"", target), "Łódź".encode())
        quiet = convert(target, "-q", "-o", self.path("back.txt"))
        self.assertEqual((quiet.returncode, quiet.stdout), (0, b""))
        self.assertEqual(self.read("back.txt"), "Łódź".encode())
        self.assertEqual(sorted(os.listdir(self.folder)), ["back.txt", "in.txt", "out.txt"])

    def test_a_named_form_is_taken_in_place_of_the_one_found(self):
        self.assertEqual(self.gives(b"FEFF0041"), b"A")
        self.assertEqual(self.gives(b"FEFF0041", "--from", "utf8"), b"FEFF0041")
        self.assertEqual(self.gives("😀".encode(), "--from", "utf8", "--to", "utf32le"),
                         "😀".encode("utf-32"))
        self.assertIn("--from utf8", self.fails(1, data="😀".encode()))
        self.assertIn("no mark of UTF-16", self.fails(1, "--from", "utf16", data=b"text"))

    def test_an_empty_text_is_a_text(self):
        self.assertEqual(self.gives(b""), b"")
        self.assertEqual(self.gives(b"", "--to", "utf16be"), BE)
        self.assertEqual(self.gives(b"", "--to", "hex"), b"FEFF")
        self.assertEqual(self.gives(BE), b"")

    def test_ascii85_is_what_python_reads(self):
        for text in TEXTS:
            for name in ("utf8", "utf16be", "utf32le"):
                stream = self.gives(text.encode(), "--to", name, "--ascii85")
                self.assertEqual(base64.a85decode(b"<~" + stream.strip(), adobe=True),
                                 FORMS[name](text))

    def test_text_that_would_change_is_refused_unless_that_is_permitted(self):
        line = self.fails(1, "--to", "utf16be", data="a😀".encode())
        self.assertIn("standard input: cannot be converted from UTF-8 to UTF-16: the character at "
                      "offset 1 lies beyond U+FFFF", line)
        self.assertEqual(self.gives("a😀".encode(), "--to", "utf16be", "--lossy"),
                         b"\xfe\xff\0a\xd8\x3d\xdc\0")
        self.assertIn("not well-formed", self.fails(1, "--to", "utf16be", data=b"a\xc3A"))

    def test_what_is_no_text_is_told_with_file_and_place(self):
        for content, words in ((b"ab\xff", "byte FF at offset 2 begins no character"),
                               (b"ab\0c", "the zero byte at offset 2 ends the text"),
                               (BE + b"\xd8\x00", "unit D800 at offset 2 is half a pair"),
                               (LE + b"a", "the last unit is cut off"),
                               (b"FEFF00e9", "at offset 6 is no hex digit in capitals"),
                               (rb"\376\377\000A\x41", "at offset 13 is no escape")):
            with self.subTest(words):
                path = self.path("bad.txt", content)
                line = self.fails(1, path, "-o", self.path("out.txt"))
                self.assertTrue(line.startswith(f"vaskel-proof: error: {path}: "), line)
                self.assertIn(words, line)
                self.assertEqual(os.listdir(self.folder), ["bad.txt"])

    def test_files_that_cannot_be_used_and_senseless_command_lines_have_their_codes(self):
        self.assertIn("No such file", self.fails(1, self.path("none.txt")))
        self.assertIn("is a directory", self.fails(1, self.folder))
        self.assertIn("cannot write", self.fails(1, "-o", self.path("none/out"), data=b"a"))
        done = convert("-o", "/dev/full", data=b"a")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"No space left", done.stderr)
        self.assertIn("--to takes", self.fails(2, "--to", "utf7", data=b"a"))
        self.assertIn("--from takes", self.fails(2, "--from", "latin1", data=b"a"))
        done = convert("a", "b")
        self.assertEqual(done.returncode, 2)

    def test_help_tells_the_forms(self):
        text = convert("--help").stdout.decode()
        for word in ("utf16be", "escaped", "hex", "--lossy", "--ascii85"):
            self.assertIn(word, text)


if __name__ == "__main__":
    PROGRAM = os.path.abspath(sys.argv[1])
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
