"""Settings on trial: who locks himself out gets the device back without a hand."""

import time
import unittest

from support import Device, eventually

SECONDS = 6
CURL = "curl -sk --max-time 2 --digest -u admin:admin "
LAN = "nsenter --net=/run/netns/lan " + CURL
OUTSIDE = "nsenter --net=/run/netns/outside " + CURL
HOME = "https://192.168.0.1/config/"
UPLINK = "https://10.99.0.2/config/"
WIFI = "https://10.98.0.2/config/"


class LockedOut(unittest.TestCase):
    def setUp(self):
        self.device = Device("trial")
        self.addCleanup(self.device.end)
        self.device.shell(f"sed -i 's/\"seconds\": 120/\"seconds\": {SECONDS}/' /etc/webconfig/device.json")
        self.device.shell("prm set system/remote/web_enabled yes; /etc/nat_setup.sh web_advanced")
        self.restart()

    def restart(self):
        started = self.device.shell("cat /proc/sys/kernel/random/boot_id")
        self.device.enter("reboot")
        self.assertTrue(eventually(lambda: self.answers(LAN + HOME) and started !=
                                   self.device.shell("cat /proc/sys/kernel/random/boot_id")))

    def answers(self, question):
        """Whether the device's own pages answer; another server may, on a port that is forwarded."""
        return "Field device" in self.device.enter("sh", "-c", question).stdout

    def save(self, page, fields):
        self.assertIn("New settings are on trial", self.device.shell(f"{LAN} {HOME}{page} -d '{fields}'"))

    def test_by_a_wifi_network_that_is_not_there(self):
        self.device.shell("mkdir -p /etc/radio; echo depot >/etc/radio/networks")
        client = "wlanEnabled=y&wlanCountryCode=US&wlanSecurity=none&wlanEssId="
        self.save("network/wlan", client + "depot")
        self.device.shell(f"{LAN} {HOME}settings/history -d 'action=Keep them'")
        self.assertTrue(self.answers(OUTSIDE + WIFI))
        self.save("network/wlan", client + "dep0t")
        self.assertFalse(self.answers(OUTSIDE + WIFI))
        self.assertTrue(eventually(lambda: self.answers(OUTSIDE + WIFI)))

    def test_by_remote_access_by_a_forwarded_port_and_by_an_address(self):
        self.assertTrue(self.answers(OUTSIDE + UPLINK))
        for page, fields in (("settings/advanced", "submit=Save&remoteIcmpEnabled=y"),
                             ("network/port_forwarding", "add=Add+Row&rowId=0&protocol=tcp&sourcePort=443"
                                                         "&destinationIP=192.168.0.20&destinationPort=443")):
            with self.subTest(page):
                self.save(page, fields)
                self.assertFalse(self.answers(OUTSIDE + UPLINK))
                self.assertTrue(eventually(lambda: self.answers(OUTSIDE + UPLINK)))

        self.save("network/ethernet1", "addressMode=static&ipAddress=192.168.77.1&netmask=255.255.255.0"
                                       "&gateway=192.168.77.254&speedsAvailable=3")
        self.device.enter("reboot")
        self.assertTrue(eventually(lambda: "192.168.77.1" in self.device.enter("ifconfig", "br1").stdout))
        time.sleep(1)
        self.assertFalse(self.answers(LAN + HOME))
        self.assertTrue(eventually(lambda: self.answers(LAN + HOME), 40))
        self.assertIn("Taken back: nobody kept it", self.device.shell(LAN + HOME + "settings/history"))
