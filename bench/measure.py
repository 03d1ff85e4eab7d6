#!/usr/bin/python3 -B
"""Measures the system from inside a virtual device, a line of JSON a measure; run and compare call it.

A second lighttpd of its own, without a log-in, passes pages to the device's process and /bare to a program that only
writes as many bytes. Figures are medians of runs in turn, so that the machine's changing speed touches both alike.
"""

import argparse
import contextlib
import fcntl
import json
import operator
import os
import random
import re
import socket
import statistics
import subprocess
import sys
import threading
import time
import urllib.request
from pathlib import Path

PORT = 8088
SITE = f"http://127.0.0.1:{PORT}"
BACKEND_SOCKET = "/run/webconfig/webconfig.sock"
BARE_SOCKET = "/run/bare.sock"
PLAIN_SOCKET = "/run/plain.sock"  # of a process that keeps no history and puts nothing on trial
THREADS = 4  # as in the device's configuration
CONNECTIONS = 8
SECONDS = 3

# What a second's requests have to be of those to the bare program.
# The About page looks for the notices of the installed packages; the start page runs shell commands.
PAGES = {"/config/settings/reboot": ">= 0.85", "/config/settings/about": ">= 0.65", "/config/": None}
# Status calls without commands: one looks for a file, the other reads a parameter.
CALLS = {"fw_upgrade_status": ">= 0.6", "wifi_ap_status": ">= 0.6"}
METHODS = ("fw_upgrade_status", "general_dynamic_status", "ethernet1_status", "cellular_status", "openvpn_status",
           "port_forwarding_status", "orvane_status", "tail_syslog", "ntpd_status", "dns_server_status",
           "wifi_ap_status", "wifi_client_status")
DAEMON_METHODS = ("cellular_status", "openvpn_status", "orvane_status")
GENERAL_COMMANDS = "date; uptime; top -b -n1; ps -ef"
SLOW_CLIENTS = 40
POLLERS = 10
POLLS = 5  # of each poller
POLL_PAUSE = 0.05  # seconds, more or less: what is measured is not how fast the pollers are
REQUESTS = 100_000
RELOADS = 100
RESIDENT_LIMIT, WRITTEN_LIMIT = "< 9216", "< 2560"  # KiB
SAMPLER_LIMIT = "< 0.1"  # per cent
SAVES = 200
SAVE_LIMIT = "< 10"  # milliseconds that history and trial may add to a save


def proxy(path, backend):
    return f"""
$HTTP["url"] =~ "^/{path}(/|$)" {{
    fastcgi.server = ( "/" => (( "socket" => "{backend}", "check-local" => "disable",
                                 "fix-root-scriptname" => "enable" )) )
}}
"""


CONFIGURATION = f"""
server.document-root = "/usr/share/webconfig/www"
server.port = {PORT}
server.bind = "127.0.0.1"
server.errorlog = "/dev/null"
server.modules = ( "mod_fastcgi" )
server.stream-request-body = 2
server.stream-response-body = 1
{proxy("(config|status)", BACKEND_SOCKET)}{proxy("plain", PLAIN_SOCKET)}{proxy("bare", BARE_SOCKET)}"""


def tell(measure, here, unit, *, ratio=None, limit=None):
    """The limit, such as "< 10", is for the ratio where there is one."""
    reached = None
    if limit:
        relation, bound = limit.split()
        relations = {"<": operator.lt, "<=": operator.le, ">=": operator.ge}
        reached = relations[relation](here if ratio is None else ratio, float(bound))
    print(json.dumps({"measure": measure, "limit": limit, "here": here, "unit": unit, "ratio": ratio,
                      "reached": reached}), flush=True)


def median_ratio(pairs):
    return statistics.median(ours / theirs for ours, theirs in pairs)


@contextlib.contextmanager
def running(*command, stderr=None):
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=stderr)
    try:
        yield process
    finally:
        process.kill()  # the bare program catches the polite signals
        process.wait()


def fetch(path, body=None, content="application/json"):
    headers = {"Content-Type": content} if body else {}
    with urllib.request.urlopen(urllib.request.Request(SITE + path, body, headers), timeout=30) as answer:
        return answer.read()


