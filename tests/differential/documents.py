"""JSON documents, valid and broken, against Python's json module: documents.py PROGRAM

They are to agree on what is JSON, and on its values. Ours alone refuses more than 512 levels, numbers
beyond a double, exponents of ten digits, and halves of surrogate pairs.
"""

import json
import struct
import sys

import comparison

REFUSED = "refused"
MAXIMUM_DEPTH = 512
NUMBERS = ["0", "-0", "-0.0", "1", "-1", "1.0", "0.1", "1e5", "1E+5", "1e-5", "123456789012345678",
           "9007199254740993", "9223372036854775807", "-9223372036854775808", "9223372036854775808",
           "18446744073709551615", "18446744073709551616", "-9223372036854775809", "1e308", "1e309",
           "-1e309", "5e-324", "2.2250738585072011e-308", "2.2250738585072014e-308", "1e-400",
           "1.7976931348623157e308", "1.7976931348623159e308", "0.30000000000000004", "1e23",
           "8.5e22", "9007199254740993.0", "123456789.123456789e-20", "0e999", "1" + "0" * 400,
           "0." + "0" * 400 + "1", "0.1" + "0" * 400, "3" * 40, "4." + "3" * 60, "0.000001", "1e21",
           "-1e-400", "2.184467440737095516150", "-5.476201493885506e+242", "0.11e300",
           "1e99999999999", "1e-99999999999", "0e99999999999", "0.1e-999999", "1e-000000000001"]
BROKEN = ["", " ", "01", "-", "+1", ".5", "1.", "1e", "1e+", "0x1", "NaN", "Infinity", "-Infinity",
          "nan", "tru", "True", "nul", "'a'", '"', '"\\x"', '"\\u12"', '"\\u12G4"', '"\n"', '"\t"',
          '"\x00"', "[", "]", "[1,]", "[,1]", "[1 2]", "{", "{}}", '{"a"}', '{"a":}', '{"a":1,}',
          "{a:1}", '{1:1}', '{"a":1 "b":2}', "[1]]", "1 2", "/* */1", "// 1\n1", "\ufeff1", "\x0b1",
          "\u00a01", "1\x00", "--1", "1-1", "[1}", '{"a":1]', "\u2028[]", '"\\ud83d\\u"']
TEXTS = ["", "a", "\\n", "\\u0041", "\\u0000", "\\\\", "\\/", "/", "ü", "\u2028", "\U0001f600",
         "\\ud83d\\ude00", "\\ud83d", "\\ude00", "\\ud83d\\ud83d\\ude00", "\\uD83D\\uDE00x", "\x7f",
         "\\b\\f\\r\\t\\\"", "\ufeff", "\ufffe", "key", "id"]


class TooLarge(ValueError):
    """A number that no double holds."""


def real(text):
    number = float(text)
    _, _, exponent = text.lower().partition("e")
    if len(exponent.lstrip("+-0")) > 9 or number in (float("inf"), float("-inf")):
        raise TooLarge(text)
    return number


def integer(text):
    return int(text) if -2**63 <= int(text) < 2**64 else real(text)


def constant(text):
    raise ValueError(text)


def depth(value):
    if not isinstance(value, (list, dict)):
        return 0
    return 1 + max(map(depth, value.values() if isinstance(value, dict) else value), default=0)


def exact(value):
    """The value so that values are equal only where they are of one kind, to the last bit."""
    if isinstance(value, float):
        return ("real", struct.pack(">d", value))
    if isinstance(value, list):
        return [exact(each) for each in value]
    if isinstance(value, dict):
        return {key: exact(each) for key, each in value.items()}
    return (type(value).__name__, value)


def whole(value):
    json.dumps(value, ensure_ascii=False).encode()  # half a surrogate pair is no text
    return value


def read(document):
    return whole(json.loads(document.decode(), parse_float=real, parse_int=integer,
                            parse_constant=constant,
                            object_pairs_hook=lambda pairs: dict(whole(pairs))))


def theirs(document):
    try:
        value = read(document)
    except ValueError:
        return REFUSED
    return exact(value) if depth(value) <= MAXIMUM_DEPTH else REFUSED


def make_value(numbers, levels):
    kind = numbers.randrange(9 if levels else 6)
    if kind < 2:
        return numbers.choice(NUMBERS)
    if kind == 2:
        return repr(struct.unpack(">d", numbers.randbytes(8))[0])
    if kind == 3:
        return numbers.choice(["true", "false", "null", "[]", "{}"])
    if kind < 6:
        return '"' + "".join(numbers.choices(TEXTS, k=numbers.randrange(4))) + '"'
    blank = numbers.choice(["", "", " ", "\n\t\r "])
    items = [make_value(numbers, levels - 1) for _ in range(numbers.randrange(4))]
    if kind == 6:
        return "[" + blank + ("," + blank).join(items) + blank + "]"
    pairs = (f'"{numbers.choice(TEXTS)}"{blank}:{item}' for item in items)
    return "{" + blank + ("," + blank).join(pairs) + blank + "}"


def broken(numbers, document):
    """The document with a byte or two taken away, put in or changed."""
    bytes_ = bytearray(document)
    for _ in range(numbers.randrange(1, 3)):
        at = numbers.randrange(len(bytes_) + 1)
        new = numbers.choice([b"", b'"', b",", b"[", b"}", b":", b"0", b"-", b".", b"e", b"\\", b" ",
                              b"\xff", b"\xc3", b"\xed\xa0\x80", b"\x00", b"u"])
        bytes_[at:at + numbers.randrange(2)] = new
    return bytes(bytes_)


def make_documents(numbers):
    for text in NUMBERS + BROKEN:
        yield text.encode()
        yield f'{{"a": [{text}]}}'.encode()
    for levels in (511, 512, 513, 900):
        yield b"[" * levels + b"]" * levels
        yield b'{"a":' * levels + b"1" + b"}" * levels
    for _ in range(10_000):
        document = make_value(numbers, 4).encode()
        yield document
        yield broken(numbers, document)


def main():
    sys.setrecursionlimit(10_000)
    documents = list(make_documents(comparison.random_numbers()))
    lines = comparison.answers_to("json", [document.hex() for document in documents])
    ours = (REFUSED if line == REFUSED else exact(json.loads(line)) for line in lines)
    comparison.compare(zip(documents, ours, map(theirs, documents), strict=True))


main()
