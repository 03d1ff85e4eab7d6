#!/usr/bin/python3 -B
"""The web server before a hostile network: what its answers bind the browser to, guesses, replays, silent sockets."""

import json
import re
import unittest

from support import PROJECT, Device, eventually

LAN = "nsenter --net=/run/netns/lan "
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

    def log_in(self, password="admin", address="192.168.0.20"):
        """The status of the last answer to somebody with a password."""
        return self.statuses(f"--digest -u admin:{password} SITE/config/ --interface {address}")[-1]

    def attack(self, options):
        return json.loads(self.device.shell(f"{LAN}{PROJECT}/tests/attack/front {options}"))

    def test_every_answer_binds_the_browser(self):
        admin = "--digest -u admin:admin "
        values = {}
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
                self.attack(f"guess {SITE} --seconds 3 --connections 10")
            for site in (SITE, "http://192.168.0.1"):
                heads = self.heads(options, site)
                with self.subTest(options, site=site):
                    self.assertEqual(wanted if site == SITE else heads[-1][0], heads[-1][0])
                    for _, head in heads:
                        found = {name: re.findall(f"(?im)^{name}: (.*)", head) for name in HEADERS}
                        self.assertEqual({name: 1 for name in HEADERS}, {name: len(found[name]) for name in HEADERS}, head)
                        for name in HEADERS[1:]:
                            values.setdefault(name, set()).add(*found[name])
                        self.assertEqual(site == SITE, "strict-transport-security: " in head.lower())
                        self.assertNotRegex(head, "(?im)^(server|x-powered-by): ")
        self.assertEqual({}, {name: some for name, some in values.items() if len(some) > 1}, "server and process agree")

    def test_five_guesses_lock_their_address_and_no_other(self):
        self.assertEqual(5, self.attack(f"guess {SITE} --seconds 3 --connections 30")["guesses"])
        (status, head), = self.heads("SITE/")
        self.assertEqual("429", status)
        self.assertIn(int(re.search(r"(?im)^retry-after: (\d+)", head)[1]), range(50, 61))
        self.assertEqual("429", self.log_in(), "also with the password")
        other = "192.168.0.21"
        self.assertEqual("200", self.log_in(address=other))
        self.assertEqual("5\n1", self.device.shell("""
            cat /var/log/messages /var/log/audit 2>/dev/null | grep ': audit event=login' >/tmp/lines
            grep -c "authpriv.notice lighttpd: audit .* result=refused user=admin address=192.168.0.20 page=/" /tmp/lines
            grep -c "result=locked user=admin address=192.168.0.20 .* seconds=60" /tmp/lines"""))

        self.device.shell("sed -i '/FIRST_LOCK, /s/60/3/' /etc/lighttpd/lighttpd-login.lua")
        self.heads("""SITE/config/ --interface 192.168.0.21 --digest -u "';touch /tmp/run;':x" """)
        self.device.shell("""
            cat /var/log/messages /var/log/audit 2>/dev/null | grep "user=%27%3Btouch%20/tmp/run%3B%27 " && test ! -e /tmp/run""")
        for wanted, password in 3 * [("401", "x")] + [("200", "admin")] + 5 * [("401", "x")] + [("429", "admin")]:
            self.assertEqual(wanted, self.log_in(password, other), "a right one counts from the start again")
        for pause, wanted, password in ((3, "401", "x"), (3, "429", "admin"), (3, "200", "admin")):
            self.device.shell(f"sleep {pause}")
            self.assertEqual(wanted, self.log_in(password, other), "the next lock is longer")

    def test_a_log_in_opens_once(self):
        header = self.device.shell(f"{LAN}curl -skv --digest -u admin:admin {SITE}/config/ 2>&1 | grep -o 'Authorization.*'")
        for _ in range(7):
            (status, head), = self.heads(f"SITE/config/ -H '{header.strip()}'")
            self.assertEqual("401", status)
            self.assertIn(", stale=true", head, "the browser asks again by itself")
        self.assertEqual("200", self.log_in(), "none of them was a guess")

    def test_a_password_has_one_hash_or_two(self):
        text = "admin:Orvane Configuration Tool:secret"
        for sha256, wanted in (("$(md5):$(sha256)", ["SHA-256", "MD5"]), ("other:$(sha256)", ["MD5"])):
            self.device.shell(f"""
                md5() {{ printf '{text}' | md5sum | cut -c1-32; }}
                sha256() {{ printf '{text}' | sha256sum | cut -c1-64; }}
                prm set webman/digest/admin $(md5); prm set webman/digest256/admin {sha256}; lighttpd_set_passwd.sh""")
            self.assertEqual(wanted, re.findall(r"algorithm=([^,]*)", self.heads("SITE/config/")[0][1]))
            self.assertEqual("200", self.log_in("secret"))

    def test_silent_sockets_leave_room_for_others(self):
        result = self.attack(f"silent {SITE} --connections 256 --seconds 3 --probe-from 192.168.0.21")
        self.assertLessEqual(result["held"], 32)
        self.assertEqual(0, result["unanswered"], result)
        self.assertLess(result["p95_ms"], 1000)

    def test_an_uploaded_certificate_is_served_at_once(self):
        subject = f"{LAN}curl -skv {SITE} 2>&1 | grep -o 'subject: CN=.*'"
        self.assertEqual("subject: CN=virtual-device", self.device.shell(subject))
        self.assertIn("IP Address:192.168.0.1", self.device.shell(
            "openssl x509 -in /etc/lighttpd/server.pem -noout -ext subjectAltName"))
        self.device.shell("cd /tmp; openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=field -keyout k -out c; cat k c >pem")
        self.assertEqual("200", self.statuses(
            "--digest -u admin:admin SITE/config/settings/advanced -F 'submit=Install Certificate' "
            "-F 'certificateFile=@/tmp/pem;type=application/octet-stream'")[-1])
        self.assertTrue(eventually(lambda: self.device.shell(subject) == "subject: CN=field"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
