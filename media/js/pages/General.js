(function () {
    "use strict";

    window.ShowGeneralStatus = function ($box, result) {
        ShowIn(
            $box,
            StatusSection("Date", result.date),
            StatusSection("Uptime", result.uptime),
            StatusSection("Board Temperature", result.boardTemp),
            StatusSection("Top", result.top, true),
            StatusSection("Process Status", result.processStatus, true),
        );
    };
})();
