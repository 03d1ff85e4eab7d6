// The device under test and the browser that looks at it, for all browser tests.
//
// WEBCONFIG_URL    where the pages are, such as http://127.0.0.1:8080/
// WEBCONFIG_ENTER  command that runs its arguments inside the device, such as "device/enter --name test";
//                  started at the root of the checkout
// WEBCONFIG_LOGIN  "user:password" where the site asks for a log-in

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { fileURLToPath } from "node:url";
import { after, before } from "node:test";
import { chromium } from "playwright-core";

const checkout = fileURLToPath(new URL("../..", import.meta.url));

export const site = new URL(required("WEBCONFIG_URL"));
const enter = required("WEBCONFIG_ENTER").split(" ");
const [username, password] = (process.env.WEBCONFIG_LOGIN ?? "").split(":");

// Without animations: tabs take no click while they change.
export const desktop = { viewport: { width: 1280, height: 800 }, colorScheme: "light", reducedMotion: "reduce" };
export const phone = {
    viewport: { width: 360, height: 740 },
    isMobile: true,
    hasTouch: true,
    colorScheme: "dark",
    reducedMotion: "reduce",
};

/** Every page, the one without a menu last. */
export const pages = [
    "/",
    "/config/network/cellular",
    "/config/network/openvpn",
    "/config/network/orvane",
    "/config/settings/about",
    "/config/settings/firmware",
    "/config/settings/reboot",
    "/config/settings/advanced",
    "/config/service/assemblysn",
    "/config/network/ethernet1",
    "/config/network/port_forwarding",
    "/config/network/ntp",
    "/config/network/dns_server",
    "/config/network/access_point",
    "/config/network/wlan",
    "/config/settings/history",
    "/config/regulatory/wifi",
];

function required(name) {
    const value = process.env[name];
    if (!value) {
        throw new Error(`${name} is not set`);
    }
    return value;
}

/** Runs a program inside the device and returns what it prints, without the last line's end. */
export function inDevice(...command) {
    return execFileSync(enter[0], [...enter.slice(1), ...command], { cwd: checkout, encoding: "utf8" }).trimEnd();
}

/** The absolute path of a file of the checkout. */
export const inCheckout = (path) => `${checkout}/${path}`;

/** Waits for what nothing announces, until `check` no longer throws; fails with what it threw last. */
export async function eventually(check, seconds = 10) {
    for (const end = Date.now() + 1000 * seconds; ; await new Promise((wake) => setTimeout(wake, 50))) {
        try {
            return await check();
        } catch (error) {
            if (Date.now() > end) {
                throw error;
            }
        }
    }
}

/** Options for withPage: each status call gets the answer that was given last to `use`: one with a `result` or an
 *  `error`, one with an HTTP `status` only, a `failure` of the network, or null: none at all. */
export function answering(first) {
    let answer = first;
    const calls = [];
    async function prepare(page) {
        await page.route("**/status/rpc", async (route) => {
            if (route.request().postDataJSON().method === "metrics") {
                return route.fallback(); // to the device: an overview is beside what is tested
            }
            calls.push(route.request().postDataJSON());
            if (answer?.failure) {
                await route.abort(answer.failure);
            } else if (answer?.status) {
                await route.fulfill({ status: answer.status });
            } else if (answer) {
                await route.fulfill({ json: { id: 2, error: null, result: null, ...answer } });
            }
        });
    }
    return { ...desktop, hurried: true, prepare, calls, use: (next) => (answer = next) };
}

/** Runs `use`, during which the system has to restart the device: the call is seen, but nothing restarts. */
export async function withoutRestart(use) {
    const calls = () => Number(inDevice("sh", "-c", "grep -cx '/sbin/reboot -d 5' /var/log/device-commands || true"));
    const earlier = calls();
    inDevice("sh", "-c", "mkdir -p /etc/fail; echo 1 >/etc/fail/reboot");
    try {
        await use();
        await eventually(() => assert.equal(calls(), earlier + 1, "one call of reboot"));
    } finally {
        inDevice("rm", "/etc/fail/reboot");
    }
}

