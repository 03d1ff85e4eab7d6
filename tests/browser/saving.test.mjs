// A form from its first change to its answer: what is asked before, that it is sent once, and what stays afterwards.

import assert from "node:assert/strict";
import { after, describe, test } from "node:test";
import { answering, desktop, inDevice, submit, withPage } from "./device.mjs";

const nameField = "#cfg_grl_device_name";
const saveButton = "#cfg_grl_save";

/** The posts of a page from here on. */
function postsOf(page) {
    const posts = [];
    page.on("request", (request) => request.isNavigationRequest() && request.method() === "POST" && posts.push(request.url()));
    return posts;
}

describe("a form", () => {
    const before = inDevice("prm", "get", "net/hostname");
    after(() => inDevice("prm", "set", "net/hostname", before));

    test("is sent once, and neither by a reload nor on the way back", async () => {
        await withPage("/config/settings/about", desktop, async (page) => {
            await page.click("h1 a");
            const posts = postsOf(page);
            await page.fill(nameField, `${before}-1`);
            await Promise.all([page.waitForNavigation(), page.dblclick(saveButton)]);
            assert.equal(await page.title(), `Saved: General Device Configuration – ${before}-1`);
            await page.setViewportSize({ width: 360, height: 740 });
            await page.evaluate(() => window.scrollTo(0, 0));
            const changes = await page.locator(".saved_changes").boundingBox();
            const message = await page.locator(".form_result_msg").boundingBox();
            assert.ok(message.y > changes.y + changes.height, "what was changed is seen beside the message");
            await page.setViewportSize(desktop.viewport);
            await page.reload();
            await page.click("#nav a[href='/config/settings/about']");
            await page.goBack();
            assert.equal(await page.inputValue(nameField), `${before}-1`);
            assert.equal(posts.length, 1);
        });
    });

    test("that was changed is not left without a question, and is sent without one", async () => {
        await withPage("/", desktop, async (page) => {
            const asked = [];
            page.on("dialog", (dialog) => {
                asked.push(dialog.type());
                return dialog.dismiss();
            });
            await page.fill(nameField, before);
            await page.click("#nav a[href='/config/settings/about']", { noWaitAfter: true });
            await page.waitForTimeout(200);
            assert.deepEqual(asked, ["beforeunload"]);
            await submit(page, saveButton);
            await page.click("#nav a[href='/config/settings/about']");
            await page.waitForURL("**/about");
            assert.deepEqual(asked, ["beforeunload"]);
        });
    });

    test("of a firmware without a file stays as it is", async () => {
        await withPage("/config/settings/firmware", desktop, async (page) => {
            const posts = postsOf(page);
            await page.click("#cfg_frw_save");
            assert.ok(await page.isVisible("#component_config form"));
            assert.equal(await page.locator("dialog").count(), 0);
            assert.deepEqual(posts, []);
        });
    });
});

test("what cannot be taken back is asked for, and not done when it is not meant", async () => {
    const running = answering({ result: { isChronyd: true, running: true, tracking: "", rawOutput: "", clients: "" } });
    const cases = [
        ["/config/settings/advanced", "[value='Erase']", /configuration: Application\. A backup/],
        ["/config/settings/advanced", "[value='ErasePartition']", /Everything on the Log Partition/],
        ["/config/settings/reboot", "#cfg_rbt_reboot", /away for a minute/],
        ["/config/network/ntp#ntpd_status_tab", "#status_ntp_manual_sync", /The clock is set at once/],
    ];
    const ask = ([path, button, text]) =>
        withPage(path, running, async (page) => {
            const posts = postsOf(page);
            await page.click(button);
            const dialog = page.getByRole("alertdialog");
            assert.match(await dialog.textContent(), text);
            // Whoever presses a key too many has not said yes.
            await page.keyboard.press(button.includes("Partition") ? "Escape" : "Enter");
            await dialog.waitFor({ state: "detached" });
            assert.ok(await page.locator(button).evaluate((found) => found === document.activeElement));
            assert.deepEqual(posts, []);
        });
    await Promise.all(cases.map(ask));
});

test("a password is seen while it is wanted", async () => {
    await withPage("/config/settings/advanced#advanced_password_tab", desktop, async (page) => {
        const field = page.locator("#cfg_adv_passwd_Web");
        for (const type of ["password", "text", "password"]) {
            assert.equal(await field.getAttribute("type"), type);
            await page.getByRole("button", { name: "Show New Password" }).first().click();
        }
    });
});
