// How far an upload or an upgrade is: as a bar, in words, and now and then aloud.
(function () {
    "use strict";

    /** Width of the whole bar, in pixels. */
    const progressWidth = 400;

    /** What assistive software says of work that goes on: at most so often, in milliseconds. */
    const announceInterval = 15000;
    /** It listens to an element only that it has seen before. Milliseconds. */
    const announceDelay = 200;

    /** How fast it goes is what was measured in so many milliseconds, once they are this many. */
    const rateWindow = 10000;
    const rateMinimum = 3000;

    // --- Data -----------------------------------------------------------------------------------

    /** What a status line of a device program describes, such as { 'state' : 'flash', 'size' : 7 }. Names
     *  and texts are quoted either way. Null where the line is no such object. */
    function ParseToolStatus(line) {
        const json = String(line).replace(/"(?:[^"\\]|\\.)*"|'([^']*)'/g, (quoted, text) =>
            text === undefined ? quoted : JSON.stringify(text),
        );
        try {
            const status = JSON.parse(json);
            return $.isPlainObject(status) ? status : null;
        } catch {
            return null;
        }
    }

    let measured = [];

    /** How many seconds the rest takes, by what came of late; null while that cannot be told. */
    function secondsLeft(received, size) {
        const now = Date.now();
        const last = measured[measured.length - 1];
        if (last && (received < last.received || size !== last.size)) {
            measured = []; // something else has begun
        }
        measured.push({ now, received, size });
        measured = measured.filter((earlier) => now - earlier.now <= rateWindow);
        const time = now - measured[0].now;
        const done = received - measured[0].received;
        return time >= rateMinimum && done > 0 ? ((size - received) * time) / done / 1000 : null;
    }

    // --- Words ----------------------------------------------------------------------------------

    const oneDecimal = { minimumFractionDigits: 1, maximumFractionDigits: 1 };
    const megabytes = (bytes) => (bytes / 1e6).toLocaleString(document.documentElement.lang, oneDecimal);

    /** No more exact than it is known. */
    function timeLeft(seconds) {
        if (seconds === null || seconds <= 0) {
            return "";
        }
        if (seconds <= 10) {
            return gettext("a few seconds left");
        }
        return seconds <= 90
            ? ngettext("about {1} second left", "about {1} seconds left", 10 * Math.ceil(seconds / 10))
            : ngettext("about {1} minute left", "about {1} minutes left", Math.ceil(seconds / 60));
    }

    // --- Shown ----------------------------------------------------------------------------------

    let stage = "";
    let amount = "";

    /** Makes the bar one for everybody, with room for words around it. */
    function setUp() {
        $("#progress")
            .attr({ role: "progressbar", "aria-labelledby": "progress_stage", "aria-valuemin": 0, "aria-valuemax": 100 })
            .before($("<p id='progress_stage'>"))
            .after($("<p id='progress_amount'>"));
        $(".progress_block").append($("<p id='progress_note'>"));
    }

    /** What is being done now. Of how much of it is done nothing is known yet. */
    function ShowStage(text) {
        stage = text;
        amount = "";
        $("#progress").addClass("unmeasured").removeAttr("aria-valuenow aria-valuetext");
        $("#progress_stage").text(text);
        $("#progress_amount").empty();
        Announce(text);
    }

    /** How much of it is done, in bytes. */
    function ShowAmount(received, size) {
        const share = Math.min(1, received / size);
        const percent = Math.floor(100 * share);
        const parts = [
            gettext("{1} %", percent),
            gettext("{1} of {2} MB", megabytes(received), megabytes(size)),
            timeLeft(secondsLeft(received, size)),
        ].filter(Boolean);
        amount = parts.join(" · ");
        $("#progressbar").width(progressWidth * share);
        $("#progress").removeClass("unmeasured").attr({ "aria-valuenow": percent, "aria-valuetext": amount });
        // Each part has its own direction of writing.
        $("#progress_amount").html(parts.map((part) => $("<bdi>").text(part)[0].outerHTML).join(" · "));
        Announce([stage, amount].filter(Boolean).join(", "));
    }

    /** What the operator ought to know, such as that there is no cause for worry. */
    function ShowNote(text) {
        $("#progress_note").text(text);
    }

    /** Shows the state of a piece of work and, in the states `states`, how much of it is done.
     *  @param progress has `state`, `received` and `size`, in bytes; null shows nothing new. */
    function ShowProgress(progress, states) {
        if (!progress) {
            return;
        }
        $("#tp").text(progress.state);
        if (states.includes(progress.state) && progress.size > 0) {
            ShowAmount(progress.received, progress.size);
            $("#bytes").text(progress.received + " / " + progress.size);
        }
    }

    // --- Said -----------------------------------------------------------------------------------

    let announcedAt = -Infinity;

    /** Has assistive software say how it goes, the latest of it now and then; at once what matters `now`. */
    function Announce(text, now = false) {
        if (!now && Date.now() - announcedAt < announceInterval) {
            return;
        }
        announcedAt = Date.now();
        if (!$("#announcement").length) {
            $("body").append("<div id='announcement' role='status'>");
        }
        setTimeout(() => $("#announcement").text(text), announceDelay);
    }

    // ---------------------------------------------------------------------------------------------

    $(setUp);

    Object.assign(window, { ParseToolStatus, ShowProgress, ShowStage, ShowAmount, ShowNote, Announce });
})();
