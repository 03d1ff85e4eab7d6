// The General page: saving, refusing, tabs and live status, as an operator sees them.

import assert from "node:assert/strict";
import { after, describe, test } from "node:test";
import { desktop, inDevice, submit, waitForText, withPage } from "./device.mjs";

const nameField = "#cfg_grl_device_name";
const message = ".form_result_msg";
const liveStatus = "#general_dynamic_status";

const storedName = () => inDevice("prm", "get", "net/hostname");

async function save(page, name) {
    await page.fill(nameField, name);
    await submit(page, "#cfg_grl_save");
}

const isStatusCall = (request) => request.postData()?.includes('"general_dynamic_status"') ?? false;

describe("General page", () => {
    const before = storedName();
    after(() => inDevice("prm", "set", "net/hostname", before));

    for (const javaScriptEnabled of [true, false]) {
        test(`saves the device name ${javaScriptEnabled ? "with" : "without"} scripts`, async () => {
            const name = `device-${process.pid}-${javaScriptEnabled}`;
            await withPage("/", { ...desktop, javaScriptEnabled }, async (page) => {
                await save(page, name);
                const text = await page.locator(`${message}.success`).textContent();
                assert.equal(text.trim(), "Success: The form values were saved.");
                assert.equal(await page.inputValue(nameField), name);
            });
            assert.equal(storedName(), name);
        });
    }

    test("shows a name with markup as text", async () => {
        const name = `<b id="x">&amp; 'ä' "q"</b>`;
        await withPage("/", desktop, async (page) => {
            await save(page, name);
            await page.goto(page.url());
            assert.equal(await page.inputValue(nameField), name);
            assert.equal(await page.locator("#x").count(), 0);
        });
        assert.equal(storedName(), name);
    });

    test("refuses an empty name, marks the field and says why", async () => {
        const stored = storedName();
        await withPage("/", desktop, async (page) => {
            await save(page, "");
            const text = await page.locator(`${message}.failure`).textContent();
            assert.equal(text.trim(), "Invalid values: The form values were not saved.");
            assert.ok(await page.locator("tr.cppcms_error_msg td > span.cppcms_error_msg").isVisible());
            const marked = page.locator(`${nameField}.cppcms_error_msg[aria-invalid='true']`);
            assert.equal(await marked.count(), 1);
            assert.ok(await marked.evaluate((field) => field === document.activeElement), "cursor in the field");
        });
        assert.equal(storedName(), stored);
    });

    test("a click on a row's heading reaches its field", async () => {
        await withPage("/", desktop, async (page) => {
            await page.getByText("Device Name").click();
            assert.ok(await page.locator(nameField).evaluate((field) => field === document.activeElement));
        });
    });

    test("switching tabs shows the other tab and clears the message", async () => {
        await withPage("/", { ...desktop, reducedMotion: "no-preference" }, async (page) => {
            await save(page, "");
            assert.ok(await page.isVisible(message));
            assert.ok(await page.isVisible("#config_tab"));
            assert.ok(!(await page.isVisible("#status_tab")));
            await page.click("a[href='#status_tab']");
            await page.waitForSelector(message, { state: "hidden", timeout: 3000 });
            assert.ok(await page.isVisible("#status_tab"));
            assert.ok(!(await page.isVisible("#config_tab")));
        });
    });

    test("a message goes by itself", async () => {
        await withPage("/", { ...desktop, prepare: (page) => page.clock.install() }, async (page) => {
            await save(page, "");
            await page.clock.runFor(5000);
            assert.ok(await page.isVisible(message), "still there after five seconds");
            await page.clock.runFor(7000);
            assert.ok(!(await page.isVisible(message)), "gone after twelve");
        });
    });

    test("asks for status only while the Status tab is open, and keeps it fresh", async () => {
        await withPage("/", { ...desktop, hurried: true }, async (page) => {
            let calls = 0;
            page.on("request", (request) => (calls += isStatusCall(request)));
            await page.waitForTimeout(500);
            assert.equal(calls, 0);

            await page.click("a[href='#status_tab']");
            await waitForText(page, liveStatus, /Date.*Uptime.*Board Temperature.*Top.*Process Status/s);
            const date = page.locator(`${liveStatus} pre`).first();
            const first = await date.textContent();
            assert.match(first, /\d\d:\d\d:\d\d/);
            await page.waitForFunction(
                ([where, text]) => document.querySelector(where).textContent !== text,
                [`${liveStatus} pre`, first],
                { timeout: 10000 },
            );
        });
    });

    test("shows a failed status call and recovers", async () => {
        let broken = true;
        const prepare = (page) =>
            page.route("**", (route) =>
                broken && isStatusCall(route.request()) ? route.abort("connectionrefused") : route.continue(),
            );
        await withPage("/", { ...desktop, hurried: true, faulty: true, prepare }, async (page) => {
            await page.click("a[href='#status_tab']");
            await waitForText(page, liveStatus, /Error retrieving status: /);
            broken = false;
            await waitForText(page, liveStatus, /Uptime/);
        });
    });
});
