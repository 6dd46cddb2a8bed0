"""The size of the stripped shared library, by section and by part."""

import collections
import pathlib
import re
import subprocess
import tempfile

LARGEST = 1_000_000

# A piece of the linker's map: its size, its section's name, and what the piece itself is called there.
PIECE = re.compile(r"\s*[0-9a-f]+\s+[0-9a-f]+\s+([0-9a-f]+)\s+\d+ {9}(\S+):\((\S+)\)$")
SECTION = re.compile(r"\s*[0-9a-f]+\s+[0-9a-f]+\s+([0-9a-f]+)\s+\d+ (\S+)$")
NAMED = re.compile(r"\.(?:text|rodata|data\.rel\.ro|gcc_except_table|data)\.(\S+)$")
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


def parts_by_name(folder):
    """The parts that have a function or data of that name."""
    made = collections.defaultdict(set)
    for archive in folder.rglob("libquenwick_*.a"):
        part = archive.stem.removeprefix("libquenwick_").replace("API_", "API/")
        listed = subprocess.run(["llvm-nm-19", "--defined-only", "--format=posix", archive],
                                stdout=subprocess.PIPE, text=True, check=True)
        for line in listed.stdout.splitlines():
            made[line.split(" ")[0]].add(part)
    return made


def owner(parts, piece):
    """Whose a piece is. The library is optimised as a whole: no file says it, but its name does."""
    if piece.startswith(".eh_frame"):
        return "tables for exceptions"
    named = NAMED.match(piece)
    name = named[1] if named else ""
    while name not in parts and "." in name:  # the optimiser puts a suffix to some
        name = name.rpartition(".")[0]
    found = parts.get(name, ())
    if len(found) == 1:
        return f"part `{min(found)}`"
    return "several parts have it" if found else "texts, and what else has no name"


def read_map(path):
    """Bytes by section, and by what they are of."""
    sections = collections.Counter()
    owners = collections.Counter()
    parts = parts_by_name(path.parent)
    current = ""
    for line in path.read_text().splitlines():
        if found := SECTION.fullmatch(line):
            current = found[2]
            if not current.startswith(NOT_IN_FILE) and current.startswith("."):
                sections[current] += int(found[1], 16)
        elif (found := PIECE.fullmatch(line)) and not current.startswith(NOT_IN_FILE):
            is_linkers = found[2] == "<internal>" and not found[3].startswith((".eh_frame", ".rodata"))
            owners["tables for the loader" if is_linkers else owner(parts, found[3])] += int(
                found[1], 16)
    return sections, owners


def rows(library):
    library = library.resolve()
    sections, owners = read_map(pathlib.Path(f"{library}.map"))
    made = [row("the stripped shared library", stripped_size(library), LARGEST)]
    made += [row(f"section `{name}`", size) for name, size in sections.most_common()
             if size >= 1000]
    made += [row(name, size) for name, size in owners.most_common()]
    return made
