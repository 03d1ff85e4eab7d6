(function () {
    "use strict";

    const fields =
        "#wlan_ess_id, #wlan_country_code, #wlan_country_code_copy, #wlan_security, #wlan_identity, #wlan_pass_phrase, #wlan_mobile_qx";

    window.ShowWlanStatus = function ($box, result) {
        ShowReport($box, result.client0_enabled, [
            [gettext("Client Interface"), result.client0_status],
            [gettext("Client Network"), result.client0_ifconfig_status],
            [gettext("Routing"), result.Routing],
            [gettext("Syslog info (WiFi only)"), result.status_from_syslog],
        ]);
    };

    /** An attribute of the security's select names it, where pages may have such ones. */
    window.wlanSecurityChange = function () {
        const security = $("#wlan_security").val();
        $("#wlan_pass_phrase").prop("disabled", security === "none");
        $("#wlan_identity").prop("disabled", security !== "wpa_eap");
    };

    /** @param countryLocked tells that the country cannot be chosen. */
    window.SetUpWlan = function (countryLocked) {
        const $enabled = $("#wlan_enabled");

        function switchFields() {
            const on = $enabled.prop("checked");
            $(fields).prop("disabled", !on);
            if (on) {
                $("#wlan_country_code").prop("disabled", countryLocked);
                window.wlanSecurityChange();
            }
        }

        $(function () {
            $enabled.on("change", switchFields);
            $("#wlan_security:not([onchange])").on("change", window.wlanSecurityChange);
            switchFields();
        });
    };
})();
