#!/usr/bin/python3 -B
"""The web server before a hostile network: what its answers bind the browser to, guesses, replays, silent sockets."""

import json
import re
import unittest

from support import PROJECT, Device, get

LAN = "nsenter --net=/run/netns/lan "
ATTACK = f"{LAN}{PROJECT}/tests/attack/front "
CURL = LAN + "curl -sk -D - -o /dev/null --max-time 20 "
SITE = "https://192.168.0.1"

HEADERS = ("Content-Security-Policy", "X-Content-Type-Options", "X-Frame-Options", "Referrer-Policy", "Permissions-Policy",
           "Cross-Origin-Opener-Policy", "Cross-Origin-Resource-Policy")


class Front(unittest.TestCase):
    def setUp(self):
        self.device = Device("front", "--plugins")
        self.addCleanup(self.device.end)
        self.device.shell(f"{LAN}ip address add 192.168.0.21/24 dev eth0")

    def heads(self, options, site=SITE):
        """Heads of the answers to curl, with the log-in's first one."""
        text = self.device.shell(f"{CURL} {options.replace('SITE', site)}")
        return re.findall(r"^HTTP/\S+ (\d+).*\n((?:.+\n)*)", text, re.M)

    def statuses(self, options):
        return [status for status, _ in self.heads(options)]

    def test_every_answer_binds_the_browser(self):
        admin = "--digest -u admin:admin "
        for wanted, options in (
                ("302", "SITE/"),
                ("200", admin + "SITE/config/"),
                ("404", admin + "SITE/config/no/such"),
                ("200", admin + "SITE/config/settings/advanced -d submit=Download"),
                ("200", admin + """SITE/status/rpc -H 'Content-Type: application/json' \
                                   -d '{"method":"general_dynamic_status","params":[],"id":1}'"""),
                ("200", admin + "SITE/media/css/screen.css"),
                ("304", admin + "SITE/media/css/screen.css -z '1 Jan 2100'"),
                ("200", admin + "SITE/media/css/screen.css -r 10000000-"),
                ("200", admin + "SITE/plugins/traffic/head/traffic.js"),
                ("403", admin + "SITE/plugins/traffic --path-as-is"),
                ("200", admin + "SITE/progress"),
                ("404", admin + "SITE/no/such"),
                ("400", "SITE/ -H Host:"),
                ("413", "SITE/config/ -H 'Content-Length: 99999999999' -d x"),
                ("501", "SITE/ -X BREW"),
                ("431", f"SITE/ -H 'X: {'x' * 20000}'"),
                ("503", f"{admin} SITE/config/"),
                ("429", "SITE/")):
            if wanted == "503":
                self.device.shell("mv /run/webconfig/webconfig.sock /run/webconfig/gone")
            if wanted == "429":
                self.device.shell(f"{ATTACK} guess {SITE} --seconds 3 --connections 10")
            for site in (SITE, "http://192.168.0.1"):
                heads = self.heads(options, site)
                with self.subTest(options, site=site):
                    self.assertEqual(wanted if site == SITE else heads[-1][0], heads[-1][0])
                    for _, head in heads:
                        found = {name: len(re.findall(f"(?im)^{name}: ", head)) for name in HEADERS}
                        self.assertEqual({name: 1 for name in HEADERS}, found, head)
                        self.assertEqual(site == SITE, "strict-transport-security: " in head.lower())
                        self.assertNotRegex(head, "(?im)^(server|x-powered-by): ")


if __name__ == "__main__":
    unittest.main(verbosity=2)
