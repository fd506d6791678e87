#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What scripts/reference.sh and the tests need besides Doxygen.

scripts/reference.py HEADER        prints a public header as Doxygen reads it
scripts/reference.py --code        prints the pieces of C in the headers' comments
scripts/reference.py --links DIR   fails when a page of DIR links to nothing

The headers' comments are plain. A comment describes the declarations behind it up
to the next comment; one that stands apart begins a section; what is indented is
kept as it is, and is C if it ends with a semicolon.
"""
import pathlib
import re
import sys
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEADERS = sorted((ROOT / "include/orumlox").rglob("*.h"))
GROUPS = ROOT / "docs/reference/groups.dox"
ALL = "".join(path.read_text() for path in HEADERS)
BARE = re.sub(r"/\*.*?\*/", "", ALL, flags=re.S)
NAMES = set(re.findall(r"\b(?:vexo|mlox|VEXO|MLOX)_\w+(?=\(| =|;)", BARE)
            + re.findall(r"#define ((?:VEXO|MLOX|ORUMLOX)_\w+) ", BARE))
# The functions that are declared by a type of their own.
TYPES = {name: (result, rest) for result, name, rest in
         re.findall(r"typedef (\w+) (\w+)(\([^;]*\));", BARE)}
def lines_of(comment):
    body = re.sub(r"^/\*|\*/$", "", comment)
    lines = [re.sub(r"^ *\* ?", "", line) if i else line.strip()
             for i, line in enumerate(body.split("\n"))]
    return [line.rstrip() for line in lines]


def pieces(comment):
    """Paragraphs, each a list of lines: text, or as it is if it is indented."""
    found, kept = [], None
    for line in lines_of(comment):
        if not line:
            kept = None
        elif kept is not None and line.startswith("  ") == kept:
            found[-1].append(line)
        else:
            kept = line.startswith("  ")
            found.append([line])
    return found


def is_code(piece):
    return piece[0].startswith("    ") and piece[-1].endswith(";")


def text(comment):
    out = []
    for piece in pieces(comment):
        if is_code(piece):
            out.append("@code{.c}\n%s\n@endcode" % "\n".join(piece))
        elif piece[0].startswith("  "):
            out.append("@verbatim\n%s\n@endverbatim" % "\n".join(piece))
        else:
            plain = re.sub(r"([\\@<>&%#])", r"\\\1", " ".join(piece))
            out.append(re.sub(r"(?<![.>\w])(\w+)(?![\w(]|\.\w)", lambda m:
                              "#" * (m[0] in NAMES) + m[0], plain))
    return "\n\n".join(out)


def sentence(comment):
    return re.split(r"(?<=\.)\s", text(comment))[0]


def items(source, ends):
    """The comments, directives and declarations of a piece of C: (kind, its words,
    whether a blank line comes before, whether a comment has one behind it or else
    the comment behind a declaration)."""
    at, apart = 0, False
    while at < len(source):
        space = re.compile(r"\s+|VEXO_(BEGIN|END)_DECLS").match(source, at)
        comment = re.compile(r"/\*.*?\*/", re.S).match(source, at)
        directive = re.compile(r"#(\\\n|[^\n])*").match(source, at)
        if space:
            at = space.end()
            apart = apart or space.group().count("\n") > 1
            continue
        if comment:
            at = comment.end()
            yield "comment", comment.group(), apart, source[at:at + 2] == "\n\n"
        elif directive:
            at = directive.end()
            yield "directive", directive.group(), apart, None
        else:
            begin, depth = at, 0
            while at < len(source) and (depth or source[at] not in ends):
                inner = re.compile(r"/\*.*?\*/", re.S).match(source, at)
                if inner and not depth:
                    break
                depth += {"{": 1, "(": 1, "}": -1, ")": -1}.get(source[at], 0)
                at = inner.end() if inner else at + 1
                if source[at - 1] == "}" and not depth and "inline " in source[begin:at]:
                    break
            words = source[begin:at].rstrip() + source[at:at + 1].strip("/")
            at += source[at:at + 1] != "/"
            behind = re.compile(r" *(/\*.*?\*/)", re.S).match(source, at)
            at = behind.end() if behind else at
            yield "code", words, apart, behind and behind.group(1)
        apart = False


def name_of(words):
    bare = words.rstrip(",;")
    found = (re.search(r"\(\*(\w+)\)", bare) or re.search(r"(\w+)\(", bare) or
             re.search(r"(\w+)( = .*|(\[[^]]*\])*)$", bare, re.S))
    return found.group(1)


def described(source, ends=";", above="", scope="#", comment=None):
    """The piece with Doxygen's comments; `above` is what nothing else describes."""
    out, first = [], None
    begin, end, title = "", "", ""  # of sections
    for kind, words, apart, more in items(source, ends):
        if kind == "comment":
            comment, first = words, None
            if more and scope == "#" and ends == ";":
                told = " ".join(lines_of(words)).strip()
                ruler = re.match(r"-+ (.*?) -+$", told)
                if ruler:
                    title, body = ruler.group(1), ""
                else:
                    title = title or re.split(r"[:;,(]|\.\s|\.$", told)[0].strip()
                    body = text(words)
                begin = "%s/** @name %s\n%s */\n/** @{ */\n" % (
                    end, title[0].upper() + title[1:], body)
                title = title if ruler else ""
                comment = None
            continue
        if begin:
            out.append(begin)
            begin, end, title = "", "/** @} */\n", ""
        if "inline " in words and kind == "code":
            words = words.partition("{")[0].replace("static ", "").rstrip() + ";"
        name = re.match(r"# *define (\w+)|", words).group(1)
        if kind == "code" and "{" not in words:
            name = name_of(words)
        kernel = re.match(r"VEXO_API (\w+) (\w+);", words)
        kernel = kernel if kernel and kernel.group(1) in TYPES else None
        if apart and not kernel and kind == "code":
            comment = None
        if kind == "code" and more:
            told = text(more)
        elif comment and first:
            told = "Described with %s%s." % (scope, first)
        elif comment:
            told, first = text(comment), name
        else:
            told = "A #%s." % kernel.group(1) if kernel else above
        if kind == "code" or name:
            out.append("/** %s */\n" % told if told else "")
        if "{" in words and kind == "code":
            head, body, tail = re.match(r"(.*?){(.*)}(.*)", words, re.S).groups()
            struct = re.search(r"struct (\w+)", head)
            inside = described(body, ";", "", struct.group(1) + "::") if struct else \
                described(body, ",", sentence(comment) if comment else "", "#")
            words = "%s{\n%s}%s" % (head, inside, tail)
        if kernel:
            result, rest = TYPES[kernel.group(1)]
            words = "%s %s%s;" % (result, kernel.group(2), rest)
        out.append(words + "\n")
    return "".join(out) + end


