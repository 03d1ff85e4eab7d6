"""The web server before a hostile network: what its answers bind the browser to, guesses, replays, silent sockets."""

import json
import re
import unittest

from support import PROJECT, Device, eventually

LAN = "nsenter --net=/run/netns/lan "
SITE = "https://192.168.0.1"
OTHER = "192.168.0.21"  # another address of the LAN's host
ADMIN = "--digest -u admin:admin "
AUDIT = "cat /var/log/messages /var/log/audit 2>/dev/null | grep 'authpriv.notice lighttpd: audit event=login' | grep "

HEADERS = ("Content-Security-Policy", "X-Content-Type-Options", "X-Frame-Options", "Referrer-Policy", "Permissions-Policy",
           "Cross-Origin-Opener-Policy", "Cross-Origin-Resource-Policy")

ANSWERS = (
    ("302", "SITE/"),
    *(("401", "SITE/" + path) for path in ("config/", "media/css/screen.css", "status/rpc", "progress", "no/such")),
    ("200", ADMIN + "SITE/config/"),
    ("404", ADMIN + "SITE/config/no/such"),
    ("200", ADMIN + "SITE/config/settings/advanced -d submit=Download"),
    ("200", ADMIN + """SITE/status/rpc -H 'Content-Type: application/json' -d '{"method":"tail_syslog","params":[],"id":1}'"""),
    ("200", ADMIN + "SITE/media/css/screen.css -r 10000000-"),
    ("304", ADMIN + "SITE/media/css/screen.css -z '1 Jan 2100'"),
    ("200", ADMIN + "SITE/plugins/traffic/head/traffic.js"),
    ("403", ADMIN + "SITE/plugins/traffic"),
    ("403", ADMIN + "SITE/config/settings/reboot -H 'Origin: http://evil.example' -d x=y"),
    ("421", ADMIN + "SITE/config/ -H 'Host: evil.example'"),
    ("200", ADMIN + "SITE/progress"),
    *(("404", ADMIN + "SITE/" + path) for path in ("no/such", "connections", "server-status")),
    ("400", "SITE/ -H Host:"),
    ("413", "SITE/config/ -H 'Content-Length: 99999999999' -d x"),
    ("501", "SITE/ -X BREW"),
    ("431", f"SITE/ -H 'X: {'x' * 20000}'"),
    ("503", ADMIN + "SITE/config/"),
    ("429", "SITE/"),
)


