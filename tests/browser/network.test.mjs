// The network pages whose scripts do something of their own: fields that follow a switch, rules edited in
// place, a button that stays. What the status tabs show is in status.test.mjs.

import assert from "node:assert/strict";
import { test } from "node:test";
import { answering, desktop, eventually, inDevice, phone, submit, withPage } from "./device.mjs";

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
        await submit(page, "#cfg_pfwadd_add");
        await submit(page, "#row_0 [name='edit']");
        await page.fill("#cfg_pfw_dest_port", "9");
        await page.keyboard.press("Enter");
        await page.waitForSelector("#row_0 [name='edit']");
        assert.deepEqual(stored(), [
            `"net/portfwd/udp/04711/d_ip","192.168.0.20", s`,
            `"net/portfwd/udp/04711/d_port","9", s`,
        ]);
        await submit(page, "#row_0 [name='delete']");
        assert.deepEqual(stored(), []);
    });
});

test("NTP with chrony: the daemon's tables, and a button that outlives the refreshes", async () => {
    const result = { isChronyd: true, running: true, tracking: "Stratum 1", rawOutput: "\n  .-- S\n", clients: "C" };
    const options = answering({ result });
    await withPage("/config/network/ntp", options, async (page) => {
        await page.click("a[href='#ntpd_status_tab']");
        const shown = () =>
            page.$$eval("#ntpd_status :is(h3, p, pre)", (all) => all.map((e) => `${e.localName}: ${e.textContent}`));
        await eventually(async () =>
            assert.deepEqual(await shown(), [
                ...["h3: State", "p: Running", "h3: Tracking", "pre: Stratum 1"],
                ...["h3: Sources", "pre:   .-- S", "h3: Clients", "pre: C"],
            ]),
        );
        await page.focus("#status_ntp_manual_sync");
        options.use({ result: { ...result, tracking: "Stratum 2" } });
        await eventually(async () => assert.ok((await shown()).includes("pre: Stratum 2")));
        assert.equal(await page.evaluate(() => document.activeElement.id), "status_ntp_manual_sync");
    });
});
