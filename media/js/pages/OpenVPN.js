(function () {
    "use strict";

    window.ShowOpenVpnStatus = function ($box, result) {
        ShowIn(
            $box,
            StatusTable(gettext("Connection"), [
                [gettext("Connection Status"), ShownStatus(result.connectionStatus)],
                [result.isConnected ? gettext("Tunnel up time") : gettext("Tunnel down time"), ShownStatus(result.currentStateTimeString)],
            ]),
            StatusTable(gettext("Configuration"), [
                [gettext("Configuration File"), ShownStatus(result.configurationFile)],
                [gettext("CA Certificate"), ShownStatus(result.caCertificate)],
                [gettext("Client Certificate"), ShownStatus(result.clientCertificate)],
                [gettext("Client Key"), ShownStatus(result.clientKey)],
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
