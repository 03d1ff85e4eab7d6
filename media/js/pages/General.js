(function () {
    "use strict";

    window.ShowGeneralStatus = function ($box, result) {
        ShowIn(
            $box,
            StatusSection(gettext("Date"), result.date),
            StatusSection(gettext("Uptime"), result.uptime),
            StatusSection(gettext("Board Temperature"), result.boardTemp),
            StatusSection(gettext("Top"), result.top, true),
            StatusSection(gettext("Process Status"), result.processStatus, true),
        );
    };

    /** Shows the overview when its tab is open: its script and its style sheet are not loaded before. */
    window.ShowOverview = function (url) {
        const box = document.getElementById("overview");

        function load() {
            if (!$(box).is(":visible")) {
                return;
            }
            $(document).off(".overview");
            const style = Object.assign(document.createElement("link"), { rel: "stylesheet", href: box.dataset.style });
            const script = Object.assign(document.createElement("script"), { src: box.dataset.script });
            script.onload = () => PollOverview(url);
            script.onerror = () => $(box).text(gettext("The overview cannot be loaded"));
            document.head.append(style, script);
        }

        $(document).on("pageready.overview tabsactivate.overview", load);
    };
})();
