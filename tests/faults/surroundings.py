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
        self.sockets = set()
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
            if self.is_noisy or self.target is None:
                client.sendall(self.random.randbytes(200))
                client.close()
                return
            server = socket.create_connection(("127.0.0.1", self.target))
        except OSError:
            client.close()
            return
        with self.lock:
            self.sockets |= {client, server}
        threading.Thread(target=self.pump, args=(server, client), daemon=True).start()
        self.pump(client, server)

    def pump(self, source, sink):
        try:
            while data := source.recv(65536):
                self.open.wait()
                sink.sendall(data)
        except OSError:
            pass
        self.end({source, sink})

    def end(self, sockets):
        for one in sockets:
            with contextlib.suppress(OSError):
                one.shutdown(socket.SHUT_RDWR)
            one.close()
        with self.lock:
            self.sockets -= sockets

    def cut(self):
        with self.lock:
            sockets = set(self.sockets)
        self.end(sockets)

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
        """Takes over what has arrived, once nothing more does."""
        events = None
        for _ in range(200):
            latest = json.loads(self.ask(HOSTS["events"], "GET", "/_sandbox/events"))["events"]
            if events is not None and len(latest) == len(events):
                break
            events = latest
            time.sleep(0.02)
        self.ask(HOSTS["events"], "DELETE", "/_sandbox/events")
        self.arrived += [event["body"]["properties"]["id"] for event in latest]

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