def call(method):
    return fetch("/status/rpc", json.dumps({"method": method, "params": [], "id": 1}).encode())


def wait_until_up(path):
    for _ in range(200):
        with contextlib.suppress(OSError):
            fetch(path)
            return
        time.sleep(0.05)
    sys.exit(f"{path} does not answer")


@contextlib.contextmanager
def site():
    """The web server without a log-in."""
    configuration = Path("/tmp/bench-lighttpd.conf")
    configuration.write_text(CONFIGURATION)
    with running("lighttpd", "-D", "-f", str(configuration)) as server:
        wait_until_up("/config/")
        if server.poll() is not None:
            sys.exit(f"Somebody else serves port {PORT} here: another measurement?")
        yield


def backend_pid():
    """Not one of a child that is not yet the command it is to be."""
    return int(subprocess.run(["pgrep", "--oldest", "--exact", "webconfig"], check=True, capture_output=True, text=True).stdout)


class Load:
    """What wrk saw: requests a second, all requests, and the median and 99th percentile of the latency in
    milliseconds. With `method` it makes that status call."""

    def __init__(self, path, *, method=None, connections=CONNECTIONS, seconds=SECONDS):
        call_options = ["--script", str(Path(__file__).with_name("call.lua"))] if method else []
        report = subprocess.run(
            ["wrk", "--threads", "1", "--connections", str(connections), "--duration", f"{seconds}s", "--latency",
             *call_options, SITE + path, *(["--", method] if method else [])],
            check=True, capture_output=True, text=True).stdout
        if "Non-2xx" in report or "Socket errors" in report:
            sys.exit(f"{path} under load:\n{report}")
        unit = {"us": 1e-3, "ms": 1.0, "s": 1e3}
        latency = {percent: float(value) * unit[of]
                   for percent, value, of in re.findall(r"(50|99)%\s+([\d.]+)(us|ms|s)", report)}
        self.rate = float(re.search(r"Requests/sec:\s+([\d.]+)", report)[1])
        self.requests = int(re.search(r"(\d+) requests in", report)[1])
        self.median, self.tail = latency["50"], latency["99"]


def processor_seconds(pid):
    """Of the process and of the commands that it has run."""
    fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return sum(int(ticks) for ticks in fields[11:15]) / os.sysconf("SC_CLK_TCK")


class Side:
    """A program under load, and what each round saw; `load` does it."""

    def __init__(self, pid, load):
        self.pid, self.load = pid, load
        self.rates, self.tails, self.microseconds = [], [], []

    def run(self):
        before = processor_seconds(self.pid)
        seen = self.load()
        self.microseconds.append(1e6 * (processor_seconds(self.pid) - before) / seen.requests)
        self.rates.append(seen.rate)
        self.tails.append(seen.tail)


def compare_with_bare(options, name, limit, size, load):
    """Loads ours and, where there is one, the bare program in turn; `load` does it, given the path of another."""
    ours = Side(backend_pid(), lambda: load(None))
    bare = None
    with contextlib.ExitStack() as stack:
        if options.bare:
            program = stack.enter_context(running(options.bare, BARE_SOCKET, str(THREADS), str(size)))
            wait_until_up("/bare")
            bare = Side(program.pid, lambda: load("/bare"))
        for _ in range(options.rounds):
            for side in filter(None, (ours, bare)):
                side.run()
    for what, unit, figures in (("requests", "/s", "rates"), ("99th percentile", "ms", "tails"),
                                ("processor", "us", "microseconds")):
        here = getattr(ours, figures)
        ratio = median_ratio(zip(here, getattr(bare, figures))) if bare else None
        tell(f"{name}, {what}", statistics.median(here), unit, ratio=ratio,
             limit=limit if bare and figures == "rates" else None)


def measure_pages(options):
    for path, limit in PAGES.items():
        compare_with_bare(options, path, limit, len(fetch(path)), lambda other, path=path: Load(other or path))


def measure_calls(options):
    for method, limit in CALLS.items():
        compare_with_bare(options, method, limit, len(call(method)),
                          lambda other, method=method: Load(other or "/status/rpc", method=method))


