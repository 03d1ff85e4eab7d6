"""The programs of the virtual device: that each really does what the system counts on."""

import unittest

from support import Device, eventually, get

OUTSIDE = "nsenter --net=/run/netns/outside "

# Sends a datagram and prints the answer.
ASK_UDP = """python3 -c '
import socket
asker = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
asker.settimeout(1)
asker.sendto(b"hello", ("10.99.0.2", %d))
print(asker.recv(100).decode())'"""


class DeviceTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.device = Device(cls.__name__)
        cls.addClassCleanup(cls.device.end)

    def shell(self, script):
        return self.device.shell(script)

    def set(self, **settings):
        """Stores values; the names have '__' for the slash of a key."""
        for name, value in settings.items():
            self.device.output("prm", "set", name.replace("__", "/"), value)


class PacketFilter(DeviceTest):
    def test_forwarded_datagrams_reach_the_lan_while_their_rule_is_good(self):
        self.assertIn("host lan", self.shell(OUTSIDE + "curl -sf --max-time 1 http://10.99.0.2:8800/"), "a preset")
        ask = OUTSIDE + ASK_UDP % 777
        self.assertNotEqual(0, self.device.status(ask), "not forwarded yet")
        self.set(**{"net/portfwd/udp/00777/d_ip": "192.168.0.20", "net/portfwd/udp/00777/d_port": "7"})
        self.shell("/etc/nat_setup.sh web_forwarding")
        self.assertEqual("hello", self.shell(ask))
        self.set(**{"net/portfwd/udp/00777/d_port": "$(reboot)"})
        self.shell("/etc/nat_setup.sh web_forwarding")
        self.assertNotEqual(0, self.device.status(ask))
        self.shell("grep 'Skipped a bad port forward: ... 00777' /var/log/messages")

    def test_runs_at_the_same_time_all_succeed_and_the_last_wins(self):
        for port in ("00085", "00086", "00087"):
            self.set(**{f"net/portfwd/tcp/{port}/d_ip": "192.168.0.20", f"net/portfwd/tcp/{port}/d_port": "80"})
            self.shell("""
                for run in 1 2 3 4 5 6; do /etc/nat_setup.sh & runs="$runs $!"; done
                for run in $runs; do wait $run || exit; done""")
            self.assertIn(f"--dport {int(port)} ", self.shell("iptables -t nat -S PREROUTING"))
        self.shell("prm del net/portfwd; /etc/nat_setup.sh")

    def test_remote_switches_open_the_device_to_the_outside(self):
        for key, probe in (("web", "curl -s --max-time 1 http://10.99.0.2/"),
                           ("icmp", "ping -c 1 -W 1 10.99.0.2"),
                           ("ssh", "curl -s --max-time 1 telnet://10.99.0.2:22 </dev/null")):
            for value in ("yes", "no"):
                with self.subTest(f"{key} {value}"):
                    self.set(**{f"system/remote/{key}_enabled": value})
                    self.shell("/etc/nat_setup.sh web_advanced")
                    # Nobody serves SSH here: an open port is one that refuses at once.
                    reached = (7,) if key == "ssh" else (0,)
                    self.assertEqual(value == "yes", self.device.status(OUTSIDE + probe) in reached)


class Restart(DeviceTest):
    def test_pending_settings_are_in_effect_after_a_reboot(self):
        for settings, address, resolver in (
                ({"lan_ipaddr": "192.168.7.1", "lan_dns1": "9.9.9.9", "lan_dns_is_append": "yes", "lan_dns_suffix": "plant"},
                 "192.168.7.1/24", "search plant\nnameserver 9.9.9.9\nnameserver 10.99.0.1"),
                ({"lan_addr_mode": "dhcp", "lan_dns_is_append": "no", "lan_dns_suffix": ""},
                 "192.168.0.150/24", "nameserver 9.9.9.9"),
                ({"lan_addr_mode": "static", "lan_ipaddr": "nonsense", "lan_dns1": ""}, None, "nameserver 10.99.0.1")):
            with self.subTest(settings):
                self.set(**{"net/" + name: value for name, value in settings.items()}, syslogd__persistent="yes")
                self.shell("touch /tmp/before")
                self.device.enter("reboot", "-d", "0")
                self.assertTrue(eventually(lambda: self.device.status("test -e /tmp/before") == 1, 30))
                self.assertTrue(eventually(lambda: get(self.device.url)[0] == 302, 30))
                # A lease may come later than the first page.
                self.assertTrue(eventually(lambda wanted=[address] if address else []:
                                           wanted == self.shell("ip -4 -br address show br1").split()[2:]))
                self.assertEqual(resolver, self.shell("cat /etc/resolv.conf"))
        self.shell("logger kept-line; logger -p authpriv.notice kept-line")
        for log in ("/home/root/log/messages", "/home/root/log/audit", "/var/log/audit"):
            self.assertTrue(eventually(lambda log=log: self.device.status(f"grep -q kept-line {log}") == 0), log)


class Programs(DeviceTest):
    def test_audit_has_files_of_its_own_that_only_root_reads_and_that_do_not_grow(self):
        self.shell(f"seq -f 'line %.0f {50 * '0'}' 9000 | logger -p authpriv.notice -t audit-test")
        self.assertTrue(eventually(lambda: self.device.status("grep -q 'line 9000' /var/log/audit") == 0))
        for file in ("audit", "audit.0"):
            mode, size = self.shell(f"stat -c '%a %s' /var/log/{file}").split()
            self.assertEqual("600", mode)
            self.assertLessEqual(int(size), 256 << 10)
        self.assertNotEqual(0, self.device.status("grep audit-test /var/log/messages"))

    def test_link_daemon_tells_the_status_daemon_of_its_connection(self):
        report = "cat /etc/daemons/statusd"
        self.shell("supvis --add ternd --cmd '/usr/bin/ternd --init --no-datalog'")
        self.assertTrue(eventually(lambda: "connected = 1\nserver_address = 10.99.0.1" in self.shell(report)))
        self.shell("supvis --remove ternd")
        self.assertIn("connected = 0", self.shell(report))

    def test_time_daemon_runs_as_the_store_says(self):
        for value, runs in (("no", False), ("yes", True)):
            self.set(system__ntpd__enabled=value)
            self.shell("/etc/init.d/ntpd stop; /etc/init.d/ntpd start")
            self.assertEqual(runs, eventually(
                lambda: "Reference ID" in self.device.enter("chronyc", "-n", "tracking").stdout, 5))
        self.shell("flock -n /run/ntpd.lock true")  # what runs on does not hold the script's lock
