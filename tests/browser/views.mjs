// Whether everybody can read and use a page, on any screen and with the keyboard.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { differenceOf } from "./look.mjs";

const axe = readFileSync(new URL("node_modules/axe-core/axe.min.js", import.meta.url), "utf8");

/** Sizes and preferences in which each view is looked at, and what is asked of axe-core: in others than that of
 *  a bright desktop, the rules whose verdict they can change. 200 % is as if a desktop were that small. */
const desktopSize = { width: 1280, height: 800, deviceScaleFactor: 1, mobile: false };
const layouts = {
    dark: { size: desktopSize, colorScheme: "dark", ask: { runOnly: ["color-contrast", "link-in-text-block"] } },
    desktop: { size: desktopSize },
    "right to left": { size: desktopSize, direction: "rtl", ask: { runOnly: ["scrollable-region-focusable"] } },
    "200 %": {
        size: { width: 640, height: 400, deviceScaleFactor: 2, mobile: false },
        ask: { runOnly: ["scrollable-region-focusable", "region"] },
    },
    phone: {
        size: { width: 360, height: 740, deviceScaleFactor: 2, mobile: true },
        ask: { rules: { "color-contrast": { enabled: false } } },
    },
};

/** In the page: the rules of accessibility that a part of it breaks in a direction of writing, and what is wider than its
 *  window or stands out of it, each with the elements. */
async function problemsOf({ part, direction = "ltr", ask }) {
    document.documentElement.dir = direction;
    await new Promise(requestAnimationFrame); // the page knows its new size
    const { violations } = await window.axe.run(part, { resultTypes: ["violations"], ...ask });
    const broken = violations.map((rule) => `${rule.id}: ${rule.nodes.map((node) => node.html.slice(0, 120)).join(" | ")}`);
    const width = document.documentElement.scrollWidth;
    const outside = [...document.querySelectorAll("#config_pane :is(input, select, button, h2, h3, th, label), .tabnav a")]
        .filter((element) => element.checkVisibility() && !element.closest("pre"))
        .filter((element) => {
            const { left, right } = element.getBoundingClientRect();
            return left < -1 || right > innerWidth + 1;
        });
    return [
        ...broken,
        ...(width > innerWidth ? [`as wide as ${width}`] : []),
        ...outside.map((element) => `cut off: ${element.outerHTML.slice(0, 120)}`),
    ];
}

/** In the page: the labels of rows whose input is in another row, as where an id is used twice. */
export function strayLabels(labels) {
    const row = (element) => element?.closest("tr");
    return labels.filter((label) => row(label.control) !== row(label)).map((label) => label.textContent);
}

/** Goes through the page's own inputs with the Tab key. */
export async function assertKeyboardIsSeen(page) {
    const stops = [];
    await page.evaluate(() => document.getElementById("config_pane")?.focus());
    for (let i = 0; i < 20; i++) {
        await page.keyboard.press("Tab");
        stops.push(
            await page.evaluate(() => {
                const element = document.activeElement;
                const { outlineStyle, outlineWidth } = getComputedStyle(element);
                const seen = outlineStyle === "auto" || (outlineStyle !== "none" && parseFloat(outlineWidth) >= 2);
                return element === document.body || seen ? null : element.outerHTML.slice(0, 80);
            }),
        );
    }
    assert.deepEqual(stops.filter(Boolean), []);
}

/** Each tab of the page, in each layout, can be seen whole and used by everybody. */
export async function assertEveryViewIsGood(page, look) {
    const session = await page.context().newCDPSession(page);
    await page.evaluate(axe);
    const tabs = await page.$$eval("#tabcontainer > ul a", (links) => links.map((link) => link.getAttribute("href")));
    const problems = {};
    let scheme = "light";
    for (const [index, tab] of (tabs.length ? tabs : [""]).entries()) {
        await page.evaluate((hash) => (location.hash = hash), tab);
        await page.waitForFunction(() => !document.querySelector("#overview:empty")?.checkVisibility()); // comes by itself
        for (const [name, { size, colorScheme = "light", ...layout }] of Object.entries(layouts)) {
            await session.send("Emulation.setDeviceMetricsOverride", size);
            if (colorScheme !== scheme) {
                await page.emulateMedia({ colorScheme: (scheme = colorScheme) });
            }
            // The frame is the same around each tab.
            const found = await page.evaluate(problemsOf, { part: index ? "#config_pane" : "html", ...layout });
            if (look && !index) {
                found.push(...(await differenceOf(page, session, `${look}-${name.match(/\w+/g).join("_")}`)));
            }
            if (found.length) {
                problems[`${tab || "the page"}, ${name}`] = found;
            }
        }
    }
    assert.deepEqual(problems, {});
}