/** The text of a page as the site sends it. (Playwright's own requests know no digest log-in.) */
export function source(path) {
    const login = username ? ["--digest", "--user", `${username}:${password}`] : [];
    return execFileSync("curl", ["-sf", "--noproxy", "*", ...login, new URL(path, site).href], { encoding: "utf8" });
}

/** Where the device is on its LAN, and other addresses there. The browser is taken to the site by each. */
export const lanAddress = "192.168.0.1";
const lanAddresses = "192.168.0.*";

let browser;

before(async () => {
    browser = await chromium.launch({
        executablePath: "/usr/bin/chromium",
        args: [
            "--no-sandbox",
            "--disable-gpu",
            "--disable-quic",
            "--no-first-run",
            "--disable-background-networking",
            "--disable-component-update",
            "--disable-sync",
            `--host-resolver-rules=MAP ${lanAddresses} ${site.host}`,
        ],
    });
});

// What a file has saved must not be taken back while the next one is at work.
after(() => inDevice("rm", "-f", "/var/lib/webconfig/trial"));
after(() => browser?.close());

/** In the page: makes timers ten times as fast. */
function hurry() {
    const { setTimeout } = window;
    window.setTimeout = (work, delay, ...args) => setTimeout(work, delay / 10, ...args);
}

/** Opens a page of the site (a path, or a whole address), hands it to `use`, and closes it.
 *  Fails when the page logged an error, asked another host for anything, or got an error answer; and, whatever the test
 *  provokes, when the browser refused anything of it because of the page's Content Security Policy.
 *  @param options of the browser context, with `faulty: true` when the test provokes failures itself, and
 *      `hurried: true` when it waits for polls of the page. */
export async function withPage(path, { faulty = false, hurried = false, prepare, ...options }, use) {
    const context = await browser.newContext({
        ...(username && { httpCredentials: { username, password } }),
        ...options,
    });
    try {
        const page = await context.newPage();
        const problems = collectProblems(page, new URL(path, site).host);
        if (hurried) {
            await page.addInitScript(hurry);
        }
        await prepare?.(page);
        await page.goto(new URL(path, site).href);
        await use(page);
        const grave = faulty ? problems.filter((problem) => problem.includes("Content Security Policy")) : problems;
        if (grave.length) {
            throw new Error(`${path}: ${grave.join("; ")}`);
        }
    } finally {
        await context.close();
    }
}

/** Clicks a button that asks first, and says yes. */
export async function confirm(page, button) {
    await page.click(button);
    await page.click("dialog.question .danger");
}

/** Clicks a button that sends a form, and waits until the page that answers has loaded. */
export async function submit(page, button, click = page.click.bind(page)) {
    await Promise.all([page.waitForNavigation(), click(button)]);
}

/** The same of a button that asks first. */
export const submitConfirmed = (page, button) => submit(page, button, () => confirm(page, button));

/** Waits until the text of an element matches. */
export function waitForText(page, selector, pattern) {
    return eventually(async () => assert.match(await page.textContent(selector, { timeout: 1000 }), pattern), 15);
}

/** Lists, as they happen, a page's script errors, refused and failed requests, requests to other hosts. */
function collectProblems(page, host) {
    const problems = [];
    page.on("pageerror", (error) => problems.push(`script error: ${error.message}`));
    page.on("console", (message) => {
        if (["error", "warning"].includes(message.type())) {
            problems.push(`console: ${message.text()}`);
        }
    });
    page.on("response", (response) => {
        if (response.status() >= 400) {
            problems.push(`${response.status()} for ${response.url()}`);
        }
    });
    page.on("request", (request) => {
        if (!request.url().startsWith("data:") && ![host, site.host].includes(new URL(request.url()).host)) {
            problems.push(`request to another host: ${request.url()}`);
        }
    });
    page.on("requestfailed", (request) => {
        // Leaving a page cuts its status call short.
        if (request.failure()?.errorText !== "net::ERR_ABORTED") {
            problems.push(`failed request: ${request.url()}`);
        }
    });
    return problems;
}
