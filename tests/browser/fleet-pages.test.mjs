// The pages of a fleet's console, with answers that the tests make up: the pages themselves come from a console without
// a broker, as if it were on the site under test.
//
// WEBCONFIG_BUILD  the build's folder, from the root of the checkout

import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { createServer } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, describe, test } from "node:test";
import { desktop, eventually, inCheckout, waitForText, withPage } from "./device.mjs";
import { assertEveryViewIsGood, assertKeyboardIsSeen } from "./views.mjs";

const folder = mkdtempSync(join(tmpdir(), "fleet-pages-"));
let server;
let serverUrl;

before(async () => {
    const probe = createServer().listen(0, "127.0.0.1");
    await new Promise((done) => probe.once("listening", done));
    const { port } = probe.address();
    await new Promise((done) => probe.close(done));
    serverUrl = `http://127.0.0.1:${port}`;
    const settings = {
        "service-api": "http", "service-socket": "", "service-ip": "127.0.0.1", "service-port": port, "fleet-broker": "mqtt://127.0.0.1:1",
        "fleet-ca": "", "fleet-certificate": "", "fleet-key": "", "fleet-file": join(folder, "fleet.db"),
    };
    const program = inCheckout(`${process.env.WEBCONFIG_BUILD ?? "build/dev"}/fleet/webconfig-fleet`);
    server = spawn(program, ["-c", inCheckout("config/fleet.json"), ...Object.entries(settings).map(([key, value]) => `--${key}=${value}`)], { stdio: "ignore" });
    await eventually(() => fetch(`${serverUrl}/fleet/`));
});
after(() => {
    server?.kill();
    rmSync(folder, { recursive: true });
});

const time = Math.floor(Date.now() / 1000);
const markup = "<b>north</b>";
const settings = { "net/hostname": markup, "net/lan_gateway": "10.0.0.1", "net/wifi/client/wpa_psk": { set: true }, "net/portfwd/tcp/08080/d_ip": "10.0.0.7", odd: 1 };
const health = { time, temperature: 41, load: 0.5, memory: 33, signal: -77, uplink: "eth0", address: "10.99.0.2" };
const device = (id) => ({ id, name: `name of ${id}`, model: "brq4", firmware: "1.0.0", serial: id, online: id !== "d3", seen: time - 4000, restart: true, trial: "running", tags: [markup], health, uptime: 86400, revision: "r", note: "", settings });
const ids = ["d1", "d2", "d3"];
const refused = { "net/hostname": "Too odd" };
const change = { change: "c1", device: "d1", who: "anna", time, patch: { "net/hostname": "x" }, state: "refused", message: "Nothing was stored", refused, rollout: 7 };
const rollout = {
    rollout: 7, title: markup, why: "", who: "anna", time, state: "stopped", reason: "1 of 1 have failed", asked: 1, members: 3, counts: { returned: 1, waiting: 2 }, patch: { "net/lan_gateway": "10.0.0.9" },
    restart: false, canaries: 1, wave: 2, limit: 5, patience: 600, settle: 30, wave_now: 0, waves: 2, selection: { tag: markup }, log: [{ time, who: "anna", text: "Begun" }],
};
/** What the methods give, by their parameters; "catalogue" is the console's own. */
const usual = {
    status: () => ({ broker: "connected", since: time, devices: 3, online: 2, messages: 9, rollouts: 1 }),
    devices: ({ search = "", offset }) => ({ total: 120, matching: search ? 1 : 120, online: 2, devices: offset ? [device("d4")] : ids.map(device), firmwares: { "1.0.0": 3 }, models: { brq4: 3 }, tags: { [markup]: 3 } }),
    device: ({ id }) => device(id),
    health: () => ({ samples: [health, { ...health, time: time + 60 }] }),
    changes: () => ({ total: 1, changes: [change] }),
    change: () => ({ change: "c1" }),
    tag: () => ({ devices: 2 }),
    rollouts: () => ({ total: 1, rollouts: [rollout] }),
    rollout: () => rollout,
    members: () => ({ total: 3, members: ids.map((id, wave) => ({ id, name: id, wave, state: wave ? "waiting" : "returned", message: wave ? "" : "It did not reach the broker", time })) }),
};

