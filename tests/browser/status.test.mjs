// Live status: what each page makes of the answers, and how polling goes on whatever comes. The answers are made
// here; the pages are the device's.

import assert from "node:assert/strict";
import { describe, test } from "node:test";
import { answering, eventually, withPage } from "./device.mjs";

/** Opens the tab that the box is in. */
async function openTab(page, box) {
    const tab = await page.$eval(box, (element) => element.closest(".tabdiv").id);
    await page.click(`#tabcontainer > ul a[href='#${tab}']`);
}

/** What is in the box: headings, texts and cells as "tag: text", and texts that are in none of them. */
function contents(page, box) {
    return page.$eval(box, (element) => {
        const parts = [...element.querySelectorAll("h2, h3, pre, p, i, b, th, td")];
        const texts = [...element.childNodes].filter((node) => node.nodeType === Node.TEXT_NODE && node.data.trim());
        return [...parts.map((e) => `${e.localName}: ${e.textContent.replace(/ \d\d:\d\d:\d\d,/, ",")}`), ...texts.map((node) => node.data)];
    });
}

const sections = (texts) => Object.entries(texts).flatMap(([title, text]) => [`h3: ${title}`, `pre: ${text}`]);
const table = (title, rows) => [`h3: ${title}`, ...Object.entries(rows).flatMap(([th, td]) => [`th: ${th}`, `td: ${td}`])];
/** A report is one text with headings in it. */
const report = (parts) => {
    const note = "(check system log file for more details)";
    const whole = Object.entries(parts).flat().join("") + note;
    return [`pre: ${whole}`, ...Object.keys(parts).map((title) => `h2: ${title}`), `b: ${note}`];
};

/** What a box says above what it still shows, while no answer comes; the time is left out. */
const silent = "p: No answer since, trying again";

const port = { eth1: " <b>up</b>\n", ethtool: "100Mb/s" };
const portShown = sections({ "Ethernet1 Interface": "<b>up</b>", "Ethernet1 Settings": "100Mb/s" });
const sources = "\n  .-- S\n / .- T\n";
const shownSources = "  .-- S\n / .- T";
const ntpd = { running: true, hasGps: true, gpsSync: true, ppsSync: false, syncTo: "GPS", rawOutput: "*" };
const vpn = {
    connectionStatus: "<b>Connected</b>",
    isConnected: true,
    currentStateTimeString: "3 minutes",
    configurationFile: "field.ovpn",
    caCertificate: "CA",
    clientCertificate: "certificate",
    clientKey: "key",
    server: "vpn.example",
    organization: "O",
    organizationalUnit: "OU",
    client: "C",
    logOutput: "line <1>\nline 2\n",
};

