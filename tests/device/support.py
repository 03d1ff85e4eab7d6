"""What the tests of the virtual device share: a device to start, and requests to it.

WEBCONFIG_BUILD names the build folder (build/dev).
"""

import json
import os
import subprocess
import sys
import time
import urllib.error
import urllib.request
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "device"))
import common  # noqa: E402

BUILD = os.path.abspath(os.environ.get("WEBCONFIG_BUILD", PROJECT / "build/dev"))


class NoRedirect(urllib.request.HTTPRedirectHandler):
    def redirect_request(self, *_):
        return None


def request(url, body=None, headers=None, password="admin"):
    """Status, body and Location of an answer, as admin; without a log-in where there is no password."""
    accounts = urllib.request.HTTPPasswordMgrWithDefaultRealm()
    if password is not None:
        accounts.add_password(None, url, "admin", password)
    opener = urllib.request.build_opener(urllib.request.ProxyHandler({}), NoRedirect,
                                         urllib.request.HTTPDigestAuthHandler(accounts))
    try:
        with opener.open(urllib.request.Request(url, body, headers or {}), timeout=30) as answer:
            return answer.status, answer.read(), None
    except urllib.error.HTTPError as error:
        with error:
            return error.code, error.read(), error.headers["Location"]


def get(url, password="admin"):
    """Status and Location of a page."""
    status, _, location = request(url, password=password)
    return status, location


def eventually(condition, seconds=15):
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.05)
    return True


class Host:
    """What device/enter leads into."""

    def __init__(self, name, url, prefix=()):
        self.name = name
        self.url = url
        self.prefix = list(prefix)

    def enter(self, *command, **options):
        return subprocess.run([*self.prefix, PROJECT / "device/enter", "--name", self.name, *command], cwd="/",
                              capture_output=True, text=True, timeout=30, check=False, **options)

    def output(self, *command):
        done = self.enter(*command)
        assert done.returncode == 0, (command, done)
        return done.stdout.strip()

    def shell(self, script):
        """Standard output of a shell script in the device, which must succeed."""
        return self.output("sh", "-c", script)

    def status(self, script):
        return self.enter("sh", "-c", script).returncode


class Launched(Host):
    """A host that a launcher runs in the foreground."""

    def __init__(self, launcher, name, *options, prefix=()):
        super().__init__(f"test{os.getpid()}-{name}", "", prefix)
        self.launcher = subprocess.Popen(
            [*self.prefix, PROJECT / "device" / launcher, "--name", self.name, "--port", "0", "--build", BUILD, *options],
            cwd="/", stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.line = self.launcher.stdout.readline().strip()
        if not self.line:
            raise AssertionError(self.launcher.communicate()[1])
        self.url = self.line.split()[0]
        self.init = common.init_pid(self.name)

    def ended(self):
        """Waits for the end; returns the launcher's exit status and what it said."""
        said = self.launcher.communicate(timeout=20)[1]
        return self.launcher.returncode, said

    def end(self):
        self.launcher.terminate()
        return self.ended()


class Device(Launched):
    def __init__(self, name, *options, prefix=()):
        super().__init__("boot", name, *options, prefix=prefix)


class Fleet(Launched):
    """The host of the console. Its devices are hosts with a serial number, which is their id."""

    def __init__(self, name, devices, *options, prefix=()):
        super().__init__("fleet", name, str(devices), *options, prefix=prefix)
        self.devices = [self.device(*self.launcher.stdout.readline().split()) for _ in range(devices)]

    def device(self, url, name, serial, _):
        device = Host(name, url, self.prefix)
        device.serial = serial
        return device

    def call(self, method, **parameters):
        """The result of a call of the console, whose log-in is one that urllib does not know."""
        call = json.dumps({"id": 1, "method": method, "params": [parameters]})
        asked = subprocess.run(
            ["curl", "-sf", "--max-time", "10", "--noproxy", "*", "--digest", "-u", "admin:admin", self.url + "rpc",
             "-H", "Content-Type: application/json", "-d", call], capture_output=True, text=True, check=False)
        if asked.returncode != 0:
            raise OSError(f"{method}: curl's status {asked.returncode}")
        answer = json.loads(asked.stdout)
        if answer["error"] is not None:
            raise RuntimeError(answer["error"])
        return answer["result"]
