// What holds for every page: no errors, readable and usable in both colour schemes, on a phone and with
// the keyboard; and what the frame around the pages does.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { describe, test } from "node:test";
import { desktop, phone, site, source, withPage } from "./device.mjs";

const pages = [
    "/",
    "/config/network/cellular",
    "/config/network/openvpn",
    "/config/network/orvane",
    "/config/settings/about",
    "/config/settings/firmware",
    "/config/settings/reboot",
    "/config/settings/advanced",
    "/config/service/assemblysn",
    "/config/network/ethernet1",
    "/config/network/port_forwarding",
    "/config/network/ntp",
    "/config/network/dns_server",
    "/config/network/access_point",
    "/config/network/wlan",
    "/config/settings/history",
    "/config/regulatory/wifi",
];

/** Sizes and preferences in which each view is looked at. The last is what a desktop at 200 % comes to. */
const desktopSize = { width: 1280, height: 800, deviceScaleFactor: 1, mobile: false };
const layouts = {
    desktop: { size: desktopSize },
    dark: { size: desktopSize, colorScheme: "dark" },
    "right to left": { size: desktopSize, direction: "rtl" },
    "200 %": { size: { width: 640, height: 400, deviceScaleFactor: 2, mobile: false } },
    phone: { size: { width: 360, height: 740, deviceScaleFactor: 2, mobile: true } },
};

const axe = readFileSync(new URL("node_modules/axe-core/axe.min.js", import.meta.url), "utf8");

/** In the page: the rules of accessibility that it breaks, each with the elements that do. */
async function violations() {
    const { violations: found } = await window.axe.run(document, { resultTypes: ["violations"] });
    return found.map((rule) => `${rule.id}: ${rule.nodes.map((node) => node.html.slice(0, 120)).join(" | ")}`);
}

/** In the page: what is wider than its window or stands out of it. */
function cutOff() {
    const wide = document.documentElement.scrollWidth > innerWidth ? [`the page: ${document.documentElement.scrollWidth}`] : [];
    const outside = [...document.querySelectorAll("#config_pane :is(input, select, button, h2, h3, th, label), .tabnav a")]
        .filter((element) => element.checkVisibility() && !element.closest("pre"))
        .filter((element) => {
            const { left, right } = element.getBoundingClientRect();
            return left < -1 || right > innerWidth + 1;
        });
    return [...wide, ...outside.map((element) => element.outerHTML.slice(0, 120))];
}

/** In the page: how much of it has jumped while it was loading. */
function layoutShift() {
    return new Promise((resolve) => {
        let sum = 0;
        const observer = new PerformanceObserver((list) => list.getEntries().forEach(({ value }) => (sum += value)));
        observer.observe({ type: "layout-shift", buffered: true });
        requestAnimationFrame(() => setTimeout(() => resolve(sum)));
    });
}

async function layOut(page, session, { size, colorScheme = "light", direction = "ltr" }) {
    await session.send("Emulation.setDeviceMetricsOverride", size);
    await page.emulateMedia({ colorScheme });
    await page.evaluate((dir) => (document.documentElement.dir = dir), direction);
}

/** In the page: the labels of rows whose input is in another row, as where an id is used twice. */
function strayLabels(labels) {
    const row = (element) => element?.closest("tr");
    return labels.filter((label) => row(label.control) !== row(label)).map((label) => label.textContent);
}