def memory(pid):
    """Resident, and the private memory that was written, in KiB; private memory that was not is code which no other
    process happens to run."""
    rollup = Path(f"/proc/{pid}/smaps_rollup").read_text()
    fields = dict(re.findall(r"^(\w+):\s+(\d+) kB$", rollup, re.M))
    return int(fields["Rss"]), int(fields["Private_Dirty"])


def tell_memory(when):
    resident, written = memory(backend_pid())
    tell(f"memory {when}, resident", resident, "KiB", limit=RESIDENT_LIMIT)
    tell(f"memory {when}, written", written, "KiB", limit=WRITTEN_LIMIT)


def measure_memory(_):
    for page in PAGES:
        fetch(page)
    tell_memory("after some pages")
    served = 0
    while served < REQUESTS:
        served += Load("/config/settings/about", seconds=5).requests
    tell_memory(f"after {REQUESTS} requests")
    for _ in range(RELOADS):
        call("reload")
        wait_until_up("/config/")
    tell_memory(f"after {RELOADS} reloads")


@contextlib.contextmanager
def blocked_status_call():
    """Holds the firmware status call by the lock that it waits for, for two seconds each time."""
    path = Path("/tmp/fwtool_status.txt")
    path.write_text("busy\n")
    done = threading.Event()
    seconds = []

    def keep_calling():
        while not done.is_set():
            start = time.monotonic()
            call("fw_upgrade_status")
            seconds.append(time.monotonic() - start)

    with path.open("r+") as status:
        fcntl.lockf(status, fcntl.LOCK_EX)
        caller = threading.Thread(target=keep_calling)
        caller.start()
        time.sleep(0.2)
        yield
        done.set()
        caller.join()
    path.unlink()
    assert min(seconds) > 1, f"the status calls were not blocked: {seconds}"


@contextlib.contextmanager
def slow_bodies():
    """Clients that announce a body and send its beginning, then a byte now and then."""
    with contextlib.ExitStack() as stack:
        clients = [stack.enter_context(socket.create_connection(("127.0.0.1", PORT))) for _ in range(SLOW_CLIENTS)]
        for client in clients:
            client.sendall(b"POST /config/ HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 1000\r\n\r\nx=")
        done = threading.Event()

        def drip():
            while not done.wait(0.5):
                for client in clients:
                    client.sendall(b"x")

        dripping = threading.Thread(target=drip)
        dripping.start()
        yield
        done.set()
        dripping.join()


def measure_tail(options):
    """What a page takes while others hold what they can."""
    for name, holding, load in (
            ("a blocked status call", blocked_status_call, lambda: Load("/config/settings/about", connections=1)),
            (f"{SLOW_CLIENTS} slow bodies", slow_bodies, lambda: Load("/config/settings/reboot"))):
        rounds = []
        for _ in range(options.rounds):
            free = load().tail
            with holding():
                rounds.append((load().tail, free))
        tell(f"page beside {name}, 99th percentile", statistics.median(held for held, _ in rounds), "ms",
             ratio=median_ratio(rounds), limit="<= 2.0")


def milliseconds(work):
    start = time.monotonic()
    work()
    return 1000 * (time.monotonic() - start)


