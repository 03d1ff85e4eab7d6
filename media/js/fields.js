// The inputs of the forms: their names, what is wrong with them, and what browsers and the keyboards of phones
// ought to know of them.
(function () {
    "use strict";

    const lastPort = 65535;

    const plain = { spellcheck: "false", autocapitalize: "off", autocorrect: "off" };
    const port = { type: "number", min: 1, max: lastPort, inputmode: "numeric" };
    const newPassword = { type: "password", autocomplete: "new-password" };
    // A key of a network, not the log-in of this site.
    const foreignSecret = { autocomplete: "off" };

    /** Attributes of inputs, by selectors. */
    const kinds = [
        ["input[type='text']", { ...plain, autocomplete: "off" }],
        ["[name='port'], [name='sourcePort'], [name='destinationPort']", port],
        ["input[type='password']", foreignSecret],
        ["#cfg_cell_sim_pin", { type: "password", inputmode: "numeric", ...foreignSecret }],
        ["[name^='passwordWeb'], [name^='passwordRoot'], [name^='passwordConfirm']", newPassword],
        ["#cfg_rmvpn_server, #cfg_orv_server", { inputmode: "url" }],
        ["#cfg_rmvpn_otcode", { autocomplete: "one-time-code" }],
        ["[name='fwupload'], [name='filename'], [name='certificateFile']", { required: true }],
    ];

    /** Ties each row's heading to its input: a click on it reaches the input, a screen reader says it. Forms
     *  of one page may use the same ids; then the first input keeps it. */
    function labelRows() {
        $("#config_pane tr").each(function (row) {
            const $heading = $(this).children("th");
            const input = $(this).children("td").find(":input").not(":submit, :button, [type='hidden']")[0];
            if (input && $heading.length === 1 && $heading.text().trim()) {
                if (document.getElementById(input.id) !== input) {
                    input.id = "row_input_" + row;
                }
                $heading.wrapInner($("<label>").attr("for", input.id));
            }
        });
    }

    /** Marks refused inputs for assistive software, with the reason. */
    function markRefused() {
        $("#config_pane :input.cppcms_error_msg").attr("aria-invalid", "true");
        $("#config_pane span.cppcms_error_msg").each(function (number) {
            this.id ||= "reason_" + number;
            $(this).siblings(":input").attr("aria-describedby", this.id);
        });
    }

    function addShowButton(index, input) {
        const $button = $("<button type='button' class='show_password'>").text(gettext("Show")).attr("aria-pressed", "false");
        const what = $(input).closest("tr").children("th").text().trim() || gettext("password");
        $button.attr("aria-label", gettext("Show {1}", what));
        $button.on("click", function () {
            const shown = input.type === "password";
            input.type = shown ? "text" : "password";
            $button.attr("aria-pressed", String(shown));
        });
        $(input).after($button);
    }

    $(function () {
        for (const [selector, attributes] of kinds) {
            $("#config_pane").find(selector).not("[type='hidden'], [readonly]").attr(attributes);
        }
        labelRows();
        markRefused();
        $("#config_pane input[type='password']").each(addShowButton);
    });
    $(document).on("pageready", () => $("#config_pane :input.cppcms_error_msg:visible").first().trigger("focus"));
})();
