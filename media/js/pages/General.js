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
})();
