// The Advanced page: downloads as the browser saves them.

import assert from "node:assert/strict";
import { test } from "node:test";
import { desktop, inDevice, withPage } from "./device.mjs";

test("downloads are saved under their names, and the page stays", async () => {
    const serial = inDevice("cat", "/etc/barcode-asn");
    const name = inDevice("prm", "get", "net/hostname");
    await withPage("/config/settings/advanced", desktop, async (page) => {
        for (const [tab, button, file] of [
            ["configuration", "Backup Configuration", `Config_${serial}.txt`],
            ["syslog", "Download", `korbex_syslog_${name}.txt`],
        ]) {
            await page.click(`a[href='#advanced_${tab}_tab']`);
            const coming = page.waitForEvent("download");
            await page.click(`#advanced_${tab} [value='${button}']`);
            assert.equal((await coming).suggestedFilename(), file);
            assert.ok(await page.isVisible(`#advanced_${tab}`));
        }
    });
});
