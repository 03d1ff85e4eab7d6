(function () {
    "use strict";

    window.ShowOpenVpnStatus = function ($box, result) {
        ShowIn(
            $box,
            StatusTable(gettext("Connection"), [
                [gettext("Connection Status"), result.connectionStatus],
                [result.isConnected ? gettext("Tunnel up time") : gettext("Tunnel down time"), result.currentStateTimeString],
            ]),
            StatusTable(gettext("Configuration"), [
                [gettext("Configuration File"), result.configurationFile],
                [gettext("CA Certificate"), result.caCertificate],
                [gettext("Client Certificate"), result.clientCertificate],
                [gettext("Client Key"), result.clientKey],
            ]),
            StatusTable(gettext("Server Details"), [
                [gettext("Server"), result.server],
                [gettext("Organization"), result.organization],
                [gettext("Organizational Unit"), result.organizationalUnit],
                [gettext("Client"), result.client],
            ]),
            StatusSection(gettext("Log"), result.logOutput),
        );
    };
})();
