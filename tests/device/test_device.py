"""The virtual device from the outside: that it starts, can be joined, stays apart from the host, and leaves nothing."""

import os
import signal
import socket
import subprocess
import unittest
import urllib.parse
from pathlib import Path

from support import BUILD, PROJECT, Device, Fleet, common, eventually, get, request

AS_NOBODY = ["setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups"]


def host_traces():
    """What a device could leave on the host: mounts and network devices."""
    mounts = Path("/proc/self/mountinfo").read_text(encoding="utf-8").splitlines()
    return {*mounts, *os.listdir("/sys/class/net")}


class RunningDevice(unittest.TestCase):
    options = ()
    prefix = ()

    @classmethod
    def setUpClass(cls):
        cls.device = Device("one", *cls.options, prefix=cls.prefix)
        cls.addClassCleanup(cls.device.end)

    def test_enter_passes_input_output_and_status(self):
        cases = (("true", 0), ("exit 3", 3), ("kill -TERM $$", -signal.SIGTERM), ("no-such-program", 127))
        for script, status in cases:
            self.assertEqual(status, self.device.enter("sh", "-c", script).returncode, script)
        self.assertEqual("two words\n", self.device.enter("cat", input="two words\n").stdout)
        self.assertEqual("a  b", self.device.output("printf", "%s", "a  b"))

    def test_cables_lead_to_the_lan(self):
        lan = self.device.output("prm", "get", "net/lan_ipaddr")
        self.device.output("nsenter", "--net=/run/netns/lan", "curl", "-sfk", "--digest", "-u", "admin:admin",
                           f"https://{lan}/media/css/screen.css")

    def test_device_and_host_share_nothing_that_changes(self):
        self.assertEqual(self.device.output("prm", "get", "net/hostname"), self.device.output("hostname"))
        self.assertNotEqual(self.device.output("hostname"), socket.gethostname())
        for folder in ("/tmp", "/etc", "/usr/bin", "/var/log", "/run", "/root"):
            trace = f"{folder}/{self.device.name}"
            self.device.output("touch", trace)
            self.assertFalse(os.path.exists(trace), trace)
        self.assertNotEqual(0, self.device.enter("touch", str(PROJECT / "device/trace")).returncode)
        self.assertEqual("1", self.device.output("sh", "-c", "ps -eo pid=,args= | awk '/device.init/ {print $1; exit}'"))

    def test_logs_are_bounded(self):
        self.device.shell("head -c 2000000 /dev/zero | tee -a /var/log/messages >>/var/log/console/lighttpd; logger anew")
        for log in ("/var/log/console/lighttpd", "/var/log/messages"):
            for path, low, high in ((log, 0, 1000), (f"{log}.0", 200_000, 2_100_000)):
                self.assertTrue(eventually(lambda path=path, low=low, high=high: low <= int(
                    self.device.output("stat", "-c%s", path)) <= high), path)

    def test_second_device_runs_beside_the_first(self):
        second = Device("two", *self.options, prefix=self.prefix)
        try:
            self.device.output("touch", "/tmp/first")
            self.assertNotEqual(0, second.enter("test", "-e", "/tmp/first").returncode)
            self.assertEqual(302, get(second.url)[0])
            with self.assertRaisesRegex(AssertionError, f"'{second.name}' runs already"):
                Device("two", *self.options, prefix=self.prefix)
        finally:
            second.end()
        self.assertEqual(302, get(self.device.url)[0])


@unittest.skipUnless(os.geteuid() == 0, "the other tests run as an ordinary user already")
class OrdinaryUser(RunningDevice):
    prefix = AS_NOBODY

    @classmethod
    def setUpClass(cls):
        readable = subprocess.run([*AS_NOBODY, "test", "-r", f"{BUILD}/platform/prm/prm"], cwd="/", check=False)
        if readable.returncode != 0:
            raise unittest.SkipTest("the checkout is closed to other users")
        super().setUpClass()

    def test_the_broker_of_a_fleet_is_behind_the_gateway(self):
        fleet = Fleet("fleet", 1, prefix=AS_NOBODY)
        self.addCleanup(fleet.end)
        device = fleet.devices[0]
        ping = "ping -c 1 -W 1 10.96.0.1"
        self.assertTrue(eventually(lambda: device.status(ping) == 0))
        device.shell("ip route replace default via 192.168.0.253 dev br1 metric 100")
        self.assertNotEqual(0, device.status(ping))


