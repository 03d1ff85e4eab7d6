(function () {
    "use strict";

    const problems = {
        refused: (error) => gettext("Error retrieving status: {1}", error),
        failed: (request, status, error) => gettext("Error retrieving status: {1} [{2}]", error, status),
    };

    /** Figures that are always shown, and those that are shown where there is one. */
    const figures = [
        "modem_type",
        "modem_firmware_version",
        "modem_serial_number",
        "sim_ccid",
        "sim_status",
        "bit_error_rate",
        "connection_type",
        "network",
        "apn_in_use",
        "connection_duration",
        "module_temp_indication",
    ];
    const optionalFigures = ["mobile_number", "assembly_number", "ppp_ip_address"];

    /** Keeps the status fresh while its tab is open or a search for networks goes on.
     *  @param cancelCaption what the button of the search says while one goes on. */
    window.PollCellularStatus = function (url, interval, cancelCaption) {
        const $status = $("#cellular_status");
        const $refresh = $("#cfg_refresh_network");
        let takenBack = false;

        function showFigure(name, value) {
            const $figure = $status.find("#status_" + name);
            const text = ShownStatus(value);
            // What is there already may be selected.
            if ($figure.text() !== text) {
                $figure.text(text);
            }
        }

        function showPair(name, sent, received) {
            showFigure(name, GroupDigits(sent) + " / " + GroupDigits(received));
        }

        function showSignal(text) {
            showFigure("signal_strength", text);
            const $cell = $status.find("#status_signal_strength");
            const $bars = SignalBars(parseInt(text));
            if ($cell.children(".signal").attr("aria-label") !== $bars.attr("aria-label")) {
                $cell.children(".signal").remove();
                $cell.prepend($bars);
            }
        }

        function showFigureIfAny(name, text) {
            showFigure(name, text || "");
            $status.find("#status_" + name + "_row").toggle(Boolean(text));
        }

        function showModem(result) {
            figures.forEach((name) => showFigure(name, result[name]));
            showSignal(result.signal_strength);
            optionalFigures.forEach((name) => showFigureIfAny(name, result[name]));
            $status.find("#status_module_temp_degrees").html(result.module_temp_degrees); // an entity for the degree sign
            showPair("ppp_current_rxtx_packets", result.ppp_tx_packets_current, result.ppp_rx_packets_current);
            showPair("ppp_current_rxtx_bytes", result.ppp_tx_bytes_current, result.ppp_rx_bytes_current);
            showPair("ppp_total_rxtx_bytes", result.ppp_tx_bytes_total, result.ppp_rx_bytes_total);
            $status.find("#network_row").text(result.forced_automatic ? gettext("Network (back to 'Automatic')") : gettext("Network"));
            // No connection type of the modems in use begins so: for them the row stays hidden.
            $status.find("#carrier_apn_row").toggle(/^GSM/.test(result.connection_type));
        }

        function showSerial(result) {
            showPair("port_total_rxtx_packets", result.port_tx_packets_total, result.port_rx_packets_total);
            showFigureIfAny("serial_message", result.serial_message);
        }

        function show($box, result) {
            if (!$.contains($box[0], $status[0])) {
                $box.empty().append($status); // after an error text
            }
            const enabled = result.gprs_dialup_enabled;
            const modem = enabled && result.have_gprs_stats;
            const serial = enabled && result.have_serial_stats;
            const search = enabled && result.gprs_network_refresh;
            $status.find(".gprs_stats").toggle(modem);
            $status.find(".serial_stats").toggle(serial);
            $("#not_enabled").toggle(!enabled);
            $("#no_gprs_stats").toggle(enabled && !modem);
            $("#no_serial_stats").toggle(enabled && !serial);
            $("#gprs_network_refresh").toggle(search === "progress");
            $("#gprs_network_refresh_complete").toggle(search === "complete");
            if (modem) {
                showModem(result);
            }
            if (serial) {
                showSerial(result);
            }
            // Once: until the device has answered with a new page, this one goes on to poll.
            if (search === "complete" && !takenBack && $refresh.val() === cancelCaption) {
                takenBack = true;
                $refresh.trigger("click");
            }
        }

        const wanted = () => $("#status_tab").is(":visible") || $refresh.prop("disabled");
        PollStatus(url, "cellular_status", 2, interval, "#status_tab", show, problems, wanted);
    };

    window.SetUpCellular = function () {
        const $usesPin = $("#cfg_cell_use_sim_pin");

        function switchPin() {
            $("#cfg_cell_sim_pin").prop("disabled", !$usesPin.prop("checked"));
        }

        $("#cfg_cell_preferred_network option").text((index, text) => text.replace(/^network_"(.*)"$/, "$1"));
        $(function () {
            $usesPin.on("change", switchPin);
            switchPin();
            $("#cfg_cell_radiotech").on("change", function () {
                $("#tabcontainer a[href='#gprs_tab']").parent().show();
            });
        });
    };
})();
