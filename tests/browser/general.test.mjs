// What scripts do with a form and its message, on the General page.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { after, describe, test } from "node:test";
import { desktop, inDevice, phone, submit, withPage } from "./device.mjs";

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
