#!/usr/bin/python3 -B
"""The power of the whole device goes while settings that decide how it is reached are saved, or go back.

POWER_STEP=1 tries all points: right behind each system call that changes a file.
"""

import itertools
import os
import unittest

from support import BUILD, Device, eventually

STEP = int(os.environ.get("POWER_STEP", "20"))
RULE = "net/portfwd/tcp/08443"
SAVE = ("curl -sk --max-time 5 --digest -u admin:admin https://127.0.0.1/config/network/port_forwarding "
        "-d 'add=Add+Row&protocol=tcp&sourcePort=8443&destinationIP=192.168.0.33&destinationPort=443'")
ARMED = "/run/webconfig/armed"  # goes with the start of the device
TRIAL = "/var/lib/webconfig/trial"


class PowerCut(unittest.TestCase):
    def setUp(self):
        self.device = Device("power")
        self.addCleanup(self.device.end)
        self.device.shell("sed -i 's/\"seconds\": 120/\"seconds\": 1/' /etc/webconfig/device.json")

    def boot(self):
        return self.device.enter("cat", "/proc/sys/kernel/random/boot_id").stdout

    def make_endable(self, program, path):
        """From the next start on, the device loses its power with this program's armed call."""
        self.device.shell(f"rm /usr/sbin/{program}; printf '#!/bin/sh\\nexport END_DEVICE=yes END_ARMED={ARMED}\\n"
                          f"LD_PRELOAD={BUILD}/tests/pages/libend_at.so exec {BUILD}/{path} \"$@\"\\n' "
                          f">/usr/sbin/{program}; chmod 755 /usr/sbin/{program}")
        before = self.boot()
        self.device.enter("kill", "-PWR", "1")
        self.assertTrue(self.serves_since(before))

    def is_cut(self, before):
        return self.boot() not in ("", before)  # what asks for it dies with the device

    def serves_since(self, before):
        return eventually(lambda: self.is_cut(before) and
                          self.device.status("curl -s -o /dev/null http://127.0.0.1/") == 0)

    def keys(self):
        return self.device.shell(f"prm list {RULE}").count("/d_")

    def comes_back(self):
        """Whether all is as it was before, once nothing is on trial any more."""
        if self.keys():
            self.assertEqual(self.device.status(f"test -f {TRIAL}"), 0, "what is stored must be on trial")
        return eventually(lambda: self.keys() == 0 and
                          self.device.status(f"! grep -v returned {TRIAL} | grep -q state") == 0)

    def try_all(self, what, save, arm_first):
        """Cuts the power at call after call, until there is none left."""
        for points in itertools.count():
            call = 1 + points * STEP
            with self.subTest(what, call=call):
                self.device.shell(f"rm -f {TRIAL}; prm del {RULE}/d_ip; prm del {RULE}/d_port; true")
                before = self.boot()
                arm = f"echo {call} >{ARMED}"
                self.device.enter("sh", "-c", f"{arm}; {save}" if arm_first else f"{save}; {arm}")
                cut = eventually(lambda: self.is_cut(before), 4)
                self.device.enter("rm", "-f", ARMED)
                if not cut:
                    break
                self.assertTrue(self.serves_since(before))
                self.assertTrue(self.comes_back())
        print(f"{points} power cuts in {what}")
        self.assertGreaterEqual(points, 2)

    def test_while_settings_are_saved(self):
        self.make_endable("webconfig", "WebApps/webconfig/webconfig")
        self.try_all("a save", SAVE, arm_first=True)

    def test_while_settings_go_back(self):
        self.make_endable("webconfig-guard", "guard/webconfig-guard")
        self.try_all("a taking back", SAVE, arm_first=False)


if __name__ == "__main__":
    unittest.main()
