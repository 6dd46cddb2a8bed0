#!/usr/bin/env python3
"""Compiles what the documents show, and looks whether their links lead anywhere.

usage: check_documents.py links | CXX | CC [DOCUMENT...]

Blocks fenced as `cpp` and `c` are compiled with a host's warnings as errors; further words of the
fence are pkg-config modules that the block needs. A block without an include of its own is the body
of a function of a host. Blocks fenced as `cpp-qt` are not compiled: Qt is no dependency.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
FENCE = re.compile(r"^```(\S+)([^\n]*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
BODY = '#include <quenwick/quenwick.h>\nusing namespace quenwick;\nvoid host();\n' \
       'void host() {\n#line %d "%s"\n%s}\n'
WHOLE = '#line %d "%s"\n%s'
LANGUAGES = {"cpp": ["-x", "c++", "-std=c++20"], "c": ["-x", "c", "-std=c11"]}


def documents(names):
    return [ROOT / name for name in names] or [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]


def blocks(document):
    """Yields language, pkg-config modules, line and text of each fenced block."""
    text = document.read_text()
    for match in FENCE.finditer(text):
        yield match[1], match[2].split(), text.count("\n", 0, match.start(3)) + 1, match[3]


def compile_block(compiler, document, language, modules, line, text):
    name = str(document.relative_to(ROOT))
    source = (WHOLE if "#include" in text else BODY) % (line, name, text)
    flags = subprocess.run(["pkg-config", "--cflags", *modules], check=True, text=True,
                           capture_output=True).stdout.split() if modules else []
    flags = [flag.replace("-I", "-isystem", 1) for flag in flags]
    with tempfile.NamedTemporaryFile("w", suffix=".txt") as file:
        file.write(source)
        file.flush()
        return subprocess.run([compiler, *LANGUAGES[language], "-fsyntax-only", "-Wall", "-Wextra",
                               "-Werror", f"-I{ROOT}", *flags, file.name], check=False).returncode == 0


def compile_blocks(compiler, names):
    language = "cpp" if "++" in compiler else "c"
    results = [compile_block(compiler, document, *block) for document in documents(names)
               for block in blocks(document) if block[0] == language]
    print(f"{sum(results)} of {len(results)} blocks compile")
    return bool(results) and all(results)


def anchors(document):
    """The anchors of a document's headings, as the common viewers make them."""
    headings = re.findall(r"^#+ (.*)$", document.read_text(), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def is_dead(document, target):
    if "://" in target:
        return False
    path, _, anchor = target.partition("#")
    file = document.parent / path if path else document
    return not file.exists() or bool(anchor) and anchor not in anchors(file)


def check_links(names):
    links = [(document, target) for document in documents(names)
             for target in re.findall(r"\]\(([^)\s]+)\)", document.read_text())]
    dead = [f"{document.relative_to(ROOT)}: {target} leads nowhere"
            for document, target in links if is_dead(document, target)]
    print("\n".join(dead) or f"{len(links)} links lead somewhere")
    return bool(links) and not dead


what, *names = sys.argv[1:]
sys.exit(0 if (check_links if what == "links" else lambda n: compile_blocks(what, n))(names) else 1)
