(function () {
    "use strict";

    window.ShowEthernetStatus = function ($box, result) {
        const bridge =
            "brctl" in result
                ? [StatusSection(gettext("Bridge Setup"), result.brctl), StatusSection(gettext("Bridge Interface"), result.br1)]
                : [];
        ShowIn(
            $box,
            ...bridge,
            StatusSection(gettext("Ethernet1 Interface"), result.eth1),
            StatusSection(gettext("Ethernet1 Settings"), result.ethtool),
        );
    };

    /** The address of the device is typed in static mode only. */
    window.FollowAddressMode = function () {
        const $mode = $("[name='addressMode']");
        const $address = $("[name='ipAddress'], [name='netmask'], [name='gateway']");

        function switchAddress() {
            const dhcp = $mode.val() === "dhcp";
            $address.prop("disabled", dhcp).parent().parent().toggle(!dhcp);
        }

        $(function () {
            $mode.on("change", switchAddress);
            switchAddress();
        });
    };
})();
