"""Type 1 fonts before judges: t1utils take them apart and together again,
Ghostscript gives back every outline and advance of both PostScript forms and
paints every glyph.

usage: type1_judges.py WRITER

WRITER is the program of write_type1_fonts.cpp.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

FONTS = ("Small", "Wide", "Medium")
OPERATORS = {"rmoveto": "M", "rlineto": "L", "rrcurveto": "C", "closepath": "Z"}
failures = []


def check(holds, what):
    if not holds:
        failures.append(what)


def run(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, **options).stdout


def read_drawn(path):
    """Code -> (name, width, [(command, [numbers])]), absolute coordinates."""
    glyphs = {}
    for line in path.read_text().splitlines():
        word, *rest = line.split()
        if word == "glyph":
            commands = []
            glyphs[int(rest[0])] = (rest[1], int(rest[2]), commands)
        elif word != "sections":
            commands.append((word, [int(n) for n in rest]))
    return glyphs


def disassembled(text):
    """Name -> (width, commands), from t1disasm's text, absolute coordinates."""
    glyphs = {}
    for name, body in re.findall(r"^/(\S+) \{\n(.*?)\} ND$", text, re.S | re.M):
        width, commands, x, y = None, [], 0, 0
        for line in body.strip().splitlines():
            *numbers, operator = line.split()
            numbers = [int(n) for n in numbers]
            if operator == "hsbw":
                check(numbers[0] == 0, f"{name}: side bearing {numbers[0]}")
                width = numbers[1]
            elif operator == "endchar":
                break
            else:
                points = []
                for dx, dy in zip(numbers[::2], numbers[1::2]):
                    x, y = x + dx, y + dy
                    points += [x, y]
                commands.append((OPERATORS[operator], points))
        glyphs[name] = (width, commands)
    return glyphs


def judge_t1utils(folder, name):
    drawn = read_drawn(folder / f"{name}.drawn")
    want = {glyph: (width, commands) for glyph, width, commands in drawn.values()}
    want[".notdef"] = (0, [])
    for form in (f"{name}.t1", f"{name}.explicit.ps", f"{name}.host.ps"):
        text = run("t1disasm", str(folder / form))
        got = disassembled(text.decode("latin-1"))
        check(got == want, f"{form}: t1disasm sees other glyphs")
        again = run("t1asm", "--pfb", input=text)
        check(run("t1disasm", input=again) == text, f"{form}: t1asm and t1disasm change it")
    # The section lengths are those of a segmented file, which t1utils read too.
    lengths = (folder / f"{name}.drawn").read_text().split("\n", 1)[0].split()[1:]
    data = (folder / f"{name}.t1").read_bytes()
    segments, at = b"", 0
    for kind, length in zip((1, 2, 1), map(int, lengths)):
        segments += bytes([0x80, kind]) + length.to_bytes(4, "little") + data[at:at + length]
        at += length
    check(at == len(data), f"{name}: sections do not add up")
    plain = run("t1disasm", str(folder / f"{name}.t1"))
    check(run("t1disasm", input=segments + b"\x80\x03") == plain, f"{name}: segments differ")
    return len(want)


SHOW_PATHS = """
/say { 20 string cvs print ( ) print } def
/point { exch say say } def
[1 0 0 1 0 0] setmatrix
/%(font)s findfont 1000 scalefont setfont
[%(codes)s] {
    (glyph ) print dup say
    newpath 0 0 moveto
    1 string dup 0 4 -1 roll put
    dup stringwidth point (\\n) print
    false charpath
    { (M ) print point (\\n) print }
    { (L ) print point (\\n) print }
    { (C ) print 6 array astore { say } forall (\\n) print }
    { (Z\\n) print } pathforall
} forall
"""

HOST_ENCODING = """
userdict /DravixEncoding 256 array put
0 1 255 { userdict /DravixEncoding get exch /.notdef put } for
"""


def ghostscript(script, *options):
    return run("gs", "-q", "-dNOSAFER", "-dBATCH", "-dNOPAUSE", *options, "-", input=script.encode())


def program(folder, name, form, drawn):
    """PostScript that makes the font, with what a host has to define before."""
    names = "".join(f"userdict /DravixEncoding get {code} /{glyph} put\n"
                    for code, (glyph, _, _) in drawn.items())
    before = HOST_ENCODING + names if form == "host" else ""
    return before + f"({folder / f'{name}.{form}.ps'}) run\n"


