#!/usr/bin/python3 -B
"""Measures the system from inside a virtual device; bench/run calls it.

    measure.py BARE_FCGI

A second lighttpd of its own passes pages to the device's process and /bare to a program that only writes as many
bytes. Figures are medians of runs in turn, so that the machine's changing speed touches both alike.
"""

import contextlib
import fcntl
import json
import os
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
ROUNDS = 5

# The target, if there is one, says what the ratio to the bare program has to reach.
# The About page looks through a folder for each package; the start page runs shell commands.
PAGES = {"/config/settings/reboot": 0.85, "/config/settings/about": 0.85, "/config/": None}
METHODS = ("fw_upgrade_status", "general_dynamic_status", "ethernet1_status", "cellular_status", "openvpn_status",
           "port_forwarding_status", "orvane_status", "tail_syslog", "ntpd_status", "dns_server_status",
           "wifi_ap_status", "wifi_client_status")
DAEMON_METHODS = ("cellular_status", "openvpn_status", "orvane_status")
SLOW_CLIENTS = 40
POLLERS = 10
POLLS = 5  # of each poller
REQUESTS = 100_000
RELOADS = 100
USS_LIMIT, RSS_LIMIT = 4096, 12288  # KiB
SAMPLER_SHARE = 0.1  # per cent
SAVES = 200
SAVE_LIMIT = 10  # milliseconds that history and trial may add to a save

CONFIGURATION = f"""
server.document-root = "/usr/share/webconfig/www"
server.port = {PORT}
server.bind = "127.0.0.1"
server.modules = ( "mod_fastcgi" )
server.stream-request-body = 2
server.stream-response-body = 1
$HTTP["url"] =~ "^/(config|status)" {{
    fastcgi.server = ( "/" => (( "socket" => "{BACKEND_SOCKET}", "check-local" => "disable",
                                 "fix-root-scriptname" => "enable" )) )
}}
$HTTP["url"] =~ "^/plain" {{
    fastcgi.server = ( "/" => (( "socket" => "{PLAIN_SOCKET}", "check-local" => "disable",
                                 "fix-root-scriptname" => "enable" )) )
}}
$HTTP["url"] =~ "^/bare" {{
    fastcgi.server = ( "/" => (( "socket" => "{BARE_SOCKET}", "check-local" => "disable",
                                 "fix-root-scriptname" => "enable" )) )
}}
"""


@contextlib.contextmanager
def running(*command):
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
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


def wrk(path, connections=CONNECTIONS, seconds=SECONDS):
    """Loads a page; requests a second, and the median and 99th percentile of the latency in milliseconds."""
    report = subprocess.run(
        ["wrk", "--threads", "1", "--connections", str(connections), "--duration", f"{seconds}s", "--latency",
         SITE + path], check=True, capture_output=True, text=True).stdout
    if "Non-2xx" in report or "Socket errors" in report:
        sys.exit(f"{path} under load:\n{report}")
    unit = {"us": 1e-3, "ms": 1.0, "s": 1e3}
    latency = {percent: float(value) * unit[of]
               for percent, value, of in re.findall(r"(50|99)%\s+([\d.]+)(us|ms|s)", report)}
    return float(re.search(r"Requests/sec:\s+([\d.]+)", report)[1]), latency["50"], latency["99"]


def memory(pid):
    """Private (USS), resident, and private written memory in KiB. Private memory that was not written is code
    which no other process happens to run."""
    fields = dict(re.findall(r"^(\w+):\s+(\d+) kB$", Path(f"/proc/{pid}/smaps_rollup").read_text(), re.M))
    dirty = int(fields["Private_Dirty"])
    return int(fields["Private_Clean"]) + dirty, int(fields["Rss"]), dirty


def verdict(reached):
    return "target reached" if reached else "TARGET MISSED"


def measure_throughput(bare_program):
    for path, target in PAGES.items():
        size = len(fetch(path))
        with running(bare_program, BARE_SOCKET, str(THREADS), str(size)):
            wait_until_up("/bare")
            rounds = [(wrk(path), wrk("/bare")) for _ in range(ROUNDS)]
        ratios = [page[0] / bare[0] for page, bare in rounds]
        ratio = statistics.median(ratios)
        tail = [statistics.median(one[2] for one in side) for side in zip(*rounds)]
        note = f", target {target}: {verdict(ratio >= target)}" if target else ""
        print(f"throughput {path} ({size} bytes): {ratio:.2f} of the bare program "
              f"({min(ratios):.2f} to {max(ratios):.2f}; "
              f"{statistics.median(page[0] for page, _ in rounds):.0f} requests/s), 99th percentile {tail[0]:.1f} ms, "
              f"of the bare program {tail[1]:.1f} ms{note}", flush=True)


def show_memory(pid, when):
    uss, rss, dirty = memory(pid)
    print(f"memory {when}: USS {uss} KiB ({dirty} KiB written), RSS {rss} KiB, limits {USS_LIMIT} and {RSS_LIMIT}: "
          f"{verdict(uss < USS_LIMIT and rss < RSS_LIMIT)}", flush=True)


def measure_memory(pid):
    fetch("/config/")
    show_memory(pid, "after start and one page")
    served = 0
    while served < REQUESTS:
        served += int(wrk("/config/settings/about", seconds=5)[0] * 5)
    show_memory(pid, f"after {served} requests")
    for _ in range(RELOADS):
        call("reload")
        wait_until_up("/config/")
    show_memory(pid, f"after {RELOADS} reloads")


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


