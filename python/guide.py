#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The pieces of Python in docs/guides/python.md, run one after the other.

python/guide.py          fails unless they print and draw what the page shows
python/guide.py --types  has mypy check them by the module's stubs
python/guide.py --write  writes what they print and draw
"""
import contextlib
import io
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import cv2
import numpy as np

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/guides/python.md"
PICTURES = ROOT / "docs/pictures"
PIECE = re.compile(r"```python\n(.*?)```\n(\n```text\n(.*?)```\n)?", re.DOTALL)


def main():
    mode = sys.argv[1] if len(sys.argv) > 1 else ""
    page = PAGE.read_text()
    with tempfile.TemporaryDirectory() as work:
        os.symlink(ROOT / "samples", pathlib.Path(work) / "samples")
        out = pathlib.Path(work) / "out"
        out.mkdir()
        os.chdir(work)
        if mode == "--types":
            code = "".join(m.group(1) for m in PIECE.finditer(page))
            pathlib.Path("page.py").write_text(code)
            return subprocess.run(
                [sys.executable, "-m", "mypy", "--cache-dir=/dev/null",
                 "--ignore-missing-imports", "page.py"], check=False).returncode
        names = {}

        def run(match):
            printed = io.StringIO()
            with contextlib.redirect_stdout(printed):
                exec(compile(match.group(1), str(PAGE), "exec"), names)
            text = printed.getvalue()
            return (f"```python\n{match.group(1)}```\n"
                    + (f"\n```text\n{text}```\n" if text else ""))

        rewritten = PIECE.sub(run, page)
        failed = rewritten != page
        if mode == "--write":
            PAGE.write_text(rewritten)
            for file in out.iterdir():
                (PICTURES / file.name).write_bytes(file.read_bytes())
            return 0
        if failed:
            print(f"{PAGE.name}: something else is printed", file=sys.stderr)
        if {f.name for f in out.iterdir()} != {
                f.name for f in PICTURES.glob("python-*.png")}:
            sys.exit("other pictures are drawn")
        for file in out.iterdir():
            if not np.array_equal(cv2.imread(str(file)),
                                  cv2.imread(str(PICTURES / file.name))):
                print(f"{file.name} is another", file=sys.stderr)
                failed = True
        return failed


if __name__ == "__main__":
    sys.exit(main())
