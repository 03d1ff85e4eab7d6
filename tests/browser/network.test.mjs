// The network pages whose scripts do something of their own: fields that follow a switch, rules edited in
// place, and what the status tabs make of each kind of answer.

import assert from "node:assert/strict";
import { describe, test } from "node:test";
import { desktop, inDevice, phone, submit, waitForText, withPage } from "./device.mjs";

const message = ".form_result_msg";

/** Options for withPage: status calls get this answer. It may be changed while the page is open. */
function answering(answer) {
    const options = { ...desktop, hurried: true, calls: [] };
    options.prepare = (page) =>
        page.route("**/status/rpc", async (route) => {
            options.calls.push(route.request().postDataJSON());
            await route.fulfill(
                options.status ? { status: options.status } : { json: { id: 2, error: null, result: null, ...answer } },
            );
        });
    return options;
}

/** Opens a page's status tab and gives its box, as [tag, text] of headings, texts and cells. */
async function shown(page, box, pattern) {
    if (!(await page.isVisible(box))) {
        await page.click("#tabcontainer > ul li:nth-child(2) a");
    }
    await waitForText(page, box, pattern);
    return page.$$eval(`${box} :is(h3, pre, p, i, th, td)`, (all) => all.map((e) => [e.localName, e.textContent]));
}

describe("Ethernet page", () => {
    const path = "/config/network/ethernet1";
    const addressRows = ["ipAddress", "netmask", "gateway"].map((name) => `[name='${name}']`);

    test("the fixed address shows and counts only in static mode", async () => {
        await withPage(path, desktop, async (page) => {
            for (const mode of ["dhcp", "static"]) {
                await page.selectOption("[name='addressMode']", mode);
                for (const field of addressRows) {
                    assert.equal(await page.isVisible(field), mode === "static", field);
                    assert.equal(await page.isDisabled(field), mode === "dhcp", field);
                }
            }
        });
    });

    test("switched to DHCP and back, the address is still there", async () => {
        const before = inDevice("prm", "get", "net/lan_ipaddr");
        try {
            await withPage(path, desktop, async (page) => {
                for (const mode of ["dhcp", "static"]) {
                    await page.selectOption("[name='addressMode']", mode);
                    await page.selectOption("[name='speedsAvailable']", ["1", "3"]);
                    await submit(page, "#cfg_eth1_save");
                    assert.equal(
                        await page.locator(message).textContent(),
                        "Ethernet 1 settings updated, reboot to take effect",
                    );
                    assert.equal(await page.isVisible("[name='ipAddress']"), mode === "static");
                    assert.equal(inDevice("prm", "get", "net/lan_addr_mode"), mode);
                    assert.equal(inDevice("prm", "get", "net/lan_ipaddr"), before);
                }
            });
        } finally {
            inDevice("rm", "-f", "/tmp/webconfig_reboot_flag");
            inDevice("prm", "set", "net/lan_advertise_speed", "15");
        }
    });

    test("the status tab shows the bridge only where there is one, and texts as text", async () => {
        const result = { eth1: " <b>up</b>\n", ethtool: "100Mb/s" };
        const options = answering({ result });
        await withPage(path, options, async (page) => {
            const port = [
                ["h3", "Ethernet1 Interface"],
                ["pre", "<b>up</b>"],
                ["h3", "Ethernet1 Settings"],
                ["pre", "100Mb/s"],
            ];
            assert.deepEqual(await shown(page, "#ethernet1_status", /Mb/), port);
            assert.deepEqual(options.calls[0], { method: "ethernet1_status", params: [], id: 2 });
            Object.assign(result, { brctl: "br1 8000", br1: "inet" });
            const bridge = [
                ["h3", "Bridge Setup"],
                ["pre", "br1 8000"],
                ["h3", "Bridge Interface"],
                ["pre", "inet"],
            ];
            assert.deepEqual(await shown(page, "#ethernet1_status", /Bridge/), [...bridge, ...port]);
        });
    });

    test("errors of the status call are told, without a blank before the bracket", async () => {
        const options = answering({ error: "Method <i>not</i> found" });
        await withPage(path, { ...options, faulty: true }, async (page) => {
            await shown(page, "#ethernet1_status", /^Error retrieving status: Method <i>not<\/i> found$/);
            options.status = 503;
            await shown(page, "#ethernet1_status", /^Error retrieving status: Service Unavailable\[error\]$/);
        });
    });
});