def shown_path(commands):
    """What pathforall tells of a drawing: closed by a line to its beginning."""
    path, first, last = [], None, None
    for command, numbers in commands:
        if command == "Z" and last != first:
            path.append(("L", first))
        path.append((command, numbers))
        first = numbers if command == "M" else first
        last = numbers[-2:] if numbers else first
    return path


def judge_paths(folder, name, form):
    drawn = read_drawn(folder / f"{name}.drawn")
    script = program(folder, name, form, drawn) + SHOW_PATHS % {
        "font": name + form.capitalize(), "codes": " ".join(map(str, drawn))}
    got = {}
    for line in ghostscript(script, "-dNODISPLAY").decode().splitlines():
        word, *rest = line.split()
        numbers = [float(n) for n in rest]
        if word == "glyph":
            commands = []
            got[int(numbers[0])] = (numbers[1:], commands)
        else:
            commands.append((word, numbers))
    check(set(got) == set(drawn), f"{name}.{form}: Ghostscript shows other codes")
    for code, (glyph, width, commands) in drawn.items():
        advance, path = got.get(code, ([], []))
        check(advance == [width, 0], f"{name}.{form}: advance of {glyph}: {advance}, not {width}")
        while path and path[-1][0] == "M":  # where the next glyph would begin
            path = path[:-1]
        check(path == shown_path(commands), f"{name}.{form}: Ghostscript's outline of {glyph}")


CELL = 100  # pixels; glyphs of +-600 units at 60 pixels to the em


def grey_page(script):
    options = ("-sDEVICE=pgmraw", "-r72", "-dTextAlphaBits=4", "-dGraphicsAlphaBits=4",
               f"-g{16 * CELL}x{16 * CELL}", "-sOutputFile=%stdout")
    data = ghostscript(script + "\nshowpage\n", *options)
    header = re.match(rb"P5\s(?:#[^\n]*\n)?(\d+) (\d+)\s255\s", data)
    check((int(header[1]), int(header[2])) == (16 * CELL, 16 * CELL), "page size")
    return data[header.end():]


def judge_painting(folder, name, form):
    """Shown glyphs look like their drawings filled by Ghostscript itself."""
    drawn = read_drawn(folder / f"{name}.drawn")
    show, fill = [f"/{name}{form.capitalize()} findfont 60 scalefont setfont"], []
    for code, (_, _, commands) in drawn.items():
        x, y = (code % 16) * CELL + CELL // 2, (code // 16) * CELL + CELL // 2
        show.append(f"{x} {y} moveto <{code:02x}> show")
        fill.append(f"gsave {x} {y} translate .06 .06 scale newpath")
        operators = {"M": "moveto", "L": "lineto", "C": "curveto", "Z": "closepath"}
        fill += [" ".join(map(str, numbers)) + " " + operators[command]
                 for command, numbers in commands]
        fill.append("fill grestore")
    shown = grey_page(program(folder, name, form, drawn) + "\n".join(show))
    filled = grey_page("\n".join(fill))
    inked = 0
    for code, (glyph, _, commands) in drawn.items():
        left, top = (code % 16) * CELL, (15 - code // 16) * CELL
        rows = [range((top + i) * 16 * CELL + left, (top + i) * 16 * CELL + left + CELL)
                for i in range(CELL)]
        apart = sum(abs(shown[p] - filled[p]) for row in rows for p in row)
        ink = sum(255 - shown[p] for row in rows for p in row)
        check((ink > 0) == bool(commands), f"{name}.{form}: ink of {glyph}")
        # Fill inks every pixel that it touches, show by coverage: thin slivers
        # differ by up to 0.3 of their ink. Another glyph differs by about 2.
        check(apart <= 0.4 * ink + 255, f"{name}.{form}: {glyph} is painted otherwise "
              f"({apart} of {ink})")
        inked += ink > 0
    return inked


def main():
    with tempfile.TemporaryDirectory() as place:
        folder = pathlib.Path(place)
        run(sys.argv[1], place)
        glyphs = sum(judge_t1utils(folder, name) for name in FONTS)
        for name in FONTS:
            for form in ("explicit", "host"):
                judge_paths(folder, name, form)
        inked = sum(judge_painting(folder, "Small", form) for form in ("explicit", "host"))
    check(glyphs >= 3 * 120, f"only {glyphs} glyphs")
    check(inked >= 2 * 80, f"only {inked} inked glyphs")
    for failure in failures[:20]:
        print("FAILED:", failure)
    print(f"{glyphs} glyphs judged, {inked} painted, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
