#!/usr/bin/python3 -B
"""The programs of the virtual device: that each really does what the system counts on."""

import os
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

    def logged(self, text):
        return self.device.status(f"grep -q -e '{text}' /var/log/messages") == 0


class PacketFilter(DeviceTest):
    def forward(self, protocol, port, address, there):
        self.set(**{f"net/portfwd/{protocol}/{port}/d_ip": address, f"net/portfwd/{protocol}/{port}/d_port": there})

    def test_forwarded_datagrams_reach_the_lan_until_their_rule_is_deleted(self):
        self.assertIn("host lan", self.shell(OUTSIDE + "curl -sf --max-time 1 http://10.99.0.2:8800/"), "a preset")
        ask = OUTSIDE + ASK_UDP % 777
        self.assertNotEqual(0, self.device.status(ask), "not forwarded yet")
        self.forward("udp", "00777", "192.168.0.20", "7")
        self.shell("/etc/nat_setup.sh web_forwarding")
        self.assertEqual("hello", self.shell(ask))
        self.shell("prm del net/portfwd/udp/00777; /etc/nat_setup.sh web_forwarding")
        self.assertNotEqual(0, self.device.status(ask))

    def test_bad_rules_are_skipped_with_a_log_line(self):
        self.forward("tcp", "00090", "192.168.0.300", "80")
        self.forward("tcp", "00091", "192.168.0.20", "65536")
        self.forward("tcp", "00092", "$(reboot)", "-j DROP")
        self.set(**{"net/portfwd/udp/00093/d_ip": "192.168.0.20"})
        self.forward("tcp", "00094", "192.168.0.20", "80")
        self.shell("/etc/nat_setup.sh web_forwarding")
        rules = self.shell("iptables -t nat -S PREROUTING")
        self.assertIn("--dport 94 -j DNAT --to-destination 192.168.0.20:80", rules)
        for port in (90, 91, 92, 93):
            self.assertNotIn(f"--dport {port} ", rules)
            self.assertTrue(self.logged(f"Skipped a bad port forward: ... 000{port}"), port)
        self.shell("prm del net/portfwd")

    def test_a_second_run_changes_nothing_and_a_flushed_table_comes_back(self):
        self.shell("/etc/nat_setup.sh")
        self.shell(OUTSIDE + "curl -sf http://10.99.0.2:8800/")
        save = "iptables-save -c | grep '^\\['"  # not the counters of chains: there is always some packet
        rules = self.shell(save)
        self.shell("/etc/nat_setup.sh wlan")
        self.assertEqual(rules, self.shell(save), "counters and all")
        self.shell("iptables -t nat -F; /etc/nat_setup.sh")
        self.assertIn("--dport 8800", self.shell("iptables -t nat -S"))

    def test_runs_at_the_same_time_all_succeed_and_the_last_wins(self):
        for port in ("00085", "00086", "00087"):
            self.forward("tcp", port, "192.168.0.20", "80")
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
                found = self.shell("ip -4 -br address show br1").split()[2:]
                self.assertEqual([address] if address else [], found)
                self.assertEqual(resolver, self.shell("cat /etc/resolv.conf"))
        self.shell("logger kept-line; grep -q kept-line /home/root/log/messages")


class Wifi(DeviceTest):
    KEY = "0123456789abcdef" * 4
    ACCESS_POINT = {"enabled": "yes", "essid": "Field  box", "wpa_psk": KEY, "channel": "36:5180"}
    CLIENT = {"enabled": "yes", "essid": "Plant", "security": "wpa", "wpa_psk": KEY}

    def status_with(self, side, settings):
        for name, value in settings.items():
            self.set(**{f"net/wifi/{side}/{name}": value})
        return self.device.status("/etc/init.d/network_funcs.sh wifi_" + side)

    def test_bad_settings_are_refused_and_leave_no_interface(self):
        eap = {"security": "wpa_eap", "eap/identity": "me"}
        for side, good, bad in (
                ("ap", self.ACCESS_POINT, {"essid": ""}),
                ("ap", self.ACCESS_POINT, {"essid": "x" * 33}),
                ("ap", self.ACCESS_POINT, {"wpa_psk": self.KEY[1:]}),
                ("ap", self.ACCESS_POINT, {"wpa_psk": "z" + self.KEY[1:]}),
                ("ap", self.ACCESS_POINT, {"channel": "x"}),
                ("client", self.CLIENT, {"wpa_psk": ""}),
                ("client", self.CLIENT, {"security": "wep"}),
                ("client", self.CLIENT, eap | {"eap/password": "secret"}),
                ("client", self.CLIENT, eap | {"eap/password": "hash:12"})):
            with self.subTest(f"{side} {bad}"):
                self.assertEqual(22, self.status_with(side, good | bad))
                self.assertNotEqual(0, self.device.status(f"ip link show {side}0"))


class Programs(DeviceTest):
    def test_supervisor_starts_restarts_suspends_and_forgets(self):
        count = "pgrep -fx 'sleep 12345' | wc -l"
        self.shell("supvis --add sleeper --cmd 'sleep 12345'")
        self.assertTrue(eventually(lambda: self.shell(count) == "1"))
        first = self.shell("pgrep -fx 'sleep 12345'")
        self.shell(f"kill {first}")
        self.assertTrue(eventually(lambda: self.shell(count) == "1" and self.shell("pgrep -fx 'sleep 12345'") != first))
        for action, state, processes in (("suspend", "suspended", "0"), ("resume", "running", "1")):
            self.shell(f"supvis --{action} sleeper")
            self.assertTrue(eventually(lambda n=processes: self.shell(count) == n), action)
            self.assertIn(f"sleeper\t{state}", self.shell("supvis --list"))
        self.shell("supvis --remove sleeper")
        self.assertEqual("0", self.shell(count))
        self.assertNotIn("sleeper", self.shell("supvis --list"))
        self.assertEqual(1, self.device.status("supvis --remove sleeper"))

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

    @unittest.skipUnless(os.access("/dev/loop-control", os.W_OK), "no loop devices here")
    def test_partitions_are_file_systems_of_their_own(self):
        for name in ("log", "data"):
            self.assertEqual("ef53", self.shell(f"stat -f -c %t /home/root/{name}"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