/** Page, box, call, and answers with what is shown of each. */
const pages = [
    ["/", "#general_dynamic_status", { method: "general_dynamic_status", id: 2 }, [
        [{ result: { date: "now\n", uptime: "1 day", boardTemp: "40", top: sources, processStatus: "PID" } },
            sections({ Date: "now", Uptime: "1 day", "Board Temperature": "40", Top: shownSources, "Process Status": "PID" })],
    ]],
    ["/config/network/ethernet1", "#ethernet1_status", { method: "ethernet1_status", id: 2 }, [
        [{ result: { ...port, brctl: "br1 8000", br1: "inet" } }, [
            ...sections({ "Bridge Setup": "br1 8000", "Bridge Interface": "inet" }),
            ...portShown,
        ]],
        [{ error: "Method <i>not</i> found" }, ["Error retrieving status: Method <i>not</i> found"]],
        [{ status: 503 }, [silent, "p: Error retrieving status: Service Unavailable[error]", "Error retrieving status: Method <i>not</i> found"]],
        [{ result: port }, portShown],
    ]],
    ["/config/network/port_forwarding", "#port_forwarding_status", { method: "port_forwarding_status", id: 1 }, [
        [{ result: { filtering: "Chain INPUT", nat: "Chain <PREROUTING>" } },
            sections({ "Packet Filtering": "Chain INPUT", "NAT Settings": "Chain <PREROUTING>" })],
    ]],
    ["/config/network/orvane", "#orvane_status", { method: "orvane_status", id: 1 }, [
        [{ result: { isConnected: true, serverAddress: "192.0.2.7" } }, ["Connected to 192.0.2.7"]],
        [{ result: { isConnected: "Unknown", serverAddress: "Unknown" } }, ["Not Connected"]],
        [{ result: {} }, ["i: empty status"]],
        [{ status: 502 }, [silent, "p: Invalid Status 502", "i: empty status"]],
        [{ error: "No <b>" }, ["No <b>"]],
    ]],
    ["/config/network/ntp", "#ntpd_status", { method: "ntpd_status", id: 2 }, [
        [{ result: { isChronyd: true, running: false } }, ["h3: State", "p: Stopped"]],
        [{ result: { isChronyd: true, running: true, tracking: "Stratum 1", rawOutput: sources, clients: "C" } }, [
            ...["h3: State", "p: Running"],
            ...sections({ Tracking: "Stratum 1", Sources: shownSources, Clients: "C" }),
        ]],
        [{ result: ntpd }, [
            ...table("State", { Running: "Yes", GPS: "Synchronised", PPS: "Not synchronised", "Synchronised To": "GPS" }),
            ...sections({ "Raw Output": "*" }),
        ]],
    ]],
    ["/config/network/dns_server", "#dns_server_status", { method: "dns_server_status", id: 2 }, [
        [{ result: { currentConf: "nameserver <1.2.3.4>\n" } }, sections({ "DNS Settings": "nameserver <1.2.3.4>" })],
    ]],
    ["/config/network/openvpn", "#openvpn_status", { method: "openvpn_status", id: 2 }, [
        [{ result: vpn }, [
            ...table("Connection", { "Connection Status": "<b>Connected</b>", "Tunnel up time": "3 minutes" }),
            ...table("Configuration", {
                "Configuration File": "field.ovpn",
                "CA Certificate": "CA",
                "Client Certificate": "certificate",
                "Client Key": "key",
            }),
            ...table("Server Details", { Server: "vpn.example", Organization: "O", "Organizational Unit": "OU", Client: "C" }),
            ...sections({ Log: "line <1>\nline 2" }),
        ]],
    ]],
    ["/config/network/access_point", "#status_access_point", { method: "wifi_ap_status", id: 2 }, [
        [{ result: { ap0_enabled: false } }, ["Not enabled"]],
        [{ result: { ap0_enabled: true, ap0_status: "ssid <b>", connected_clients: "1", clients_dhcp_lease: "2", status_from_syslog: "3" } },
            report({ "Access Point interface": "ssid <b>", "Connected clients": "1", "DHCP leases": "2", "Syslog info (WiFi only)": "3" })],
    ]],
    ["/config/network/wlan", "#status_wlan", { method: "wifi_client_status", id: 2 }, [
        [{ result: { client0_enabled: false } }, ["Not enabled"]],
        [{ result: { client0_enabled: true, client0_status: "ssid <b>", client0_ifconfig_status: "1", Routing: "2", status_from_syslog: "3" } },
            report({ "Client Interface": "ssid <b>", "Client Network": "1", Routing: "2", "Syslog info (WiFi only)": "3" })],
    ]],
    ["/config/settings/advanced", "#advanced_syslog_dynamic", { method: "tail_syslog", id: 2 }, [
        [{ result: { tail: "one\n<two>\n" } }, ["pre: one\n<two>"]],
        [{ error: "No" }, ["Error retrieving log: No"]],
        [{ status: 503 }, [silent, "p: Error retrieving log: Service Unavailable", "Error retrieving log: No"]],
    ]],
];

describe("status of each page", { concurrency: 3 }, () => {
    for (const [path, box, call, answers] of pages) {
        test(path, async () => {
            const faulty = answers.some(([answer]) => answer.status);
            const options = answering(answers[0][0]);
            await withPage(path, { ...options, faulty }, async (page) => {
                await openTab(page, box);
                for (const [answer, shown] of answers) {
                    options.use(answer);
                    await eventually(async () => assert.deepEqual(await contents(page, box), shown));
                }
            });
            assert.deepEqual(options.calls.at(-1), { ...call, params: [] });
        });
    }
});

