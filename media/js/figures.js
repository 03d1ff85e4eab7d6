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

    Object.assign(window, { GroupDigits, SignalBars });
})();
