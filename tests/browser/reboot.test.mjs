// What leads to a restart of the device, and what the browser does meanwhile, on a clock of its own. The device
// does not restart here; firmware.test.mjs goes through it.

import assert from "node:assert/strict";
import { describe, test } from "node:test";
import { confirm, desktop, eventually, inDevice, lanAddress, submit, waitForText, withoutRestart, withPage } from "./device.mjs";

const message = ".form_result_msg";
const onOwnClock = { ...desktop, faulty: true };

describe("Ethernet and Reboot pages", () => {
    test("a browser at the old address is sent to the new one", async () => {
        const newAddress = "192.168.0.77";
        const gone = (route) => route.abort("connectionrefused");
        const prepare = (page) => page.clock.install();
        const address = `http://${lanAddress}/config/network/ethernet1`;
        try {
            await withoutRestart(() =>
                withPage(address, { ...onOwnClock, prepare }, async (page) => {
                    await page.fill("[name='ipAddress']", newAddress);
                    await submit(page, "#cfg_eth1_save");
                    await submit(page, "#alertsBox a");
                    await confirm(page, "#cfg_rbt_reboot");
                    await waitForText(page, message, /^Device is rebooting/);
                    await page.route(`http://${lanAddress}/`, gone);
                    await page.clock.runFor(95000);
                    assert.match(await page.textContent(message), /^Device is rebooting\.\.\. \d$/);
                    await page.clock.runFor(6000);
                    await page.waitForURL(`http://${newAddress}/config/`);
                }),
            );
        } finally {
            inDevice("prm", "set", "net/lan_ipaddr", lanAddress);
            inDevice("rm", "-f", "/tmp/webconfig_reboot_flag");
        }
    });

    test("a device that stays away is told", async () => {
        const prepare = (page) => page.clock.install();
        await withoutRestart(() =>
            withPage("/config/settings/reboot", { ...onOwnClock, prepare }, async (page) => {
                await confirm(page, "#cfg_rbt_reboot");
                await waitForText(page, message, /^Device is rebooting/);
                await page.route((url) => url.pathname === "/", (route) => route.abort("connectionrefused"));
                const spoken = page.getByText(/^Restarting for (15|16|17) seconds$/);
                await page.clock.runFor(18000);
                assert.equal(await spoken.count(), 1);
                assert.equal(await page.getAttribute(message, "aria-live"), "off", "who listens hears no second count");
                await page.clock.runFor(83000);
                await waitForText(page, `${message}.failure`, /^ERROR: Device is not responding$/);
                await waitForText(page, "#waiting.long", /The device is restarting.*1:4\d.*longer than usual/s);
            }),
        );
    });
});

describe("Service page", () => {
    test("changes the serial number, reboots and goes home", async () => {
        const file = "/etc/barcode-asn";
        const before = inDevice("cat", file);
        let probes = 0;
        const prepare = async (page) => {
            await page.clock.install();
            await page.route("**/assemblysn?rand=*", (route) => (++probes < 3 ? route.abort() : route.continue()));
        };
        try {
            await withoutRestart(() =>
                withPage("/config/service/assemblysn", { ...onOwnClock, prepare }, async (page) => {
                    await page.fill("#cfg_new_assembly_sn", "SN-0123456789");
                    await page.click("#btn_asn");
                    await waitForText(page, message, /^Assembly SN changed. Reboot is required to take effect$/);
                    await confirm(page, "#btn_asn");
                    await waitForText(page, message, /^Please wait, device is rebooting \.\.\. \d+$/);
                    await page.clock.runFor(20000);
                    assert.equal(probes, 0, "the device has time to go down");
                    await eventually(async () => {
                        await page.clock.runFor(1000);
                        assert.equal(probes, 3);
                    });
                    await waitForText(page, `${message}.success`, /^Reboot is successfully finished $/);
                    await page.clock.runFor(2000);
                    await page.waitForURL("**/config/");
                }),
            );
            assert.equal(inDevice("cat", file), "SN-0123456789");
        } finally {
            inDevice("sh", "-c", `echo '${before}' >${file}`);
        }
    });
});
