"""What boot, enter and init share: how a running device is found by its name, and its environment.

A device's init listens on an abstract Unix socket that carries the owner's user id and the device's name.
The kernel then answers the two questions there are: a name is taken while its socket is bound, and the
credentials of the listening side are the process to join. Nothing is written to disk, so nothing is left.
"""

import argparse
import os
import re
import socket
import struct

# The line on the console that says that all services serve.
READY = "ready"

# The variable that tells whose devices they are, where a launcher has taken another user id.
OWNER = "WEBCONFIG_DEVICE_OWNER"

# What programs of the device see; nothing of the host's environment leaks in.
ENVIRONMENT = {
    "PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin",
    "HOME": "/root",
    "LANG": "C.UTF-8",
    "MOUNT_DIR": "/opt/applications",
    "APPLICATION_DIR": "/opt/applications/telemetry",
}


def device_name(text):
    """An argparse type: the name of a device, short and harmless in a path or an address."""
    if not re.fullmatch(r"[A-Za-z0-9_-]{1,32}", text):
        raise argparse.ArgumentTypeError("a device name has 1 to 32 letters, digits, '-' or '_'")
    return text


def address(name):
    """The abstract address of the device `name` of this user."""
    return f"\0webconfig-device/{os.environ.get(OWNER, os.getuid())}/{name}"


def claim(name):
    """Binds the socket of `name`. Raises OSError when a device of that name runs already."""
    claimed = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    claimed.bind(address(name))
    return claimed


def init_pid(name):
    """The process id, seen from here, of the init of device `name`; None when no such device runs."""
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as probe:
        try:
            probe.connect(address(name))
        except OSError:
            return None
        credentials = probe.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, struct.calcsize("3i"))
    pid, uid, _ = struct.unpack("3i", credentials)
    # Anybody may bind any abstract address: only a device of one's own is joined.
    return pid if uid == os.getuid() else None


def running():
    """The names of this user's devices."""
    prefix = "@" + address("")[1:]
    with open("/proc/net/unix", encoding="utf-8", errors="replace") as table:
        paths = {line.split()[-1] for line in table}
    return sorted(path[len(prefix):] for path in paths if path.startswith(prefix))
