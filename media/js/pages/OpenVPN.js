(function () {
    "use strict";

    window.ShowOpenVpnStatus = function ($box, result) {
        ShowIn(
            $box,
            StatusTable("Connection", [
                ["Connection Status", result.connectionStatus],
                [result.isConnected ? "Tunnel up time" : "Tunnel down time", result.currentStateTimeString],
            ]),
            StatusTable("Configuration", [
                ["Configuration File", result.configurationFile],
                ["CA Certificate", result.caCertificate],
                ["Client Certificate", result.clientCertificate],
                ["Client Key", result.clientKey],
            ]),
            StatusTable("Server Details", [
                ["Server", result.server],
                ["Organization", result.organization],
                ["Organizational Unit", result.organizationalUnit],
                ["Client", result.client],
            ]),
            StatusSection("Log", result.logOutput),
        );
    };
})();
