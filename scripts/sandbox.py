"""The local sandbox, for scripts that run programs against it."""

import json
import re
import subprocess
import urllib.request


class Sandbox:
    """A sandbox that runs while the `with` block does, on ports of its own."""

    def __init__(self, program, state):
        self._process = subprocess.Popen(
            [program, "--port", "0", "--state", state], stdout=subprocess.PIPE, text=True)
        told = {}
        for line in self._process.stdout:
            if found := re.match(r"(HTTPS|HTTP|Authority): +(.+)", line):
                told[found[1]] = found[2].removeprefix("127.0.0.1:")
            if len(told) == 3:
                break
        else:
            raise SystemExit("the sandbox did not start")
        self.port, self.http_port, self.authority = told["HTTPS"], told["HTTP"], told["Authority"]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait()
        self._process.stdout.close()

    @property
    def options(self):
        """How the examples reach it."""
        return ["--service", "https://api.shop.example", "--authority", self.authority,
                "--port", self.port, "--http-port", self.http_port]

    def asked(self, what):
        """Its record of `what`: "requests", "events" or "refusals"."""
        with self._open(what) as answer:
            return json.load(answer)[what]

    def fault(self, of, kind):
        """Answers the next right request to that part ("events", "verification") wrongly."""
        body = json.dumps({"kind": kind, "times": 1}).encode()
        self._open("faults/" + of, data=body, method="PUT").close()

    def _open(self, path, **more):
        url = f"http://127.0.0.1:{self.http_port}/_sandbox/{path}"
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        return opener.open(urllib.request.Request(url, **more), timeout=5)
