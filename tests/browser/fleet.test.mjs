// Rollouts over a fleet of its own, in the console's pages: to devices that take it, and to one that it makes dark.

import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import { createInterface } from "node:readline";
import { after, before, describe, test } from "node:test";
import { confirm, desktop, eventually, inCheckout, waitForText, withPage } from "./device.mjs";

const trialSeconds = 4; // nobody is to reach it in them
const name = `browser${process.pid}`;
const wrongGateway = "192.168.0.253";

describe("a fleet", () => {
    const devices = [];
    let console_;
    let launcher;

    const on = (device, script) => execFileSync(inCheckout("device/enter"), ["--name", device.name, "sh", "-c", script], { encoding: "utf8" }).trimEnd();
    const changes = (device) => JSON.parse(on(device, "webconfigctl --json history"));
    const start = (device) => on(device, "cat /proc/sys/kernel/random/boot_id");

    before(async () => {
        const build = process.env.WEBCONFIG_BUILD ?? "build/dev";
        const options = ["3", "--name", name, "--port", "0", "--trial", String(trialSeconds), "--build", build];
        launcher = spawn("device/fleet", options, { cwd: inCheckout(""), stdio: ["ignore", "pipe", "inherit"] });
        const lines = createInterface({ input: launcher.stdout })[Symbol.asyncIterator]();
        const words = async () => (await lines.next()).value.split(" ");
        [console_] = await words();
        for (let number = 1; number <= 3; ++number) {
            const [, device, id] = await words();
            devices.push({ name: device, id });
        }
    });
    after(async () => {
        launcher.kill();
        await once(launcher, "exit");
    });

    /** Rolls out a value to the devices that are chosen on the page, and leads to the rollout's page. */
    async function rollOut(page, title, key, value, fields) {
        await page.selectOption("#add_setting_key", key);
        await page.click("#add_setting button");
        await page.fill(`[data-setting='${key}']`, value);
        for (const [field, text] of Object.entries({ title, why: "a test", settle: "1", ...fields })) {
            await page.fill(`#rollout_${field}`, text);
        }
        await confirm(page, "#roll_out_go");
        await page.waitForURL("**/fleet/rollout/*");
    }

    test("a device name is changed on two devices", async () => {
        const [, second, third] = devices;
        await withPage(new URL(console_).href, desktop, async (page) => {
            for (const { id } of [second, third]) {
                await page.check(`#devices [data-id='${id}']`, { timeout: 60000 });
            }
            await page.click("#roll_out_selected");
            await rollOut(page, "Names", "net/hostname", "plant", { canaries: "1", wave: "1" });
            await eventually(async () => assert.match(await page.textContent("#rollout_summary"), /done/i), 60);
        });
        assert.deepEqual(devices.map((device) => on(device, "prm get net/hostname")), ["mast-1", "plant", "plant"]);
        assert.deepEqual(devices.map((device) => changes(device).map(({ user }) => user)), [[], ["fleet: admin"], ["fleet: admin"]]);
    });

    test("a wrong gateway makes one device dark for a while, and stops there", async () => {
        const starts = devices.map(start);
        const sets = devices.map((device) => changes(device).length);
        let dark;
        await withPage(new URL("roll_out", console_).href, desktop, async (page) => {
            await page.check("#rollout_restart");
            await rollOut(page, "Gateway", "net/lan_gateway", wrongGateway, { canaries: "1", wave: "2" });
            await eventually(() => {
                dark = devices.findIndex((device) => on(device, "ip route").includes(`via ${wrongGateway}`));
                assert.notEqual(dark, -1);
            }, 60);
            assert.throws(() => on(devices[dark], "ping -c 1 -W 1 10.96.0.1"));
            await eventually(async () => assert.match(await page.textContent("#rollout_summary"), /stopped/i), 120);
            await waitForText(page, "#members", new RegExp(devices[dark].id));
        });
        on(devices[dark], "ping -c 1 -W 1 10.96.0.1");
        assert.deepEqual(changes(devices[dark]).slice(0, 2).map(({ user }) => user), ["webconfig-guard", "fleet: admin"]);
        devices.forEach((device, index) => {
            assert.equal(on(device, "prm get net/lan_gateway"), "192.168.0.254", device.name);
            assert.equal(start(device) === starts[index], index !== dark, device.name);
            assert.equal(changes(device).length - sets[index], index === dark ? 2 : 0, device.name);
        });
    });
});