describe("Port forwarding page", () => {
    const path = "/config/network/port_forwarding";
    const stored = () => inDevice("prm", "export", "net/portfwd/").split("\n").filter(Boolean);

    for (const [kind, options] of Object.entries({ desktop, phone })) {
        test(`a rule is added, changed, given up and deleted on a ${kind}`, async () => {
            assert.deepEqual(stored(), []);
            await withPage(path, options, async (page) => {
                await page.selectOption("#cfg_pfwadd_proto", "udp");
                await page.getByLabel("Source Port").fill("4711");
                await page.getByLabel("Dest IP Address").fill("192.168.0.20");
                await page.getByLabel("Dest Port").fill("7");
                await submit(page, "#cfg_pfwadd_add");
                assert.equal(await page.locator(message).textContent(), "Success: The form values were saved.");

                await page.click("#row_0 [name='edit']");
                await page.fill("#cfg_pfw_dest_port", "8");
                await page.click("#cfg_pfw_cancel");
                assert.match(stored().join(), /"7"/);

                await page.click("#row_0 [name='edit']");
                await page.fill("#cfg_pfw_dest_port", "9");
                await page.keyboard.press("Enter");
                await page.waitForSelector("#row_0 [name='edit']");
                assert.deepEqual(stored(), [
                    `"net/portfwd/udp/04711/d_ip","192.168.0.20", s`,
                    `"net/portfwd/udp/04711/d_port","9", s`,
                ]);

                await page.click("#row_0 [name='delete']");
                await page.waitForSelector("#row_0 [name='add']");
                assert.deepEqual(stored(), []);
            });
        });
    }

    test("the status tab shows the tables, and each kind of failure in few words", async () => {
        const result = { filtering: "Chain INPUT", nat: "Chain <PREROUTING>" };
        const options = answering({ result });
        const box = "#port_forwarding_status";
        await withPage(path, { ...options, faulty: true }, async (page) => {
            assert.deepEqual(await shown(page, box, /Chain/), [
                ["h3", "Packet Filtering"],
                ["pre", "Chain INPUT"],
                ["h3", "NAT Settings"],
                ["pre", "Chain <PREROUTING>"],
            ]);
            delete result.filtering;
            delete result.nat;
            assert.deepEqual(await shown(page, box, /empty/), [["i", "empty status"]]);
            options.status = 502;
            await shown(page, box, /^Invalid Status 502$/);
        });
        await withPage(path, answering({ error: "Method not found" }), (page) =>
            shown(page, box, /^Method not found$/),
        );
    });
});

describe("NTP page", () => {
    const path = "/config/network/ntp";
    const box = "#ntpd_status";

    test("with chrony: the daemon's tables, and a button that outlives the refreshes", async () => {
        const sources = "\n  .-- S\n / .- T\n";
        const result = { isChronyd: true, running: true, tracking: "Stratum 1", rawOutput: sources, clients: "C" };
        await withPage(path, answering({ result }), async (page) => {
            assert.deepEqual(await shown(page, box, /Stratum 1/), [
                ["h3", "State"],
                ["p", "Running"],
                ["h3", "Tracking"],
                ["pre", "Stratum 1"],
                ["h3", "Sources"],
                ["pre", "  .-- S\n / .- T"],
                ["h3", "Clients"],
                ["pre", "C"],
            ]);
            await page.focus("#status_ntp_manual_sync");
            result.tracking = "Stratum 2";
            await shown(page, box, /Stratum 2/);
            assert.equal(await page.evaluate(() => document.activeElement.id), "status_ntp_manual_sync");

            result.running = false;
            assert.deepEqual(await shown(page, box, /Stopped/), [
                ["h3", "State"],
                ["p", "Stopped"],
            ]);
        });
    });

    test("with ntpd: rows for what is known", async () => {
        const result = { running: true, hasGps: true, gpsSync: true, ppsSync: false, syncTo: "GPS", rawOutput: "*" };
        await withPage(path, answering({ result }), async (page) => {
            const cells = (rows) => Object.entries(rows).flatMap(([th, td]) => [["th", th], ["td", td]]);
            const frame = (rows) => [["h3", "State"], ...cells(rows), ["h3", "Raw Output"], ["pre", "*"]];
            assert.deepEqual(
                await shown(page, box, /GPS/),
                frame({ Running: "Yes", GPS: "Synchronised", PPS: "Not synchronised", "Synchronised To": "GPS" }),
            );
            result.running = false;
            assert.deepEqual(await shown(page, box, /RunningNo/), frame({ Running: "No" }));
        });
    });
});

describe("DNS page", () => {
    test("saves, and shows the configuration in force", async () => {
        const result = { currentConf: "nameserver <1.2.3.4>\n" };
        await withPage("/config/network/dns_server", answering({ result }), async (page) => {
            await page.click("text=Append to System DNS Configuration");
            await submit(page, "#cfg_eth1_save");
            assert.equal(
                await page.locator(message).textContent(),
                "DNS server settings updated, reboot to take effect",
            );
            assert.equal(inDevice("prm", "get", "net/lan_dns_is_append"), "yes");
            inDevice("prm", "set", "net/lan_dns_is_append", "no");
            assert.deepEqual(await shown(page, "#dns_server_status", /nameserver/), [
                ["h3", "DNS Settings"],
                ["pre", "nameserver <1.2.3.4>"],
            ]);
        });
    });
});
