"""The production stack: upload progress, large uploads, reloads and failures under load."""

import contextlib
import json
import os
import subprocess
import tempfile
import threading
import unittest

from support import Device, eventually, get, request

PROGRESS_ID = "0123456789abcdef0123456789abcdef"
MEGABYTE = 1 << 20


@contextlib.contextmanager
def upload(device, size, *options):
    """A running upload of a file of zeros; its output is the status of the answer. curl logs in before it sends the
    body, as browsers do."""
    with tempfile.NamedTemporaryFile(suffix=".bin") as file:
        file.truncate(size)
        command = ["curl", "-s", "-o", os.devnull, "-w", "%{http_code}", "--noproxy", "*", "--digest",
                   "-u", "admin:admin", "-F", f"fwupload=@{file.name};type=application/octet-stream", *options,
                   f"{device.url}config/settings/about?X-Progress-ID={PROGRESS_ID}"]
        with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as process:
            yield process


class Uploads(unittest.TestCase):
    def setUp(self):
        self.device = Device("upload")
        self.addCleanup(self.device.end)

    def progress(self, upload_id=PROGRESS_ID):
        return json.loads(request(self.device.url + "progress", headers={"X-Progress-Id": upload_id})[1])

    def memory(self):
        """Private memory of web server and process, KiB."""
        maps = self.device.shell("cat $(pgrep -x 'webconfig|lighttpd' | sed 's#.*#/proc/&/smaps_rollup#')")
        return sum(int(line.split()[1]) for line in maps.splitlines() if line.startswith("Private_"))

    def test_a_large_upload_streams_and_its_progress_is_told(self):
        self.assertEqual({"state": "starting"}, self.progress())
        self.assertEqual("error", self.progress("not an id")["state"])
        get(self.device.url + "config/")
        before, states, peak = self.memory(), [], 0
        with upload(self.device, 300 * MEGABYTE, "--limit-rate", "100M") as process:
            while process.poll() is None:
                states.append(self.progress())
                peak = max(peak, self.memory())
            self.assertEqual("200", process.stdout.read())
        underway = [state for state in states if state["state"] == "uploading"]
        self.assertGreater(len(underway), 3)
        received = [state["received"] for state in underway]
        self.assertEqual(sorted(received), received)
        self.assertGreater(received[-1], 150 * MEGABYTE)
        self.assertLess(0, underway[0]["size"] - 300 * MEGABYTE)
        self.assertLess(underway[0]["size"] - 300 * MEGABYTE, 1000, "the envelope")
        self.assertLess(peak - before, 2 * 1024)
        self.assertEqual("", self.device.shell("ls /var/lib/webconfig/uploads"), "nothing is left")


class Failures(unittest.TestCase):
    RELOADS = 200

    def client(self, device, stop, trouble):
        """Loads pages; a load that fails is tried once again, as a person would."""
        while not stop.is_set():
            for attempt in (1, 2):
                try:
                    status = get(device.url + "config/settings/about")[0]
                except OSError as error:
                    status = error
                if status == 200:
                    break
                trouble.append((attempt, status))

    def test_reloads_under_load_cost_no_client_an_answer(self):
        for options in ((), ("--spawn",)):
            with self.subTest(options):
                device = Device("reload" + "".join(options), *options)
                self.addCleanup(device.end)
                device.shell("prm set test/value kept")
                stop, trouble = threading.Event(), []
                clients = [threading.Thread(target=self.client, args=(device, stop, trouble)) for _ in range(3)]
                for client in clients:
                    client.start()
                reload = json.dumps({"method": "reload", "params": [], "id": 1}).encode()
                for _ in range(self.RELOADS):
                    try:
                        request(device.url + "status/rpc", reload, {"Content-Type": "application/json"})
                    except OSError as error:
                        trouble.append((1, error))
                stop.set()
                for client in clients:
                    client.join()
                # That one drops what waits for it, which costs a retry.
                installed = "libcppcms" in device.shell("ldd /usr/sbin/webconfig")
                self.assertEqual([], [each for each in trouble if each[0] == 2] if installed else trouble, trouble)
                self.assertEqual("kept", device.output("prm", "get", "test/value"))
                self.assertGreater(int(device.shell("grep -c 'forced reload' /var/log/messages")), self.RELOADS // 2)

    def test_a_killed_process_is_back_by_itself_and_the_store_keeps_all(self):
        device = Device("killed")
        self.addCleanup(device.end)
        device.shell("prm set test/value kept; sleep 1.1")
        for _ in range(3):
            first = device.output("pgrep", "-x", "webconfig")
            device.output("kill", "-KILL", first)
            self.assertTrue(eventually(lambda: get(device.url + "config/")[0] == 200))
            self.assertNotEqual(first, device.output("pgrep", "-x", "webconfig"))
            device.shell("sleep 1.1")
        self.assertEqual("kept", device.output("prm", "get", "test/value"))
