// What holds for every page: no errors, readable and usable in both colour schemes, on a phone and with
// the keyboard; and what the frame around the pages does.

import assert from "node:assert/strict";
import { describe, test } from "node:test";
import { desktop, phone, source, withPage } from "./device.mjs";

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
];

/** In the page: the texts in sight whose contrast with their background is below 4.5 to 1. */
function faintTexts() {
    const parse = (colour) => colour.match(/[\d.]+/g).map(Number);
    const luminance = (rgb) => {
        const [r, g, b] = rgb.map((v) => (v /= 255) <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4);
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
    };
    const background = (element) => {
        for (let at = element; at; at = at.parentElement) {
            const [r, g, b, alpha = 1] = parse(getComputedStyle(at).backgroundColor);
            if (alpha === 1) {
                return [r, g, b];
            }
        }
        return [255, 255, 255];
    };
    const ownText = (element) =>
        element.matches("input:not([type='hidden']), select")
            ? element.value
            : [...element.childNodes].map((node) => (node.nodeType === Node.TEXT_NODE ? node.data : "")).join("");
    return [...document.body.querySelectorAll("*")]
        .filter((element) => element.checkVisibility() && !element.disabled && ownText(element).trim())
        .map((element) => {
            const [text, ground] = [parse(getComputedStyle(element).color).slice(0, 3), background(element)];
            const [dark, light] = [luminance(text), luminance(ground)].sort((a, b) => a - b);
            return { what: `${element.tagName} "${ownText(element).trim()}"`, contrast: (light + 0.05) / (dark + 0.05) };
        })
        .filter(({ contrast }) => contrast < 4.5);
}

async function tabs(page) {
    return page.$$eval("#tabcontainer > ul a", (links) => links.map((link) => link.getAttribute("href")));
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
                const seen = outlineStyle !== "none" && parseFloat(outlineWidth) >= 2;
                return element === document.body || seen ? null : element.outerHTML.slice(0, 80);
            }),
        );
    }
    assert.deepEqual(stops.filter(Boolean), []);
}

/** Each tab of the page fits its window and can be read. */
async function assertLooksRight(page, { viewport, colorScheme }) {
    await page.setViewportSize(viewport);
    await page.emulateMedia({ colorScheme });
    for (const tab of [null, ...(await tabs(page))]) {
        if (tab) {
            await page.click(`#tabcontainer > ul a[href='${tab}']`);
            await page.waitForSelector(tab);
        }
        const width = await page.evaluate(() => document.documentElement.scrollWidth);
        assert.equal(width, viewport.width, `width of ${tab ?? "the page"}, ${colorScheme}`);
        assert.deepEqual(await page.evaluate(faintTexts), [], colorScheme);
    }
}

describe("every page", () => {
    for (const path of pages) {
        test(`${path} is clean, and usable on a bright desktop and a dark phone`, async () => {
            await withPage(path, desktop, async (page) => {
                await assertKeyboardIsSeen(page);
                assert.deepEqual(await page.$$eval("label", strayLabels), []);
                await assertLooksRight(page, desktop);
                await assertLooksRight(page, phone);
            });
        });
    }
});

describe("page frame", () => {
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
