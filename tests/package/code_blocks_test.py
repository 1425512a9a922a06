#!/usr/bin/env python3
"""Compiles and runs the C++ programs that README.md and docs/*.md show.

usage: code_blocks_test.py SOURCE_DIR BUILD_DIR COMPILER

A ```cpp block with a main is a whole program: it has to compile without
warnings, run, and print the ```text block that follows it, if one does.
Other ```cpp blocks are passed over only when they are marked ```cpp fragment.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^```(\S*) *(\S*)\n(.*?)^```$", re.M | re.S)


def main():
    source, build, compiler = (pathlib.Path(a) for a in sys.argv[1:4])
    pages = [source / "README.md"] + sorted((source / "docs").glob("*.md"))
    programs = failures = 0
    with tempfile.TemporaryDirectory() as work:
        for page in pages:
            blocks = BLOCK.findall(page.read_text())
            for i, (language, mark, code) in enumerate(blocks):
                if language != "cpp" or mark == "fragment":
                    continue
                programs += 1
                file = pathlib.Path(work) / f"{programs}.cpp"
                file.write_text(code)
                program = file.with_suffix("")
                subprocess.run(
                    [compiler, "-std=c++20", "-Wall", "-Wextra", "-Werror", f"-I{source}/include",
                     f"-I{source}", file, "-o", program, f"-L{build}/lib",
                     f"-Wl,-rpath,{build}/lib", "-lvaskel", "-lvaskel_embedded"],
                    check=True)
                got = subprocess.run([program], check=True, capture_output=True, text=True,
                                     cwd=work).stdout
                following = blocks[i + 1] if i + 1 < len(blocks) else ("", "", "")
                if following[0] == "text" and following[1] == "output" and following[2] != got:
                    print(f"{page.name}, program {programs}: printed\n{got}wanted\n{following[2]}")
                    failures += 1
    print(f"{programs} programs from {len(pages)} pages, {failures} failed")
    return 1 if failures or programs == 0 else 0


sys.exit(main())
