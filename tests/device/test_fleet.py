"""A device of a fleet, with a broker outside that it reaches by Wi-Fi: mosquitto, set up by config/mosquitto.conf."""

import json
import time
import unittest

from support import PROJECT, Device, eventually

SECONDS = 12
ID = "VD-0001-0042"
BROKER = "10.98.0.1"
OUTSIDE = "nsenter --net=/run/netns/outside "
CERTIFICATES = "/home/root/config/fleet"  # outlasts a restart
MEMORY = 1700  # KiB that the agent has written: a third are tables of libraries, a third is what OpenSSL keeps

MAKE_CERTIFICATES = f"""
mkdir -p {CERTIFICATES} /etc/radio && cd {CERTIFICATES} && umask 077
echo depot >/etc/radio/networks
new="openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes"
sign="openssl x509 -req -CA ca.pem -CAkey ca.key"
$new -x509 -keyout ca.key -out ca.pem -subj /CN=Fleet
$new -keyout broker.key -subj /CN=broker >broker.csr
echo subjectAltName=IP:{BROKER} >names
$sign -extfile names -in broker.csr -out broker.pem
for name in {ID} fleet-console; do
    $new -keyout $name.key -subj /CN=$name >$name.csr && $sign -in $name.csr -out $name.pem
done"""

FLEET = {"broker": f"mqtts://{BROKER}", "ca": f"{CERTIFICATES}/ca.pem", "certificate": f"{CERTIFICATES}/{ID}.pem",
         "key": f"{CERTIFICATES}/{ID}.key", "health": 10}


def client(program, name, *options):
    return (f"{OUTSIDE}mosquitto_{program} -V 5 -h {BROKER} -p 8883 --cafile {CERTIFICATES}/ca.pem"
            f" --cert {CERTIFICATES}/{name}.pem --key {CERTIFICATES}/{name}.key -q 1 " + " ".join(options))


