#!/usr/bin/env python3
"""Compiles what the documents show, and looks whether their links lead anywhere and whether the
README names every operation of the facade.

usage: check_documents.py links | facade | python | COMPILER
       check_documents.py links FOLDER

With a folder it is the documents installed there that are looked at.
Blocks fenced as `cpp` (for a C++ compiler) and `c` are compiled with a host's warnings as errors;
further words of the fence are pkg-config modules that the block needs. A block without an include of
its own is the body of a function of a host. Those fenced as `cpp-qt` are not compiled: the library
does not depend on Qt.
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

DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")])


def blocks(wanted):
    """Yields document, pkg-config modules, line and text of each block of the language."""
    for document in DOCUMENTS:
        text = document.read_text()
        for language, words, block in FENCE.findall(text):
            if language == wanted:
                line = text.count("\n", 0, text.index(block)) + 1
                yield document.relative_to(ROOT), words.split(), line, block


def flags_of(modules):
    """What pkg-config says of the modules, whose headers are no business of ours."""
    if not modules:
        return []
    flags = subprocess.run(["pkg-config", "--cflags", *modules], check=True, text=True,
                           capture_output=True).stdout.split()
    return ["-isystem" + flag[2:] if flag.startswith("-I") else flag for flag in flags]


def compiles(compiler, language, document, modules, line, text):
    source = (WHOLE if "#include" in text else BODY) % (line, document, text)
    with tempfile.NamedTemporaryFile("w", suffix=".txt") as file:
        file.write(source)
        file.flush()
        command = [compiler, *LANGUAGES[language], "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
                   f"-I{ROOT}", *flags_of(modules), file.name]
        return subprocess.run(command, check=False).returncode == 0


def reads_as_python(document, line, text):
    try:
        compile("\n" * (line - 1) + text, str(document), "exec")
        return True
    except SyntaxError as error:
        print(f"{document}:{error.lineno}: {error.msg}", file=sys.stderr)
        return False


def check_blocks(what):
    language = "python" if what == "python" else "cpp" if "++" in what else "c"
    results = [reads_as_python(document, line, text) if what == "python" else
               compiles(what, language, document, modules, line, text)
               for document, modules, line, text in blocks(language)]
    print(f"{sum(results)} of {len(results)} blocks are right")
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


def check_links(documents):
    links = [(document, target) for document in documents
             for target in re.findall(r"\]\(([^)\s]+)\)", FENCE.sub("", document.read_text()))]
    dead = [f"{document}: {target} leads nowhere"
            for document, target in links if is_dead(document, target)]
    print("\n".join(dead) or f"{len(links)} links lead somewhere")
    return bool(links) and not dead


def check_facade():
    header = (ROOT / "quenwick/client/QWClient.h").read_text()
    public = header[header.index(" public:"):header.index(" private:")]
    names = set(re.findall(r"^  static [^;{]*?\b(\w+)\(", public, re.MULTILINE))
    readme = (ROOT / "README.md").read_text()
    missing = [name for name in sorted(names) if not re.search(rf"`{name}[(`]", readme)]
    print("\n".join(f"README.md does not name {name}" for name in missing) or f"{len(names)} are named")
    return bool(names) and not missing


what = sys.argv[1]
documents = sorted(pathlib.Path(sys.argv[2]).rglob("*.md")) if len(sys.argv) > 2 else DOCUMENTS
checks = {"links": lambda: check_links(documents), "facade": check_facade}
sys.exit(0 if checks.get(what, lambda: check_blocks(what))() else 1)
