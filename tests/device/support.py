"""What the tests of the virtual device share: a device to start, and requests to it.

WEBCONFIG_BUILD names the build folder (build/dev).
"""

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


class Device:
    """A device that device/boot runs in the foreground."""

    def __init__(self, name, *options, prefix=()):
        self.name = f"test{os.getpid()}-{name}"
        self.prefix = list(prefix)
        self.launcher = subprocess.Popen(
            [*self.prefix, PROJECT / "device/boot", "--name", self.name, "--port", "0", "--build", BUILD, *options],
            cwd="/", stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.url = self.launcher.stdout.readline().strip()
        if not self.url:
            raise AssertionError(self.launcher.communicate()[1])
        self.init = common.init_pid(self.name)

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

    def ended(self):
        """Waits for the end; returns the launcher's exit status and what it said."""
        said = self.launcher.communicate(timeout=20)[1]
        return self.launcher.returncode, said

    def end(self):
        self.launcher.terminate()
        return self.ended()
