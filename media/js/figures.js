// How figures are shown.
(function () {
    "use strict";

    /** From which strength on, in dBm, there is one bar more. */
    const barsFrom = [-109, -93, -83, -73];

    /** A whole number with its digits in groups of three, which no language takes for a fraction. */
    function GroupDigits(number) {
        return String(number ?? "").replace(/\B(?=(\d{3})+$)/g, "\u202f");
    }

    /** The strength of a signal as bars.
     *  @param dBm NaN where it is not known. */
    function SignalBars(dBm) {
        const bars = barsFrom.filter((strength) => dBm >= strength).length;
        const label = gettext("Signal: {1} of {2} bars", bars, barsFrom.length);
        const $signal = $("<span class='signal' role='img'>").attr("aria-label", label);
        return $signal.append(barsFrom.map((strength, index) => $("<i>").attr("class", index < bars ? "on" : "off")));
    }

    // --- With their units -------------------------------------------------------------------------

    const language = document.documentElement.lang;

    /** A function that writes a figure with its unit, as Intl names units. */
    function InUnit(unit, options) {
        const format = new Intl.NumberFormat(language, { style: "unit", unit, maximumFractionDigits: 1, ...options });
        return (value) => format.format(value);
    }

    /** A function that is made when it is called first: most pages show no figures. */
    function late(make) {
        let made;
        return (value) => (made ??= make())(value);
    }

    const Figures = {
        number: late(() => new Intl.NumberFormat(language, { maximumFractionDigits: 2 }).format),
        percent: late(() => new Intl.NumberFormat(language, { style: "percent", maximumFractionDigits: 1 }).format),
        celsius: late(() => InUnit("celsius")),
        dBm: (value) => gettext("{1} dBm", Figures.number(value)),
    };

    const durations = [InUnit.bind(null, "day", { unitDisplay: "long" }), InUnit.bind(null, "hour"), InUnit.bind(null, "minute")].map(late);

    /** The two largest parts of a time of days, hours and minutes. */
    function Duration(seconds) {
        const parts = [Math.floor(seconds / 86400), Math.floor(seconds / 3600) % 24, Math.floor(seconds / 60) % 60];
        const texts = durations.map((text, index) => text(parts[index]));
        const first = parts.findIndex((part) => part > 0);
        return first < 0 ? texts[2] : texts.slice(first, first + 2).join(" ");
    }

    Object.assign(window, { GroupDigits, SignalBars, InUnit, Figures, Duration });
})();