/** Goes through the page with the Tab key. */
async function assertKeyboardIsSeen(page) {
    const stops = [];
    for (let i = 0; i < 30; i++) {
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
async function assertEveryViewIsGood(page) {
    const session = await page.context().newCDPSession(page);
    await page.evaluate(axe);
    const tabs = await page.$$eval("#tabcontainer > ul a", (links) => links.map((link) => link.getAttribute("href")));
    const problems = {};
    for (const tab of tabs.length ? tabs : [""]) {
        await page.evaluate((hash) => (location.hash = hash), tab);
        for (const [name, layout] of Object.entries(layouts)) {
            await layOut(page, session, layout);
            const found = [...(await page.evaluate(violations)), ...(await page.evaluate(cutOff))];
            if (found.length) {
                problems[`${tab || "the page"}, ${name}`] = found;
            }
        }
    }
    assert.deepEqual(problems, {});
}

describe("every page", { concurrency: 3 }, () => {
    for (const path of pages) {
        test(`${path} is clean, and everybody can use it on any screen`, async () => {
            // One of them names no icon, and the browser looks for one.
            await withPage(path, { ...desktop, faulty: path.endsWith("/regulatory/wifi") }, async (page) => {
                assert.ok((await page.evaluate(layoutShift)) < 0.1, "nothing jumps");
                await assertKeyboardIsSeen(page);
                assert.deepEqual(await page.$$eval("label", strayLabels), []);
                await assertEveryViewIsGood(page);
            });
        });
    }
});

describe("page frame", () => {
    test("every page is reached by clicks, and named in the window", async () => {
        await withPage("/", { ...desktop, faulty: true }, async (page) => {
            assert.match(await page.title(), /^General Device Configuration – /);
            for (const path of pages.slice(1)) {
                await page.click(`#nav a[href='${path}']`);
                assert.equal(new URL(page.url()).pathname, path);
                const way = page.getByRole("link", { name: /^(Back to the device|Device configuration)$/ });
                await Promise.all([page.waitForURL("**/config/"), way.click()]);
            }
        });
    });

    test("a page that is opened with the password in its address is shown once", async () => {
        const address = new URL(site);
        [address.username, address.password] = ["admin", "admin"];
        await withPage(address.href, desktop, async (page) => {
            assert.equal(await page.locator("#config_pane").count(), 1);
            await page.click("a[href='#status_tab']");
            assert.equal(await page.locator("#config_pane").count(), 1);
        });
    });

    test("the address knows the open tab, and the keyboard opens another", async () => {
        await withPage("/config/network/orvane", desktop, async (page) => {
            await page.click("a[href='#orvane_mesh_tab']");
            await page.reload();
            assert.ok(await page.isVisible("#orvane_mesh_tab"));
            assert.equal(await page.evaluate(() => window.scrollY), 0);
            await page.focus("a[href='#orvane_mesh_tab']");
            await page.keyboard.press("ArrowRight");
            await page.waitForSelector("#orvane_cellular_tab");
            const open = page.getByRole("tab", { selected: true });
            assert.equal(await open.textContent(), "Cellular");
            assert.ok(await open.evaluate((tab) => tab === document.activeElement));
            assert.match(page.url(), /#orvane_cellular_tab$/);
        });
    });

    test("on a phone the menu opens with its button", async () => {
        await withPage("/", phone, async (page) => {
            assert.ok(!(await page.isVisible("#nav")));
            await page.getByRole("button", { name: "Menu" }).click();
            assert.ok(await page.isVisible("#nav"));
            assert.equal(await page.getAttribute("#nav_toggle", "aria-expanded"), "true");
        });
    });

    test("messages from scripts are text, and static ones outlive clearing", async () => {
        await withPage("/", desktop, async (page) => {
            await page.evaluate(() => {
                ShowStaticFormResultMsg("<b>wait</b>", "note");
                ClearFormResultMsg();
            });
            assert.equal(await page.locator(".form_result_msg:visible").textContent(), "<b>wait</b>");
            await page.evaluate(() => {
                ShowFormResultMsg("done", "success");
                ClearFormResultMsg();
            });
            assert.equal(await page.locator(".form_result_msg:visible").count(), 0);
        });
    });

    test("a sub-menu opens and closes with its parent", async () => {
        const prepare = (page) =>
            page.route("**/", async (route) => {
                const menu =
                    `<li class=" parentSideMenu parentSubMenu "><a id="menu_More_pages" href=""> More pages</a></li>` +
                    `<li class=" childSideMenu subMenu hiddenOnLoad menu_More_pages"><a href="/one"> One</a></li>`;
                const body = source("/config/").replace(/(<ul class="nav2">)/, `$1${menu}`);
                await route.fulfill({ contentType: "text/html; charset=UTF-8", body });
            });
        await withPage("/", { ...desktop, prepare }, async (page) => {
            const entry = page.locator("li.menu_More_pages");
            for (const open of [false, true, false]) {
                assert.equal(await entry.isVisible(), open);
                assert.equal(await page.getAttribute("#menu_More_pages", "aria-expanded"), String(open));
                await page.click("#menu_More_pages");
            }
        });
    });
});
