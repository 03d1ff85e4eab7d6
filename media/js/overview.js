// The overview of the General page: what the device does now, and plots of what it did in the last 24 hours. Comes
// behind the library of the plots, when the overview is looked at first.
(function () {
    "use strict";

    const day = 24 * 60 * 60;
    const language = document.documentElement.lang;
    const box = "#overview";

    // In milliseconds. The device has new figures every five seconds as long as somebody asks.
    const pollInterval = 5000;

    /** By how many seconds two clocks differ that are shown beside each other. An answer takes its time. */
    const clocksDiffer = 5;

    const plotHeight = 150;
    /** The shortest span of time that a plot shows, in seconds. */
    const shortest = 30 * 60;

    // --- Figures ----------------------------------------------------------------------------------

    const inUnit = (unit, options) => {
        const format = new Intl.NumberFormat(language, { style: "unit", unit, maximumFractionDigits: 1, ...options });
        return (value) => format.format(value);
    };
    const days = inUnit("day", { unitDisplay: "long" });
    const hours = inUnit("hour");
    const minutes = inUnit("minute");
    const megabytes = inUnit("megabyte", { maximumFractionDigits: 0 });
    const number = new Intl.NumberFormat(language, { maximumFractionDigits: 2 });
    const percent = new Intl.NumberFormat(language, { style: "percent", maximumFractionDigits: 1 });
    const dBm = (value) => gettext("{1} dBm", number.format(value));
    const rates = ["byte", "kilobyte", "megabyte", "gigabyte"].map((unit) => inUnit(unit + "-per-second", { unitDisplay: "narrow" }));

    function rate(bytes) {
        const power = bytes < 1000 ? 0 : Math.min(Math.floor(Math.log10(bytes) / 3), rates.length - 1);
        return rates[power](bytes / 1000 ** power);
    }

    function duration(seconds) {
        const parts = [Math.floor(seconds / day), Math.floor(seconds / 3600) % 24, Math.floor(seconds / 60) % 60];
        const texts = [days, hours, minutes].map((text, index) => text(parts[index]));
        const first = parts.findIndex((part) => part > 0);
        return first < 0 ? texts[2] : texts.slice(first, first + 2).join(" ");
    }

    const clock = new Intl.DateTimeFormat(language, { dateStyle: "medium", timeStyle: "medium" });
    const minute = new Intl.DateTimeFormat(language, { hour: "2-digit", minute: "2-digit" });
    const atTime = (format, seconds) => format.format(new Date(seconds * 1000));

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
        const shown = gettext("{1} (this browser: {2})", atTime(clock, time), atTime(clock, here));
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
        return gettext("{1} for {2}", state, duration(seconds));
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
            [gettext("Uptime"), duration(uptime)],
            [gettext("System load"), known(now.load, () => gettext("{1} ({2})", number.format(now.load), processors))],
            [
                gettext("Memory"),
                known(now.memory_used, () =>
                    gettext("{1} of {2}", percent.format(now.memory_used / now.memory_total), megabytes(now.memory_total / 1024)),
                ),
            ],
            [gettext("Temperature"), known(now.temperature, () => inUnit("celsius")(now.temperature))],
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

    /** A scale that holds two figures in any case. */
    const holding = (lowest, highest) => (from, to) => [Math.min(from, lowest), Math.max(to, highest)];

    /** What is plotted: name, title, the columns with their names, how figures are written, and the scale. */
    function wantedPlots() {
        const celsius = inUnit("celsius");
        const wanted = [
            ["temperature", gettext("Temperature"), { temperature: "" }, celsius, (from, to) => [from - 2, to + 2]],
            ["load", gettext("System load"), { load: "" }, (value) => number.format(value), holding(0, 1)],
            ["memory", gettext("Memory in use"), { memory: "" }, (value) => percent.format(value), holding(0, 1)],
            ["signal", gettext("Signal"), { signal: "" }, dBm, holding(-113, -51)],
        ];
        const interfaces = Object.keys(samples.at(-1) ?? {}).filter((name) => name.startsWith("received "));
        for (const name of interfaces.map((received) => received.slice("received ".length))) {
            const columns = { [`received ${name}`]: gettext("Received"), [`sent ${name}`]: gettext("Sent") };
            wanted.push([name, gettext("Traffic of {1}", name), columns, rate, holding(0, 1000)]);
        }
        return wanted.filter(([, , columns]) => samples.some((sample) => Object.keys(columns).some((name) => (sample[name] ?? null) !== null)));
    }

    /** The last, the lowest and the highest of the figures, as a text. */
    function summary(figures, format) {
        const known = figures.filter((figure) => figure !== null);
        if (known.length === 0) {
            return gettext("Unknown");
        }
        const lowest = known.reduce((a, b) => Math.min(a, b));
        const highest = known.reduce((a, b) => Math.max(a, b));
        return gettext("now {1}, lowest {2}, highest {3}", ...[known.at(-1), lowest, highest].map(format));
    }

    const colour = (name) => () => getComputedStyle(document.querySelector(box)).getPropertyValue(name).trim();
    const lines = [
        { stroke: colour("--plot-1"), width: 1.5 },
        { stroke: colour("--plot-2"), width: 1.5, dash: [6, 3] },
    ];

    /** A point alone would be no line. */
    const isSparse = (plot) => plot.data[0].length < 60;

    function optionsOf(names, format, scale, width, onCursor) {
        const axis = { stroke: colour("--plot-text"), grid: { stroke: colour("--plot-line"), width: 1 }, ticks: { show: false } };
        return {
            width,
            height: plotHeight,
            legend: { show: false },
            cursor: { sync: { key: "overview" }, drag: { x: false, y: false }, y: false, points: { size: 7 } },
            scales: {
                x: { range: (plot, from, to) => [Math.min(from, to - shortest), to] },
                y: { range: (plot, from, to) => uPlot.rangeNum(...scale(from, to), 0.05, true) },
            },
            axes: [
                { ...axis, space: 80, size: 30, values: (plot, times) => times.map((time) => atTime(minute, time)) },
                { ...axis, size: 66, gap: 4, values: (plot, figures) => figures.map((figure) => (figure === null ? "" : format(figure))) },
            ],
            series: [{}, ...names.map((name, index) => ({ ...lines[index], spanGaps: false, points: { size: 4, show: isSparse } }))],
            hooks: { setCursor: [onCursor] },
        };
    }

    /** One plot with its title, and what it says in words: of all of it or, where somebody points, of that moment. */
    function makePlot($figures, index, answer, title, columns, format, scale) {
        const names = Object.keys(columns);
        const $texts = Object.values(columns).map(() => $("<span>"));
        const $plot = $("<div class='plot' role='img'>");
        const $figure = $("<figure>").append($("<figcaption>").append($("<b>").text(title), ...$texts), $plot);
        $figures[0].insertBefore($figure[0], $figures[0].children[index] ?? null);
        let data = dataOf(answer, names);

        function describe(moment) {
            return Object.values(columns).map(function (name, column) {
                const figures = data[column + 1];
                const figure = figures[moment] ?? null;
                const text = figure === null ? summary(figures, format) : gettext("{1} at {2}", format(figure), atTime(minute, data[0][moment]));
                return name ? gettext("{1}: {2}", name, text) : text;
            });
        }

        function tell(moment) {
            describe(moment).forEach((text, column) => $texts[column].text(text));
        }

        const options = optionsOf(names, format, scale, $plot.width(), ({ cursor }) => tell(cursor.idx));
        const plot = new uPlot(options, data, $plot[0]);
        new ResizeObserver(() => $plot.width() && plot.setSize({ width: $plot.width(), height: plotHeight })).observe($plot[0]);
        window.matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => plot.redraw());
        return function update(latest) {
            data = dataOf(latest, names);
            plot.setData(data);
            tell(plot.cursor.idx);
            $plot.attr("aria-label", [title, ...describe(null)].join("; "));
        };
    }

    function showPlots($figures, answer) {
        wantedPlots().forEach(function ([name, ...plot], index) {
            if (!plots.has(name)) {
                plots.set(name, makePlot($figures, index, answer, ...plot));
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
