// The Firmware page: an upload with the answers of a slow link, the parts of it that only scripts see, and
// whole upgrades, up to the restarted device.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, describe, test } from "node:test";
import { answering, confirm, desktop, eventually, inCheckout, inDevice, phone, site, waitForText, withPage } from "./device.mjs";

const firmwarePage = "/config/settings/firmware";
const image = {
    name: "image.itb",
    mimeType: "application/octet-stream",
    buffer: Buffer.from([0xd0, 0x0d, 0xfe, 0xed, 1, 2, 3]),
};

describe("Firmware page", () => {
    test("shows how far the upload is", async () => {
        let progress = { state: "starting" };
        const asked = [];
        const options = answering({ result: 0 });
        const prepare = async (page) => {
            await options.prepare(page);
            await page.route("**/progress", (route) => {
                asked.push(route.request().headers()["x-progress-id"]);
                return route.fulfill({ json: progress });
            });
        };
        await withPage(firmwarePage, { ...options, prepare }, async (page) => {
            let sentTo = null;
            // The upload itself never ends here.
            await page.route(`**${firmwarePage}?*`, (route) => {
                sentTo = route.request().url();
            });
            await page.setInputFiles("#cfg_frw_file", image);
            await confirm(page, "#cfg_frw_save");
            const text = await page.textContent(".form_result_msg.static");
            assert.equal(text.trim(), "Do not leave this page or file upload will fail");

            await waitForText(page, "#tp", /^starting$/);
            progress = { state: "uploading", received: 10e6, size: 40e6 };
            await waitForText(page, "#tp", /^uploading$/);
            assert.equal(await page.textContent("#bytes"), "10000000 / 40000000");
            assert.equal(await page.evaluate(() => $("#progressbar").width()), 100);
            const bar = page.getByRole("progressbar", { name: "Sending the file to the device" });
            assert.equal(await bar.getAttribute("aria-valuenow"), "25");
            assert.equal(await bar.getAttribute("aria-valuetext"), "25 % · 10.0 of 40.0 MB");
            progress = { state: "done", received: 40e6, size: 40e6 };
            await waitForText(page, "#tp", /^Copying file: please wait\.\.\.$/);

            assert.match(asked[0], /^[0-9a-f]{32}$/);
            assert.ok(sentTo.endsWith(`${firmwarePage}?X-Progress-ID=${asked[0]}`), sentTo);
            assert.deepEqual(options.calls, [{ method: "prepare_fw_upgrade", params: [], id: 20 }]);
        });
    });

    test("tells how long it takes as it knows it, and aloud every 15 seconds", async () => {
        // How many of 1000 megabytes have come after each second, and what is told of the rest in the end.
        const cases = [
            [[0, 10, 20], ""],
            [[30], "about 2 minutes left"],
            [Array(10).fill(30), ""],
            [[130, 230, 330], "about 30 seconds left"],
            [[900, 990], "a few seconds left"],
            [[0], ""],
        ];
        const prepare = (page) => page.clock.install();
        await withPage(firmwarePage, { ...desktop, prepare }, async (page) => {
            await page.clock.pauseAt(Date.now() + 60000);
            const said = [];
            for (const [amounts, left] of cases) {
                let told;
                for (const amount of amounts) {
                    told = await page.evaluate((bytes) => {
                        ShowAmount(bytes, 1e9);
                        return document.getElementById("progress_amount").textContent.split(" · ");
                    }, amount * 1e6);
                    await page.clock.runFor(1000);
                    said.push(await page.textContent("#announcement"));
                }
                assert.equal(told[2] ?? "", left, amounts);
            }
            assert.deepEqual([...new Set(said)], [
                "0 % · 0.0 of 1,000.0 MB",
                "23 % · 230.0 of 1,000.0 MB · about 40 seconds left",
            ]);
        });
    });

    test("that breaks off gives the form back with its file, and in the end the page has the device's answer", async () => {
        const target = `**${firmwarePage}?*`;
        const broken = /^The connection to the device broke\. Nothing was installed/;
        const prepare = (page) => page.clock.install();
        await withPage(firmwarePage, { ...desktop, prepare, faulty: true }, async (page) => {
            let tries = 0;
            await page.route(target, (route) => (++tries === 1 ? null : route.abort("connectionreset")));
            await page.setInputFiles("#cfg_frw_file", image);
            await confirm(page, "#cfg_frw_save");
            await page.clock.runFor(15000);
            assert.match(await page.textContent("#progress_note"), /^Nothing has arrived for 1\d seconds/);
            await page.clock.runFor(80000);
            await waitForText(page, ".form_result_msg.failure", broken);
            await confirm(page, "#cfg_frw_save");
            await eventually(() => assert.equal(tries, 2));
            await waitForText(page, ".form_result_msg.failure", broken);
            await page.unroute(target);
            await confirm(page, "#cfg_frw_save");
            await waitForText(page, ".form_result_msg.failure", /^The image cannot be read/);
            await page.locator("#tabcontainer.ui-tabs").waitFor();
            assert.equal(await page.evaluate(() => document.activeElement.id), "cfg_frw_save");
        });
    });
});

