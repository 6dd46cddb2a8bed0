#!/usr/bin/env python3
"""Runs hosts of the library for a while, each for a life, among faults of everything around them.

usage: faults SECONDS LIFE-PROGRAM SANDBOX-PROGRAM [--seed N] [--growth KILOBYTES] [--keep]

The service stalls, cuts, answers garbage, starts again, shows a wrong certificate; the disk is full,
read-only, damaged; the keyring is killed; the clock jumps by a year; a host is killed, also while
another fault lasts. Each occurs once, then at random. Afterwards nothing may be lost unaccounted
for, invented, sent twice, refused or still held. Exits with 1 where something is.
"""

import argparse
import collections
import contextlib
import errno
import json
import os
import pathlib
import random
import shutil
import signal
import sqlite3
import struct
import subprocess
import sys
import tempfile
import time

from surroundings import Keyring, Service

DISK = "24m"
YEAR = 365 * 86400
# Descriptors: the files of both stores where they could not be opened at first, and the connections
# of loads that nobody waits for any more.
OPENED = 16
KINDS = ["server-error", "malformed", "cut", "cut-during", "wrong-types", "missing-fields",
         "unauthorized", "forbidden", "unprocessable", "no-content"]


class Life:
    """One process of a host, from its start to its end."""

    def __init__(self, faults, number):
        self.prefix = f"life{number}"
        self.journal = faults.folder / f"{self.prefix}.journal"
        self.errors = open(faults.folder / f"{self.prefix}.log", "w+")
        environment = {
            **os.environ, "DBUS_SESSION_BUS_ADDRESS": faults.keyring.address,
            "XDG_CONFIG_HOME": str(faults.home), "XDG_DATA_HOME": str(faults.home)}
        self.process = subprocess.Popen(
            [faults.program, faults.service.authority, str(faults.service.port),
             self.journal, self.prefix, str(faults.random.randrange(1 << 30)), faults.clock],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self.errors, text=True,
            env=environment)

    def is_running(self):
        return self.process.poll() is None

    def kill(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.communicate()

    def ask_to_end(self):
        with contextlib.suppress(BrokenPipeError):
            self.process.stdin.write("end\n")
            self.process.stdin.flush()

    def end(self):
        """Ends it in order; its books."""
        self.ask_to_end()
        try:
            output, _ = self.process.communicate(timeout=150)
        except subprocess.TimeoutExpired:
            self.process.send_signal(signal.SIGABRT)
            self.process.communicate()
            raise
        if self.process.returncode != 0:
            self.errors.seek(0)
            raise AssertionError(f"{self.prefix} ended with {self.process.returncode}:\n"
                                 + self.errors.read()[-4000:])
        return json.loads(output.splitlines()[-1])

    def begun(self):
        return set(self.journal.read_text().split()) if self.journal.exists() else set()


class Faults:
    def __init__(self, arguments, folder):
        self.random = random.Random(arguments.seed)
        self.program = arguments.life
        self.growth = arguments.growth
        self.folder = folder
        self.disk = folder / "disk"
        self.home = self.disk / "home"
        self.disk.mkdir()
        self.has_own_disk = os.environ["QUENWICK_OWN_MOUNTS"] == "1"
        if self.has_own_disk:
            subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={DISK}", "tmpfs", self.disk],
                           check=True)
        self.clock = folder / "clock"
        self.set_clock(0)
        self.keyring = Keyring(folder / "keyring")
        self.service = Service(arguments.sandbox, folder / "sandbox", self.random)
        self.life = None
        self.lives = 0
        self.killed = 0
        self.done = collections.Counter()
        self.inside = collections.Counter()
        self.states = collections.Counter()
        self.largest = collections.Counter()

    # Faults that last, for as long as a context

    @contextlib.contextmanager
    def stall(self):
        with self.service.relay.stalled():
            yield

    @contextlib.contextmanager
    def noise(self):
        with self.service.relay.noisy():
            self.service.relay.cut()
            yield

    @contextlib.contextmanager
    def wrong_certificate(self):
        self.service.restart(self.random.choice(["expired", "unknown-issuer", "wrong-host"]))
        yield
        self.service.restart()

    @contextlib.contextmanager
    def full_disk(self):
        filler = self.disk / "filler"
        try:
            with open(filler, "wb", buffering=0) as file:
                while file.write(bytes(4096)):
                    pass
        except OSError as error:
            assert error.errno == errno.ENOSPC, error
        yield
        filler.unlink()

    @contextlib.contextmanager
    def read_only_disk(self):
        """Nobody may write there when it becomes read-only: for another life than before."""
        self.kill()
        self.remount("ro")
        self.begin()
        yield
        self.remount("rw")

    @contextlib.contextmanager
    def dead_keyring(self):
        self.keyring.kill()
        yield
        self.keyring.start()

    @contextlib.contextmanager
    def wrong_clock(self):
        self.set_clock(self.random.choice([YEAR, -YEAR]))
        yield
        self.set_clock(0)

    def set_clock(self, seconds):
        """A mapped file: its integer changes for whoever reads it."""
        self.clock.touch()
        with open(self.clock, "r+b", buffering=0) as file:
            file.write(struct.pack("=q", seconds))

    def remount(self, mode):
        subprocess.run(["mount", "-o", f"remount,{mode},size={DISK}", self.disk], check=True)

    # Faults of a moment

    def cut(self):
        self.service.relay.cut()

    def wrong_answers(self):
        for part in ("events", "verification"):
            kind = self.random.choice(KINDS)
            self.service.set_faults(part, {"kind": kind, "times": self.random.randint(1, 9)})

    def cut_answers(self):
        """The service has taken events whose answers never come."""
        self.service.set_faults("events", {"kind": "slow", "delay": 300, "times": 20})
        time.sleep(0.1)
        self.service.relay.cut()

    def restart(self):
        self.service.restart()

    def damaged_file(self):
        self.kill()
        file = self.random.choice(sorted(self.home.rglob("*.sqlite")))
        with open(file, "r+b") as opened:
            opened.seek(self.random.randrange(max(file.stat().st_size, 1)))
            opened.write(self.random.randbytes(2000))
        self.begin()

    def kill_life(self):
        self.kill()
        self.begin()

    def end_life(self):
        self.finish()
        self.begin()

    # Lives

    def begin(self):
        self.lives += 1
        self.life = Life(self, self.lives)

    def kill(self):
        self.life.kill()
        self.killed += 1

    def finish(self):
        self.service.clear_faults()
        self.check_books(self.life, self.life.end())

    def pause(self):
        time.sleep(self.random.uniform(0.05, 0.6))

    def last(self, fault):
        """While it lasts a life may be killed and the next begin, or be asked to end."""
        with fault():
            self.pause()
            event = self.random.choice(["nothing", "nothing", "kill_life", "ask_to_end"])
            if event == "kill_life":
                self.kill_life()
            if event == "ask_to_end":
                self.life.ask_to_end()
            self.inside[event] += 1
            self.pause()
        if event == "ask_to_end":
            self.end_life()

    # Checks

    def check_books(self, life, books):
        states = books["states"]
        arrived = self.service.arrived_of(life.prefix)
        told = f"{life.prefix}: {json.dumps(books)}, arrived {len(arrived)}"
        assert books["flushed"] and books["settled"] and books["shutDown"], told
        assert states["waiting"] == 0 and states["in flight"] == 0, told
        assert books["offered"] == books["journal"] == len(life.begun()), told
        assert sum(states.values()) == books["offered"], told
        uncertain = sum(count for name, count in states.items()
                        if name in ("failed: transport", "failed: answer"))
        acknowledged = states["acknowledged"]
        assert acknowledged <= len(arrived) <= acknowledged + uncertain, told
        assert books["grown"] < self.growth and books["opened"] <= OPENED, told
        self.states.update(states)
        self.largest |= {name: books[name] for name in ("grown", "opened")}

    def check_all(self):
        begun = set()
        for journal in self.folder.glob("*.journal"):
            begun |= set(journal.read_text().split())
        arrived = self.service.arrived
        invented = set(arrived) - begun
        assert not invented, f"invented: {sorted(invented)[:10]}"
        twice = [name for name, count in collections.Counter(arrived).items() if count > 1]
        assert not twice, f"sent twice: {twice[:10]} ({len(twice)})"
        refused = self.service.refused
        assert not refused, f"refused by the service: {refused[:3]} ({len(refused)})"
        for file in self.home.rglob("*.sqlite"):
            if "damaged" in file.name:
                continue
            with sqlite3.connect(file) as store:
                assert store.execute("pragma integrity_check").fetchone() == ("ok",), file

    def run(self, seconds):
        lasting = [self.stall, self.noise, self.wrong_certificate, self.full_disk,
                   self.read_only_disk, self.dead_keyring, self.wrong_clock]
        moments = [self.cut, self.wrong_answers, self.cut_answers, self.restart, self.damaged_file,
                   self.kill_life, self.end_life]
        if not self.has_own_disk:
            print("no file system may be made here: the disk is neither full nor read-only")
            lasting = [fault for fault in lasting
                       if fault not in (self.full_disk, self.read_only_disk)]
        faults = lasting + moments
        first = self.random.sample(faults, len(faults))
        self.begin()
        self.end_life()
        end = time.monotonic() + seconds
        while first or time.monotonic() < end:
            self.pause()
            fault = first.pop() if first else self.random.choice(faults)
            if fault in lasting:
                self.last(fault)
            else:
                fault()
            self.done[fault.__name__] += 1
            if not self.life.is_running():
                self.life.end()  # says how it ended
                raise AssertionError(f"{self.life.prefix} ended by itself")
        self.finish()
        self.service.collect()
        self.check_all()

    def close(self):
        if self.life and self.life.is_running():
            self.life.kill()
        self.service.close()
        self.keyring.close()
        if self.has_own_disk:
            subprocess.run(["umount", "-l", self.disk], check=False)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("seconds", type=float)
    parser.add_argument("life")
    parser.add_argument("sandbox")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 30))
    parser.add_argument("--growth", type=int, default=4096)
    parser.add_argument("--keep", action="store_true")
    arguments = parser.parse_args()
    print(f"seed {arguments.seed}", flush=True)
    folder = pathlib.Path(tempfile.mkdtemp(prefix="quenwick-faults-"))
    faults = Faults(arguments, folder)
    try:
        faults.run(arguments.seconds)
    finally:
        faults.close()
        if not arguments.keep:
            shutil.rmtree(folder)
    print("faults:", listed(faults.done))
    print("while one lasted:", listed(faults.inside))
    print(f"lives: {faults.lives}, killed {faults.killed}; grown by {faults.largest['grown']} kB"
          f" and {faults.largest['opened']} descriptors at most")
    print("events of lives that ended in order:", listed(faults.states))


def listed(counts):
    return ", ".join(f"{name} {count}" for name, count in sorted(counts.items()) if count)


def run_with_own_mounts():
    """Starts again where a file system can be made that nobody else sees: the full disk."""
    for options in (["--mount"], ["--map-root-user", "--mount"]):
        probe = ["unshare", *options, "mount", "-t", "tmpfs", "tmpfs", tempfile.gettempdir()]
        if subprocess.run(probe, capture_output=True, check=False).returncode == 0:
            os.environ["QUENWICK_OWN_MOUNTS"] = "1"
            os.execvp("unshare", ["unshare", *options, sys.executable, *sys.argv])
    os.environ["QUENWICK_OWN_MOUNTS"] = "0"


if __name__ == "__main__":
    if "QUENWICK_OWN_MOUNTS" not in os.environ:
        run_with_own_mounts()
    main()
