#!/usr/bin/python3 -B
"""Measures a fleet's console with simulated devices, a line of JSON a measure; `fleet` calls it.

The devices (fleet_agents.cpp), a mosquitto, the console and a lighttpd without a log-in share this machine, so what is
told of the console is told of it beside them. The ratio is to the same measure with the number of devices before.
"""

import argparse
import contextlib
import http.client
import json
import re
import resource
import select
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import measure

PROJECT = Path(__file__).resolve().parent.parent
OTHER_DESCRIPTORS = 64  # of the broker, beside its clients
LIMIT_SECONDS = 600  # of whatever is waited for
FLOOD_SECONDS = 5
HEALTH_SECONDS = 10  # the least that a device may be told, six times the usual
IDLE_SECONDS = 10
CALLS, CALLS_SECONDS = 300, 20  # of each kind, and not longer
SAMPLES = 60  # of its health that the console keeps of a device
PART = 10  # waves of a rollout
TROUBLED = 20  # per cent of the devices, for rollouts that have to stop
PATIENCE_SECONDS = 10  # theirs
RETAINED = 4096  # bytes of a device that a broker may have to hold back; the shipped configuration has fewer devices
# What the shipped configuration of the broker has for other machines.
NOT_HERE = r"(listener|cafile|certfile|keyfile|require_certificate|use_identity_as_username|acl_file|persistence_location)"


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_until(condition, what, pause=0.02):
    """The seconds that it took. Looking takes a fifth of the time at most."""
    begin = looked = time.monotonic()
    while not condition():
        now = time.monotonic()
        if now > begin + LIMIT_SECONDS:
            sys.exit(f"After {LIMIT_SECONDS} s: not yet {what}")
        time.sleep(max(pause, 4 * (now - looked)))
        looked = time.monotonic()
    return time.monotonic() - begin


def is_up(port):
    with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port)):
        return True
    return False


SITE = """
server.document-root = "{folder}"
server.port = {port}
server.bind = "127.0.0.1"
server.errorlog = "/dev/null"
server.modules = ( "mod_setenv", "mod_fastcgi" )
server.max-keep-alive-requests = 100000
server.max-keep-alive-idle = 300
setenv.set-environment = ( "REMOTE_USER" => "bench" )
fastcgi.server = ( "/" => (( "socket" => "{backend}", "check-local" => "disable", "fix-root-scriptname" => "enable" )) )
"""


