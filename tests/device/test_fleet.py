"""A device of a fleet, and what it makes of messages from the broker."""

import json
import time
import unittest

from support import Fleet, eventually

BROKER = "nsenter --net=/run/netns/router ip link set broker "  # up, or down
CERTIFICATES = "/etc/webconfig-fleet"  # on the console's host
HEARD = "/tmp/heard"
MEMORY = 1700  # KiB that the agent has written: a third are tables of libraries, a third is what OpenSSL keeps


class Agent(unittest.TestCase):
    def setUp(self):
        self.fleet = Fleet("agent", 1, "--trial", "12")
        self.addCleanup(self.fleet.end)
        self.device = self.fleet.devices[0]
        self.id = self.device.serial
        self.shell = self.device.shell
        self.listen()

    @staticmethod
    def client(program, folder, name, *options):
        return (f"mosquitto_{program} -V 5 -h 10.96.0.1 -p 8883 --cafile {folder}/ca.pem --cert {folder}/{name}.pem"
                f" --key {folder}/{name}.key -q 1 " + " ".join(options))

    def send(self, message):
        self.fleet.shell(self.client("pub", CERTIFICATES, "console", f"-t fleet/{self.id}/change -m '{message}'"))

    def listen(self):
        """What is retained comes first."""
        listen = self.client("sub", CERTIFICATES, "console", "-t fleet/# -F '%t %p'")
        self.assertTrue(eventually(lambda: self.fleet.status(
            f"pkill -x mosquitto_sub; {listen} >{HEARD} 2>/dev/null & sleep 1; pidof mosquitto_sub") == 0))

    def heard(self, topic):
        begin = f"fleet/{self.id}/{topic} "
        lines = self.fleet.shell(f"cat {HEARD}").splitlines()
        return [json.loads(line[len(begin):]) for line in lines if line.startswith(begin)]

    def last(self, topic):
        return (self.heard(topic) or [None])[-1]

    def becomes(self, topic, condition, seconds=45):
        """The last message of that topic, once it is as it should be."""
        self.assertTrue(eventually(lambda: self.last(topic) is not None and condition(self.last(topic)), seconds),
                        (self.last(topic), self.shell("grep -a webconfig-agent /var/log/messages | tail -20")))
        return self.last(topic)

    def change(self, number, patch, state, **more):
        """Sends a change and returns its result in that state."""
        self.send(json.dumps({"id": f"c{number}", "who": "Anna Ö", "patch": patch, **more}))
        return self.is_told(number, state)

    def is_told(self, number, state):
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
        told = reported["serial"], reported["name"], reported["settings"]["net/lan_gateway"]
        self.assertEqual((self.id, "mast-1", "192.168.0.254"), told)
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
        self.shell(self.client("pub", "/etc/webconfig/fleet", "device", "-t fleet/other/online -m true") + " || true")
        self.assertNotIn("fleet/other/online", self.fleet.shell(f"cat {HEARD}"))

        # On trial: what leaves the way to the broker stays, what cuts it off goes back.
        self.assertFalse(self.change(4, {"system/remote/web_enabled": "yes"}, "kept")["restart"])
        newest = self.sets()[0]["number"]
        self.send(json.dumps({"id": "c5", "who": "Anna Ö", "patch": {"system/remote/web_enabled": "no"}}))
        self.assertTrue(eventually(lambda: "On trial" in self.shell("webconfigctl status")))
        self.fleet.shell(BROKER + "down")
        self.assertTrue(eventually(lambda: "were taken back" in self.shell("webconfigctl status"), 40))
        self.fleet.shell(BROKER + "up")
        self.is_told(5, "returned")
        self.assertEqual("yes", self.shell("prm get system/remote/web_enabled"))
        self.assertEqual(["webconfig-guard", "fleet: Anna Ö"],
                         [one["user"] for one in self.sets() if one["number"] > newest])

        # The broker, then the agent, then the power ends without a word.
        self.fleet.shell("pkill -9 -x mosquitto")
        self.listen()
        self.assertEqual("other", self.becomes("reported", bool)["name"])
        before = self.end_agent("KILL")
        self.change(6, {"net/hostname": "mast-6"}, "done")
        self.assertNotEqual(before, self.shell("pidof webconfig-agent"))
        self.end_agent("STOP")
        self.send("rubbish")
        self.send("[" * 60000)
        self.end_agent("KILL")
        self.change(7, {"net/hostname": "mast-7"}, "done")
        written = int(self.shell("awk '/Private_Dirty/ {print $2}' /proc/$(pidof webconfig-agent)/smaps_rollup"))
        print(f"The agent has written to {written} KiB")
        self.assertLess(written, MEMORY)

        self.shell("chmod 644 /etc/webconfig/fleet/device.key")
        refusal = self.device.enter("webconfig-agent", "-c", "/etc/webconfig/device.json")
        self.assertEqual(1, refusal.returncode)
        self.assertIn("webconfig.fleet.key", refusal.stderr)
