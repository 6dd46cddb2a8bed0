"""Shapes of links and the rules keys in them, against Python's re: links.py PROGRAM COUNT"""

import re
import sys
from urllib.parse import unquote_to_bytes

import comparison

SHAPES = ["/p/rpm?/.+/url", "/p/cpm?/.+/c", "/p/gom?/"]
KEYS = [r"rpm?\/([a-f0-9]+)\/url", r"gom?\/([a-f0-9]+)"]
# As the standard of URLs takes a path out of one.
PATH = re.compile(r"^(?:[^:/?#]+:)?(?://[^/?#]*)?([^?#]*)")

# Whole shapes are as frequent as pieces that miss one by a letter.
PIECES = ["/p/rp/", "/p/rpm/", "/p/cp/", "/p/cpm/", "/p/go/", "/p/gom/", "/p/", "p/rp", "rp/", "go/",
          "m/", "/url", "/ur", "/c", "/", "//", "rpm?", "/.+/", "?", "#", "deadbeef", "0", "1f/",
          "DEADBEEF", "g", "url", "%2f", "%72p", "%", "%ff", "%c3%a4", "ü", "&qw_u=a", "/../", "x",
          "/p/rp/1f/url", "/p/gom/00ff", "/p/cp/x/c", "/p/rpm?/.+/url", "/P/RP/"]
HOSTS = ["https://links.shop.example"] * 3 + ["http://h:80", "//h", "", "shopapp:"]


def make_links(numbers, count):
    lengths = numbers.choices(range(1, 9), k=count)
    pieces = numbers.choices(PIECES, k=sum(lengths))
    at = 0
    for host, length in zip(numbers.choices(HOSTS, k=count), lengths):
        path = "".join(pieces[at:at + length])
        at += length
        # Without a slash the path would go on with the host, its port, or a scheme.
        yield f"{host}/{path}"


def decoded(path):
    if "%" not in path:
        return path
    try:
        return unquote_to_bytes(path).decode()
    except UnicodeDecodeError:
        return path


def answer_of(shapes, keys, link):
    shape = "-"
    for text, pattern in shapes:
        if text in link or pattern.search(link):
            shape = text
            break
    path = decoded(PATH.match(link)[1])
    for pattern in keys:
        found = pattern.findall(path)
        if found:
            return f"{shape} {found[-1]}"
    return f"{shape} -"


def main():
    links = list(make_links(comparison.random_numbers(), int(sys.argv[2])))
    ours = comparison.begin("link", links)
    shapes = [(text, re.compile(text)) for text in SHAPES]
    keys = [re.compile(text) for text in KEYS]
    theirs = [answer_of(shapes, keys, link) for link in links]
    comparison.compare(zip(links, comparison.end(ours), theirs, strict=True))


main()