describe("firmware upgrade", () => {
    const settings = "/etc/fwtool";
    const before = inDevice("cat", settings);
    const configure = (text) => inDevice("sh", "-c", `printf '%s\n' "$1" >${settings}`, "sh", text);
    const version = `9.${process.pid}`;
    const folder = mkdtempSync(join(tmpdir(), "upgrade-"));
    const imageFile = join(folder, "image.itb");
    execFileSync(inCheckout("device/make-image"), [version, imageFile, "--size", "100000"]);
    after(() => {
        configure(before);
        rmSync(folder, { recursive: true });
    });

    async function sendImage(page) {
        await page.setInputFiles("#cfg_frw_file", imageFile);
        await confirm(page, "#cfg_frw_save");
        await page.getByText("Please wait while firmware is upgraded").waitFor();
    }

    test("that fails says so, and the installed version stays", async () => {
        configure("seconds = 0\nfail = flash");
        await withPage(firmwarePage, desktop, async (page) => {
            const versions = await page.textContent("#component_config pre");
            await sendImage(page);
            await page.waitForURL(`**${firmwarePage}?type=failedUpgrade`);
            assert.equal(await page.textContent(".form_result_msg.failure.static"), "Firmware upgrade failed");
            assert.equal(await page.textContent("#component_config pre"), versions);
        });
    });

    test("goes from the file over the restart to the new version, seen by every browser", async () => {
        configure("seconds = 4");
        const signal = (name) => inDevice("sh", "-c", `kill -${name} $(pidof -x fwtool-upgrade)`);
        const prepare = (page) => page.clock.install();
        await withPage(firmwarePage, { ...desktop, faulty: true, prepare }, async (page) => {
            await sendImage(page);
            await eventually(() => assert.match(inDevice("sh", "-c", "cat /tmp/fwtool_status.txt 2>&1 || true"), /flash/), 30);
            signal("STOP");
            await waitForText(page, "#progresstext", /^flash \d+ \/ 100000$/);
            assert.equal(await page.textContent("#progress_stage"), "Step 3 of 4: writing flash");
            const [done, size] = (await page.textContent("#bytes")).split(" / ");
            assert.equal(await page.evaluate(() => $("#progressbar").width()), (400 * done) / size);
            await withPage("/config/network/ntp", phone, async (other) => {
                await other.getByText("Please wait while firmware is upgraded").waitFor();
                await waitForText(other, "#tp", /^flash$/);
            });
            signal("CONT");
            await page.waitForURL("**/config/settings/reboot?type=finishedUpgrade");
            await page.getByText("Firmware upgraded successfully, reboot to run new firmware").waitFor();

            const mark = `/tmp/before_restart_${process.pid}`;
            inDevice("touch", mark);
            let probes = 0;
            page.on("request", (request) => (probes += request.url() === site.href));
            await confirm(page, "#cfg_rbt_reboot");
            await waitForText(page, ".form_result_msg", /^Device is rebooting\.\.\. \d+$/);
            await page.clock.runFor(8000);
            assert.match(await page.textContent(".form_result_msg"), /^Device is rebooting\.\.\. (8\d|9[0-2])$/);
            assert.equal(probes, 0, "the device has time to go down");
            await eventually(() => assert.equal(inDevice("sh", "-c", `test -e ${mark} || echo gone`), "gone"), 30);
            await page.clock.runFor(12000);
            await page.waitForURL("**/config/");
            await waitForText(page, ".form_result_msg.success", /^The device is back, after 0:\d\d minutes\.$/);
            await page.goto(new URL(firmwarePage, site).href);
            assert.match(await page.textContent("#component_config pre"), new RegExp(`${version} \\(running\\)`));
        });
    });
});
