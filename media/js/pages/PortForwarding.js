(function () {
    "use strict";

    const headings = {
        protocol: gettext("Protocol"),
        sourcePort: gettext("Source Port"),
        destinationIP: gettext("Dest IP Address"),
        destinationPort: gettext("Dest Port"),
    };

    window.ShowPortForwardingStatus = function ($box, result) {
        ShowIn(
            $box,
            StatusSection(gettext("Packet Filtering"), result.filtering),
            StatusSection(gettext("NAT Settings"), result.nat),
        );
    };

    /** What a rule forwards, such as "TCP 8443". */
    function ruleOf(row) {
        const cells = $(row).children("td");
        return cells.eq(0).text().trim() + " " + cells.eq(1).text().trim();
    }

    /** Names the fields of the rules, whose headings are in a table of their own, and the buttons, by what they act on. */
    window.LabelRules = function () {
        for (const [name, heading] of Object.entries(headings)) {
            $("#config_tab [name='" + name + "']").attr({ "aria-label": heading, placeholder: heading });
        }
        $("#config_tab [name='edit'], #config_tab [name='delete']").each(function () {
            const rule = ruleOf(this.closest("tr"));
            const label = this.name === "edit" ? gettext("Edit {1}", rule) : gettext("Delete {1}", rule);
            $(this).attr({ "aria-label": label, "data-what": rule });
        });
        labelCells();
    };

    /** On narrow screens, where cells stand below one another, each says which column it is of. */
    function labelCells() {
        const names = Object.values(headings);
        names.splice(2, 0, "");
        $("#config_tab .forwarding_form_row").each(function () {
            $(this).children("td").each((column, cell) => void $(cell).attr("data-label", names[column] || null));
        });
    }
})();
