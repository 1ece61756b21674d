"""What the checkers share: the files of the project, their code without comments, and the report.

A checker takes the root of a tree as its argument (default: this project), prints one line
`FILE:LINE: what is wrong` for each finding, and exits with 1 if there was any.
"""

import concurrent.futures
import hashlib
import os
import pathlib
import re
import subprocess
import sys

FLOORS = ["platform", "interlock-model", "Velo", "replay"]  # from the ground upward
HEADER = ".h"
SOURCE = ".cpp"

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')

COMMENT_OR_LITERAL = re.compile(
    r'''(?P<comment>//[^\n]*|/\*.*?\*/)
      | R"(?P<mark>[^()\s\\]*)\((?P<raw>.*?)\)(?P=mark)"
      | "(?P<text>(?:\\.|[^"\\\n])*)"
      | (?<![0-9A-Fa-f])'(?P<character>(?:\\.|[^'\\\n])+)\'''',
    re.VERBOSE | re.DOTALL)


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


class Tree:
    """The files under one root. Paths are relative to the root, with slashes, in sorted order."""

    def __init__(self, root):
        self.root = pathlib.Path(root).resolve()
        self._includes = {}

    def files(self, *suffixes, under=None):
        found = []
        for folder, folders, names in os.walk(self.root):
            top = pathlib.Path(folder) == self.root
            folders[:] = [f for f in folders if not (f.startswith(".") or top and is_output(f))]
            here = pathlib.Path(folder).relative_to(self.root)
            found += [(here / name).as_posix() for name in names if name.endswith(suffixes)]
        return sorted(f for f in found if under is None or f.split("/")[0] in under)

    def cpp_files(self, under=None):
        return self.files(HEADER, SOURCE, under=under)

    def exists(self, path):
        return (self.root / path).is_file()

    def text(self, path):
        return (self.root / path).read_bytes().decode("utf-8", errors="replace")

    def includes(self, path):
        """The include directives of a file: (line number, name, whether it is in quotes)."""
        if path not in self._includes:
            code = without_comments(self.text(path))
            matches = ((n, INCLUDE.match(line)) for n, line in enumerate(code.split("\n"), 1))
            self._includes[path] = [(n, m[1] or m[2], bool(m[1])) for n, m in matches if m]
        return self._includes[path]

    def closure(self, path):
        """The file and all project files that it includes, directly or not."""
        seen, todo = set(), [path]
        while todo:
            current = todo.pop()
            if current not in seen and self.exists(current):
                seen.add(current)
                todo += [name for _, name, quoted in self.includes(current) if quoted]
        return sorted(seen)


class Memory:
    """Remembers in build/lint which files were clean; only what changed is checked again.

    What counts as a change: the file, whatever project file it includes, and the `basis`, a text
    that names everything else the answer depends on (configuration, version of the tool, command).
    """

    def __init__(self, tree, check):
        self.tree = tree
        self.folder = tree.root / "build" / "lint" / check

    def key(self, path, basis):
        digest = hashlib.sha256(basis.encode())
        for name in self.tree.closure(path):
            digest.update(f"\0{name}\0".encode())
            digest.update((self.tree.root / name).read_bytes())
        return digest.hexdigest()

    def is_clean(self, path, key):
        stamp = self._stamp(path)
        return stamp.is_file() and stamp.read_text() == key

    def set_clean(self, path, key):
        self.folder.mkdir(parents=True, exist_ok=True)
        self._stamp(path).write_text(key)

    def _stamp(self, path):
        return self.folder / path.replace("/", "%")


def is_output(folder):
    return folder == "build" or folder.startswith("build-")


def without_comments(text, keep_literals=True):
    """The text with comments (and the insides of literals) blanked; lines stay where they are."""

    def blank(match):
        if match["comment"] is None and keep_literals:
            return match[0]
        if match["comment"] is not None:
            return re.sub(r"[^\n]", " ", match[0])
        return match[0][0] + re.sub(r"[^\n]", " ", match[0][1:-1]) + match[0][-1]

    return COMMENT_OR_LITERAL.sub(blank, text)


def in_parallel(function, items):
    """The results of the function, in the order of the items."""
    workers = min(os.cpu_count() or 1, 4)
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        return list(pool.map(function, items))


def main(check):
    """Runs check(tree), which yields (file, line, what is wrong), on the tree that is asked for."""
    root = sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2]
    findings = sorted(check(Tree(root)))
    for path, line, message in findings:
        print(f"{path}:{line}: {message}")
    sys.exit(1 if findings else 0)
