(function () {
    "use strict";

    /** What has a value, in the language of the page where it is a text of our own. */
    const shown = (value) => gettext(String(value ?? ""));

    window.ShowOpenVpnStatus = function ($box, result) {
        ShowIn(
            $box,
            StatusTable(gettext("Connection"), [
                [gettext("Connection Status"), shown(result.connectionStatus)],
                [result.isConnected ? gettext("Tunnel up time") : gettext("Tunnel down time"), shown(result.currentStateTimeString)],
            ]),
            StatusTable(gettext("Configuration"), [
                [gettext("Configuration File"), shown(result.configurationFile)],
                [gettext("CA Certificate"), shown(result.caCertificate)],
                [gettext("Client Certificate"), shown(result.clientCertificate)],
                [gettext("Client Key"), shown(result.clientKey)],
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
