#!/usr/bin/python3 -B
"""Does to the system, for so many minutes and at once, what a long life brings; soak calls it inside a virtual device.

    burden.py MINUTES

Prints a line of JSON every few seconds: what the process has, and how a page was served meanwhile. What fails, because
the service reloads or has enough of somebody, is tried again; how often it did is told, too.
"""

import contextlib
import http.client
import itertools
import json
import os
import socket
import statistics
import sys
import threading
import time
from pathlib import Path

import measure

SAMPLE_SECONDS = 5
IDLE_CONNECTIONS = 200  # a half each at the web server and at the process itself
POLLERS = 50
SLOW_BODIES = 20
UPLOADERS = 2
UPLOAD = b"\0" * (8 << 20)  # no firmware image: it is taken in, looked at and refused
RELOAD_SECONDS = 20
PAGES = ("/config/", "/config/settings/about", "/config/traffic/interfaces")  # the last one is a plug-in's
LATENCY_PAGE = "/config/settings/reboot"
TALKATIVE = "fw_upgrade_status"  # says in the log, each time, that there was no upgrade
LOGS = ("/var/log/messages", "/var/log/messages.0", "/var/log/console")  # the audit tells of each upload, and is bounded
SPOOLS = ("/var/lib/webconfig", "/tmp", "/run")
FAILURES = (OSError, http.client.HTTPException)


class Burden:
    def __init__(self):
        self.done = threading.Event()
        self.latencies, self.served, self.failed = [], 0, 0

    def repeat(self, work, seconds=0.0):
        """Works until all is done; each time on its own, whatever the ones before came to."""
        while not self.done.wait(seconds):
            try:
                work()
                self.served += 1
            except FAILURES:
                self.failed += 1
                self.done.wait(0.1)

    def hold(self, number, make, say=b""):
        """Holds so many connections, says something on each now and then, and replaces those that were closed."""
        with contextlib.ExitStack() as stack:
            held = []
            while not self.done.wait(0.5):
                for connection in list(held):
                    if not is_open(connection, say):
                        held.remove(connection)
                        connection.close()
                with contextlib.suppress(OSError):
                    while len(held) < number:
                        held.append(stack.enter_context(make()))

    def visit(self):
        start = time.monotonic()
        measure.fetch(LATENCY_PAGE)
        self.latencies.append(1000 * (time.monotonic() - start))

    def start(self):
        pages = itertools.cycle(PAGES)
        works = [lambda: self.hold(IDLE_CONNECTIONS // 2, half_a_head),
                 lambda: self.hold(IDLE_CONNECTIONS // 2, nothing_said),
                 lambda: self.hold(SLOW_BODIES, begun_body, b"x"),
                 lambda: self.repeat(lambda: measure.call("reload"), RELOAD_SECONDS),
                 lambda: self.repeat(lambda: measure.fetch(next(pages)), 0.2),
                 lambda: self.repeat(self.visit, 0.05)]
        works += [lambda: self.repeat(upload, 1)] * UPLOADERS
        methods = itertools.cycle((*(set(measure.METHODS) - {TALKATIVE}), "traffic_counters"))
        works += [lambda method=method: self.repeat(lambda: measure.call(method), 1)
                  for method in itertools.islice(methods, POLLERS)]
        threads = [threading.Thread(target=work) for work in works]
        for thread in threads:
            thread.start()
        return threads


def is_open(connection, say):
    try:
        if say:
            connection.send(say, socket.MSG_DONTWAIT)
        return connection.recv(4096, socket.MSG_DONTWAIT) != b""
    except BlockingIOError:
        return True
    except OSError:
        return False


def at_the_web_server(text):
    connection = socket.create_connection(("127.0.0.1", measure.PORT))
    connection.sendall(text)
    return connection


def half_a_head():
    return at_the_web_server(b"GET /config/ HTTP/1.1\r\n")


def begun_body():
    return at_the_web_server(b"POST /config/ HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 1000\r\n\r\nx=")


def nothing_said():
    connection = socket.socket(socket.AF_UNIX)
    connection.setblocking(False)  # a full queue is a refusal
    connection.connect(measure.BACKEND_SOCKET)
    return connection


def upload():
    body = (b'--x\r\nContent-Disposition: form-data; name="fwupload"; filename="none.bin"\r\n'
            b"Content-Type: application/octet-stream\r\n\r\n" + UPLOAD + b"\r\n--x--\r\n")
    measure.fetch("/config/settings/firmware", body, "multipart/form-data; boundary=x")


def size_of(*paths):
    """Of files, and of those below folders, in KiB."""
    total = 0
    for path in paths:
        for file in (Path(path), *Path(path).rglob("*")):
            with contextlib.suppress(OSError):
                total += file.lstat().st_size if file.is_file() and not file.is_symlink() else 0
    return total / 1024


def sample(burden):
    latencies, burden.latencies = burden.latencies, []
    process = Path(f"/proc/{measure.backend_pid()}")
    resident, written = measure.memory(measure.backend_pid())
    return {"resident": resident, "written": written,
            "descriptors": len(os.listdir(process / "fd")), "threads": len(os.listdir(process / "task")),
            "log": size_of(*LOGS), "files": size_of(*SPOOLS),
            "latency": statistics.median(latencies) if latencies else None,
            "served": burden.served, "failed": burden.failed}


def main():
    burden = Burden()
    with measure.site():
        begin = time.monotonic()
        threads = burden.start()
        try:
            while (passed := time.monotonic() - begin) < 60 * float(sys.argv[1]):
                print(json.dumps({"minutes": passed / 60} | sample(burden)), flush=True)
                time.sleep(SAMPLE_SECONDS)
        finally:
            burden.done.set()
            for thread in threads:
                thread.join()


main()
