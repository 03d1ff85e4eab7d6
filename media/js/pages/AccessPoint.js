(function () {
    "use strict";

    const fields =
        "#ap_ess_id, #ap_channel, #ap_channel_copy, #ap_country_code, #ap_country_code_copy, #ap_security, #ap_pass_phrase";

    window.ShowAccessPointStatus = function ($box, result) {
        ShowReport($box, result.ap0_enabled, [
            [gettext("Access Point interface"), result.ap0_status],
            [gettext("Connected clients"), result.connected_clients],
            [gettext("DHCP leases"), result.clients_dhcp_lease],
            [gettext("Syslog info (WiFi only)"), result.status_from_syslog],
        ]);
    };

    /** @param isLaird tells that the module cannot choose a channel itself.
     *  @param channelReadOnly, countryLocked tell that the channel and the country cannot be chosen. */
    window.SetUpAccessPoint = function (statusUrl, isLaird, channelReadOnly, countryLocked) {
        const $enabled = $("#ap_enabled");
        const $channel = $("#ap_channel");
        const $channelCopy = $("#ap_channel_copy");
        const $countryCopy = $("#ap_country_code_copy");
        const chosenChannel = $channelCopy.val();

        function switchFields() {
            const on = $enabled.prop("checked");
            $(fields).prop("disabled", !on);
            if (on) {
                $channel.prop("disabled", channelReadOnly);
                $channelCopy.prop("disabled", !channelReadOnly);
                $("#ap_country_code").prop("disabled", countryLocked);
            }
        }

        function addChannel(entry) {
            const parts = entry.split(":");
            if (parts.length < 2) {
                return;
            }
            const text = parts[1] ? "[" + parts[0] + "] " + parts[1] + " MHz" : gettext("Automatic");
            $channel.append($("<option>").val(entry).text(text));
        }

        function copyChannel() {
            $channelCopy.val($channel.val());
        }

        function showChannels(result) {
            $channel.empty();
            $countryCopy.val(result.countryCode);
            if (!isLaird) {
                addChannel("0:");
            }
            (result.channels || []).forEach(addChannel);
            $channel.val(chosenChannel);
            if ($channel.val() === null) {
                $channel.prop("selectedIndex", 0);
            }
            copyChannel();
        }

        function loadChannels(country, id) {
            CallStatus(statusUrl, "wifi_get_channels", id, [country], { timeout: 5000 }).done(function (answer) {
                if (!answer.error) {
                    showChannels(answer.result);
                }
            });
        }

        // An attribute of the country's select names it, where pages may have such ones.
        window.apCountryCodeChange = (select) => loadChannels($(select).val(), "147");

        $(function () {
            if (channelReadOnly) {
                $("#channel_name_append").text(" " + gettext("(readonly if WLAN enabled)"));
            }
            $enabled.on("change", switchFields);
            $("#ap_country_code:not([onchange])").on("change", (event) => window.apCountryCodeChange(event.target));
            switchFields();
            // Until the list is here, and where it does not come, the channel stays what it is.
            addChannel(chosenChannel);
            $channel.on("change", copyChannel);
            loadChannels($countryCopy.val(), "258");
        });
    };
})();