def header(path):
    stem = path.stem
    if "@defgroup %s " % stem not in GROUPS.read_text():
        sys.exit("%s has no group %s" % (GROUPS, stem))
    _, intro, rest = re.match(r"(/\*.*?\*/)\s*(/\*.*?\*/)(.*)", path.read_text(),
                              re.S).groups()
    return "/** @file\n@brief @ref %s */\n/** @addtogroup %s\n%s\n@{ */\n%s/** @} */\n" % (
        stem, stem, text(intro), described(rest))


def code():
    for path in HEADERS:
        for comment in re.findall(r"/\*.*?\*/", path.read_text(), flags=re.S):
            for piece in filter(is_code, pieces(comment)):
                print("{\n%s\n}" % "\n".join(piece))


def links(folder):
    pages = {page: page.read_text() for page in folder.glob("*.html")}
    anchors = {page: set(re.findall(r'\b(?:id|name)="([^"]+)"', html))
               for page, html in pages.items()}
    failed = not pages
    for page, html in pages.items():
        for target in set(re.findall(r'\b(?:href|src)="([^"]+)"', html)):
            file, _, anchor = urllib.parse.unquote(target).partition("#")
            if re.match(r"[a-z]+:", file):
                continue
            aim = folder / file if file else page
            if not aim.exists() or anchor and aim in anchors and \
                    anchor not in anchors[aim]:
                print("%s: no %s" % (page.name, target), file=sys.stderr)
                failed = True
    return failed


if sys.argv[1] == "--code":
    code()
elif sys.argv[1] == "--links":
    sys.exit(links(pathlib.Path(sys.argv[2])))
else:
    sys.stdout.write(header(pathlib.Path(sys.argv[1])))