def poll(methods, pollers):
    """The milliseconds that each poll took when so many clients of each method poll together."""
    times = []

    def one_poller(method):
        for _ in range(POLLS):
            times.append(milliseconds(lambda: call(method)))
            time.sleep(random.uniform(0.5, 1.5) * POLL_PAUSE)

    threads = [threading.Thread(target=one_poller, args=(method,)) for method in methods for _ in range(pollers)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return times


@contextlib.contextmanager
def silent_daemons():
    reports = [Path("/etc/daemons", name) for name in ("statusd", "openvpnd", "seriald")]
    before = [report.read_text() for report in reports]
    for report, text in zip(reports, before):
        report.write_text(text + "\nanswer = silent\n")
    try:
        yield
    finally:
        for report, text in zip(reports, before):
            report.write_text(text)


def measure_polls(options):
    def tell_polls(methods, name):
        rounds = [[statistics.median(poll(methods, pollers)) for pollers in (1, POLLERS)]
                  for _ in range(options.rounds)]
        tell(name, statistics.median(alone for alone, _ in rounds), "ms")
        tell(f"{name}, {POLLERS} pollers", statistics.median(together for _, together in rounds), "ms",
             ratio=median_ratio((together, alone) for alone, together in rounds), limit="<= 2.2")

    for method in METHODS:
        tell_polls([method], method)
    with silent_daemons():
        for method in DAEMON_METHODS:
            tell_polls([method], f"{method}, silent daemons")
        tell_polls(DAEMON_METHODS, "these together")


def measure_commands(options):
    """What a status call takes beside the commands that it runs; `top` alone waits for a part of a second."""
    shell = ["sh", "-c", GENERAL_COMMANDS]
    rounds = [(milliseconds(lambda: call("general_dynamic_status")),
               milliseconds(lambda: subprocess.run(shell, check=True, stdout=subprocess.DEVNULL)))
              for _ in range(POLLS * options.rounds)]
    tell("general_dynamic_status, of its commands", statistics.median(called for called, _ in rounds), "ms",
         ratio=median_ratio(rounds), limit="<= 1.1")


def write_plain_configuration(path):
    """That of the device, for a process beside its own, without what saves cost more for."""
    text = Path("/etc/webconfig/device.json").read_text()
    for pattern, replacement in ((r'"history": \{[^}]*\},', ""), (r'"trial": \{[^}]*\},', ""),
                                 (r'"sync": "config"', '"sync": "plain"'),
                                 (r'"socket": "stdin"', f'"socket": "{PLAIN_SOCKET}"')):
        text, count = re.subn(pattern, replacement, text)
        assert count == 1, pattern
    path.write_text(text)


def save(site, on):
    """Switches the VPN on or off, which is on trial and runs no command."""
    answer = fetch(f"/{site}/network/openvpn", b"submit=Save" + (b"&enabled=y" if on else b""),
                   "application/x-www-form-urlencoded")
    assert on == bool(re.search(rb'<input[^>]*name="enabled"[^>]*checked', answer)), answer


def measure_history(options):
    plain = Path("/tmp/bench-plain.json")
    write_plain_configuration(plain)
    with running("webconfig", "-c", str(plain)):
        wait_until_up("/plain/")
        page = "/settings/reboot"
        rounds = [(Load("/config" + page).rate, Load("/plain" + page).rate) for _ in range(options.rounds)]
        tell("requests, with history and trial of without", statistics.median(with_ for with_, _ in rounds), "/s",
             ratio=median_ratio(rounds))
        with_, without = (statistics.median(milliseconds(lambda: save(site, number % 2 == 0))
                                            for number in range(SAVES)) for site in ("config", "plain"))
        tell("save without history and trial", without, "ms")
        tell("what history and trial add to a save", with_ - without, "ms", limit=SAVE_LIMIT)


def measure_sampler(_):
    """The thread that takes the samples, since it has begun."""
    for task in Path(f"/proc/{backend_pid()}/task").iterdir():
        if (task / "comm").read_text() != "metrics\n":
            continue
        spent = int((task / "schedstat").read_text().split()[0]) / 1e9
        began = int((task / "stat").read_text().rpartition(")")[2].split()[19]) / os.sysconf("SC_CLK_TCK")
        share = 100 * spent / (time.clock_gettime(time.CLOCK_BOOTTIME) - began)
        tell("sampler, of a processor", share, "%", limit=SAMPLER_LIMIT)


MEASURES = {"pages": measure_pages, "calls": measure_calls, "memory": measure_memory, "tail": measure_tail,
            "polls": measure_polls, "commands": measure_commands, "history": measure_history,
            "sampler": measure_sampler}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--bare", help="the bare program to compare with; without it there is no ratio to it")
    parser.add_argument("--rounds", type=int, default=5, help="%(default)s")
    parser.add_argument("measures", nargs="*", metavar="MEASURE", help=f"{', '.join(MEASURES)}; all by default")
    options = parser.parse_args()
    unknown = set(options.measures) - set(MEASURES)
    if unknown:
        parser.error(f"no such measure: {', '.join(unknown)}")

    with site():
        for measure in options.measures or MEASURES:
            MEASURES[measure](options)


if __name__ == "__main__":
    main()
