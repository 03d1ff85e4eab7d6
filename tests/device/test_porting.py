"""What a board has besides the programs: the check of the device, and the start by a SysV script."""

import unittest

from support import PROJECT, Device, eventually

CHECK = "webconfig -c /etc/webconfig/device.json --check"


class Porting(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.device = Device("porting")
        cls.addClassCleanup(cls.device.end)

    def test_the_check_names_what_is_missing(self):
        lines = [line.split(maxsplit=1) for line in self.device.shell(CHECK).splitlines()]
        self.assertEqual([what for word, what in lines if word != "ok"], [])
        described = (PROJECT / "docs/porting.md").read_text(encoding="utf8")
        named = [what for _, what in lines if what.startswith(("/etc/", "/usr/", "/sbin/")) and "(" not in what]
        self.assertGreater(len(named), 10)
        self.assertEqual([program for program in named if program not in described], [])

        self.device.shell("mv /etc/nat_setup.sh /etc/nat_setup.off; chmod 755 /var/lib/webconfig/uploads")
        self.addCleanup(self.device.shell, "mv /etc/nat_setup.off /etc/nat_setup.sh; chmod 700 /var/lib/webconfig/uploads")
        # A folder that cannot be looked into, and a store that is not there yet, which stays so.
        self.device.shell("ln -s endless /tmp/endless")
        found = self.device.enter("sh", "-c", "PATH=/tmp/endless:$PATH PRM_STORE=/tmp/none.db " + CHECK)
        self.assertEqual(self.device.status("test -e /tmp/none.db"), 1)
        self.assertEqual(found.returncode, 1)
        self.assertEqual([line.split()[1].rstrip(":") for line in found.stdout.splitlines() if line.startswith("missing")],
                         ["/var/lib/webconfig/uploads", "/etc/nat_setup.sh"])

    def test_the_sysv_script_starts_restarts_and_stops(self):
        # Beside the device's own service, so with another folder for the socket.
        self.device.shell(f"sed 's,sockets=.*,sockets=/run/sysv,' {PROJECT}/packaging/sysv/webconfig >/etc/init.d/webconfig;"
                          "chmod 755 /etc/init.d/webconfig")

        def script(argument):
            return self.device.status(f"/etc/init.d/webconfig {argument} >/dev/null")

        def processes():
            return self.device.shell("cat /run/webconfig.pid /run/webconfig-guard.pid")

        self.assertEqual(script("start"), 0)
        self.assertEqual(script("status"), 0)
        self.assertTrue(eventually(lambda: self.device.status("test -S /run/sysv/webconfig.sock") == 0))
        before = processes()
        self.assertEqual(script("reload"), 0)
        self.assertEqual(processes(), before)
        self.assertEqual(self.device.shell("grep -c 'forced reload' /var/log/messages"), "1")
        self.assertEqual(script("restart"), 0)
        self.assertTrue(eventually(lambda: script("status") == 0 and processes() != before))
        self.assertEqual(script("stop"), 0)
        self.assertEqual(script("status"), 3)
        self.assertEqual(self.device.status("for pid in " + before.replace("\n", " ") + "; do ! kill -0 $pid || exit 1; done"), 0)
