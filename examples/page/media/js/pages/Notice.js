(function () {
    "use strict";

    window.ShowNoticeStatus = function ($box, result) {
        ShowIn($box, StatusSection("At log-in", result.notice, true));
    };
})();
