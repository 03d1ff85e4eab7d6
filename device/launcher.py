"""What boot and fleet share: a virtual device from power-on to power-off, and the launcher's own life."""

import os
import signal
import socket
import subprocess
import sys
from pathlib import Path

import common

PROJECT = Path(__file__).resolve().parent.parent
NEEDED_FROM_BUILD = ("WebApps/webconfig/webconfig", "guard/webconfig-guard", "fleet/webconfig-agent", "fleet/webconfig-fleet",
                     "ctl/webconfigctl", "platform/prm/prm", "device/daemons/statusd",
                     "device/daemons/openvpnd", "device/daemons/seriald", "media", "examples/traffic")
START_SECONDS = 30
STOP_SECONDS = 15

NAMESPACES = ["--mount", "--uts", "--ipc", "--net", "--pid", "--fork", "--kill-child"]
USER_NAMESPACE = ["--user", "--map-root-user"]


def port_number(text):
    if not 0 <= int(text) <= 65535:
        raise ValueError
    return int(text)


def check_build(build):
    missing = [name for name in NEEDED_FROM_BUILD if not (build / name).exists()]
    if missing:
        sys.exit(f"{build} has no {', '.join(missing)}: build the project first, for example with ./run.")


def namespace_options():
    """The options of `unshare` that this kernel allows this user."""
    unprivileged = [*USER_NAMESPACE, *NAMESPACES]
    for options in [NAMESPACES, unprivileged] if os.geteuid() == 0 else [unprivileged]:
        probe = subprocess.run(["unshare", *options, "true"], stderr=subprocess.DEVNULL, check=False)
        if probe.returncode == 0:
            return options
    sys.exit("This kernel allows no namespaces here, neither by privilege nor as user namespaces "
             "(see user.max_user_namespaces), so the virtual device cannot start.")


def listen(port):
    listener = socket.socket()
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    try:
        listener.bind(("127.0.0.1", port))
    except OSError as error:
        sys.exit(f"Cannot listen on 127.0.0.1 port {port}: {error.strerror}. Choose another one with --port.")
    listener.listen(128)
    return listener


def claim(name):
    try:
        return common.claim(name)
    except OSError:
        sys.exit(f"A device '{name}' runs already. Choose another --name, or end it: "
                 f"device/enter --name {name} poweroff")


class Device:
    """A device from power-on to power-off. Its console, a socket, is also its power cord: closing our end, or
    our death, ends it."""

    def __init__(self, build, options, listener, name_socket, *stack, files=""):
        """`files` is a folder that comes over the device's own files; `stack` is for init."""
        self.console, theirs = socket.socketpair()
        command = ["unshare", *options, PROJECT / "device/build-root", PROJECT, build.resolve(), files, *stack,
                   str(listener.fileno()), str(name_socket.fileno())]
        # A session of its own, so that Ctrl-C reaches the launcher only.
        self.process = subprocess.Popen(
            command, stdin=theirs, stdout=theirs, stderr=theirs, env=common.ENVIRONMENT,
            start_new_session=True, pass_fds=(listener.fileno(), name_socket.fileno()))
        theirs.close()

    def lines(self):
        """The lines the device writes on its console, until it ends."""
        with self.console.makefile(encoding="utf-8", errors="replace") as stream:
            for line in stream:
                yield line.rstrip("\n")

    def power_off(self):
        """Ends the device; returns whether it had run without failure."""
        try:
            self.console.shutdown(socket.SHUT_WR)
        except OSError:
            pass  # it has ended on its own
        try:
            return self.process.wait(STOP_SECONDS) == 0
        except subprocess.TimeoutExpired:
            self.process.kill()  # takes the whole device along
            self.process.wait()
            return False


def say(text):
    print(text, file=sys.stderr, flush=True)


class Interrupted(Exception):
    """Somebody wants the device to end, or it does not start in time."""


def interrupt(number, frame):
    raise Interrupted(number)


def on_signals(handler):
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGALRM):
        signal.signal(number, handler)


def detach():
    """Goes on in the background. Returns a function that reports the address to the foreground process, which
    prints it and returns; it fails when there is none."""
    reader, writer = os.pipe()
    if os.fork() != 0:
        os.close(writer)
        address = os.read(reader, 4096).decode()
        if address:
            print(address)
        sys.exit(0 if address else 1)
    os.close(reader)
    os.setsid()

    def report(address):
        os.write(writer, address.encode())
        os.close(writer)
        null = os.open(os.devnull, os.O_RDWR)
        for descriptor in (0, 1, 2):
            os.dup2(null, descriptor)

    return report
