// The bar that shows how far an upload or an upgrade is.
(function () {
    "use strict";

    /** Width of the whole bar, in pixels. */
    const progressWidth = 400;

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

    /** Shows the state of a piece of work and, in the states `measured`, how much of it is done.
     *  @param progress has `state`, `received` and `size`, in bytes; null shows nothing new. */
    function ShowProgress(progress, measured) {
        if (!progress) {
            return;
        }
        $("#tp").text(progress.state);
        if (measured.includes(progress.state) && progress.size > 0) {
            $("#progressbar").width((progressWidth * progress.received) / progress.size);
            $("#bytes").text(progress.received + " / " + progress.size);
        }
    }

    window.ParseToolStatus = ParseToolStatus;
    window.ShowProgress = ShowProgress;
})();
