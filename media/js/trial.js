// The notice of new settings on trial: counts down what is left.
(function () {
    "use strict";

    $(function () {
        const $left = $("#trial_left");
        if (!$left.length) {
            return;
        }
        const end = Date.now() + 1000 * $left.data("seconds");
        const timer = setInterval(show, 1000);
        show();

        function show() {
            const seconds = Math.max(0, Math.round((end - Date.now()) / 1000));
            const left = `${Math.floor(seconds / 60)}:${String(seconds % 60).padStart(2, "0")}`;
            $left.text(" " + gettext("({1} left)", left));
            if (seconds === 0) {
                clearInterval(timer);
                $("#trialBox").text(gettext("The time is over: new settings are being taken back."));
            }
        }
    });
})();
