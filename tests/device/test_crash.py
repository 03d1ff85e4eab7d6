"""A program, or the power of the whole device, ends while settings that decide how it is reached are saved, or go back.

CRASH_STEP=1 tries all points: right behind each system call that changes a file.
"""

import os
import time
import unittest

from support import BUILD, Device, eventually

STEP = int(os.environ.get("CRASH_STEP", "25"))
RULE = "net/portfwd/tcp/08443"
SAVE = ("curl -sk --max-time 5 --digest -u admin:admin https://127.0.0.1/config/network/port_forwarding "
        "-d 'add=Add+Row&protocol=tcp&sourcePort=8443&destinationIP=192.168.0.33&destinationPort=443'")
ARMED = "/run/webconfig/armed"  # goes with the start of the device
MOST = 100  # points: more than a save or a taking back has
TRIAL = "/var/lib/webconfig/trial"


class Crash(unittest.TestCase):
    def setUp(self):
        self.device = Device("crash")
        self.addCleanup(self.device.end)
        self.device.shell("sed -i 's/\"seconds\": 120/\"seconds\": 1/' /etc/webconfig/device.json")

    def process(self, program):
        """Empty while the program, or the power, is gone."""
        return self.device.enter("pidof", program).stdout

    def serves(self):
        return self.device.status("curl -s -o /dev/null http://127.0.0.1/") == 0

    def make_endable(self, program, path):
        """From the next start on, the program's armed call is its last."""
        self.device.shell(f"rm -f /usr/sbin/{program}; printf '#!/bin/sh\\nexport END_ARMED={ARMED}\\n"
                          f"LD_PRELOAD={BUILD}/tests/libend_at.so exec {BUILD}/{path} \"$@\"\\n' >/usr/sbin/{program};"
                          f"chmod 755 /usr/sbin/{program}")
        before = self.process(program)
        self.device.enter("kill", "-PWR", "1")
        self.assertTrue(eventually(lambda: self.process(program) not in ("", before) and self.serves()))

    def keys(self):
        return self.device.shell(f"prm list {RULE}").count("/d_")

    def comes_back(self):
        """Whether all is as it was before, once nothing is on trial any more."""
        if self.keys():
            self.assertEqual(self.device.status(f"test -f {TRIAL}"), 0, "what is stored must be on trial")
        return eventually(lambda: self.keys() == 0 and
                          self.device.status(f"! grep -v returned {TRIAL} | grep -q state") == 0)

    def try_all(self, program, path, end, arm_first):
        """Ends it at call after call, until there is none left."""
        self.make_endable(program, path)
        for points in range(MOST):
            call = 1 + points * STEP
            self.device.shell(f"rm -f {TRIAL}; prm del {RULE}/d_ip; prm del {RULE}/d_port; true")
            time.sleep(1)  # what ends sooner after its start is not started again
            before = self.process(program)
            steps = [f"echo {call} {end} >{ARMED}.new; mv {ARMED}.new {ARMED}", SAVE]
            self.device.enter("sh", "-c", ";".join(steps if arm_first else reversed(steps)))
            ended = eventually(lambda: self.process(program) != before, 4)
            self.device.enter("rm", "-f", ARMED)
            if not ended:
                break
            point = f"call {call} of {program} {end}"
            self.assertTrue(eventually(lambda: self.process(program) and self.serves()), point)
            self.assertTrue(self.comes_back(), point)
        print(f"{points} ends of {program}{' with the power of the device' if end else ''}")
        self.assertGreaterEqual(points, 2)

    def test_while_settings_are_saved(self):
        for end in ("", "power"):
            self.try_all("webconfig", "WebApps/webconfig/webconfig", end, arm_first=True)

    def test_while_settings_go_back(self):
        for end in ("", "power"):
            self.try_all("webconfig-guard", "guard/webconfig-guard", end, arm_first=False)
