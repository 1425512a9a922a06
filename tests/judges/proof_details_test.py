"""The small things of the sample host's proof, as other programs read them:
the document's information, the link to its source, the noise of a seed, the
choices that were made.

usage: proof_details_test.py VASKEL_PROOF
"""

import json
import math
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import urllib.parse
import xml.etree.ElementTree

import proof_content_test as content
from proof_content_test import SAMPLES, Pdf, check, judge_colours, make, run, words

TITLES = ("Plain ASCII (with parentheses) and \\", "Корректурный оттиск Ω", "Łódź, Grüße",
          "校正刷り 试样", "ends in \u0e44\u0e17\u0e22")


# --- document information ---------------------------------------------------------


def pdfinfo(path):
    lines = run("pdfinfo", "-enc", "UTF-8", path).decode().splitlines()
    return dict(re.split(r":\s+", line, maxsplit=1) for line in lines if re.search(r":\s+\S", line))


def judge_information(program, folder):
    for number, title in enumerate(TITLES):
        author = title[::-1]
        pdf, ps, _ = make(program, folder / f"title{number}", "proof", "--title", title,
                          "--author", author)
        distilled = folder / "title.pdf"
        run("ps2pdf", ps, distilled)
        for path in (pdf, distilled):
            info = pdfinfo(path)
            check(info.get("Title") == title, f"{path.name}: Poppler reads title {info['Title']!r}")
            check(info.get("Author") == author, f"{path.name}: author {info['Author']!r}")
            check(info.get("Subject") == "made from scan.tif", f"{path.name}: subject")
            check(info.get("Creator") == "vaskel-proof", f"{path.name}: creator")
        check(pdfinfo(pdf).get("Producer", "").startswith("VaskelLib "), "producer")
        document = Pdf(pdf)
        trailer = document.dict_of(document.objects["trailer"])
        strings = document.resolve(trailer["/Info"])
        check(strings["/Title"] == "u:" + title, f"qpdf reads title {strings['/Title']!r}")
        check(strings["/Author"] == "u:" + author, "qpdf reads the author")
        # UTF-16 with its mark, whatever the text: hexadecimal as qpdf writes it.
        data = pdf.read_bytes()
        for text in (title, author, "vaskel-proof"):
            wanted = (b"\xfe\xff" + text.encode("utf-16-be")).hex().encode()
            check(b"<" + wanted + b">" in data, f"{text!r} is not UTF-16 with a mark")
    # The library changes what lies beyond U+FFFF: such titles are right all the same.
    pdf, _, _ = make(program, folder / "beyond", "proof", "--title", "smile 😀")
    check(pdfinfo(pdf).get("Title") == "smile 😀", "a title beyond U+FFFF")
    for bad in ("😀", "\udcff", "a\udcc3A", "cut off \udce4\udcb8"):
        ended = subprocess.run([program, "make", "-o", folder / "bad.pdf", "--title", bad],
                               stderr=subprocess.PIPE)
        check(ended.returncode == 2 and b"--title takes" in ended.stderr, f"title {bad!a}")


def judge_odd_names(program, folder):
    """A file name of any bytes does not stand in the way."""
    scan = folder / "odd \udcff.tif"
    shutil.copy(SAMPLES / "scan.tif", scan)
    pdf, _, report = make(program, folder / "odd", "proof", "--scan", scan)
    check(json.loads(report.read_text())["inputs"]["scan"] == "odd \ufffd.tif", "an odd name")
    check(pdfinfo(pdf).get("Subject", "").startswith("made from odd "), "an odd subject")
    check(links_of(pdf)[0]["/A"]["/URI"].startswith("u:file://"), "an odd name's link")


# --- the link -------------------------------------------------------------------------


def links_of(pdf):
    document = Pdf(pdf)
    return [values for _, values in document.find("/Subtype", "/Link")]


def judge_link_place(pdf, rectangle):
    """The link lies on the words that name the scan."""
    page = xml.etree.ElementTree.fromstring(run("pdftotext", "-bbox", pdf, "-"))
    name = "{http://www.w3.org/1999/xhtml}"
    height = float(page.find(f".//{name}page").get("height"))
    found = [word for word in page.iter(name + "word") if (word.text or "").endswith(".tif:")]
    check(len(found) == 1, f"{len(found)} words name the scan")
    box = {key: float(found[0].get(key)) for key in ("xMin", "xMax", "yMin", "yMax")}
    left, low, right, high = rectangle
    check(left - 1 <= box["xMin"] and box["xMax"] <= right + 1, "the link's left and right")
    middle = height - (box["yMin"] + box["yMax"]) / 2
    check(low <= middle <= high and high - low < 12, "the link's height")


