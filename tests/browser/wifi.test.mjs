// The Wi-Fi pages: which fields can be used when, the channels of a country, live status; and the service
// page of the regulatory domain, up to the return after the reboot.

import assert from "node:assert/strict";
import { after, before, beforeEach, describe, test } from "node:test";
import { desktop, eventually, inDevice, submit, submitConfirmed, withoutRestart, withPage } from "./device.mjs";

const accessPointPage = "/config/network/access_point";
const wlanPage = "/config/network/wlan";
const regulatoryPage = "/config/regulatory/wifi";
const kept = `/tmp/wifi_settings_${process.pid}`;

const key = "a".repeat(64);
const settings = {
    "vendor": "laird", "region_code": "FCC", "country": "US",
    "ap/enabled": "no", "ap/channel": "6:2437", "ap/essid": "field", "ap/wpa_psk": key,
    "client/enabled": "no", "client/essid": "plant", "client/security": "wpa", "client/wpa_psk": key,
    "client/eap/identity": "", "client/eap/password": "", "client/mobile_qx": "no",
};

const inShell = (command) => inDevice("sh", "-c", command);
const stored = (name) => inDevice("prm", "get", `net/wifi/${name}`);

function store(values) {
    inShell(Object.entries(values).map(([name, value]) => `prm set net/wifi/${name} '${value}'`).join("; "));
}

before(() => inShell(`prm export net/wifi >${kept}`));
beforeEach(() => store(settings));
after(() =>
    inShell(
        `prm del /net/wifi; prm import ${kept}; rm ${kept};` +
            "/etc/init.d/network_funcs.sh wifi_ap; /etc/init.d/network_funcs.sh wifi_client",
    ),
);

/** Ids of the enabled ones among the fields of a page, without the switch and the button. */
function usable(page, prefix) {
    return page.$$eval("#config_pane :is(input, select):enabled", (fields, start) =>
        fields
            .filter((field) => field.id.startsWith(start) && !/_enabled|_submit|_domain/.test(field.id))
            .map((field) => field.id.slice(start.length)), prefix);
}

async function save(page, button) {
    await submit(page, button);
    return (await page.locator(".form_result_msg").textContent()).trim();
}

const channelsLoaded = (page) => page.waitForFunction(() => document.querySelectorAll("#ap_channel option").length > 1);

describe("Access point page", () => {
    test("fields follow the switch; the channels of the country are offered, the chosen one is saved", async () => {
        await withPage(accessPointPage, desktop, async (page) => {
            assert.deepEqual(await usable(page, "ap_"), []);
            await page.check("#ap_enabled");
            await channelsLoaded(page);
            // The country is fixed where the domain has one only.
            assert.deepEqual(await usable(page, "ap_"), ["country_code_copy", "channel", "security", "ess_id", "pass_phrase"]);
            assert.equal(await page.locator("#ap_channel option").first().textContent(), "[1] 2412 MHz");
            assert.equal(await page.inputValue("#ap_channel"), "6:2437");
            await page.selectOption("#ap_channel", "36:5180");
            assert.equal(await save(page, "#ap_submit"), "Configuration saved successfully");
        });
        assert.equal(stored("ap/channel"), "36:5180");
    });

    test("with the WLAN client on, the channel of a Laird module stays", async () => {
        store({ "client/enabled": "yes" });
        await withPage(accessPointPage, desktop, async (page) => {
            await page.check("#ap_enabled");
            await channelsLoaded(page);
            assert.ok(await page.isDisabled("#ap_channel"));
            assert.equal(await save(page, "#ap_submit"), "Configuration saved successfully");
        });
        assert.equal(stored("ap/channel"), "6:2437");
    });

    test("without the list of channels the stored one can be kept", async () => {
        const prepare = (page) =>
            page.route("**/status/rpc", (route) =>
                route.request().postData().includes("wifi_get_channels") ? route.abort() : route.continue());
        await withPage(accessPointPage, { ...desktop, faulty: true, prepare }, async (page) => {
            await page.check("#ap_enabled");
            assert.equal(await page.textContent("#ap_channel"), "[6] 2437 MHz");
            assert.equal(await save(page, "#ap_submit"), "Configuration saved successfully");
        });
        assert.equal(stored("ap/channel"), "6:2437");
    });

    test("other modules choose the channel themselves, in the country that is chosen", async () => {
        store({ "vendor": "other", "ap/channel": "0:" });
        await withPage(accessPointPage, desktop, async (page) => {
            await page.check("#ap_enabled");
            await channelsLoaded(page);
            assert.equal(await page.locator("#ap_channel option:checked").textContent(), "Automatic");
            const asked = page.waitForRequest(/rpc$/);
            await page.evaluate(() => $("#ap_country_code").prop("disabled", false).trigger("change"));
            const { method, params } = (await asked).postDataJSON();
            assert.deepEqual([method, params], ["wifi_get_channels", ["US"]]);
        });
    });
});

describe("WLAN page", () => {
    test("fields follow the switch and the kind of security", async () => {
        await withPage(wlanPage, desktop, async (page) => {
            assert.deepEqual(await usable(page, "wlan_"), []);
            await page.check("#wlan_enabled");
            const common = ["ess_id", "country_code_copy", "security"];
            for (const [security, own] of [["none", []], ["wpa", ["pass_phrase"]], ["wpa_eap", ["identity", "pass_phrase"]]]) {
                await page.selectOption("#wlan_security", security);
                assert.deepEqual(await usable(page, "wlan_"), [...common, ...own, "mobile_qx"], security);
            }
            await page.uncheck("#wlan_enabled");
            assert.deepEqual(await usable(page, "wlan_"), []);
        });
    });
});

describe("Regulatory domain page", () => {
    test("sets a domain, asks for the reboot and returns after it", async (context) => {
        const forget = () => inShell("rm -rf /var/lib/lmu");
        forget();
        context.after(forget);
        let probes = 0;
        const prepare = async (page) => {
            await page.clock.install();
            await page.route("**/wifi?rand=*", (route) => (++probes < 3 ? route.abort() : route.continue()));
            await page.route("**/settings/general", (route) => route.fulfill({ body: "the device is back" }));
        };
        await withoutRestart(() =>
            withPage(regulatoryPage, { ...desktop, faulty: true, prepare }, async (page) => {
                await page.selectOption("#id_domain", "KCC");
                await submitConfirmed(page, "#id_save");
                assert.match(await page.textContent("#id_message"), /^Regulatory domain was changed/);
                await submitConfirmed(page, "[name='Reboot']");
                assert.ok(await page.isVisible("#id_rebooting_txt"));
                await page.clock.runFor(8000);
                assert.equal(probes, 0, "the device has time to go down");
                await eventually(async () => {
                    await page.clock.runFor(1000);
                    assert.match(page.url(), /\/config\/settings\/general$/);
                });
                assert.equal(probes, 3);
            }),
        );
        assert.equal(stored("region_code"), "KCC");
    });
});