def measure_blocked_latency():
    def latencies():
        return wrk("/config/settings/about", connections=1)[1:]

    rounds = []
    for _ in range(ROUNDS):
        free = latencies()
        with blocked_status_call():
            rounds.append((free, latencies()))
    for name, at, target in (("median", 0, None), ("99th percentile", 1, 2.0)):
        ratio = statistics.median(blocked[at] / free[at] for free, blocked in rounds)
        note = f", target at most {target}: {verdict(ratio <= target)}" if target else ""
        print(f"page latency while a status call blocks, {name}: {ratio:.2f} of the unloaded one "
              f"({statistics.median(blocked[at] for _, blocked in rounds):.2f} ms){note}", flush=True)


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


def measure_slow_bodies():
    path = "/config/settings/reboot"
    rounds = []
    for _ in range(ROUNDS):
        free = wrk(path)[2]
        with slow_bodies():
            rounds.append((free, wrk(path)[2]))
    ratio = statistics.median(slow / free for free, slow in rounds)
    print(f"page latency beside {SLOW_CLIENTS} slow bodies, 99th percentile: {ratio:.2f} of the one without "
          f"({statistics.median(slow for _, slow in rounds):.2f} ms), target at most 2.0: {verdict(ratio <= 2)}",
          flush=True)


def processor_seconds(pid):
    """Of the process and of the commands that it has run."""
    fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return sum(int(ticks) for ticks in fields[11:15]) / os.sysconf("SC_CLK_TCK")


def poll(methods, pollers):
    """The milliseconds that each poll took when so many clients of each method poll together, without a pause."""
    times = []

    def one_poller(method):
        for _ in range(POLLS):
            start = time.monotonic()
            call(method)
            times.append(1000 * (time.monotonic() - start))

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


def measure_polls(pid):
    def show(methods, daemons):
        before = processor_seconds(pid)
        alone, together = poll(methods, 1), poll(methods, POLLERS)
        spent = 1000 * (processor_seconds(pid) - before) / len(alone + together)
        print(f"{' + '.join(methods)}, daemons {daemons}: one poller {statistics.median(alone):.0f} ms, "
              f"{POLLERS} pollers {statistics.median(together) / statistics.median(alone):.1f} times as long (at most "
              f"{max(together):.0f} ms), {spent:.1f} ms of processor time a poll", flush=True)

    for method in METHODS:
        show([method], "alive")
    with silent_daemons():
        for method in DAEMON_METHODS:
            show([method], "silent")
        show(DAEMON_METHODS, "silent")
    show_memory(pid, "after these polls")


def write_plain_configuration(path):
    """That of the device, for a process beside its own, without what saves cost more for."""
    text = Path("/etc/webconfig/device.json").read_text()
    for pattern, replacement in ((r'"history": \{[^}]*\},', ""), (r'"trial": \{[^}]*\},', ""),
                                 (r'"sync": "config"', '"sync": "plain"'),
                                 (r'"socket": "stdin"', f'"socket": "{PLAIN_SOCKET}"')):
        text, count = re.subn(pattern, replacement, text)
        assert count == 1, pattern
    path.write_text(text)


def save_milliseconds(site, on):
    """Switches the VPN on or off, which is on trial and runs no command."""
    start = time.monotonic()
    answer = fetch(f"/{site}/network/openvpn", b"submit=Save" + (b"&enabled=y" if on else b""),
                   "application/x-www-form-urlencoded")
    milliseconds = 1000 * (time.monotonic() - start)
    assert on == bool(re.search(rb'<input[^>]*name="enabled"[^>]*checked', answer)), answer
    return milliseconds


def measure_history():
    plain = Path("/tmp/bench-plain.json")
    write_plain_configuration(plain)
    with running("webconfig", "-c", str(plain)):
        wait_until_up("/plain/")
        page = "/settings/reboot"
        rounds = [(wrk("/config" + page)[0], wrk("/plain" + page)[0]) for _ in range(ROUNDS)]
        print(f"throughput {page} with history and trial: {statistics.median(a / b for a, b in rounds):.2f} of one "
              "without", flush=True)
        times = {site: [save_milliseconds(site, number % 2 == 0) for number in range(SAVES)]
                 for site in ("plain", "config")}
        without, kept = (statistics.median(times[site]) for site in ("plain", "config"))
        print(f"save with history and trial: {kept:.2f} ms, {kept / without:.2f} of one without "
              f"(at most {SAVE_LIMIT} ms more: {verdict(kept - without < SAVE_LIMIT)})", flush=True)


def show_sampler(pid):
    """The thread that takes the samples, since it has begun."""
    for task in Path(f"/proc/{pid}/task").iterdir():
        if (task / "comm").read_text() != "metrics\n":
            continue
        spent = int((task / "schedstat").read_text().split()[0]) / 1e9
        began = int((task / "stat").read_text().rpartition(")")[2].split()[19]) / os.sysconf("SC_CLK_TCK")
        share = 100 * spent / (time.clock_gettime(time.CLOCK_BOOTTIME) - began)
        print(f"sampler: {share:.4f} % of a processor, target below {SAMPLER_SHARE}: {verdict(share < SAMPLER_SHARE)}",
              flush=True)


def main():
    configuration = Path("/tmp/bench-lighttpd.conf")
    configuration.write_text(CONFIGURATION)
    pid = subprocess.run(["pidof", "webconfig"], check=True, capture_output=True, text=True).stdout.split()[0]
    with running("lighttpd", "-D", "-f", str(configuration)):
        wait_until_up("/config/")
        measure_memory(pid)
        measure_throughput(sys.argv[1])
        measure_blocked_latency()
        measure_slow_bodies()
        measure_polls(pid)
        measure_history()
        show_sampler(pid)


main()
