// The cellular page's script: what it shows of a status, and what follows the operator's clicks. The status
// answers are made here; the page is the device's.

import assert from "node:assert/strict";
import { after, describe, test } from "node:test";
import { answering, desktop, eventually, inDevice, withPage } from "./device.mjs";

const path = "/config/network/cellular";
const figure = (name) => `#status_${name}`;

const working = {
    gprs_network_refresh: "none",
    gprs_dialup_enabled: true,
    have_gprs_stats: true,
    have_serial_stats: true,
    modem_type: "<b>Modem</b>",
    mobile_number: "",
    assembly_number: "A-1",
    connection_type: "3G",
    network: "Field Mobile",
    forced_automatic: true,
    module_temp_degrees: "31&#176;C",
    ppp_ip_address: "10.97.0.2",
    signal_strength: "-83 dBm",
    ppp_tx_packets_current: 1234567,
    ppp_rx_packets_current: 999,
    port_tx_packets_total: 3,
    port_rx_packets_total: 4,
    serial_message: "",
};

/** Opens the status tab with this result of the status method. */
async function withStatus(result, use) {
    const options = answering({ result });
    await withPage(path, options, async (page) => {
        await page.click("a[href='#status_tab']");
        await use(page, options);
    });
}

describe("cellular page", () => {
    const before = inDevice("prm", "get", "gprs/network/refresh");
    after(() => inDevice("prm", "set", "gprs/network/refresh", before));

    test("shows the figures as text, the temperature with its sign, and only rows with a value", async () => {
        await withStatus(working, async (page) => {
            await page.waitForSelector(`${figure("modem_type")}:text("Modem")`);
            const text = (selector) => page.textContent(selector);
            assert.equal(await text(figure("modem_type")), "<b>Modem</b>");
            assert.equal(await text(figure("module_temp_degrees")), "31°C");
            assert.equal(await text(figure("port_total_rxtx_packets")), "3 / 4");
            assert.equal(await text(figure("ppp_current_rxtx_packets")), "1\u202f234\u202f567 / 999");
            assert.equal(await text(figure("signal_strength")), "-83 dBm");
            assert.equal(await page.getAttribute(`${figure("signal_strength")} [role=img]`, "aria-label"), "Signal: 3 of 4 bars");
            assert.equal(await text("#network_row"), "Network (back to 'Automatic')");
            assert.ok(await page.isVisible(figure("ppp_ip_address")));
            for (const hidden of [figure("mobile_number"), figure("serial_message"), "#carrier_apn_row", "#not_enabled"]) {
                assert.ok(!(await page.isVisible(hidden)), hidden);
            }
        });
    });

    test("tells what is missing", async () => {
        await withStatus({ ...working, have_gprs_stats: false, gprs_network_refresh: "progress" }, async (page, options) => {
            await page.waitForSelector("#no_gprs_stats");
            assert.ok(await page.isVisible("#gprs_network_refresh"));
            assert.ok(!(await page.isVisible(figure("modem_type"))));
            assert.ok(await page.isVisible(figure("port_total_rxtx_packets")));

            options.use({ result: { ...working, gprs_dialup_enabled: false } });
            await page.waitForSelector("#not_enabled");
            assert.ok(!(await page.isVisible(figure("port_total_rxtx_packets"))));
            assert.ok(!(await page.isVisible("#no_gprs_stats")));

            options.use({ error: "No" });
            await eventually(async () => assert.equal(await page.textContent("#status_tab"), "Error retrieving status: No"));
            options.use({ result: working });
            await page.waitForSelector(`${figure("network")}:text("Field Mobile")`);
        });
    });

    test("a search that is complete is taken back by itself, once", async () => {
        inDevice("prm", "set", "gprs/network/refresh", "yes");
        await withStatus({ ...working, gprs_network_refresh: "progress" }, async (page, options) => {
            // Into another tab, so that the page goes on to poll as it does while the device takes its time.
            await page.evaluate(() => $("#cellular_gprs_config form").attr("target", "away"));
            let clicks = 0;
            page.context().on("request", (request) => (clicks += request.method() === "POST" && request.url().endsWith(path)));
            options.use({ result: { ...working, gprs_network_refresh: "complete" } });
            const calls = options.calls.length;
            await eventually(() => assert.ok(options.calls.length > calls + 4));
            assert.equal(clicks, 1);
            await eventually(() => assert.equal(inDevice("prm", "get", "gprs/network/refresh"), "no"));
        });
    });

    test("networks have plain names, and the PIN its switch", async () => {
        await withPage(path, desktop, async (page) => {
            const pin = page.locator("#cfg_cell_sim_pin");
            await page.uncheck("#cfg_cell_use_sim_pin");
            assert.ok(await pin.isDisabled());
            await page.check("#cfg_cell_use_sim_pin");
            assert.ok(await pin.isEnabled());
            const networks = await page.locator("#cfg_cell_preferred_network option").allTextContents();
            assert.ok(networks.includes("Automatic") && networks.every((name) => !/^network_|"/.test(name)), networks);
        });
    });
});
