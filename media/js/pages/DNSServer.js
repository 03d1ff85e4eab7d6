(function () {
    "use strict";

    window.ShowDnsStatus = function ($box, result) {
        ShowIn($box, StatusSection(gettext("DNS Settings"), result.currentConf, true));
    };
})();
