"""What stands around a host: the service behind a relay that can be cut, and a keyring."""

import contextlib
import http.client
import json
import os
import socket
import ssl
import subprocess
import threading
import time

DIES_WITH_PARENT = ["setpriv", "--pdeathsig", "KILL"]
HOSTS = {"events": "events.shop.example", "verification": "api.shop.example"}


class Relay:
    """Passes connections to one port on to another, unless it is told to stall, cut or make noise."""

    def __init__(self, random):
        self.random = random
        self.target = None
        self.open = threading.Event()
        self.open.set()
        self.is_noisy = False
        self.connections = set()
        self.lock = threading.Lock()
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=256)
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            threading.Thread(target=self.serve, args=(client,), daemon=True).start()

    def serve(self, client):
        self.open.wait()
        try:
            with self.lock:
                server = self.connect(client)
        except OSError:
            client.close()
            return
        threading.Thread(target=self.pump, args=(client, server), daemon=True).start()
        self.pump(server, client)
        client.close()
        server.close()
        with self.lock:
            self.connections.remove((client, server))

    def connect(self, client):
        if self.is_noisy or self.target is None:
            client.sendall(self.random.randbytes(200))
            raise ConnectionAbortedError
        server = socket.create_connection(("127.0.0.1", self.target))
        self.connections.add((client, server))
        return server

    def pump(self, source, sink):
        """Until the source's end, also where nobody takes it any more: the service ends a connection
        once it has read all of it."""
        with contextlib.suppress(OSError):
            while data := source.recv(65536):
                self.open.wait()
                with contextlib.suppress(OSError):
                    sink.sendall(data)
        with contextlib.suppress(OSError):
            sink.shutdown(socket.SHUT_WR)

    def cut(self):
        with self.lock:
            for client, _ in self.connections:
                with contextlib.suppress(OSError):
                    client.shutdown(socket.SHUT_RDWR)

    def wait_until_unused(self):
        end = time.monotonic() + 60
        while self.connections:
            assert time.monotonic() < end, "the service holds connections that were cut"
            time.sleep(0.001)

    @contextlib.contextmanager
    def stalled(self):
        self.open.clear()
        yield
        self.open.set()

    @contextlib.contextmanager
    def noisy(self):
        self.is_noisy = True
        yield
        self.is_noisy = False


class Service:
    """The sandbox, and what it has received over all of its starts."""

    def __init__(self, program, folder, random):
        self.program = program
        self.folder = folder
        folder.mkdir()
        self.relay = Relay(random)
        self.port = self.relay.port
        self.arrived = []
        self.refused = []
        self.start()

    def scenario(self, certificate):
        scenario = {
            "links": [{"link": "https://links.shop.example/p/go/1f", "chain": [
                {"to": "https://hop.shop.example/p/rp/deadbeef/url?qw_u=alice"},
                {"to": "https://shop.example/products/42"}]}],
            "behavior": {"keys": [{"key": "demo-key"}], "timestampTolerance": 10**12}}
        if certificate:
            scenario["certificates"] = {host: certificate for host in HOSTS.values()}
        file = self.folder / "scenario.json"
        file.write_text(json.dumps(scenario))
        return file

    def start(self, certificate=None):
        self.process = subprocess.Popen(
            [*DIES_WITH_PARENT, self.program, "--port", "0", "--state", self.folder / "state",
             "--scenario", self.scenario(certificate)], stdout=subprocess.PIPE, text=True)
        for line in self.process.stdout:
            if line.startswith("HTTPS:"):
                self.relay.target = int(line.rsplit(":", 1)[1])
            if line.startswith("Authority:"):
                self.authority = line.split(maxsplit=1)[1].strip()
                break
        self.own_port = self.relay.target

    def restart(self, certificate=None):
        self.relay.target = None
        self.relay.cut()
        self.collect()
        self.process.terminate()
        self.process.wait()
        self.start(certificate)

    def ask(self, host, method, path, body=None):
        """Asks the sandbox itself, past the relay and whatever certificate it shows."""
        context = ssl._create_unverified_context()
        with contextlib.closing(http.client.HTTPConnection("127.0.0.1", self.own_port)) as connection:
            plain = socket.create_connection(("127.0.0.1", self.own_port), timeout=30)
            connection.sock = context.wrap_socket(plain, server_hostname=host)
            connection.request(method, path, body, {"Host": host})
            return connection.getresponse().read()

    def set_faults(self, part, faults):
        self.ask(HOSTS[part], "PUT", f"/_sandbox/faults/{part}", json.dumps(faults))

    def clear_faults(self):
        for part, host in HOSTS.items():
            self.ask(host, "DELETE", f"/_sandbox/faults/{part}")

    def collect(self):
        """Takes over what this start of it accepted and refused. No life may be connected."""
        self.relay.wait_until_unused()
        host = HOSTS["events"]
        accepted = json.loads(self.ask(host, "GET", "/_sandbox/events"))["events"]
        self.arrived += [event["body"]["properties"]["id"] for event in accepted]
        self.refused += json.loads(self.ask(host, "GET", "/_sandbox/refusals"))["refusals"]
        self.ask(host, "DELETE", "/_sandbox/events")

    def arrived_of(self, life):
        self.collect()
        return [name for name in self.arrived if name.startswith(life + "-")]

    def close(self):
        self.process.kill()
        self.process.wait()


class Keyring:
    """A keyring on a session bus of its own."""

    def __init__(self, folder):
        self.folder = folder
        folder.mkdir(mode=0o700)
        (folder / "bus.conf").write_text(
            f"<busconfig><type>session</type><listen>unix:path={folder}/bus</listen>"
            "<auth>EXTERNAL</auth><policy context='default'><allow send_destination='*'/>"
            "<allow receive_sender='*'/><allow own='*'/></policy></busconfig>")
        self.bus = subprocess.Popen(
            [*DIES_WITH_PARENT, "dbus-daemon", f"--config-file={folder}/bus.conf", "--nofork",
             "--print-address=1"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.address = self.bus.stdout.readline().strip()
        self.start()

    def start(self):
        environment = {**os.environ, "DBUS_SESSION_BUS_ADDRESS": self.address}
        for name in ("HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME"):
            environment[name] = str(self.folder)
        self.process = subprocess.Popen(
            [*DIES_WITH_PARENT, "gnome-keyring-daemon", "--foreground", "--components=secrets",
             "--unlock", f"--control-directory={self.folder}"], env=environment,
            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.process.stdin.write(b"a throw-away password")
        self.process.stdin.close()
        for _ in range(200):
            if self.has_place_for_secrets():
                return
            time.sleep(0.05)
        raise RuntimeError("the keyring did not start")

    def has_place_for_secrets(self):
        answer = subprocess.run(
            ["dbus-send", f"--bus={self.address}", "--print-reply=literal",
             "--dest=org.freedesktop.secrets", "/org/freedesktop/secrets",
             "org.freedesktop.Secret.Service.ReadAlias", "string:default"],
            capture_output=True, text=True, check=False)
        return "collection/login" in answer.stdout

    def kill(self):
        self.process.kill()
        self.process.wait()

    def close(self):
        self.kill()
        self.bus.kill()
        self.bus.wait()
