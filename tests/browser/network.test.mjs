// The network pages whose scripts do something of their own: fields that follow a switch, rules edited in
// place, a button that stays. What the status tabs show is in status.test.mjs.

import assert from "node:assert/strict";
import { test } from "node:test";
import { answering, desktop, eventually, inDevice, phone, submit, submitConfirmed, waitForText, withPage } from "./device.mjs";

test("Ethernet: the fixed address shows and counts only in static mode", async () => {
    await withPage("/config/network/ethernet1", desktop, async (page) => {
        for (const mode of ["dhcp", "static"]) {
            await page.selectOption("[name='addressMode']", mode);
            for (const field of ["ipAddress", "netmask", "gateway"].map((name) => `[name='${name}']`)) {
                assert.equal(await page.isVisible(field), mode === "static", field);
                assert.equal(await page.isDisabled(field), mode === "dhcp", field);
            }
        }
    });
});

test("port forwarding: rules are added, changed with the Enter key and deleted, on a phone too", async () => {
    const stored = () => inDevice("prm", "export", "net/portfwd/").split("\n").filter(Boolean);
    assert.deepEqual(stored(), []);
    await withPage("/config/network/port_forwarding", phone, async (page) => {
        await page.selectOption("#cfg_pfwadd_proto", "udp");
        await page.getByLabel("Source Port").fill("4711");
        await page.getByLabel("Dest IP Address").fill("192.168.0.20");
        await page.getByLabel("Dest Port").fill("7");
        const focused = () => page.evaluate(() => document.activeElement.id);
        await submit(page, "#cfg_pfwadd_add");
        await eventually(async () => assert.equal(await focused(), "cfg_pfwadd_add"));
        await submit(page, "role=button[name='Edit UDP 4711']");
        await eventually(async () => assert.equal(await focused(), "cfg_pfw_protocol"));
        await page.fill("#cfg_pfw_dest_port", "9");
        await page.keyboard.press("Enter");
        await page.waitForSelector("#row_0 [name='edit']");
        assert.deepEqual(stored(), [
            `"net/portfwd/udp/04711/d_ip","192.168.0.20", s`,
            `"net/portfwd/udp/04711/d_port","9", s`,
        ]);
        await submitConfirmed(page, "#row_0 [name='delete']");
        assert.deepEqual(stored(), []);
    });
});

test("NTP with chrony: the button outlives the refreshes", async () => {
    const result = { isChronyd: true, running: true, tracking: "Stratum 1" };
    const options = answering({ result });
    await withPage("/config/network/ntp", options, async (page) => {
        await page.click("a[href='#ntpd_status_tab']");
        const shows = (text) => waitForText(page, "#ntpd_status", text);
        await shows(/Stratum 1/);
        await page.focus("#status_ntp_manual_sync");
        options.use({ result: { ...result, tracking: "Stratum 2" } });
        await shows(/Stratum 2/);
        assert.equal(await page.evaluate(() => document.activeElement.id), "status_ntp_manual_sync");
    });
});
