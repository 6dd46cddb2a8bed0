"""What the comparisons share: a seed that is printed, our answers, and a report of differences."""

import os
import random
import subprocess
import sys
import tempfile

PROGRAM = sys.argv[1]


def random_numbers():
    """Random numbers from a seed of their own; SEED in the environment sets another."""
    seed = int(os.environ.get("SEED", "20261121"))
    print(f"seed {seed}", flush=True)
    return random.Random(seed)


def begin(kind, lines, words=()):
    """Starts our program on the lines; `end` waits for its answers."""
    asked = tempfile.TemporaryFile()
    asked.writelines(line.encode() + b"\n" for line in lines)
    asked.seek(0)
    answered = tempfile.TemporaryFile()
    return subprocess.Popen([PROGRAM, kind, *words], stdin=asked, stdout=answered), answered


def end(begun):
    program, answered = begun
    if program.wait() != 0:
        sys.exit(f"{PROGRAM} ended with {program.returncode}")
    answered.seek(0)
    return answered.read().decode().split("\n")[:-1]


def answers_to(kind, lines, words=()):
    return end(begin(kind, lines, words))


def compare(cases):
    """Ends the program: with 1 where any (what, ours, theirs) differs."""
    total = 0
    different = 0
    for what, ours, theirs in cases:
        total += 1
        if ours == theirs:
            continue
        different += 1
        if different <= 20:
            print(f"{what!r:.400}\n  ours:   {ours!r:.400}\n  theirs: {theirs!r:.400}")
    print(f"{total} compared, {different} different")
    sys.exit(1 if different or not total else 0)
