// Plots of figures over the time. Comes behind their library, when plots are looked at first.
(function () {
    "use strict";

    const plotHeight = 150;
    /** The shortest span of time that a plot shows, in seconds. */
    const shortest = 30 * 60;

    const minute = new Intl.DateTimeFormat(document.documentElement.lang, { hour: "2-digit", minute: "2-digit" });
    const atMinute = (seconds) => minute.format(new Date(seconds * 1000));

    /** A scale that holds two figures in any case. */
    const HoldingScale = (lowest, highest) => (from, to) => [Math.min(from, lowest), Math.max(to, highest)];

    /** Of the health of a device: name, title, how figures are written, and the scale. */
    const HealthPlots = [
        ["temperature", gettext("Temperature"), Figures.celsius, (from, to) => [from - 2, to + 2]],
        ["load", gettext("System load"), Figures.number, HoldingScale(0, 1)],
        ["memory", gettext("Memory in use"), Figures.percent, HoldingScale(0, 1)],
        ["signal", gettext("Signal"), Figures.dBm, HoldingScale(-113, -51)],
    ];

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

    /** A colour that the style sheet gives. */
    const colourIn = (box) => (name) => () => getComputedStyle(box).getPropertyValue(name).trim();

    /** A point alone would be no line. */
    const isSparse = (plot) => plot.data[0].length < 60;

    function optionsOf(box, names, format, scale, onCursor) {
        const colour = colourIn(box);
        const lines = [
            { stroke: colour("--plot-1"), width: 1.5 },
            { stroke: colour("--plot-2"), width: 1.5, dash: [6, 3] },
        ];
        const axis = { stroke: colour("--plot-text"), grid: { stroke: colour("--plot-line"), width: 1 }, ticks: { show: false } };
        return {
            width: box.clientWidth,
            height: plotHeight,
            legend: { show: false },
            cursor: { sync: { key: "overview" }, drag: { x: false, y: false }, y: false, points: { size: 7 } },
            scales: {
                x: { range: (plot, from, to) => [Math.min(from, to - shortest), to] },
                y: { range: (plot, from, to) => uPlot.rangeNum(...scale(from, to), 0.05, true) },
            },
            axes: [
                { ...axis, space: 80, size: 30, values: (plot, times) => times.map(atMinute) },
                { ...axis, size: 66, gap: 4, values: (plot, figures) => figures.map((figure) => (figure === null ? "" : format(figure))) },
            ],
            series: [{}, ...names.map((name, index) => ({ ...lines[index], spanGaps: false, points: { size: 4, show: isSparse } }))],
            hooks: { setCursor: [onCursor] },
        };
    }

    /** One plot with its title, and what it says in words: of all of it or, where somebody points, of that moment.
     *  @param figures the element that it is put into, before its child of that index.
     *  @param names of the lines; one alone needs none.
     *  @param format writes a figure.
     *  @param scale gives the range of figures that is shown for that of the data.
     *  @param data times in seconds, then the figures of each line, null where there is none.
     *  @returns a function that takes other data. */
    function MakePlot(figures, index, title, names, format, scale, data) {
        const $texts = names.map(() => $("<span>"));
        const $plot = $("<div class='plot' role='img'>");
        const $figure = $("<figure>").append($("<figcaption>").append($("<b>").text(title), ...$texts), $plot);
        figures.insertBefore($figure[0], figures.children[index] ?? null);
        let shown = data;

        function describe(moment) {
            return names.map(function (name, column) {
                const line = shown[column + 1];
                const figure = line[moment] ?? null;
                const text = figure === null ? summary(line, format) : gettext("{1} at {2}", format(figure), atMinute(shown[0][moment]));
                return name ? gettext("{1}: {2}", name, text) : text;
            });
        }

        function tell(moment) {
            describe(moment).forEach((text, column) => $texts[column].text(text));
        }

        const options = optionsOf($plot[0], names, format, scale, ({ cursor }) => tell(cursor.idx));
        const plot = new uPlot(options, shown, $plot[0]);
        new ResizeObserver(() => $plot.width() && plot.setSize({ width: $plot.width(), height: plotHeight })).observe($plot[0]);
        window.matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => plot.redraw());
        return function update(latest) {
            shown = latest;
            plot.setData(shown);
            tell(plot.cursor.idx);
            $plot.attr("aria-label", [title, ...describe(null)].join("; "));
        };
    }

    Object.assign(window, { HealthPlots, HoldingScale, MakePlot });
})();