def judge_links(program, folder):
    odd = folder / "My Scans" / "Größe & 100%"
    odd.mkdir(parents=True)
    scan = odd / "scan #1?.tif"
    shutil.copy(SAMPLES / "scan.tif", scan)
    rows = [((), (SAMPLES / "scan.tif").resolve().as_uri()),
            (("--scan", scan), None),
            (("--link", "http://server/my jobs/job 7"), "http://server/my%20jobs/job%207"),
            (("--link", "/My Scans/a.tif"), "file://localhost/My%20Scans/a.tif"),
            (("--link", "/a.tif"), "file://localhost/a.tif")]
    for number, (options, wanted) in enumerate(rows):
        pdf, ps, report = make(program, folder / f"link{number}", "proof", *options)
        found = links_of(pdf)
        check(len(found) == 1, f"{len(found)} links")
        uri = found[0]["/A"]["/URI"].removeprefix("u:")
        check(re.fullmatch(r"[!-~]+", uri) is not None, f"{uri!r} is no ASCII")
        parts = urllib.parse.urlsplit(uri)
        check(not parts.query and not parts.fragment, f"{uri} has more than a path")
        if wanted:
            check(uri == wanted, f"the link leads to {uri}, not to {wanted}")
        else:
            check(urllib.parse.unquote(parts.path) == str(scan), f"{uri} is not {scan}")
        judge_link_place(pdf, found[0]["/Rect"])
        check(json.loads(report.read_text())["link"] == uri, "the report's link")
        # Others see the same one, and PostScript carries it too.
        check(uri in run("pdfinfo", "-url", pdf).decode(), "Poppler's link")
        shown = run("mutool", "show", "-g", pdf, "grep").decode(errors="replace")
        check(f"/URI({uri})" in shown, "MuPDF's link")
        distilled = folder / "link.pdf"
        run("ps2pdf", ps, distilled)
        check(uri in run("pdfinfo", "-url", distilled).decode(), "the link by way of PostScript")
    pdf, ps, report = make(program, folder / "unlinked", "proof", "--link", "none")
    check(links_of(pdf) == [] and b"/ANN pdfmark" not in ps.read_bytes(), "--link none")
    check(json.loads(report.read_text())["link"] == "", "the report's link")


# --- noise ----------------------------------------------------------------------------


class Generator:
    """The library's random numbers in whole numbers of Python."""

    def __init__(self, seed):
        x, words_ = seed, []
        for _ in range(54):
            x = (x * 31415821 + 1) % 2 ** 28
            words_.append(x)
        self.ring, self.index = words_[22:], 31

    def word(self):
        before = self.ring[self.index]
        self.index = (self.index + 1) % 32
        self.ring[self.index] = (self.ring[self.index] + before) % 2 ** 28
        return self.ring[self.index]

    def share(self):
        """A draw of nextDouble, brought to 0..255, halves up."""
        return math.floor(((self.word() >> 14) * 100001 >> 14) / 100000 * 255 + 0.5)


DRAWS = {
    "nextByte": lambda r: r.word() >> 20,
    "nextInt(4)": lambda r: ((r.word() >> 14) * 4 >> 14) * 85,
    "nextDouble": Generator.share,
    "nextFloat": Generator.share,
    "nextBool": lambda r: 255 if r.word() >> 27 else 0,
    "nextShort, low byte": lambda r: (r.word() >> 14) * 4 & 255,
    "ranint(16)": lambda r: ((r.word() >> 14) * 16 >> 14) * 17,
    "randou": Generator.share,
}


def noise_samples(draw, seed, count):
    generator = Generator(seed)
    return bytes(DRAWS[draw](generator) for _ in range(count))


