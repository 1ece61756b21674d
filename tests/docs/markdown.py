"""What the checks of the documents read of a Markdown file: blocks, tables, headings, links."""

import collections
import dataclasses
import os
import pathlib
import re
import sys

FENCE = re.compile(r"^( *)(```+|~~~+) *(.*)$")
HEADING = re.compile(r"^(#{1,6}) +(.*?) *#*$")
SPAN = re.compile(r"(?<!`)(`+)(?!`)(.+?)(?<!`)\1(?!`)")
LINK = re.compile(r"\[((?:[^\[\]]|\[[^\]]*\])*)\]\(\s*<?([^)\s>]*)>?[^)]*\)")
LIST_ITEM = re.compile(r"^ *(?:[-*+]|\d+[.)]) ")


@dataclasses.dataclass
class Block:
    """A block of code."""

    line: int  # of its first line of code
    kind: str  # the first word behind the fence; "" for none
    name: str  # the second word
    lines: list


@dataclasses.dataclass
class Table:
    line: int
    heading: str  # under which it stands
    header: list
    rows: list  # (line, cells)


class Document:
    """One file. `prose` holds its lines by number, the blocks of code and their fences left out."""

    def __init__(self, root, path):
        self.path = path
        self.text = (pathlib.Path(root) / path).read_text()
        self.blocks, self.prose, self.indented = [], {}, []
        self._read()

    def _read(self):
        fence, in_list, before = None, False, ""
        for number, line in enumerate(self.text.split("\n"), 1):
            match = FENCE.match(line)
            if fence:
                if match and match[2].startswith(fence) and not match[3]:
                    fence = None
                else:
                    self.blocks[-1].lines.append(line.removeprefix(indent))
                continue
            if match:
                indent, fence, (kind, name) = match[1], match[2], (match[3].split() + ["", ""])[:2]
                self.blocks.append(Block(number + 1, kind, name, []))
                continue
            if line.strip():
                in_list = bool(LIST_ITEM.match(line)) or in_list and line.startswith(" ")
            if line.startswith("    ") and not before.strip() and not in_list:
                self.indented.append(number)
            self.prose[number], before = line, line

    def headings(self):
        """(line, level, text) of each."""
        for number, line in self.prose.items():
            if match := HEADING.match(line):
                yield number, len(match[1]), match[2]

    def anchors(self):
        """What a link into this document may name, as the hosts of repositories make them."""
        count = collections.Counter()
        for _, _, text in self.headings():
            plain = LINK.sub(r"\1", text).replace("`", "")
            anchor = re.sub(r"[^\w\- ]", "", plain.lower()).replace(" ", "-")
            yield anchor if count[anchor] == 0 else f"{anchor}-{count[anchor]}"
            count[anchor] += 1

    def spans(self):
        """(line, code) of each piece of code within the text."""
        for number, line in self.prose.items():
            for match in SPAN.finditer(line):
                yield number, match[2].strip()

    def links(self):
        """(line, target) of each link and picture."""
        last = max(self.prose, default=0)
        text = "\n".join(SPAN.sub("", self.prose.get(n, "")) for n in range(1, last + 1))
        for match in LINK.finditer(text):
            yield text.count("\n", 0, match.start()) + 1, match[2]

    def tables(self):
        heading, table = "", None
        for number, line in self.prose.items():
            if match := HEADING.match(line):
                heading = match[2]
            if not line.lstrip().startswith("|"):
                if table:
                    yield table
                table = None
                continue
            if table is None:
                table = Table(number, heading, cells_of(line), [])
            elif not re.fullmatch(r"[|\s:-]+", line):
                table.rows.append((number, cells_of(line)))
        if table:
            yield table


def cells_of(line):
    inside = line.strip().removeprefix("|").removesuffix("|")
    return [cell.strip() for cell in re.split(r"(?<!\\)\|", inside)]


def documents(root):
    """Every document of the project, in sorted order."""
    found = []
    for folder, folders, names in os.walk(root):
        top = pathlib.Path(folder) == pathlib.Path(root)
        folders[:] = [f for f in folders if not f.startswith(".") and not (top and is_output(f))]
        here = pathlib.Path(folder).relative_to(root)
        found += [(here / name).as_posix() for name in names if name.endswith(".md")]
    return [Document(root, path) for path in sorted(found)]


def is_output(folder):
    return folder == "build" or folder.startswith("build-")


def report(findings):
    """Prints `FILE:LINE: what is wrong` for each and exits with 1 if there is any."""
    findings = sorted(findings)
    for path, line, message in findings:
        print(f"{path}:{line}: {message}")
    sys.exit(1 if findings else 0)
