(function () {
    "use strict";

    window.ShowOrvaneStatus = function ($box, result) {
        $box.text(result.isConnected ? "Connected to " + result.serverAddress : "Not Connected");
    };
})();
