// What holds for every page: no errors, and everybody can read and use each of its tabs, on any screen and with the
// keyboard.

import assert from "node:assert/strict";
import { describe, test } from "node:test";
import { desktop, pages, withPage } from "./device.mjs";
import { assertEveryViewIsGood, assertKeyboardIsSeen, strayLabels } from "./views.mjs";

/** The page that has nothing around it. */
const alone = pages.at(-1);

/** Whose look is compared with the one that is kept, with the name of its pictures: a form, a table, many tabs. */
const looks = {
    "/": "general",
    "/config/network/port_forwarding": "port_forwarding",
    "/config/settings/advanced": "advanced",
};

/** In the page: counts the frames in which the panels of several tabs are seen, as while its scripts are at work. */
function countMixedFrames() {
    window.mixedFrames = 0;
    function look() {
        const seen = [...document.querySelectorAll(".tabdiv")].filter((tab) => tab.checkVisibility({ visibilityProperty: true }));
        window.mixedFrames += seen.length > 1;
        requestAnimationFrame(look);
    }
    look();
}

describe("every page", { concurrency: 3 }, () => {
    for (const path of pages) {
        test(`${path} is clean, and everybody can use it on any screen`, async () => {
            // One of them names no icon, and the browser looks for one.
            const prepare = (page) => page.addInitScript(countMixedFrames);
            await withPage(path, { ...desktop, prepare, faulty: path === alone }, async (page) => {
                assert.equal(await page.evaluate(() => window.mixedFrames), 0, "one tab is seen at a time");
                assert.equal(await page.locator("#nav a").count(), path === alone ? 0 : pages.length, "leads to all others");
                await assertKeyboardIsSeen(page);
                assert.deepEqual(await page.$$eval("label", strayLabels), []);
                await assertEveryViewIsGood(page, looks[path]);
            });
        });
    }
});
