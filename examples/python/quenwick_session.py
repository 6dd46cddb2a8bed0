#!/usr/bin/env python3
"""A whole session with the library, from a program in Python, by nothing but ctypes.

Start `quenwick-sandbox` in another terminal; it prints what to give here:

    examples/python/quenwick_session.py --authority ~/.local/share/quenwick-sandbox/ca.pem \\
        --port 8443 --http-port 38511
"""

import argparse
import ctypes
import json
import queue
import time

# The types of quenwick/runtime/quenwick_c.h.

CALL = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p)
DESTROY = ctypes.CFUNCTYPE(None, ctypes.c_void_p)
WORK = ctypes.CFUNCTYPE(None, ctypes.c_void_p)
POST = ctypes.CFUNCTYPE(None, ctypes.c_void_p, WORK, ctypes.c_void_p)
WRITE = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int, ctypes.c_char_p)


def structure(name, function):
    fields = [("function", function), ("context", ctypes.c_void_p), ("destroy", DESTROY)]
    return type(name, (ctypes.Structure,), {"_fields_": fields})


Callback = structure("Callback", CALL)
Executor = structure("Executor", POST)
Log = structure("Log", WRITE)


class MainLoop:
    """The thread that calls `run_until` is the one on which callbacks come."""

    def __init__(self):
        self._work = queue.SimpleQueue()
        self._post = POST(lambda context, work, argument: self._work.put((work, argument)))

    def executor(self):
        return Executor(self._post)

    def run_until(self, is_so, seconds=30):
        end = time.monotonic() + seconds
        while not is_so():
            work, argument = self._work.get(timeout=max(end - time.monotonic(), 0.001))
            work(argument)


class Quenwick:
    """The library, by its selectors."""

    def __init__(self, path):
        self._library = library = ctypes.CDLL(path)
        library.quenwick_version.restype = ctypes.c_char_p
        library.quenwick_free.argtypes = [ctypes.c_void_p]
        text = ctypes.POINTER(ctypes.c_void_p)
        library.quenwick_configure.restype = ctypes.c_bool
        library.quenwick_configure.argtypes = [
            ctypes.c_char_p, ctypes.POINTER(Executor), ctypes.POINTER(Log), text]
        library.quenwick_perform.restype = ctypes.c_bool
        library.quenwick_perform.argtypes = [
            ctypes.c_char_p, ctypes.c_char_p, ctypes.POINTER(Callback), text]
        for function in (library.quenwick_flush, library.quenwick_shutdown):
            function.restype = ctypes.c_bool
            function.argtypes = [ctypes.c_uint32]
        self._kept = {}  # what the library holds on to, until it lets go of it
        self._next = 1
        self._let_go = DESTROY(self._kept.pop)

    @property
    def version(self):
        return self._library.quenwick_version().decode()

    def configure(self, configuration, loop, log):
        error = ctypes.c_void_p()
        write = WRITE(lambda context, level, message: log(level, message.decode()))
        executor = self._keep(loop.executor(), loop)
        logging = self._keep(Log(write), write)
        if not self._library.quenwick_configure(
                json.dumps(configuration).encode(), executor, logging, ctypes.byref(error)):
            raise ValueError(self._text(error))

    def perform(self, selector, *arguments, callback=None):
        """What the selector yields. `callback` is called with the callback's arguments."""
        answer = ctypes.c_void_p()
        given = None
        if callback:
            call = CALL(lambda context, text: callback(*json.loads(text)))
            given = self._keep(Callback(call), call)
        is_done = self._library.quenwick_perform(
            selector.encode(), json.dumps(arguments).encode(), given, ctypes.byref(answer))
        text = self._text(answer)
        if not is_done:
            raise ValueError(text)
        return json.loads(text)

    def flush(self, seconds):
        return self._library.quenwick_flush(int(seconds * 1000))

    def shutdown(self, seconds):
        return self._library.quenwick_shutdown(int(seconds * 1000))

    @property
    def held(self):
        """How much the library still holds on to."""
        return len(self._kept)

    def _keep(self, given, function):
        """Keeps the function from being collected for as long as the library may call it."""
        given.context, given.destroy = self._next, self._let_go
        self._kept[self._next] = function
        self._next += 1
        return given

    def _text(self, pointer):
        text = ctypes.string_at(pointer).decode() if pointer else ""
        self._library.quenwick_free(pointer)
        return text


