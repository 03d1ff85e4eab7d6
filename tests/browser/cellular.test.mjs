// The cellular page's script: what it shows of a status, and what follows the operator's clicks. The status
// answers are made here; the page is the device's.

import assert from "node:assert/strict";
import { after, describe, test } from "node:test";
import { desktop, inDevice, withPage } from "./device.mjs";

const path = "/config/network/cellular";
const figure = (name) => `#status_${name}`;
const isStatusCall = (request) => request.postData()?.includes('"cellular_status"') ?? false;

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
    ppp_tx_packets_current: 1,
    ppp_rx_packets_current: 2,
    port_tx_packets_total: 3,
    port_rx_packets_total: 4,
    serial_message: "",
};

/** Opens the page with `answers.status`, or an error where that is null, in place of the device's status. */
async function withStatus(answers, use) {
    const prepare = (page) =>
        page.route("**", (route) => {
            if (!isStatusCall(route.request())) {
                return route.continue();
            }
            return answers.status
                ? route.fulfill({ json: { id: 2, error: null, result: answers.status } })
                : route.abort("connectionrefused");
        });
    await withPage(path, { ...desktop, hurried: true, faulty: true, prepare }, async (page) => {
        await page.click("a[href='#status_tab']");
        await use(page);
    });
}

describe("cellular page", () => {
    const before = inDevice("prm", "get", "gprs/network/refresh");
    after(() => inDevice("prm", "set", "gprs/network/refresh", before));

    test("shows the figures as text, the temperature with its sign, and only rows with a value", async () => {
        await withStatus({ status: working }, async (page) => {
            await page.waitForSelector(`${figure("modem_type")}:text("Modem")`);
            const text = (selector) => page.textContent(selector);
            assert.equal(await text(figure("modem_type")), "<b>Modem</b>");
            assert.equal(await text(figure("module_temp_degrees")), "31°C");
            assert.equal(await text(figure("ppp_current_rxtx_packets")), "1 / 2");
            assert.equal(await text(figure("port_total_rxtx_packets")), "3 / 4");
            assert.equal(await text("#network_row"), "Network (back to 'Automatic')");
            assert.ok(await page.isVisible(figure("ppp_ip_address")));
            for (const hidden of [figure("mobile_number"), figure("serial_message"), "#carrier_apn_row", "#not_enabled"]) {
                assert.ok(!(await page.isVisible(hidden)), hidden);
            }
        });
    });

    test("tells what is missing", async () => {
        const answers = { status: { ...working, have_gprs_stats: false, gprs_network_refresh: "progress" } };
        await withStatus(answers, async (page) => {
            await page.waitForSelector("#no_gprs_stats");
            assert.ok(await page.isVisible("#gprs_network_refresh"));
            assert.ok(!(await page.isVisible(figure("modem_type"))));
            assert.ok(await page.isVisible(figure("port_total_rxtx_packets")));

            answers.status = { ...working, gprs_dialup_enabled: false };
            await page.waitForSelector("#not_enabled");
            assert.ok(!(await page.isVisible(figure("port_total_rxtx_packets"))));
            assert.ok(!(await page.isVisible("#no_gprs_stats")));
        });
    });

    test("shows a failed status call and recovers", async () => {
        const answers = { status: null };
        await withStatus(answers, async (page) => {
            await page.waitForSelector("#status_tab:text('Error retrieving status:')");
            assert.match(await page.textContent("#status_tab"), /^Error retrieving status:  \[error\]$/);
            answers.status = working;
            await page.waitForSelector(`${figure("network")}:text("Field Mobile")`);
        });
    });

    test("a search that is complete is taken back by itself", async () => {
        inDevice("prm", "set", "gprs/network/refresh", "yes");
        await withStatus({ status: { ...working, gprs_network_refresh: "complete" } }, async (page) => {
            await page.waitForSelector("#cfg_refresh_network[value='Refresh']");
            assert.equal(inDevice("prm", "get", "gprs/network/refresh"), "no");
            assert.ok(await page.isVisible("#cellular_gprs_config"), "the tab of the networks");
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
