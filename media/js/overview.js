// The overview of the General page: what the device does now, and plots of what it did in the last 24 hours. Comes
// behind the plots, when the overview is looked at first.
(function () {
    "use strict";

    const day = 24 * 60 * 60;
    const language = document.documentElement.lang;
    const box = "#overview";

    // In milliseconds. The device has new figures every five seconds as long as somebody asks.
    const pollInterval = 5000;

    /** By how many seconds two clocks differ that are shown beside each other. An answer takes its time. */
    const clocksDiffer = 5;

    // --- Figures ----------------------------------------------------------------------------------

    const megabytes = InUnit("megabyte", { maximumFractionDigits: 0 });
    const { number, percent, celsius, dBm } = Figures;
    const rates = ["byte", "kilobyte", "megabyte", "gigabyte"].map((unit) => InUnit(unit + "-per-second", { unitDisplay: "narrow" }));

    function rate(bytes) {
        const power = bytes < 1000 ? 0 : Math.min(Math.floor(Math.log10(bytes) / 3), rates.length - 1);
        return rates[power](bytes / 1000 ** power);
    }

    const clock = new Intl.DateTimeFormat(language, { dateStyle: "medium", timeStyle: "medium" });
    const atTime = (seconds) => clock.format(new Date(seconds * 1000));

    // --- Samples ----------------------------------------------------------------------------------

    /** Of the last day, oldest first: `uptime` and a figure for each name of `columnsOf`, null where there is none. */
    let samples = [];
    let boot = "";

    const numbersOf = (text, factor) => text.split(",").map((digits) => (digits === "" ? null : digits * factor));

    /** The columns of an answer by their names; those of an interface are "received NAME" and "sent NAME". */
    function columnsOf({ uptime, load, memory, temperature, signal, traffic }) {
        const columns = {
            uptime: numbersOf(uptime, 1),
            load: numbersOf(load, 1 / 100),
            memory: numbersOf(memory, 1 / 10000),
            temperature: numbersOf(temperature, 1 / 10),
            signal: numbersOf(signal, 1),
        };
        for (const [name, { received, sent }] of Object.entries(traffic)) {
            columns[`received ${name}`] = numbersOf(received, 1);
            columns[`sent ${name}`] = numbersOf(sent, 1);
        }
        return columns;
    }

    /** Takes in what is new of an answer; whether there was anything. */
    function takeIn(answer) {
        const startedAnew = answer.boot !== boot && samples.length > 0;
        boot = answer.boot;
        if (startedAnew) {
            samples = []; // what it has to tell beyond this answer, it is asked next
            return true;
        }
        if (answer.samples.uptime === "") {
            return false;
        }
        const columns = Object.entries(columnsOf(answer.samples));
        const fresh = answer.samples.uptime.split(",").map((uptime, index) => Object.fromEntries(columns.map(([name, numbers]) => [name, numbers[index]])));
        const known = samples.at(-1)?.uptime ?? -1;
        samples.push(...fresh.filter(({ uptime }) => uptime > known));
        samples = samples.filter(({ uptime }) => uptime >= answer.uptime - day);
        return true;
    }

    /** For a plot: the times on the clock of now, and the figures of these names. Where samples are missing, a line ends. */
    function dataOf(answer, names) {
        const rows = [];
        let before = Infinity;
        for (const sample of samples) {
            if (sample.uptime - before > 3 * answer.interval) {
                rows.push({ uptime: (sample.uptime + before) / 2 });
            }
            rows.push(sample);
            before = sample.uptime;
        }
        const started = answer.time - answer.uptime;
        return [rows.map(({ uptime }) => started + uptime), ...names.map((name) => rows.map((row) => row[name] ?? null))];
    }

    // --- What the device does now -----------------------------------------------------------------

    function clocks(time) {
        const here = Date.now() / 1000;
        if (Math.abs(time - here) < clocksDiffer) {
            return [];
        }
        const shown = gettext("{1} (this browser: {2})", atTime(time), atTime(here));
        return [[gettext("Device time"), shown, "wide"]];
    }

    function vpnState({ enabled, connected, status, seconds }) {
        if (!enabled) {
            return gettext("Off");
        }
        if (connected === undefined) {
            return gettext("Unknown");
        }
        const state = connected ? gettext("Connected") : status || gettext("Not connected");
        return gettext("{1} for {2}", state, Duration(seconds));
    }

    function signalState({ signal }) {
        return signal === undefined ? gettext("Unknown") : [SignalBars(signal)[0], dBm(signal)];
    }

    /** Pairs of heading and content; a third part asks for more room. */
    function statesOf({ time, uptime, now }) {
        const known = (figure, text) => (figure === undefined ? gettext("Unknown") : text());
        const processors = ngettext("{1} processor", "{1} processors", now.processors);
        return [
            ...clocks(time),
            [gettext("Uptime"), Duration(uptime)],
            [gettext("System load"), known(now.load, () => gettext("{1} ({2})", number(now.load), processors))],
            [
                gettext("Memory"),
                known(now.memory_used, () =>
                    gettext("{1} of {2}", percent(now.memory_used / now.memory_total), megabytes(now.memory_total / 1024)),
                ),
            ],
            [gettext("Temperature"), known(now.temperature, () => celsius(now.temperature))],
            [gettext("Uplink"), now.uplink ? gettext("{1} ({2})", now.uplink, now.address || "–") : gettext("None")],
            ...(now.modem ? [[gettext("Signal"), signalState(now)]] : []),
            [gettext("VPN"), vpnState(now.vpn)],
        ];
    }

    function showStates($box, answer) {
        const states = statesOf(answer).map(function ([heading, content, room = ""]) {
            const text = document.createElement("bdi"); // it may be written in another direction than the page
            text.append(...[content].flat());
            return $("<div>").attr("class", room).append($("<dt>").text(heading), $("<dd>").append(text));
        });
        ShowIn($box.children("dl"), ...states);
    }

    // --- Plots ------------------------------------------------------------------------------------

    const plots = new Map();

    /** What is plotted: name, title, the columns with their names, how figures are written, and the scale. */
    function wantedPlots() {
        const wanted = HealthPlots.map(([name, title, ...plot]) => [name, title, { [name]: "" }, ...plot]);
        const interfaces = Object.keys(samples.at(-1) ?? {}).filter((name) => name.startsWith("received "));
        for (const name of interfaces.map((received) => received.slice("received ".length))) {
            const columns = { [`received ${name}`]: gettext("Received"), [`sent ${name}`]: gettext("Sent") };
            wanted.push([name, gettext("Traffic of {1}", name), columns, rate, HoldingScale(0, 1000)]);
        }
        return wanted.filter(([, , columns]) => samples.some((sample) => Object.keys(columns).some((name) => (sample[name] ?? null) !== null)));
    }

    function showPlots($figures, answer) {
        wantedPlots().forEach(function ([name, title, columns, format, scale], index) {
            const data = (latest) => dataOf(latest, Object.keys(columns));
            if (!plots.has(name)) {
                const update = MakePlot($figures[0], index, title, Object.values(columns), format, scale, data(answer));
                plots.set(name, (latest) => update(data(latest)));
            }
        });
        plots.forEach((update) => update(answer));
    }

    // ---------------------------------------------------------------------------------------------

    function show($box, answer) {
        const isNew = takeIn(answer);
        if ($box.children("dl").length === 0) {
            // First, or after an error text.
            $box.empty().append("<dl class='states'>", $("<h3>").text(gettext("The last 24 hours")), "<div class='plots'>");
            plots.clear();
        }
        showStates($box, answer);
        if (isNew || plots.size === 0) {
            showPlots($box.children(".plots"), answer);
        }
    }

    window.PollOverview = function (url) {
        const params = () => [samples.at(-1)?.uptime ?? 0];
        PollStatus(url, "metrics", 3, pollInterval, box, show, undefined, undefined, { params, first: 0 });
    };
})();
