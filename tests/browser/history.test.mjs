// Changes and their way back: the history, and settings on trial.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { after, describe, test } from "node:test";
import { desktop, eventually, inDevice, submit, waitForText, withPage } from "./device.mjs";

const nameField = "#cfg_grl_device_name";
const rule = "net/portfwd/tcp/08443";
const storedName = () => inDevice("prm", "get", "net/hostname");
const isForwarded = () => inDevice("prm", "list", rule) !== "";
const press = (page, caption) => submit(page, `#trialBox >> input[value='${caption}']`);

/** Adds a rule, which decides how the device is reached. */
async function forward(page) {
    await page.fill("#cfg_pfwadd_src_port", "8443");
    await page.fill("#cfg_pfwadd_dest_ip", "192.168.0.33");
    await page.fill("#cfg_pfwadd_dest_port", "443");
    await submit(page, "input[value='Add Row']");
    assert.ok(isForwarded());
    await waitForText(page, "#trialBox", /New settings are on trial until \d\d:\d\d:\d\d \(\d:\d\d left\)/);
}

describe("changes", () => {
    const before = storedName();
    after(() => {
        inDevice("prm", "set", "net/hostname", before);
        inDevice("sh", "-c", `prm del ${rule} || true`);
    });

    test("a save shows what it has changed, and its set takes it back", async () => {
        await withPage("/", desktop, async (page) => {
            await page.fill(nameField, `${before}-2`);
            await submit(page, "#cfg_grl_save");
            assert.equal(await page.textContent(".saved_changes ins"), "-2");
            await Promise.all([page.waitForNavigation(), page.click(".saved_changes a")]);
            await submit(page, ".history_set:target >> input[value='Undo']");
            assert.match(await page.textContent(".form_result_msg.success"), /^Undo of \d+ is done\.$/);
        });
        assert.equal(storedName(), before);
    });

    test("a backup comes as a file, and is taken back when it has been shown", async () => {
        await withPage("/config/settings/advanced#advanced_configuration_tab", desktop, async (page) => {
            const [download] = await Promise.all([
                page.waitForEvent("download"),
                page.click("input[value='Backup Configuration']"),
            ]);
            inDevice("prm", "set", "net/hostname", `${before}-3`);
            await page.setInputFiles("input[name='configurationFile']", {
                name: download.suggestedFilename(),
                mimeType: "text/plain",
                buffer: readFileSync(await download.path()),
            });
            await submit(page, "input[value='Restore Configuration']");
            assert.equal(await page.textContent("#restore_form del"), "-3");
            assert.ok(!(await page.isVisible("#restore_form .caution")), "a backup of this device");
            await page.uncheck("#restore_form >> text=Reboot afterwards");
            await submit(page, "input[value='Apply Backup']");
            assert.equal(await page.textContent(".form_result_msg.success"), "The backup is restored.");
        });
        assert.equal(storedName(), before);
    });

    test("new settings stay when they are kept, and go back when nobody does", async () => {
        await withPage("/config/network/port_forwarding", desktop, async (page) => {
            await forward(page);
            await press(page, "Keep them");
            assert.equal(await page.textContent(".form_result_msg.success"), "The new settings are kept.");
            assert.ok(!(await page.isVisible("#trialBox")));
            await submit(page, ".history_set >> nth=0 >> input[value='Undo']");
            await press(page, "Keep them");
            assert.ok(!isForwarded());

            await page.goto(new URL("/config/network/port_forwarding", page.url()).href);
            await forward(page);
            inDevice("sed", "-i", "s/^until .*/until 1/", "/var/lib/webconfig/trial");
            await eventually(() => assert.ok(!isForwarded()));
            await eventually(async () => {
                await page.goto(page.url()); // a reload would send the form again
                assert.match(await page.textContent("#trialBox"), /New settings were taken back/);
            });
            await press(page, "Dismiss");
            assert.ok(!(await page.isVisible("#trialBox")));
        });
    });
});