def judge_noise(program, folder):
    generator = Generator(42)
    check(generator.ring[0] == 139767157, "the generator's first word")
    check([(generator.word() >> 14) * 100 >> 14 for _ in range(8)] ==
          [44, 56, 68, 34, 48, 87, 85, 90], "the generator's first draws")
    seen = set()
    for options, seed in (((), 1234567), (("--seed", "42"), 42), (("--seed", "-2147483648"), -2 ** 31)):
        pdf, ps, report = make(program, folder / f"seed{seed}", "proof", *options)
        report = json.loads(report.read_text())
        check(report["noise"]["seed"] == seed, "the report's seed")
        document = Pdf(pdf)
        images = [(number, values) for number, values in sorted(document.find("/Subtype", "/Image"))
                  if values["/ColorSpace"] == "/DeviceGray"]
        check(len(images) == len(DRAWS), f"{len(images)} noise swatches in the PDF")
        streams = [content.base64.a85decode(b"<~" + data.strip(), adobe=True) for data in
                   re.findall(rb"/DeviceGray setcolorspace\n%%BeginData[^\n]*\n.*? image\n(.*?)"
                              rb"%%EndData", ps.read_bytes(), re.S)]
        check(len(streams) == len(DRAWS), f"{len(streams)} noise swatches in PostScript")
        for (number, values), stream, draw in zip(images, streams, DRAWS):
            wanted = noise_samples(draw, seed, values["/Width"] * values["/Height"])
            check(len(wanted) > 3000, "a small swatch")
            got = document.stream(number, "--filtered-stream-data")
            check(got == wanted, f"seed {seed}, {draw}: other bytes in the PDF")
            check(stream == wanted, f"seed {seed}, {draw}: other bytes in PostScript")
            seen.add(wanted)
        text = words(run("pdftotext", "-raw", pdf, "-").decode())
        check(f"noise of the seed {seed}" in text, "the seed on the page")
        check(all(draw in text for draw in DRAWS), "the captions of the noise")
    # nextDouble, nextFloat and randou are one draw.
    check(len(seen) == 3 * (len(DRAWS) - 2), f"{len(seen)} different swatches")


# --- choices -------------------------------------------------------------------------


def judge_choices(program, folder):
    intents = ["perceptual", "relative", "saturation", "absolute"]
    units = ["inch", "mm", "cm", "scanpix", "mil", "pica", "pt", "didot", "Q", "bai"]

    def listed(*options):
        return run(program, "make", "--list-choices", *options).decode()

    def list_of(entries, chosen):
        return "".join(("  * " if entry == chosen else "    ") + entry + "\n" for entry in entries)

    for options, intent, unit in (((), "relative", "mm"), (("--intent", "absolute"), "absolute", "mm"),
                                  (("--unit", "bai", "--intent", "perceptual"), "perceptual", "bai"),
                                  (("--unit", "INCH"), "relative", "inch")):
        check(listed(*options) == "rendering intent (--intent)\n" + list_of(intents, intent) +
              "unit of lengths (--unit)\n" + list_of(units, unit), f"choices with {options}")
    colours = []
    for number, intent in enumerate(intents):
        pdf, _, report = make(program, folder / f"intent{number}", "proof", "--intent", intent)
        report = json.loads(report.read_text())
        text = words(run("pdftotext", "-raw", pdf, "-").decode())
        line = " ".join(f"[{i}]" if i == intent else i for i in intents)
        check(f"rendering intent: {line}" in text, f"{intent}: the choice on the page")
        [choice] = [c for c in report["choices"] if c["option"] == "--intent"]
        check((choice["chosen"], choice["value"]) == (intent, number), f"{intent}: in the report")
        check([entry["text"] for entry in choice["entries"]] == intents, "the report's entries")
        if intent != "absolute":  # in which a chain of several links is another matter
            judge_colours(report)
        colours.append([row["colours"] for row in report["swatches"] if "link" in row["label"]])
    # This profile's tables may be the same for some of them, but not for all.
    check(colours[0] != colours[1] != colours[3] != colours[0],
          "perceptual, relative and absolute give the same colours")
    ended = subprocess.run([program, "make", "-o", folder / "bad.pdf", "--intent", "relat"],
                           stderr=subprocess.PIPE)
    check(ended.returncode == 2 and b"--intent takes perceptual, relative, saturation or absolute"
          in ended.stderr, "an intent that there is not")
    ended = subprocess.run([program, "make"], stderr=subprocess.PIPE)
    check(ended.returncode == 2 and b"--output is required" in ended.stderr, "no output")


def main():
    program = sys.argv[1]
    with tempfile.TemporaryDirectory() as place:
        folder = pathlib.Path(place)
        judge_information(program, folder)
        judge_odd_names(program, folder)
        judge_links(program, folder)
        judge_noise(program, folder)
        judge_choices(program, folder)
    for failure in content.failures[:30]:
        print("FAILED:", failure)
    print(f"{content.checks} checks, {len(content.failures)} failures")
    return 1 if content.failures else 0


if __name__ == "__main__":
    sys.exit(main())
