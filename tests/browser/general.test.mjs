// What scripts do with a form and its message, on the General page.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { after, describe, test } from "node:test";
import { desktop, eventually, inDevice, phone, submit, withPage } from "./device.mjs";

const nameField = "#cfg_grl_device_name";
const message = ".form_result_msg";

const axe = readFileSync(new URL("node_modules/axe-core/axe.min.js", import.meta.url), "utf8");

const storedName = () => inDevice("prm", "get", "net/hostname");

async function save(page, name) {
    await page.fill(nameField, name);
    await submit(page, "#cfg_grl_save");
}

describe("General page", () => {
    const before = storedName();
    after(() => inDevice("prm", "set", "net/hostname", before));
    after(() => inDevice("prm", "set", "language", ""));

    test("can be used without scripts", async () => {
        const name = `device-${process.pid}`;
        await withPage("/", { ...desktop, javaScriptEnabled: false }, async (page) => {
            await save(page, name);
            assert.ok(await page.isVisible(`${message}.success`));
            assert.ok(await page.isVisible("#general_status"));
        });
        assert.equal(storedName(), name);
    });

    test("a refused field is marked and has the cursor; another tab takes the message away", async () => {
        await withPage("/", { ...desktop, reducedMotion: "no-preference" }, async (page) => {
            await save(page, "");
            assert.ok(await page.isVisible(`${message}.failure`));
            const marked = page.getByLabel("Device Name").and(page.locator("[aria-invalid='true']"));
            assert.equal(await page.textContent(`#${await marked.getAttribute("aria-describedby")}`), "Invalid length; minimum 1, maximum 64");
            assert.ok(await marked.evaluate((field) => field === document.activeElement), "cursor in the field");
            await page.click("a[href='#status_tab']");
            await page.waitForSelector(message, { state: "hidden", timeout: 3000 });
            assert.ok(await page.isVisible("#status_tab"));
            assert.ok(!(await page.isVisible("#config_tab")));
        });
    });

    test("each page is in the language that was chosen, scripts' texts and the direction, too", async () => {
        const texts = (page) =>
            page.evaluate(() => {
                const { lang, dir, scrollWidth } = document.documentElement;
                const shown = ["#config_page_title", "#skip", "#cfg_grl_save"].map((id) => document.querySelector(id));
                return [lang, dir, scrollWidth <= innerWidth, ...shown.map((part) => part.textContent.trim() || part.value)];
            });
        await withPage("/", phone, async (page) => {
            const expected = {
                "": ["en", "ltr", true, "General Device Configuration", "Skip to the page", "Save"],
                de: ["de", "ltr", true, "Allgemeine Gerätekonfiguration", "Zum Inhalt springen", "Speichern"],
                ar: ["ar", "rtl", true, "التهيئة العامة للجهاز", "الانتقال إلى المحتوى", "حفظ"],
            };
            for (const language of ["de", "ar", ""]) {
                await page.selectOption("#cfg_grl_lang", language);
                await submit(page, "#cfg_grl_save");
                await page.reload();
                assert.deepEqual(await texts(page), expected[language]);
                await page.evaluate(axe);
                assert.deepEqual(await page.evaluate(async () => (await window.axe.run()).violations), []);
            }
        });
    });

    test("a success goes by itself, a failure when it is closed", async () => {
        await withPage("/", { ...desktop, prepare: (page) => page.clock.install() }, async (page) => {
            await save(page, `${before}-3`);
            await page.clock.runFor(5000);
            assert.ok(await page.isVisible(`${message}[role='status']`), "still there after five seconds");
            await page.clock.runFor(7000);
            assert.ok(!(await page.isVisible(message)), "gone after twelve");
            await save(page, "");
            await page.clock.runFor(60000);
            await page.click(`${message}[role='alert'] .close`);
            assert.ok(!(await page.isVisible(message)));
        });
    });
});

describe("overview", () => {
    const shown = 'dl > div, figcaption';
    const now = { load: 0.5, processors: 2, memory_used: 512, memory_total: 2048, modem: true, signal: -75, uplink: "<b>", address: "192.0.2.7", vpn: { enabled: true, connected: true, status: "", seconds: 300 } };
    const none = { uptime: "", load: "", memory: "", temperature: "", signal: "", traffic: { ppp0: { received: "", sent: "" } } };
    const first = { uptime: "100,130,900", load: "10,30,20", memory: "1,2,3", temperature: ",,", signal: "-75,,-80", traffic: { ppp0: { received: ",1500,", sent: ",7,0" } } };
    const later = { uptime: "930", load: "50", memory: "2500", temperature: "415", signal: "", traffic: { eth0: { received: "", sent: "" }, ppp0: { received: "2", sent: "3" } } };
    /** The samples that the device answers with, by what it is asked. */
    const told = (boot, since) => (boot === "later" ? first : { 0: first, 900: later }[since] ?? none);

    test("is loaded when it is looked at, shows what is new, and begins anew with the device", async () => {
        const asked = [];
        let boot = "first";
        async function prepare(page) {
            await page.route("**/status/rpc", async (route) => {
                const { method, params } = route.request().postDataJSON();
                if (method !== "metrics") {
                    return;
                }
                asked.push(params[0]);
                const result = { boot, time: Date.now() / 1000 - 3600, uptime: 930, interval: 30, now, samples: told(boot, params[0]) };
                await route.fulfill({ json: { id: 3, error: null, result } });
            });
        }
        await withPage("/", { ...desktop, locale: "en", hurried: true, prepare }, async (page) => {
            const texts = () => page.$$eval(`#overview :is(${shown})`, (parts) => parts.map((part) => part.textContent));
            const label = (index) => page.locator("#overview .plot").nth(index).getAttribute("aria-label");
            const loaded = () => page.evaluate(() => Boolean(window.uPlot));
            assert.ok(!(await loaded()));
            await page.click("a[href='#status_tab']");
            await eventually(async () => assert.ok(asked.includes(930) && (await texts()).length === 13));
            const states = await texts();
            assert.match(states[0], /^Device time.*this browser/);
            assert.deepEqual(states.slice(1, 8), ["Uptime15 min", "System load0.5 (2 processors)", "Memory25% of 2 MB", "TemperatureUnknown", "Uplink<b> (192.0.2.7)", "Signal-75 dBm", "VPNConnected for 5 min"]);
            assert.deepEqual([asked[0], asked[1]], [0, 900]);
            assert.equal(await label(1), "System load; now 0.5, lowest 0.1, highest 0.5");
            assert.equal(await label(4), "Traffic of ppp0; Received: now 2B/s, lowest 2B/s, highest 1.5kB/s; Sent: now 3B/s, lowest 0B/s, highest 7B/s");
            assert.equal(await label(0), "Temperature; now 41.5°C, lowest 41.5°C, highest 41.5°C");
            boot = "later";
            const calls = asked.length;
            await eventually(async () => assert.equal(await label(1), "System load; now 0.2, lowest 0.1, highest 0.3"));
            assert.ok(asked.slice(calls).includes(0));
        });
    });
});