def browse(client):
    """Events of every kind. A record is a dictionary, or an initialiser with its arguments."""
    boots = {
        "selector": "initWithId:title:decimalPrice:url:categories:meta:",
        "arguments": ["42", "Boots", "89.90", "https://shop.example/products/42",
                      [{"id": 7, "title": "Shoes"}], {"colour": "brown"}],
    }
    client.perform("categoryViewed:", {"id": 7, "title": "Shoes"})
    client.perform("productViewed:", {"id": 42, "title": "Boots", "price": 89.9})
    client.perform("productAddedWithProperties:", boots)
    client.perform("productRemovedWithProperties:", boots)
    client.perform("productSearched:", {"query": "bo"})
    client.perform("productSearched:", {"query": "boots"})  # of the two, this one is sent
    client.perform("orderCompleted:", {
        "id": "o-1", "revenue": 89.9,
        "products": [{"id": 42, "price": 89.9, "quantity": 1}]})
    client.perform("logEventWithName:properties:", "newsletter", {"weekly": True})
    client.perform("identifyUser:", "alice")


def parsed_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--library", default="libquenwick.so.0", help="the shared library")
    parser.add_argument("--authority", required=True, help="the sandbox's ca.pem")
    parser.add_argument("--port", type=int, required=True, help="the sandbox's HTTPS port")
    parser.add_argument("--http-port", type=int, required=True, help="the sandbox's HTTP port")
    parser.add_argument("--service", default="https://api.shop.example")
    parser.add_argument("--api-key", default="demo-key")
    parser.add_argument("--link", default="https://links.shop.example/p/go/1f")
    parser.add_argument("--domain", default="links.shop.example", help="the host of the link")
    parser.add_argument("--home", help="where the library keeps its state")
    parser.add_argument("--verbose", action="store_true", help="prints what the library logs")
    return parser.parse_args()


def configuration(given):
    with open(given.authority, encoding="utf-8") as file:
        authority = file.read()
    return {
        "serviceURL": given.service,
        "trustAnchors": authority,
        "connectTo": [
            {"port": 443, "toAddress": "127.0.0.1", "toPort": given.port},
            {"port": 80, "toAddress": "127.0.0.1", "toPort": given.http_port}],
        "bundleIdentifier": "com.example.shop",
        "bundleVersion": "1.0",
        "home": given.home,
    }


def run_session(client, loop, given):
    enabled, opened, stored = [], [], []
    client.perform("setEventsEnabledHandler:", callback=lambda: enabled.append(True))
    client.perform("startWithApiKey:deeplinkDomains:launchOptions:result:",
                   given.api_key, [given.domain], None,
                   callback=lambda link, error: opened.append(link or error))
    subscription = client.perform("subscribeToStoredDeeplink:", callback=stored.append)

    print("handled:", client.perform("handleUniversalLinkWithUrl:", given.link))
    loop.run_until(lambda: enabled and opened and len(stored) == 2)
    print("opened:", opened[0])
    print("stored:", client.perform("storedDeeplink"))
    print("link user:", client.perform("qwU"))
    client.perform("cancel:", subscription)

    browse(client)
    print("flushed:", client.flush(seconds=20))


def main():
    given = parsed_arguments()
    client = Quenwick(given.library)
    loop = MainLoop()
    print("quenwick", client.version)
    client.configure(configuration(given), loop,
                     lambda level, message: given.verbose and print("log:", message))
    try:
        run_session(client, loop, given)
    finally:  # nothing may call into an interpreter that ends
        print("shut down:", client.shutdown(seconds=10))
    print("still held:", client.held)


if __name__ == "__main__":
    main()
