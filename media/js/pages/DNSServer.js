(function () {
    "use strict";

    window.ShowDnsStatus = function ($box, result) {
        ShowIn($box, StatusSection("DNS Settings", result.currentConf, true));
    };
})();
