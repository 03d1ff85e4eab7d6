// The frame around the pages: its menu, tabs and messages.

import assert from "node:assert/strict";
import { describe, test } from "node:test";
import { desktop, pages, phone, site, source, withPage } from "./device.mjs";

/** In the page: where links lead that can be clicked. */
const pathsSeen = (links) => links.filter((link) => link.checkVisibility()).map((link) => link.pathname).sort();

describe("page frame", { concurrency: 3 }, () => {
    test("the menu leads to every page, also without scripts, and the window has its name", async () => {
        await withPage("/", { ...desktop, faulty: true, javaScriptEnabled: false }, async (page) => {
            assert.match(await page.title(), /^General Device Configuration – /);
            assert.deepEqual(await page.$$eval("#nav a", pathsSeen), ["/config/", ...pages.slice(1)].sort());
            await page.click("#nav a[href='/config/network/ntp']");
            assert.match(await page.title(), /^NTP Servers – /);
        });
    });

    test("every page leads back", async () => {
        await withPage(pages.at(-1), { ...desktop, faulty: true }, async (page) => {
            const back = (link) => Promise.all([page.waitForURL("**/config/"), page.click(link)]);
            await back("text=Back to the device");
            await page.click("#nav a[href='/config/settings/about']");
            await back("h1 a");
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