class SpawnedBackend(unittest.TestCase):
    def test_web_server_starts_the_backend_and_brings_it_back(self):
        device = Device("spawn", "--spawn", "--plugins")
        self.addCleanup(device.end)
        page = device.url + "config/traffic/interfaces"  # a plug-in's
        self.assertEqual(200, get(page)[0])
        # A daemon that a script has left behind outlives the backend, and must not hold its listening socket.
        device.shell("printf '#!/bin/sh\nsetsid -f sleep 300\n' >/usr/bin/supvis")
        call = b'{"method":"prepare_fw_upgrade","params":[],"id":1}'
        self.assertIn(b'"result":0', request(device.url + "status/rpc", call, {"Content-Type": "application/json"})[1])
        first = device.output("pgrep", "-x", "webconfig")
        device.output("kill", "-KILL", first)
        self.assertTrue(eventually(lambda: get(page)[0] == 200))
        self.assertNotEqual(first, device.output("pgrep", "-x", "webconfig"))
        self.assertIn("sleep 300", device.output("ps", "-eo", "args="))
        device.shell("sleep 1.1; pkill -KILL -x lighttpd; sleep 1.1")  # one that ends at once is not started again
        self.assertEqual(200, get(page)[0], "the web server is started again")


class BuiltInServer(unittest.TestCase):
    def test_host_port_reaches_the_built_in_server(self):
        device = Device("http", "--http", "--plugins")
        self.addCleanup(device.end)
        for path in ("config/", "media/css/screen.css", "service_imgs/css/screen.css",
                     "service_plugin_imgs/application/head/brq3.js", "config/traffic/interfaces",
                     "plugins/traffic/head/traffic.js"):
            self.assertEqual(200, get(device.url + path)[0], path)


class Ending(unittest.TestCase):
    """Every way a device can end leaves the host as it was."""

    def check(self, end, status, start=lambda: Device("ending")):
        before = host_traces()
        device = start()
        pids = {device.launcher.pid, device.init}
        port = urllib.parse.urlsplit(device.url).port
        end(device)
        exit_status, text = device.ended()
        self.assertEqual(status, exit_status, text)
        self.assertTrue(eventually(lambda: not any(os.path.exists(f"/proc/{pid}") for pid in pids)))
        self.assertTrue(eventually(lambda: device.name not in common.running()))
        self.assertTrue(eventually(lambda: host_traces() <= before), host_traces() - before)
        with socket.socket() as again:  # the port is free
            again.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            again.bind(("127.0.0.1", port))

    def test_signals_to_the_launcher(self):
        for number, status in ((signal.SIGINT, 0), (signal.SIGTERM, 0), (signal.SIGKILL, -signal.SIGKILL)):
            for start in (lambda: Device("ending"), lambda: Fleet("ending", 1)):
                with self.subTest(number.name):
                    self.check(lambda device, number=number: device.launcher.send_signal(number), status, start)

    def test_detached_device_outlives_its_starter_and_a_reboot(self):
        name = f"test{os.getpid()}-detached"
        started = subprocess.run([PROJECT / "device/boot", "--detach", "--name", name, "--port", "0", "--build", BUILD],
                                 capture_output=True, text=True, timeout=40, check=True)
        init = common.init_pid(name)
        enter = [PROJECT / "device/enter", "--name", name]
        self.addCleanup(subprocess.run, [*enter, "poweroff"], check=False)
        subprocess.run([*enter, "sh", "-c", "touch /tmp/before; reboot"], check=False)
        self.assertTrue(eventually(
            lambda: subprocess.run([*enter, "test", "-e", "/tmp/before"], check=False).returncode == 1))
        self.assertTrue(eventually(lambda: get(started.stdout.strip())[0] == 302))
        self.assertEqual(init, common.init_pid(name))

    def test_poweroff_from_inside(self):
        self.check(lambda device: device.enter("poweroff"), 0)
