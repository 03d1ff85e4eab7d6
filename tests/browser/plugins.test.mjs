// The page of the example plug-in, with the plug-ins of the device switched on meanwhile.

import assert from "node:assert/strict";
import { after, before, describe, test } from "node:test";
import { setTimeout as sleep } from "node:timers/promises";
import { desktop, inDevice, phone, source, waitForText, withPage } from "./device.mjs";

const traffic = "/config/traffic/interfaces";
const volume = "/opt/applications/dialogs";
const table = "#traffic_counters";

async function switchPlugins(from, to) {
    inDevice("sed", "-i", `/"plugins":/s/${from}/${to}/`, "/etc/webconfig/device.json");
    const reload = JSON.stringify({ method: "reload", params: [], id: 1 });
    const options = "-s --digest -u admin:admin -H Content-Type:application/json";
    inDevice("sh", "-c", `curl ${options} -d '${reload}' http://127.0.0.1/status/rpc || true`);
    for (let tries = 100; source("/config/").includes(traffic) !== to; tries--) {
        assert.ok(tries > 0, "the service reloads");
        await sleep(100);
    }
}

describe("Example plug-in", () => {
    before(async () => {
        // And a volume that uses more of jQuery UI than the pages do.
        inDevice("mkdir", "-p", `${volume}/var/www/webconfig/plugins/media`);
        inDevice("cp", "-R", "/usr/share/webconfig/www/media/plugin", `${volume}/var/www/webconfig/plugins/media/head`);
        await switchPlugins(false, true);
    });
    after(async () => {
        await switchPlugins(true, false);
        inDevice("rm", "-r", volume);
    });

    test("shows the counters of the interfaces and draws the traffic that comes", async () => {
        await withPage("/", desktop, async (page) => {
            assert.equal(await page.textContent("h1"), "Device configuration, traffic edition");
            await page.evaluate(() => $("<p title='All of it'>").dialog({ modal: true }).append($("<div>").datepicker()));
            assert.equal(await page.locator(".ui-dialog .ui-datepicker-calendar").count(), 1);
            await page.evaluate(() => $(".ui-dialog-content").dialog("destroy"));
            assert.ok(await page.evaluate(() => $("#tabcontainer").tabs("option", "fx")), "the tabs are still ours");
            await page.click("#menu_Interfaces");
            await waitForText(page, table, /Interface.*Received.*Sent.*eth0.*lo/s);
            await page.selectOption("#traffic_interface", "lo");
            await waitForText(page, table, /B\/s/);
            inDevice("curl", "-s", "-o", "/dev/null", "http://127.0.0.1/");
            await waitForText(page, "#traffic_scale", /\d{3}|k/);
            for (const direction of ["received", "sent"]) {
                const heights = (await page.getAttribute(`#traffic_chart .traffic_${direction}`, "d")).match(/,[\d.]+/g);
                assert.ok(new Set(heights).size > 1, `the line of what was ${direction} rises`);
            }
            await page.setViewportSize(phone.viewport);
            assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), phone.viewport.width);
        });
    });
});