/** Options for withPage: the console's pages, with these answers beside the usual ones, and the `calls` there were. */
function fleet(answers = {}) {
    const calls = [];
    async function prepare(page) {
        await page.route("**/fleet/**", async (route) => {
            const { pathname, search } = new URL(route.request().url());
            const headers = { ...route.request().headers(), origin: serverUrl };
            const fetched = route.fetch({ url: serverUrl + pathname + search, headers }).then((response) => route.fulfill({ response }));
            await fetched.catch(() => {}); // the page is closed meanwhile
        });
        await page.route("**/fleet/rpc", async (route) => {
            const { method, params } = route.request().postDataJSON();
            calls.push({ method, asked: params[0] });
            const answer = { ...usual, ...answers }[method];
            await (answer ? route.fulfill({ json: { id: 1, error: null, result: null, ...wrapped(answer, params[0]) } }) : route.fallback());
        });
    }
    const wrapped = (answer, asked) => (typeof answer === "function" ? { result: answer(asked) } : answer);
    return { ...desktop, prepare, calls };
}

/** The same for a test that waits for polls. */
const hurriedFleet = (answers) => ({ ...fleet(answers), hurried: true });

describe("console of a fleet", { concurrency: 3 }, () => {
    const pages = { "/fleet/?search=x&sort=id": "#devices tr", "/fleet/device/d1": ".plots canvas", "/fleet/device/d1?compare=d2": "#compared a", "/fleet/roll_out?ids=d1,d2": "#plan", "/fleet/rollouts": "#rollouts a", "/fleet/rollout/7": "#members tr" };
    for (const [path, shown] of Object.entries(pages)) {
        test(`${path} is clean, and everybody can use it on any screen`, () =>
            withPage(path, fleet(), async (page) => {
                await page.waitForSelector(shown);
                await assertKeyboardIsSeen(page);
                await assertEveryViewIsGood(page);
                assert.equal(await page.locator("#config_pane b", { hasText: /^north$/ }).count(), 0, "texts are no markup");
            }));
    }

    test("says that there is no device, no broker, no answer, and what is unknown", async () => {
        const none = { total: 0, matching: 0, online: 0, devices: [] };
        await withPage("/fleet/", hurriedFleet({ devices: () => none, status: () => ({ ...usual.status(), broker: "refused" }) }), async (page) => {
            await waitForText(page, "#devices", /No device has said anything yet/);
            await waitForText(page, "#broker_alert", /Not connected to the broker: refused/);
        });
        await withPage("/fleet/device/d1", hurriedFleet({ device: { error: { code: "unknown", message: "No such one" } } }), (page) => waitForText(page, "#device_unknown", /No such one/));
        await withPage("/fleet/", { ...hurriedFleet(), faulty: true }, async (page) => {
            await page.waitForSelector("#devices tr");
            await page.route("**/fleet/rpc", (route) => route.abort());
            await waitForText(page, "#problem", /does not answer.*trying again/);
            await page.unroute("**/fleet/rpc");
            await eventually(async () => assert.ok(await page.isHidden("#problem")));
        });
    });

    test("keeps what is filtered and sorted in the address, and takes it to a rollout", async () => {
        const options = hurriedFleet();
        await withPage("/fleet/?tag=gone&offset=50", options, async (page) => {
            await waitForText(page, "#devices", /d4/);
            await page.fill("#filter_search", "a b");
            await waitForText(page, "#device_counts", /1 of 120 devices match/);
            await page.click("[data-sort='seen']");
            await page.click("[data-sort='seen']");
            await eventually(() => assert.match(page.url(), /\?search=a\+b&tag=gone&sort=seen&descending=$/));
            const { asked } = options.calls.findLast(({ method }) => method === "devices");
            assert.deepEqual(asked, { search: "a b", tag: "gone", sort: "seen", descending: true, offset: 0, limit: 50 });
            await page.click("#select_matching");
            await page.click("#roll_out_selected");
            await page.waitForURL(/roll_out\?search=a\+b&tag=gone$/);
        });
    });

    test("sends a change, keeps what is entered meanwhile, and shows a refusal beside its setting", async () => {
        let state = "sent";
        const options = hurriedFleet({ changes: () => ({ total: 1, changes: [{ ...change, state, refused: state === "refused" ? refused : {} }] }) });
        await withPage("/fleet/device/d1", options, async (page) => {
            await page.click("[data-edit='net/hostname']");
            await page.fill("#setting_net_hostname", "x");
            const calls = options.calls.length;
            await eventually(() => assert.ok(options.calls.slice(calls).filter(({ method }) => method === "device").length > 1));
            await page.keyboard.press("Enter");
            await waitForText(page, "tr[data-key='net/hostname']", /x Sent/);
            assert.deepEqual(options.calls.find(({ method }) => method === "change").asked, { id: "d1", patch: { "net/hostname": "x" }, based_on: "r", restart: false });
            state = "refused";
            await waitForText(page, "#setting_net_hostname_reason", /^Too odd$/);
            assert.equal(await page.inputValue("#setting_net_hostname"), "x");
            await page.click("#discard_change");
        });
    });
});