describe("polling", { concurrency: 3 }, () => {
    const box = "#general_dynamic_status";
    const good = { result: { uptime: "1 day" } };
    const text = (page) => page.textContent(box);

    test("calls only while the tab is open, and says since when there is no answer", async () => {
        const options = answering(good);
        const prepare = async (page) => {
            await page.clock.install({ time: new Date("2024-05-05T12:34:00") });
            await options.prepare(page);
        };
        await withPage("/", { ...options, hurried: false, faulty: true, prepare }, async (page) => {
            await page.clock.pauseAt(new Date("2024-05-05T12:34:30"));
            assert.equal(options.calls.length, 0, "the tab is closed");
            await openTab(page, box);
            await page.clock.runFor(1000);
            await eventually(async () => assert.match(await text(page), /1 day/));
            options.use(null);
            await page.clock.runFor(2000);
            await eventually(async () => assert.equal(options.calls.length, 2));
            await page.clock.runFor(40000);
            await eventually(async () => assert.match(await text(page), /^No answer since 12:34:3[12].*1 day/s));
            options.use({ result: { uptime: "2 days" } });
            await eventually(async () => {
                await page.clock.runFor(1000);
                assert.match(await text(page), /^Date.*2 days/s);
            });
        });
    });

    test("leaves alone what is being read, follows the end of a log, and pauses while nobody looks", async () => {
        const lines = (from) => ({ result: { tail: Array.from({ length: 200 }, (_, i) => `line ${from + i}`).join("\n") } });
        const log = "#advanced_syslog_dynamic pre";
        const options = answering(lines(0));
        await withPage("/config/settings/advanced#advanced_syslog_tab", options, async (page) => {
            const shows = (pattern) => eventually(async () => assert.match(await page.textContent(log), pattern));
            /** The first line in sight, and the last one. */
            const inSight = () =>
                page.$eval(log, (pre) => {
                    const height = parseFloat(getComputedStyle(pre).lineHeight);
                    const shown = pre.textContent.split("\n");
                    const first = Math.round(pre.scrollTop / height);
                    return [shown[first], shown[Math.min(first + Math.floor(pre.clientHeight / height), shown.length) - 1]];
                });
            await shows(/line 199$/);
            options.use(lines(10));
            await shows(/line 209$/);
            assert.equal((await inSight())[1], "line 209", "the end is followed");

            await page.$eval(log, (pre) => (pre.scrollTop /= 2));
            const before = await inSight();
            options.use(lines(20));
            await shows(/line 219$/);
            assert.deepEqual(await inSight(), before);

            await page.$eval(log, (pre) => getSelection().selectAllChildren(pre));
            options.use(lines(30));
            const calls = options.calls.length;
            await eventually(() => assert.ok(options.calls.length > calls + 1));
            assert.match(await page.evaluate(() => String(getSelection())), /^line 20\n.*line 219$/s);
            await page.evaluate(() => getSelection().removeAllRanges());
            await shows(/line 229$/);

            const look = (hidden) =>
                page.evaluate((value) => {
                    Object.defineProperty(document, "hidden", { value, configurable: true });
                    document.dispatchEvent(new Event("visibilitychange"));
                }, hidden);
            await look(true);
            const paused = options.calls.length;
            await page.waitForTimeout(400);
            assert.ok(options.calls.length <= paused + 1, "one may have been under way");
            await look(false);
            await eventually(() => assert.ok(options.calls.length > paused + 1));
        });
    });

    test("goes on after a call that failed and after a result that cannot be shown", async () => {
        const options = answering(good);
        await withPage("/", { ...options, faulty: true }, async (page) => {
            await openTab(page, box);
            for (const [answer, shown] of [
                [{ failure: "connectionrefused" }, /^No answer since [\d:]+, trying againError retrieving status: \[error\]/],
                [good, /1 day/],
                [{ result: null }, /^Error retrieving status: TypeError: /],
                [good, /1 day/],
            ]) {
                options.use(answer);
                await eventually(async () => assert.match(await text(page), shown));
            }
        });
    });
});
