// The OpenVPN page: the forms follow their switch, a file is installed, and the status shows as text. The
// status answers are made here; the page is the device's.

import assert from "node:assert/strict";
import { after, describe, test } from "node:test";
import { desktop, inDevice, submit, withPage } from "./device.mjs";

const path = "/config/network/openvpn";
const isStatusCall = (request) => request.postData()?.includes('"openvpn_status"') ?? false;

describe("OpenVPN page", () => {
    after(() => inDevice("sh", "-c", "prm set net/openvpn/enabled no; prm set net/openvpn/client_ovpn ''; rm -f /etc/openvpn/field.ovpn"));

    test("is switched on, takes a file, and shows its name", async () => {
        inDevice("prm", "set", "net/openvpn/enabled", "no");
        await withPage(path, desktop, async (page) => {
            assert.ok(await page.locator("#cfg_flvpn_submit").isDisabled());
            await page.check("#cfg_vpn_enabled");
            await submit(page, "#cfg_vpn_save");

            await page.click("a[href='#file_config_tab']");
            const file = { name: "field.ovpn", mimeType: "application/octet-stream", buffer: Buffer.alloc(2048, "#") };
            await page.setInputFiles("#cfg_flvpn_file", file);
            await submit(page, "#cfg_flvpn_submit");
            const message = await page.locator(".form_result_msg.success").textContent();
            assert.equal(message.trim(), "Success: The form values were saved.");
            assert.ok(await page.isVisible("#openvpn_file td:text('field.ovpn')"), "on the tab of the file");
        });
    });

    test("shows the status as text", async () => {
        const result = {
            connectionStatus: "<b>Connected</b>",
            isConnected: true,
            currentStateTimeString: "3 minutes",
            configurationFile: "field.ovpn",
            server: "vpn.example",
            logOutput: "line <1>\nline 2",
        };
        const prepare = (page) =>
            page.route("**", (route) =>
                isStatusCall(route.request())
                    ? route.fulfill({ json: { id: 2, error: null, result } })
                    : route.continue(),
            );
        await withPage(path, { ...desktop, hurried: true, prepare }, async (page) => {
            await page.click("a[href='#status_tab']");
            const row = (heading) => page.locator(`#openvpn_status tr:has(th:text-is("${heading}")) td`);
            assert.equal(await row("Connection Status").textContent(), "<b>Connected</b>");
            assert.equal(await row("Tunnel up time").textContent(), "3 minutes");
            assert.equal(await page.textContent("#openvpn_status pre"), "line <1>\nline 2");
            result.isConnected = false;
            await page.waitForSelector("#openvpn_status th:text('Tunnel down time')");
        });
    });
});
