"""Rollouts over a fleet, while the broker, the console, the agents, the network or the power ends at each of their steps.

No change is lost, made twice or left half: the device's own history and its store say so.
"""

import concurrent.futures
import json
import time
import unittest

from support import Fleet, eventually

SECONDS = 180  # for a rollout with all its interruptions, on a busy machine
TRIAL = 12
ROUTER = "nsenter --net=/run/netns/router ip link set broker "
RESET = "nsenter --net=/run/netns/broker iptables {} INPUT -p tcp --dport 8883 -j REJECT --reject-with tcp-reset"
AT_ONCE = ["gprs/apn", "net/wifi/client/essid"]  # the second one is on trial
BY_RESTART = ["gprs/apn", "net/lan_advertise_speed"]


class Interrupted(unittest.TestCase):
    def setUp(self):
        self.fleet = Fleet("console", 3, "--trial", str(TRIAL))
        self.addCleanup(self.fleet.end)
        self.assertTrue(eventually(lambda: self.ask("devices")["online"] == 3, 60))

    def ask(self, method, **parameters):
        """Asks until the console answers, which may have ended."""
        answers = []

        def is_answered():
            try:
                answers.append(self.fleet.call(method, **parameters))
            except (OSError, RuntimeError, ValueError):
                return False
            return True

        self.assertTrue(eventually(is_answered, 60), method)
        return answers[0]

    @staticmethod
    def end(hosts, program):
        """Its supervisor starts it again; what ends within a second of its start it would not."""
        script = f"until [ $(ps -o etimes= -p $(pidof {program}) || echo 0) -ge 2 ]; do sleep .1; done; pkill -9 -x {program}"
        with concurrent.futures.ThreadPoolExecutor() as pool:
            list(pool.map(lambda host: host.shell(script), hosts))

    def cut_the_network(self):
        """For a while nothing arrives, then whoever tries is thrown out."""
        for begin, end in (ROUTER + "down", ROUTER + "up"), (RESET.format("-A"), RESET.format("-D")):
            self.fleet.shell(f"{begin}; sleep 1; {end}")

    def finish(self, rollout, interrupt):
        """Interrupts the rollout whenever the state of a member is another one. Returns what the members have come to."""
        steps = []
        deadline = time.monotonic() + SECONDS
        while self.ask("rollout", rollout=rollout)["state"] == "running":
            states = [member["state"] for member in self.ask("members", rollout=rollout)["members"]]
            if states not in steps[-1:]:
                steps.append(states)
                interrupt()
            self.assertLess(time.monotonic(), deadline, steps)
            time.sleep(0.05)
        self.assertGreater(len(steps), 1)
        self.assertEqual("done", self.ask("rollout", rollout=rollout)["state"])
        return {member["id"]: member["state"] for member in self.ask("members", rollout=rollout)["members"]}

    def sets(self, device):
        """Of the device's own history, the oldest first. The device may be starting."""
        answers = []

        def is_told():
            answers.append(device.enter("webconfigctl", "--json", "history"))
            return answers[-1].returncode == 0

        self.assertTrue(eventually(is_told, 60))
        return json.loads(answers[-1].stdout)[::-1]

    @staticmethod
    def stored(device, keys):
        return device.shell(f"for key in {' '.join(keys)}; do prm get $key; done").split()

    def check(self, interrupt, keys, wanted, method, **parameters):
        """Makes a rollout by which devices are to have what is wanted; returns its number."""
        before = [(self.sets(device), self.stored(device, keys)) for device in self.fleet.devices]
        rollout = self.fleet.call(method, **parameters)["rollout"]
        ends = self.finish(rollout, interrupt)
        for device, (sets, stored) in zip(self.fleet.devices, before):
            news = self.sets(device)[len(sets):]
            if device.serial not in ends:  # it had gone back already, so there was nothing to take back
                self.assertEqual([], news)
                continue
            made = [one for one in news if one["user"] == "fleet: admin" and one["result"] == "saved"]
            self.assertEqual(1, len(made), news)
            if all(one["result"] == "saved" for one in news):  # the power may end within a save
                self.assertEqual(keys, [change["key"] for change in made[0]["changes"]])
            # A busy machine may take longer than a trial: then all of it goes back.
            is_kept = ends[device.serial] == "kept"
            self.assertEqual("kept" if is_kept else "returned", ends[device.serial])
            self.assertEqual("fleet: admin" if is_kept else "webconfig-guard", news[-1]["user"])
            self.assertEqual(wanted if is_kept else stored, self.stored(device, keys))
        return rollout

    def roll_out(self, interrupt, keys, wanted, **how):
        return self.check(interrupt, keys, wanted, "roll_out", title=wanted[0], why="a test", select={}, canaries=1, wave=2,
                          limit=100, settle=1, patch=dict(zip(keys, wanted)), **how)

    def test_a_rollout_goes_on_and_back_behind_each_interruption(self):
        interruptions = {
            "agents": lambda: self.end(self.fleet.devices, "webconfig-agent"),
            "network": self.cut_the_network,
            "broker": lambda: self.end([self.fleet], "mosquitto"),
            "console": lambda: self.end([self.fleet], "webconfig-fleet"),
        }
        for name, interrupt in interruptions.items():
            with self.subTest(name):
                rollout = self.roll_out(interrupt, AT_ONCE, [name, name])
        with self.subTest("back"):
            self.check(interrupt, AT_ONCE, ["broker", "broker"], "take_back", rollout=rollout)

    def test_restarts_and_power_cuts(self):
        def cut_the_power():
            for device in self.fleet.devices:
                device.enter("kill", "-PWR", "1")

        self.roll_out(cut_the_power, BY_RESTART, ["restarts", "7"], restart=True)
