"""Keyed archives, against Python's plistlib: archives.py PROGRAM

What we archive, plistlib reads and a few lines here put together; what is put together here and
written by plistlib, we read.
"""

import json
import plistlib

import comparison

REFUSED = "refused"
TEXTS = ["", "a", "ü", "\U0001f600", "$null", "NS.objects", "\n\t", "x" * 20, "<&>"]


def make_value(numbers, levels):
    kind = numbers.randrange(8 if levels else 5)
    if kind < 2:
        return numbers.choice(TEXTS) + numbers.choice(TEXTS)
    if kind == 2:
        return numbers.choice([0, 1, -1, 127, 128, 255, 256, 65535, 65536, 2**31, -2**31, 2**32, 2**63 - 1,
                               2**63, 2**64 - 1, -2**63, -2**63 + 1])
    if kind == 3:
        return numbers.choice([0.0, 0.1, -1.5, 1e300, 5e-324, 1e22, numbers.random()])
    if kind == 4:
        return numbers.choice([True, False, None])
    if kind == 5:
        return [make_value(numbers, levels - 1) for _ in range(numbers.randrange(5))]
    return {numbers.choice(TEXTS) + str(i): make_value(numbers, levels - 1)
            for i in range(numbers.randrange(4))}


def unarchived(data):
    archive = plistlib.loads(data, fmt=plistlib.FMT_BINARY)
    assert archive["$archiver"] == "NSKeyedArchiver" and archive["$version"] == 100000
    objects = archive["$objects"]

    def read(reference):
        found = objects[reference.data]
        if not isinstance(found, dict):
            return found
        name = objects[found["$class"].data]["$classname"]
        if name == "NSNull":
            return None
        values = [read(each) for each in found["NS.objects"]]
        if name == "NSArray":
            return values
        assert name == "NSDictionary"
        return dict(zip(map(read, found["NS.keys"]), values, strict=True))

    return read(archive["$top"]["root"])


class Archiver:
    """Writes archives as the system's own archiver lays them out; equal objects may be one."""

    def __init__(self, numbers):
        self.numbers = numbers
        self.objects = ["$null"]
        self.known = {}

    def archive(self, value):
        return plistlib.dumps({"$version": 100000, "$archiver": "NSKeyedArchiver",
                               "$top": {"root": self.add(value)}, "$objects": self.objects},
                              fmt=plistlib.FMT_BINARY)

    def append(self, value):
        self.objects.append(value)
        return plistlib.UID(len(self.objects) - 1)

    def class_of(self, *names):
        if names not in self.known:
            self.known[names] = self.append({"$classname": names[0],
                                             "$classes": [*names, "NSObject"]})
        return self.known[names]

    def named(self, name):
        mutable = name.replace("NS", "NSMutable")
        return self.class_of(mutable, name) if self.numbers.random() < 0.3 else self.class_of(name)

    def add(self, value):
        if value is None:
            return self.append({"$class": self.class_of("NSNull")})
        if isinstance(value, list):
            return self.append({"$class": self.named("NSArray"),
                                "NS.objects": [self.add(each) for each in value]})
        if isinstance(value, dict):
            return self.append({"$class": self.named("NSDictionary"),
                                "NS.keys": [self.add(key) for key in value],
                                "NS.objects": [self.add(each) for each in value.values()]})
        if isinstance(value, str) and self.numbers.random() < 0.2:
            return self.append({"$class": self.named("NSString"), "NS.string": value})
        if isinstance(value, str):
            if ("text", value) not in self.known:
                self.known["text", value] = self.append(value)
            return self.known["text", value]
        return self.append(value)


def typed(value):
    """The value so that 1, 1.0 and True differ."""
    if isinstance(value, list):
        return [typed(each) for each in value]
    if isinstance(value, dict):
        return {key: typed(each) for key, each in value.items()}
    return (type(value).__name__, value)


def main():
    numbers = comparison.random_numbers()
    values = [make_value(numbers, 4) for _ in range(3_000)]
    texts = [json.dumps(value) for value in values]
    compared = []
    for text, value, line in zip(texts, values, comparison.answers_to("archive", texts),
                                 strict=True):
        compared.append((text, typed(unarchived(bytes.fromhex(line))), typed(value)))
    lines = [Archiver(numbers).archive(value).hex() for value in values]
    for text, value, line in zip(texts, values, comparison.answers_to("unarchive", lines),
                                 strict=True):
        compared.append((text, line if line == REFUSED else typed(json.loads(line)), typed(value)))
    comparison.compare(compared)


main()