class Told:
    """The measures, of one number of devices after the other."""

    def __init__(self):
        self.before, self.now, self.devices, self.known = {}, {}, 0, 0

    def begin(self, devices, absent):
        """So many that are connected, and so many others that are known."""
        self.before, self.now, self.devices, self.known = self.now, {}, devices, devices + absent

    def tell(self, name, here, unit, limit=None):
        self.now[name] = here
        before = self.before.get(name)
        measure.tell(f"{self.known:,} devices: {name}", here, unit, ratio=here / before if before else None,
                     limit=limit if before else None)

    def tell_times(self, name, work):
        end = time.monotonic() + CALLS_SECONDS
        times = sorted(measure.milliseconds(work) for number in range(CALLS) if not number or time.monotonic() < end)
        self.tell(f"{name}, median", statistics.median(times), "ms")
        self.tell(f"{name}, 99th percentile", times[len(times) * 99 // 100], "ms")

    @contextlib.contextmanager
    def telling_processor(self, of, pids):
        """What is done meanwhile puts the number of its parts into the list."""
        before = [measure.processor_seconds(pid) for pid in pids.values()]
        parts = []
        yield parts
        for (name, pid), seconds in zip(pids.items(), before):
            self.tell(f"{of}, processor of the {name}", 1e6 * (measure.processor_seconds(pid) - seconds) / sum(parts), "us")

    def tell_memory(self, name, pid, empty=None, devices=None):
        resident, written = measure.memory(pid)
        self.tell(f"{name}, resident", resident, "KiB")
        self.tell(f"{name}, written", written, "KiB")
        if devices:
            self.tell(f"{name}, a device", 1024 * (written - empty) / devices, "bytes")


class Broker:
    """A mosquitto as the shipped configuration sets it up, but for TLS and the list of who may what."""

    def __init__(self, stack, folder, known):
        self.port = free_port()
        shipped = (PROJECT / "config/mosquitto.conf").read_text()
        text = re.sub(rf"(?m)^{NOT_HERE}\b.*\n", "", shipped)
        text = re.sub(r"(?<=max_queued_bytes )\d+", lambda shipped: str(max(int(shipped[0]), RETAINED * known)), text)
        path = folder / "mosquitto.conf"
        path.write_text(f"{text}\nlistener {self.port} 127.0.0.1\nallow_anonymous true\nuser root\n"
                        f"persistence_location {folder}/\nlog_dest file {folder}/mosquitto.log\n")
        self.pid = stack.enter_context(measure.running("mosquitto", "-c", str(path), stderr=subprocess.DEVNULL)).pid
        wait_until(lambda: is_up(self.port), "a broker")

    def seconds_of_all(self, devices):
        """Until a plain subscriber has all that is retained."""
        topics = [option for name in ("online", "reported", "health") for option in ("-t", f"fleet/+/{name}")]
        begin = time.monotonic()
        subprocess.run(["mosquitto_sub", "-V", "5", "-p", str(self.port), "-q", "1", *topics, "-C", str(3 * devices),
                        "-W", str(LIMIT_SECONDS)], check=True, stdout=subprocess.DEVNULL)
        return time.monotonic() - begin


class Agents:
    def __init__(self, stack, build, broker, devices):
        self.process = stack.enter_context(subprocess.Popen(
            [build / "bench/fleet_agents", str(broker.port), str(devices), PROJECT / "bench/fleet_device.json"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True))
        stack.callback(self.process.kill)

    def __call__(self, word, number=0):
        print(word, number, file=self.process.stdin, flush=True)
        if not select.select([self.process.stdout], [], [], LIMIT_SECONDS)[0]:
            sys.exit(f"After {LIMIT_SECONDS} s: no answer to \"{word}\"")
        line = self.process.stdout.readline()
        if not line:
            sys.exit(f"The devices have ended at \"{word}\"")
        return json.loads(line)


class Console:
    """A console with an empty store, behind a web server that has let "bench" in."""

    def __init__(self, stack, build, folder, broker, known):
        self.store = folder / "fleet.db"
        self.http_port = free_port()
        backend = folder / "console.sock"
        backend.unlink(missing_ok=True)  # of the one before
        self.pid = stack.enter_context(measure.running(
            str(build / "fleet/webconfig-fleet"), "-c", str(PROJECT / "config/fleet.json"), f"--service-socket={backend}",
            f"--fleet-broker=mqtt://127.0.0.1:{broker.port}", f"--fleet-file={self.store}", "--fleet-ca=",
            "--fleet-certificate=", "--fleet-key=", f"--fleet-most={known}")).pid
        path = folder / "lighttpd.conf"
        path.write_text(SITE.format(folder=folder, port=self.http_port, backend=backend))
        stack.enter_context(measure.running("lighttpd", "-D", "-f", str(path)))
        wait_until(lambda: backend.exists() and is_up(self.http_port), "a console")
        self.connection = http.client.HTTPConnection("127.0.0.1", self.http_port, timeout=LIMIT_SECONDS)

    def fetch(self, path, body=None):
        headers = {"Content-Type": "application/json"} if body else {}
        self.connection.request("POST" if body else "GET", path, body, headers)
        answer = self.connection.getresponse()
        text = answer.read()
        if answer.status != 200:
            sys.exit(f"{path} answers {answer.status}: {text[:200]}")
        return text

    def __call__(self, method, **asked):
        answer = json.loads(self.fetch("/fleet/rpc", json.dumps({"method": method, "params": [asked], "id": 1})))
        if answer["error"] is not None:
            sys.exit(f"{method} {asked}: {answer['error']}")
        return answer["result"]

    def lists(self, devices, online):
        """Whether it knows what each of so many is, and how many are online."""
        listed = self("devices", limit=1)
        return listed["online"] == online and sum(listed["firmwares"].values()) == devices


def measure_broker(told, broker, agents):
    """What there is without a console: the limits of the broker and of the simulation."""
    empty = measure.memory(broker.pid)[1]
    connected = agents("connect")
    told.tell("connected, and all said to the broker", connected["seconds"], "s")
    told.tell("messages of that", connected["messages"] / connected["seconds"], "/s")
    told.tell_memory("broker", broker.pid, empty, told.devices)
    agents("absent", told.known - told.devices)
    told.tell("a plain subscriber has all", broker.seconds_of_all(told.known), "s")
    flood = agents("flood", FLOOD_SECONDS)
    told.tell("health that the broker alone takes", flood["messages"] / flood["seconds"], "/s")


def measure_listing(told, console, agents):
    """What the console needs until it knows all that there is, first at its start, then when all devices come back."""
    told.tell("all listed after the console's start",
              wait_until(lambda: console.lists(told.known, told.devices), "all are listed"), "s")
    told.tell("processor for that", measure.processor_seconds(console.pid), "s")
    agents("cut")
    wait_until(lambda: console.lists(told.known, 0), "all are offline")
    before = console("status")["messages"]
    begin = time.monotonic()
    agents("connect")
    wait_until(lambda: console.lists(told.known, told.devices), "all are online again")
    seconds = time.monotonic() - begin
    told.tell("all online after all were cut off", seconds, "s")
    told.tell("messages of that at the console", (console("status")["messages"] - before) / seconds, "/s")


def measure_calls(told, console, agents):
    agents("health", HEALTH_SECONDS)
    time.sleep(1)
    before, begin = measure.processor_seconds(console.pid), time.monotonic()
    time.sleep(IDLE_SECONDS)
    told.tell(f"health each {HEALTH_SECONDS} s, of a processor",
              100 * (measure.processor_seconds(console.pid) - before) / (time.monotonic() - begin), "%")
    some = console("devices", limit=1, offset=told.known // 2)["devices"][0]["id"]
    end = {"sort": "seen", "descending": True, "offset": told.known - 50}
    for name, asked in (("by id", {}), ("by when seen, at the end", end), ("search", {"search": "st-0000-00"}),
                        ("that differ from one", {"differs": {"device": some}})):
        told.tell_times(f"devices, {name}", lambda asked=asked: console("devices", **asked))
    told.tell_times("status", lambda: console("status"))
    told.tell_times("page /fleet/", lambda: console.fetch("/fleet/"))


def measure_flood(told, broker, console, agents):
    """As many messages as the broker passes on, and until each device has said more than the console keeps of it."""
    agents("health", 0)
    pids = {"console": console.pid, "broker": broker.pid, "devices": agents.process.pid}
    before = console("status")["messages"]
    with told.telling_processor("a message of health", pids) as messages:
        begin = time.monotonic()
        sent = agents("flood", FLOOD_SECONDS)["messages"]
        wait_until(lambda: console("status")["messages"] - before >= sent, "all health has come")
        told.tell("health that the console takes", sent / (time.monotonic() - begin), "/s")
        messages.append(sent)
    while sent < SAMPLES * told.devices:
        sent += agents("flood", FLOOD_SECONDS)["messages"]
    wait_until(lambda: console("status")["messages"] - before >= sent, "all health has come")


def roll_out(console, agents, patch, devices, patience=600):
    """The rollout at its end, the seconds that it took, and what the devices have seen of it."""
    before = agents("count")
    begin = time.monotonic()
    made = console("roll_out", title="bench", why="bench", patch=patch, select={"online": True}, canaries=1,
                   wave=max(1, devices // PART), limit=5, patience=patience, settle=0)
    ended = {}

    def is_over():
        ended.update(console("rollout", rollout=made["rollout"]))
        return ended["state"] != "running"

    wait_until(is_over, "the rollout is over", 0.1)
    after = agents("count")
    seen = {name: after["published"][name] - before["published"].get(name, 0) for name in after["published"]}
    seen["change"] = after["changes"] - before["changes"]
    return ended, time.monotonic() - begin, seen


def measure_rollouts(told, console, agents):
    agents("health", 6 * HEALTH_SECONDS)
    for name, patch in (("rollout", {"net/lan_dns_suffix": "bench"}),
                        ("rollout on trial", {"system/remote/web_enabled": "yes"})):
        with told.telling_processor(f"{name}, a device", {"console": console.pid}) as members:
            ended, seconds, seen = roll_out(console, agents, patch, told.devices)
            members.append(told.devices)
        if ended["state"] != "done":
            sys.exit(f"A {name} has ended: {ended}")
        told.tell(f"{name} to all, in {ended['waves']} waves", seconds, "s")
        messages = sum(number for what, number in seen.items() if what != "health")
        told.tell(f"{name}, messages a device", messages / told.devices, "")
    told.tell("store, a member of a rollout", sum(file.stat().st_size for file in console.store.parent.glob("fleet.db*"))
              / (2 * told.devices), "bytes")
    for trouble, patch in (("failing", {"system/remote/web_enabled": "no"}), ("silent", {"net/lan_dns_suffix": "again"})):
        agents(trouble, TROUBLED)
        ended, _, _ = roll_out(console, agents, patch, told.devices, PATIENCE_SECONDS)
        agents(trouble, 0)
        if ended["state"] != "stopped":
            sys.exit(f"A rollout with {trouble} devices has ended: {ended}")
        told.tell(f"asked before {TROUBLED} % {trouble} have stopped it", ended["asked"], "")


def measure_devices(told, options, devices):
    told.begin(devices, options.absent)
    with contextlib.ExitStack() as stack:
        folder = Path(stack.enter_context(tempfile.TemporaryDirectory(prefix="bench-fleet-")))
        broker = Broker(stack, folder, told.known)
        agents = Agents(stack, options.build, broker, devices)
        empty = 0
        if not options.broker_only:
            with contextlib.ExitStack() as before:
                empty = measure.memory(Console(before, options.build, folder, broker, told.known).pid)[1]
        measure_broker(told, broker, agents)
        if options.broker_only:
            return
        console = Console(stack, options.build, folder, broker, told.known)
        measure_listing(told, console, agents)
        measure_calls(told, console, agents)
        measure_flood(told, broker, console, agents)
        told.tell_memory("console", console.pid, empty, told.known)
        measure_rollouts(told, console, agents)
        told.tell_memory("console after rollouts", console.pid)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=Path, default=PROJECT / "build/release", help="build/release")
    parser.add_argument("--broker-only", action="store_true", help="without a console")
    parser.add_argument("--absent", type=int, default=0, help="so many more have been there once: the console knows them")
    parser.add_argument("devices", nargs="*", type=int, default=[100, 1000, 10000], metavar="DEVICES",
                        help="how many; 100 1000 10000 by default")
    options = parser.parse_args()

    needed = max(options.devices) + OTHER_DESCRIPTORS
    _, most = resource.getrlimit(resource.RLIMIT_NOFILE)
    if most < needed:
        sys.exit(f"The broker needs {needed} descriptors, and {most} are the most that are allowed here: see \"ulimit -Hn\"")
    resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))

    signal.signal(signal.SIGTERM, lambda *_: sys.exit("Ended"))  # and so everything that was started
    told = Told()
    for devices in options.devices:
        measure_devices(told, options, devices)


if __name__ == "__main__":
    main()
