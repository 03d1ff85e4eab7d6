(function () {
    "use strict";

    window.ShowNoticeStatus = function ($box, result) {
        $box.empty().append(StatusSection("At log-in", result.notice, true));
    };
})();
