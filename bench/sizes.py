"""The size of the stripped shared library, by section and by part."""

import collections
import pathlib
import re
import subprocess
import tempfile

LARGEST = 1_000_000

# A piece of the linker's map: its size, what it was taken from, and its section's name.
PIECE = re.compile(r"\s*[0-9a-f]+\s+[0-9a-f]+\s+([0-9a-f]+)\s+\d+ {9}(\S+):\((\S+)\)$")
SECTION = re.compile(r"\s*[0-9a-f]+\s+[0-9a-f]+\s+([0-9a-f]+)\s+\d+ (\S+)$")
PART = re.compile(r"/quenwick_(\w+)\.dir/")
NOT_IN_FILE = (".bss", ".tbss", ".debug", ".comment", ".symtab", ".strtab", ".shstrtab")


def row(what, size, largest=None):
    made = {"table": "size", "what": what, "unit": "B", "ours": size}
    if largest:
        made["target"] = {"value": largest, "of": "ours", "isLeast": False,
                          "isMet": size <= largest}
    return made


def stripped_size(library):
    with tempfile.TemporaryDirectory() as folder:
        stripped = pathlib.Path(folder) / "stripped.so"
        subprocess.run(["strip", "-o", stripped, library], check=True)
        return stripped.stat().st_size


def read_map(path):
    """Bytes by section, and by part; what no part brought is the loader's."""
    sections = collections.Counter()
    parts = collections.Counter()
    current = ""
    for line in path.read_text().splitlines():
        if found := SECTION.fullmatch(line):
            current = found[2]
            if not current.startswith(NOT_IN_FILE) and current.startswith("."):
                sections[current] += int(found[1], 16)
        elif (found := PIECE.fullmatch(line)) and not current.startswith(NOT_IN_FILE):
            part = PART.search(found[2])
            parts[part[1].replace("API_", "API/") if part else "tables for the loader"] += int(
                found[1], 16)
    return sections, parts


def rows(library):
    library = library.resolve()
    sections, parts = read_map(pathlib.Path(f"{library}.map"))
    made = [row("the stripped shared library", stripped_size(library), LARGEST)]
    made += [row(f"section `{name}`", size) for name, size in sections.most_common()
             if size >= 1000]
    made += [row(f"part `{name}`", size) if "/" in name or " " not in name else row(name, size)
             for name, size in parts.most_common()]
    return made
