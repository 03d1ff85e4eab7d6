// The Advanced page: passwords that hold at once, and downloads as the browser saves them.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { describe, test } from "node:test";
import { desktop, inDevice, source, submit, withPage } from "./device.mjs";

const path = "/config/settings/advanced";
const message = ".form_result_msg";
const saved = "Success: The form values were saved.";

const openTab = (page, name) => page.click(`a[href='#advanced_${name}_tab']`);

describe("passwords", () => {
    async function change(page, kind, password) {
        await openTab(page, "password");
        await page.fill(`#cfg_adv_passwd_${kind}`, password);
        await page.fill(`#cfg_adv_passwd_cnfm_${kind}`, password);
        await submit(page, `[value='Save ${kind} Password']`);
        assert.equal((await page.locator(message).textContent()).trim(), saved);
    }

    test("a new web password opens the site and the old one no longer, until it is set back", async () => {
        const before = inDevice("prm", "get", "webman/digest/admin");
        const password = `new "pass" ${process.pid}`;
        // What a page loads is refused while the password changes under it, each time with a pause of the server.
        const prepare = (page) => page.route("**/media/**", (route) => route.abort());
        const bare = { ...desktop, faulty: true, javaScriptEnabled: false, prepare };
        const renewed = { ...bare, httpCredentials: { username: "admin", password } };
        try {
            await withPage(path, bare, (page) => change(page, "Web", password));
            await withPage(path, bare, async (page) => {
                assert.equal(await page.locator("#advanced_password").count(), 0, "the old password is refused");
            });
            await withPage(path, renewed, (page) => change(page, "Web", "admin"));
            assert.equal(inDevice("prm", "get", "webman/digest/admin"), before);
        } finally {
            inDevice("sh", "-c", `prm set webman/digest/admin ${before} && lighttpd_set_passwd.sh`);
        }
        assert.match(source(path), /advanced_password/);
    });

    test("a new root password is the one of the account", async () => {
        const accounts = "/etc/shadow";
        const kept = `${accounts}.${process.pid}`;
        const password = "root's $HOME";
        inDevice("cp", "-p", accounts, kept);
        try {
            await withPage(path, desktop, (page) => change(page, "Root", password));
            const stored = inDevice("sed", "-n", "s/^root:\\([^:]*\\):.*/\\1/p", accounts);
            assert.equal(inDevice("busybox", "mkpasswd", "-m", "sha512", "-S", stored.split("$")[2], password), stored);
        } finally {
            inDevice("sh", "-c", `mv ${kept} ${accounts}; prm del /system/digest || true`);
        }
    });
});

describe("downloads", () => {
    test("are saved under their names, and the page stays", async () => {
        const deployerLog = "/home/root/log/deployer.log";
        inDevice("sh", "-c", `echo 'deployed <all> & well' >${deployerLog}`);
        const [serial, name, host] = [["cat", "/etc/barcode-asn"], ["prm", "get", "net/hostname"], ["hostname"]].map(
            (command) => inDevice(...command),
        );
        try {
            await withPage(path, desktop, async (page) => {
                for (const [tab, button, file, content] of [
                    ["configuration", "Backup Configuration", `Config_${serial}.txt`, /^"net\/lan_ipaddr","192\.168\.0\.1", s$/m],
                    ["syslog", "Download", `korbex_syslog_${name}.txt`, /\n$/],
                    ["deployer_log", "Download log", `deployer_${host}.log`, /^deployed <all> & well\n$/],
                ]) {
                    await openTab(page, tab);
                    const coming = page.waitForEvent("download");
                    await page.click(`#advanced_${tab} [value='${button}']`);
                    const download = await coming;
                    assert.equal(download.suggestedFilename(), file);
                    assert.match(readFileSync(await download.path(), "utf8"), content);
                    assert.ok(await page.isVisible(`#advanced_${tab}`));
                }
            });
        } finally {
            inDevice("rm", "-f", deployerLog);
        }
    });
});
