(function () {
    "use strict";

    window.ShowNoticeStatus = function ($box, result) {
        ShowIn($box, StatusSection(gettext("At log-in"), result.notice, true));
    };
})();
