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
            // The upload itself never ends here. It goes into another tab, because a page that is being left
            // cannot be looked at.
            await page.context().route(`**${firmwarePage}?*`, (route) => {
                sentTo = route.request().url();
            });
            await page.evaluate(() => $("#component_config form").attr("target", "away"));
            await page.setInputFiles("#cfg_frw_file", image);
            await confirm(page, "#cfg_frw_save");
            const text = await page.textContent(".form_result_msg.static");
            assert.equal(text.trim(), "Do not leave this page or file upload will fail");

            await waitForText(page, "#tp", /^starting$/);
            progress = { state: "uploading", received: 100, size: 400 };
            await waitForText(page, "#tp", /^uploading$/);
            assert.equal(await page.textContent("#bytes"), "100 / 400");
            assert.equal(await page.evaluate(() => $("#progressbar").width()), 100);
            progress = { state: "done", received: 400, size: 400 };
            await waitForText(page, "#tp", /^Copying file: please wait\.\.\.$/);

            assert.match(asked[0], /^[0-9a-f]{32}$/);
            assert.ok(sentTo.endsWith(`${firmwarePage}?X-Progress-ID=${asked[0]}`), sentTo);
            assert.deepEqual(options.calls, [{ method: "prepare_fw_upgrade", params: [], id: 20 }]);
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
            await page.goto(new URL(firmwarePage, site).href);
            assert.match(await page.textContent("#component_config pre"), new RegExp(`${version} \\(running\\)`));
        });
    });
});
