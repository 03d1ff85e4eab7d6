(function () {
    "use strict";

    const headings = {
        protocol: "Protocol",
        sourcePort: "Source Port",
        destinationIP: "Dest IP Address",
        destinationPort: "Dest Port",
    };

    window.ShowPortForwardingStatus = function ($box, result) {
        $box.empty().append(
            StatusSection("Packet Filtering", result.filtering),
            StatusSection("NAT Settings", result.nat),
        );
    };

    /** Names the fields of the rules, whose headings are in a table of their own. */
    window.LabelRules = function () {
        for (const [name, heading] of Object.entries(headings)) {
            $("#config_tab [name='" + name + "']").attr({ "aria-label": heading, placeholder: heading });
        }
    };
})();
