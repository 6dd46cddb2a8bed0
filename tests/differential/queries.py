"""Parameters as a query, against Python's urllib.parse: queries.py PROGRAM"""

import json
from urllib.parse import parse_qsl, quote

import comparison

TEXTS = ["", "a", "b", "A", "x y", "a+b", "a&b=c", "[]", "ü", "\u2028", "\U0001f600", "%41", "%", "/?",
         "-._~", "!$'()*,;:@#", "\n\r\t\x00\x7f", "\"<>\\^`{|}", "key", *map(chr, range(256))]


def make_text(numbers):
    return "".join(numbers.choices(TEXTS, k=numbers.randrange(3)))


def make_value(numbers, levels):
    kind = numbers.randrange(8 if levels else 5)
    if kind < 2:
        return make_text(numbers)
    if kind == 2:
        return numbers.choice([0, 1, -1, 2**64 - 1, -2**63, numbers.getrandbits(53)])
    if kind == 3:
        return numbers.choice([0.1, -0.5, 1.5e10, numbers.random() * 1000])
    if kind == 4:
        return numbers.choice([True, False, None])
    if kind == 5:
        return [make_value(numbers, levels - 1) for _ in range(numbers.randrange(4))]
    return make_map(numbers, levels - 1)


def make_map(numbers, levels):
    return {make_text(numbers): make_value(numbers, levels) for _ in range(numbers.randrange(5))}


def pairs_of(letters, key, value):
    if isinstance(value, dict):
        for name, each in value.items():
            yield from pairs_of(letters, f"{key}[{name}]", each)
    elif isinstance(value, list):
        for each in value:
            yield from pairs_of(letters, key if "n" in letters else key + "[]", each)
    elif isinstance(value, bool):
        yield key, str(value).lower() if "l" in letters else str(int(value))
    elif value is None:
        yield key, "null"
    else:
        yield key, str(value)


def all_pairs(letters, parameters):
    return [pair for key in sorted(parameters, key=str.encode)
            for pair in pairs_of(letters, key, parameters[key])]


def main():
    numbers = comparison.random_numbers()
    cases = [(numbers.choice(["-", "n", "l", "nl"]), make_map(numbers, 3)) for _ in range(10_000)]
    lines = [f"{letters} {json.dumps(parameters)}" for letters, parameters in cases]
    compared = []
    for (letters, parameters), query in zip(cases, comparison.answers_to("query", lines),
                                            strict=True):
        pairs = all_pairs(letters, parameters)
        written = "&".join(f"{quote(key, '/?')}={quote(value, '/?')}" for key, value in pairs)
        compared.append((lines[len(compared) // 2], query, written))
        read = parse_qsl(query, keep_blank_values=True, strict_parsing=bool(query), errors="strict")
        compared.append((query, pairs, read))
    comparison.compare(compared)


main()