class Front(unittest.TestCase):
    def setUp(self):
        self.device = Device("front", "--plugins")
        self.addCleanup(self.device.end)
        self.shell = self.device.shell
        self.shell(f"{LAN}ip address add {OTHER}/24 dev eth0")

    def heads(self, options, site=SITE):
        """Status and head of the answers to curl, with the log-in's first one."""
        text = self.shell(f"{LAN}curl -sk -D - -o /dev/null --max-time 20 {options.replace('SITE', site)}")
        return re.findall(r"^HTTP/\S+ (\d+).*\n((?:.+\n)*)", text + "\n", re.M)

    def log_in(self, password="admin", address="192.168.0.20", user="admin"):
        """The status of the last answer to somebody with a password."""
        return self.heads(f'--digest -u "{user}:{password}" SITE/config/ --interface {address}')[-1][0]

    def attack(self, options):
        return json.loads(self.shell(f"{LAN}{PROJECT}/tests/attack/front {options}"))

    def test_every_answer_binds_the_browser(self):
        (_, head), = self.heads("SITE/config/?a=b", "http://192.168.0.1")
        self.assertIn("ocation: https://192.168.0.1/config/?a=b", head)
        values = {name: set() for name in HEADERS}
        for wanted, options in ANSWERS:
            if wanted == "503":
                self.shell("mv /run/webconfig/webconfig.sock /run/webconfig/gone")
            if wanted == "429":
                self.attack(f"guess {SITE} --seconds 3 --connections 10")
            for site in (SITE, "http://192.168.0.1"):
                heads = self.heads(options, site)
                with self.subTest(options, site=site):
                    self.assertIn(heads[-1][0], (wanted,) if site == SITE else (wanted, "302"))
                    for _, head in heads:
                        for name in HEADERS:
                            value, = re.findall(f"(?im)^{name}: (.*)", head)
                            values[name].add(value)
                        self.assertEqual(site == SITE, "strict-transport-security: " in head.lower())
                        self.assertNotRegex(head, "(?im)^(server|x-powered-by): ")
        self.assertEqual({1}, {len(values[name]) for name in HEADERS[1:]}, "server and process agree")

    def test_text_is_sent_small_and_kept_as_long_as_it_holds(self):
        call = """-H 'Content-Type: application/json' -d '{"method":"general_dynamic_status","params":[],"id":1}' """
        for kept, packed, request in (("max-age=604800", True, "SITE/media/js/bundle.js"),
                                      ("max-age=604800", True, "SITE/media/css/screen.css"),
                                      ("max-age=604800", False, "SITE/media/images/spinner.gif"),
                                      ("max-age=3600", True, "SITE/plugins/traffic/head/traffic.js"),
                                      ("no-store", True, call + "SITE/status/rpc"),
                                      ("no-store", True, "SITE/config/network/wlan")):
            for encoding in ("gzip, br", "identity"):
                _, head = self.heads(f"{ADMIN}-H 'Accept-Encoding: {encoding}' {request}")[-1]
                with self.subTest(request, encoding=encoding):
                    self.assertEqual(packed and encoding != "identity", "\ncontent-encoding: gzip\n" in "\n" + head.lower())
                    self.assertEqual(kept, re.search("(?im)^cache-control: (.*)", head)[1])

    def test_five_guesses_lock_their_address_and_no_other(self):
        self.assertEqual(5, self.attack(f"guess {SITE} --seconds 3 --connections 30")["guesses"])
        (status, head), = self.heads("SITE/")
        self.assertEqual("429", status)
        self.assertIn(int(re.search(r"(?im)^retry-after: (\d+)", head)[1]), range(50, 61))
        self.assertEqual("429", self.log_in(), "also with the password")
        self.assertEqual("200", self.log_in(address=OTHER))
        self.assertEqual("5", self.shell(AUDIT + "-c 'result=refused user=admin address=192.168.0.20 page=/'"))
        self.assertEqual("1", self.shell(AUDIT + "-c 'result=locked user=admin address=192.168.0.20 .* seconds=60'"))

        self.shell("sed -i '/FIRST_LOCK, /s/60/5/' /etc/lighttpd/lighttpd-login.lua")
        self.log_in("x", OTHER, user="';touch /tmp/run;'")
        self.shell(AUDIT + "'user=%27%3Btouch%20/tmp/run%3B%27 ' && test ! -e /tmp/run")
        for pause, wanted, password in (*3 * [(0, "401", "x")], (0, "200", "admin"),  # which ends the count
                                        *5 * [(0, "401", "x")], (0, "429", "admin"),
                                        (5, "401", "x"), (5, "429", "admin"), (5, "200", "admin")):  # twice as long
            self.shell(f"sleep {pause}")
            self.assertEqual(wanted, self.log_in(password, OTHER))

    def test_a_log_in_opens_once(self):
        header = self.shell(f"{LAN}curl -skv {ADMIN} {SITE}/config/ 2>&1 | grep -o 'Authorization.*'").strip()
        for _ in range(7):
            (status, head), = self.heads(f"SITE/config/ -H '{header}'")
            self.assertEqual("401", status)
            self.assertIn(", stale=true", head, "the browser asks again by itself")
        self.assertEqual("200", self.log_in(), "none of them was a guess")

    def test_a_password_has_one_hash_or_two(self):
        for sha256, wanted in (("$(hash md5):$(hash sha256)", ["SHA-256", "MD5"]), ("other:$(hash sha256)", ["MD5"])):
            self.shell(f"""
                hash() {{ printf 'admin:Orvane Configuration Tool:secret' | $1sum | cut -d' ' -f1; }}
                prm set webman/digest/admin $(hash md5); prm set webman/digest256/admin {sha256}; lighttpd_set_passwd.sh""")
            self.assertEqual(wanted, re.findall(r"algorithm=([^,]*)", self.heads("SITE/config/")[0][1]))
            self.assertEqual("200", self.log_in("secret"))

    def test_silent_sockets_leave_room_for_others(self):
        result = self.attack(f"silent {SITE} --connections 256 --seconds 3 --probe-from {OTHER}")
        self.assertIn(result["held"], range(1, 33))
        self.assertEqual(0, result["unanswered"], result)
        own = self.shell("curl -s -o /dev/null -w '%{http_code}' http://127.0.0.1:8079/config/")
        self.assertEqual("403", own, "what tells of connections tells nothing else")

    def test_an_uploaded_certificate_is_served_at_once(self):
        subject = f"{LAN}curl -skv {SITE} 2>&1 | grep -o 'subject: CN=.*'"
        self.assertEqual("subject: CN=virtual-device", self.shell(subject))
        self.assertIn("IP Address:192.168.0.1", self.shell("openssl x509 -in /etc/lighttpd/server.pem -noout -text"))
        self.shell("cd /tmp; openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=field -keyout k -out c; cat k c >pem")
        self.heads(ADMIN + "SITE/config/settings/advanced "
                   "-F submit='Install Certificate' -F 'certificateFile=@/tmp/pem;type=x/y'")
        self.assertTrue(eventually(lambda: self.shell(subject) == "subject: CN=field"))
