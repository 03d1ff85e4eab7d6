(function () {
    "use strict";

    window.ShowOrvaneStatus = function ($box, result) {
        // Without an answer of the daemon it is the text "Unknown".
        $box.text(result.isConnected === true ? gettext("Connected to {1}", result.serverAddress) : gettext("Not Connected"));
    };
})();
