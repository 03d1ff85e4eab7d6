(function () {
    "use strict";

    window.ShowOrvaneStatus = function ($box, result) {
        // Without an answer of the daemon it is the text "Unknown".
        $box.text(result.isConnected === true ? "Connected to " + result.serverAddress : "Not Connected");
    };
})();
