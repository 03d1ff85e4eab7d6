(function () {
    "use strict";

    window.ShowDnsStatus = function ($box, result) {
        $box.empty().append(StatusSection("DNS Settings", result.currentConf, true));
    };
})();