class Fleet(unittest.TestCase):
    def setUp(self):
        self.device = Device("fleet")
        self.addCleanup(self.device.end)
        self.shell = self.device.shell
        self.shell(MAKE_CERTIFICATES)
        self.shell("webconfigctl set net/wifi/client/enabled=yes net/wifi/client/essid=depot"
                   " net/wifi/client/security=none; webconfigctl keep")
        self.configure(f's/"seconds": 120/"seconds": {SECONDS}/; s|"webconfig": {{|&"fleet": {json.dumps(FLEET)},|')
        self.device.enter("reboot")
        self.assertTrue(eventually(lambda: self.device.status(f"ping -c 1 -W 1 {BROKER}") == 0, 60))
        self.start_broker()

    def configure(self, edit):
        self.shell(f"sed -i '{edit}' /etc/webconfig/device.json")

    def start_broker(self):
        text = (PROJECT / "config/mosquitto.conf").read_text()
        for shipped, here in (("/etc/mosquitto/certs", CERTIFICATES), ("/etc/mosquitto/fleet.acl", "/tmp/fleet.acl"),
                              ("/var/lib/mosquitto/", "/tmp/broker/")):
            text = text.replace(shipped, here)
        acl = (PROJECT / "config/mosquitto.acl").read_text()
        self.shell(f"mkdir -p /tmp/broker; cat >/tmp/fleet.acl <<'END'\n{acl}END\n"
                   f"cat >/tmp/broker.conf <<'END'\n{text}\nuser root\nEND\n"
                   f"{OUTSIDE}setsid mosquitto -c /tmp/broker.conf >>/tmp/broker.log 2>&1 &")
        self.assertTrue(eventually(lambda: self.device.status(
            client("pub", "fleet-console", "-t fleet/test/change -n")) == 0))
        listen = client("sub", "fleet-console", "-c -i console -t fleet/#", "-F '%t %p'")
        self.shell(f"kill $(cat /tmp/listener) 2>/dev/null; {listen} >>/tmp/heard 2>&1 & echo $! >/tmp/listener")

    def heard(self, topic):
        begin = f"fleet/{ID}/{topic} "
        lines = self.shell("cat /tmp/heard").splitlines()
        return [json.loads(line[len(begin):]) for line in lines if line.startswith(begin)]

    def last(self, topic):
        return (self.heard(topic) or [None])[-1]

    def becomes(self, topic, condition, seconds=45):
        """The last message of that topic, once it is as it should be."""
        self.assertTrue(eventually(lambda: self.last(topic) is not None and condition(self.last(topic)), seconds),
                        (self.last(topic), self.shell("grep -a webconfig-agent /var/log/messages | tail -20;"
                                                      " tail -5 /tmp/broker.log")))
        return self.last(topic)

    def change(self, number, patch, state, **more):
        """Sends a change and returns its result in that state."""
        message = json.dumps({"id": f"c{number}", "who": "Anna Ö", "patch": patch, **more})
        self.shell(client("pub", "fleet-console", f"-t fleet/{ID}/change", f"-m '{message}'"))
        return self.becomes("result", lambda result: (result["id"], result["state"]) == (f"c{number}", state))

    def sets(self):
        return json.loads(self.shell("webconfigctl --json history"))

    def end_agent(self, signal):
        time.sleep(1)  # what ends sooner after its start is not started again
        before = self.shell("pidof webconfig-agent")
        self.shell(f"kill -{signal} {before}")
        return before

    def test_changes_are_made_kept_refused_or_go_back_whatever_is_interrupted(self):
        self.assertIs(True, self.becomes("online", bool))
        reported = self.becomes("reported", bool)
        told = reported["serial"], reported["name"], reported["settings"]["net/wifi/client/essid"]
        self.assertEqual((ID, "virtual-device", "depot"), told)
        self.becomes("health", lambda health: health["memory_total"] > 0)

        done = self.change(1, {"net/hostname": "mast"}, "done", based_on=reported["revision"])
        self.assertEqual(["net/hostname"], done["changed"])
        self.assertEqual("mast", self.shell("prm get net/hostname"))
        self.assertEqual(("fleet: Anna Ö", "machines"), (self.sets()[0]["user"], self.sets()[0]["page"]))
        self.shell("grep 'audit event=setting result=ok user=fleet:%20Anna%20%C3%96 ' /var/log/audit")
        news = self.becomes("reported", lambda now: now["name"] == "mast")
        self.assertEqual(done["revision"], news["revision"])
        self.shell("prm set net/hostname other")
        self.change(1, {"net/hostname": "mast"}, "done")
        self.assertEqual("other", self.shell("prm get net/hostname"))
        refused = self.change(2, {"net/lan_ipaddr": "10.0.0.300"}, "refused")
        self.assertEqual({"net/lan_ipaddr": "Invalid IP address"}, refused["refused"])
        self.assertEqual("conflict", self.change(3, {"net/hostname": "x"}, "refused", based_on="old")["code"])

        # A device with a certificate says nothing in another's name, and hears nothing of it.
        self.shell(client("pub", ID, "-t fleet/other/online", "-m true") + " || true")
        self.assertNotIn("fleet/other/online", self.shell("cat /tmp/heard"))

        # On trial: what leaves the way to the broker stays, what cuts it off goes back.
        self.assertFalse(self.change(4, {"system/remote/web_enabled": "yes"}, "kept")["restart"])
        newest = self.sets()[0]["number"]
        self.change(5, {"net/wifi/client/essid": "dep0t"}, "returned")
        self.assertEqual("depot", self.shell("prm get net/wifi/client/essid"))
        self.assertEqual(["webconfig-guard", "fleet: Anna Ö"],
                         [one["user"] for one in self.sets() if one["number"] > newest])

        # The broker, then the agent, then the power ends without a word.
        self.shell("kill -9 $(pidof mosquitto); rm -f /tmp/heard")
        self.start_broker()
        self.assertEqual("other", self.becomes("reported", bool)["name"])
        before = self.end_agent("KILL")
        self.change(6, {"net/hostname": "mast-6"}, "done")
        self.assertNotEqual(before, self.shell("pidof webconfig-agent"))
        self.end_agent("STOP")
        self.shell(client("pub", "fleet-console", f"-t fleet/{ID}/change", "-m 'rubbish'"))
        self.shell(client("pub", "fleet-console", f"-t fleet/{ID}/change", "-m '" + "[" * 60000 + "'"))
        self.end_agent("KILL")
        self.change(7, {"net/hostname": "mast-7"}, "done")
        written = int(self.shell("awk '/Private_Dirty/ {print $2}' /proc/$(pidof webconfig-agent)/smaps_rollup"))
        print(f"The agent has written to {written} KiB")
        self.assertLess(written, MEMORY)

        self.shell(f"chmod 644 {CERTIFICATES}/{ID}.key")
        refusal = self.device.enter("webconfig-agent", "-c", "/etc/webconfig/device.json")
        self.assertEqual(1, refusal.returncode)
        self.assertIn("webconfig.fleet.key", refusal.stderr)
