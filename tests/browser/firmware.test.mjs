// The Firmware page: an upload and the upgrade that follows, with the device's answers as a slow upgrade
// gives them, and the parts of it that only scripts see.

import assert from "node:assert/strict";
import { describe, test } from "node:test";
import { desktop, inDevice, phone, site, startInDevice, withPage } from "./device.mjs";

const toolFile = "/tmp/fwtool_status.txt";
const firmwarePage = "/config/settings/firmware";
const image = {
    name: "image.itb",
    mimeType: "application/octet-stream",
    buffer: Buffer.from([0xd0, 0x0d, 0xfe, 0xed, 1, 2, 3]),
};

/** The parsed body of a JSON-RPC call, or null for other requests. */
function call(request) {
    return request.url().endsWith("/status/rpc") ? JSON.parse(request.postData()) : null;
}

/** Answers the page's own calls and what it loads later with `answers`: functions of the request that may
 *  return the route.fulfill() options, or nothing. */
function answering(...answers) {
    return (page) =>
        page.route("**/*", (route) => {
            for (const answer of answers) {
                const options = answer(route.request());
                if (options) {
                    return route.fulfill(options);
                }
            }
            return route.continue();
        });
}

const json = (value) => ({ contentType: "application/json", body: JSON.stringify(value) });

/** The firmware tool at work: holds its lock and writes each status line for a while, then ends. */
function startTool(...lines) {
    const program = `
import fcntl, sys, time
lock = open("/tmp/fwtool_6v1Znb.lock", "w")
fcntl.lockf(lock, fcntl.LOCK_EX)
for line in sys.argv[1:]:
    with open("/tmp/fwtool_status.txt", "w") as status:
        status.write(line + "\\n")
    time.sleep(1.5)
`;
    return startInDevice("python3", "-c", program, ...lines);
}

const toolStatus = (state, received, size) => `{ 'state' : '${state}', 'received' : ${received}, 'size' : ${size} }`;

describe("Firmware page", () => {
    test("status lines are read in either way of quoting, and never run", async () => {
        await withPage(firmwarePage, desktop, async (page) => {
            const read = (line) => page.evaluate((text) => ParseToolStatus(text), line);
            const flash = { state: "flash", received: 5, size: 10 };
            for (const [line, status] of [
                ["{ 'state' : 'flash', 'received' : 5, 'size' : 10 }\n", flash],
                ['{"state":"flash","received":5,"size":10}', flash],
                [`{ 'state' : 'it "is"', "note": "don't" }`, { state: 'it "is"', note: "don't" }],
                ["{ 'path' : 'a\\b' }", { path: "a\\b" }],
                ["", null],
                ["done\n", null],
                ["{ 'state' : window.ran = true }", null],
                ["[1]", null],
                [null, null],
            ]) {
                assert.deepEqual(await read(line), status, line);
            }
            assert.equal(await page.evaluate(() => window.ran), undefined);
        });
    });

    for (const [kind, options] of Object.entries({ desktop, phone })) {
        test(`shows how far the upload is on a ${kind}`, async () => {
            const states = [
                { state: "starting" },
                { state: "uploading", received: 100, size: 400 },
                { state: "done", received: 400, size: 400 },
            ];
            const asked = [];
            const calls = [];
            const prepare = answering(
                (request) => {
                    if (request.url().endsWith("/progress")) {
                        asked.push(request.headers()["x-progress-id"]);
                        return json(states[Math.min(asked.length, states.length) - 1]);
                    }
                },
                (request) => {
                    const body = call(request);
                    if (body) {
                        calls.push(body);
                        return json({ id: 20, error: null, result: 0 });
                    }
                },
            );
            await withPage(firmwarePage, { ...options, prepare }, async (page) => {
                let sentTo = null;
                // The upload itself never ends here. It goes into a frame, because a page that is being left
                // cannot be looked at.
                await page.route(`**${firmwarePage}?*`, (route) => {
                    sentTo = route.request().url();
                });
                await page.evaluate(() => {
                    $("body").append("<iframe name='away' hidden>");
                    $("#component_config form").attr("target", "away");
                });
                await page.setInputFiles("#cfg_frw_file", image);
                await page.click("#cfg_frw_save");
                assert.ok(await page.isVisible(".progress_block"));
                assert.ok(!(await page.isVisible("#tabcontainer")));
                const text = await page.textContent(".form_result_msg.static");
                assert.equal(text.trim(), "Do not leave this page or file upload will fail");

                await page.waitForFunction(() => $("#tp").text() === "uploading");
                assert.equal(await page.textContent("#bytes"), "100 / 400");
                assert.equal(await page.evaluate(() => $("#progressbar").width()), 100);
                await page.waitForFunction(() => $("#tp").text() === "Copying file: please wait...");
                assert.equal(await page.textContent("#bytes"), "");
                assert.equal(await page.evaluate(() => $("#progressbar").width()), 400);

                assert.match(asked[0], /^[0-9a-f]{32}$/);
                assert.ok(sentTo.endsWith(`${firmwarePage}?X-Progress-ID=${asked[0]}`), sentTo);
                assert.deepEqual(calls, [{ method: "prepare_fw_upgrade", params: [], id: 20 }]);
                await page.waitForTimeout(1500);
                assert.equal(asked.length, states.length, "nothing is asked after the end");
            });
        });
    }

    for (const { outcome, path, message } of [
        { outcome: "done", path: "/config/settings/reboot?type=finishedUpgrade", message: "Firmware upgraded successfully, reboot to run new firmware" },
        { outcome: "failed", path: `${firmwarePage}?type=failedUpgrade`, message: "Firmware upgrade failed" },
    ]) {
        test(`follows an upgrade that is ${outcome} from any page`, async () => {
            const end = startTool(
                toolStatus("upgrading", 0, 4000),
                toolStatus("flash", 1000, 4000),
                toolStatus("flash", 1000, 4000),
                toolStatus(outcome, 4000, 4000),
            );
            try {
                while (!inDevice("sh", "-c", `cat ${toolFile} || true`).includes("upgrading")) {
                    await new Promise((resolve) => setTimeout(resolve, 100));
                }
                await withPage("/config/settings/advanced", desktop, async (page) => {
                    const text = await page.textContent(".form_result_msg.static");
                    assert.equal(text.trim(), "Please wait while firmware is upgraded");
                    await page.waitForFunction(() => $("#bytes").text() === "1000 / 4000");
                    assert.equal(await page.textContent("#tp"), "flash");
                    assert.equal(await page.evaluate(() => $("#progressbar").width()), 100);
                    await page.waitForURL(new URL(path, site).href);
                    await page.getByText(message).waitFor();
                });
            } finally {
                await end();
                inDevice("rm", "-f", toolFile);
            }
        });
    }
});
