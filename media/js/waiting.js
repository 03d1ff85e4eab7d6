// What is seen while the device restarts: a picture of it, how long it takes already, and that it is back.
(function () {
    "use strict";

    /** A page that waited leaves under this name, to the one behind it, how many seconds it took. */
    const backAfter = "back_after";

    /** The browser, the way to the device, and the device with its lamps. What moves is up to the style sheet. */
    const picture = `
        <svg viewBox="0 0 240 120" aria-hidden="true">
            <rect x="8" y="24" width="76" height="52" rx="5"/><path d="M8 36H84M34 92H58M46 76V92"/>
            <path class="way" d="M92 62H142"/>
            <g class="device">
                <path d="M164 42V16M216 42V16M162 76H218"/><rect x="150" y="42" width="80" height="46" rx="6"/>
            </g>
            <g class="lamps">
                <circle cx="168" cy="60" r="5"/><circle cx="190" cy="60" r="5"/><circle cx="212" cy="60" r="5"/>
            </g>
            <path class="tick" d="M174 106L186 116L208 96"/>
        </svg>`;

    const clock = (seconds) => Math.floor(seconds / 60) + ":" + String(seconds % 60).padStart(2, "0");

    /** Shows the picture above the page and counts the time.
     *  @returns what the page tells of it: `isLong`, that it takes longer than it should, and `isOver`. */
    window.ShowWaiting = function () {
        const begun = Date.now();
        const passed = () => Math.floor((Date.now() - begun) / 1000);
        const $title = $("<h1>").text(gettext("The device is restarting"));
        const $time = $("<p class='time' dir='ltr'>");
        const $text = $("<p>").text(gettext("That usually takes a minute or two. Then this page goes on by itself."));
        const $waiting = $("<main id='waiting'>").append(picture, $title, $time, $text).insertBefore("#banner");
        const timer = setInterval(show, 1000);
        Announce($title.text(), true);
        show();

        function show() {
            $time.text(clock(passed()));
            Announce(ngettext("Restarting for {1} second", "Restarting for {1} seconds", passed()));
        }

        return {
            isLong() {
                $waiting.addClass("long");
                $text.text(
                    gettext("It takes longer than usual. Look after its power and its connection. This page goes on asking."),
                );
                Announce($text.text(), true);
            },
            isOver() {
                clearInterval(timer);
                $waiting.addClass("over").removeClass("long");
                $title.text(gettext("The device is back"));
                $text.empty();
                Announce($title.text(), true);
                sessionStorage.setItem(backAfter, passed());
            },
        };
    };

    $(function () {
        const seconds = sessionStorage.getItem(backAfter);
        sessionStorage.removeItem(backAfter);
        if (seconds !== null && !$(".form_result_msg").length) {
            ShowFormResultMsg(gettext("The device is back, after {1} minutes.", clock(Number(seconds))), "success");
        }
    });
})();
