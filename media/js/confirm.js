// Asks before what cannot be taken back. Needs translate.js only: the page of the regulatory domain has few other
// scripts.
(function () {
    "use strict";

    const chosen = (form, name) => form.elements[name].selectedOptions[0].textContent.trim();
    const megabytes = (file) => gettext("{1} MB", (file.size / 1e6).toFixed(1));

    /** What a button is, what its question says, and the caption of the button that goes on. The value of a button is
     *  the same in every language. */
    const questions = [
        {
            button: "#advanced_administration [value='Erase']",
            title: gettext("Erase the configuration?"),
            text: (form) =>
                gettext(
                    "This erases the persistent configuration: {1}. A backup (Configuration tab) is the only way back, " +
                        "and the device may no longer be reached at this address.",
                    chosen(form, "eraseType"),
                ),
            go: (form) => gettext("Erase {1}", chosen(form, "eraseType")),
        },
        {
            button: "#advanced_administration [value='ErasePartition']",
            title: gettext("Erase a partition?"),
            text: (form) => gettext("Everything on the {1} is lost. There is no way back.", chosen(form, "eraseWhich")),
            go: (form) => gettext("Erase {1}", chosen(form, "eraseWhich")),
        },
        {
            button: "#cfg_frw_save",
            title: gettext("Load this firmware?"),
            text: function (form) {
                const [file] = form.elements.fwupload.files;
                return gettext(
                    "{1} ({2}) is sent to the device and installed. That takes some minutes, during which no page can " +
                        "be used. Do not switch the device off.",
                    file.name,
                    megabytes(file),
                );
            },
            go: () => gettext("Load firmware"),
        },
        {
            button: "#cfg_rbt_reboot",
            title: gettext("Reboot the device?"),
            text: () => gettext("All its connections are interrupted, and it is away for a minute or two."),
            go: () => gettext("Reboot now"),
        },
        {
            button: "#btn_asn[value='Reboot to take effect'], [name='Reboot']",
            title: gettext("Reboot the device?"),
            text: () => gettext("All its connections are interrupted, and it is away for a minute or two."),
            go: () => gettext("Reboot now"),
        },
        {
            button: "#id_save",
            title: gettext("Change the regulatory domain?"),
            text: (form) =>
                gettext("The new domain is {1}. A module takes such a change ten times in its life.", chosen(form, "id_domain")),
            go: () => gettext("Change domain"),
        },
        {
            button: "#status_ntp_manual_sync",
            title: gettext("Jump the system time?"),
            text: () =>
                gettext(
                    "The clock is set at once, forwards or backwards. Whatever goes by it (logs, certificates, " +
                        "measurements) sees a leap.",
                ),
            go: () => gettext("Jump system time"),
        },
        {
            button: ".forwarding_form [name='delete']",
            title: gettext("Delete this rule?"),
            text: (form, button) => gettext("{1} is no longer forwarded, at once.", button.dataset.what ?? gettext("The rule")),
            go: (form, button) => gettext("Delete {1}", button.dataset.what ?? gettext("rule")),
        },
    ];

    const confirmed = new WeakSet();

    function element(name, text, properties) {
        return Object.assign(document.createElement(name), { textContent: text, ...properties });
    }

    /** Shows the question, and calls `proceed` when it is answered with yes. */
    function AskFirst(title, text, go, proceed) {
        const dialog = element("dialog", "", { className: "question" });
        const answer = (yes) => () => {
            dialog.close();
            dialog.remove();
            if (yes) {
                proceed();
            }
        };
        const cancel = element("button", gettext("Cancel"), { type: "button", className: "cancel", onclick: answer(false) });
        const yes = element("button", go, { type: "button", className: "danger", onclick: answer(true) });
        const heading = element("h2", title, { id: "question_title" });
        const explanation = element("p", text, { id: "question_text" });
        dialog.setAttribute("role", "alertdialog");
        dialog.setAttribute("aria-labelledby", heading.id);
        dialog.setAttribute("aria-describedby", explanation.id);
        dialog.append(heading, explanation, cancel, yes);
        dialog.oncancel = answer(false);
        document.body.append(dialog);
        dialog.showModal();
        cancel.focus();
    }

    // Before all other listeners: what is not meant must not look as if it were under way.
    document.addEventListener(
        "submit",
        function (event) {
            const { target: form, submitter: button } = event;
            const question = button && questions.find((known) => button.matches(known.button));
            if (!question || confirmed.delete(form)) {
                return;
            }
            event.preventDefault();
            event.stopImmediatePropagation();
            AskFirst(question.title, question.text(form, button), question.go(form, button), function () {
                confirmed.add(form);
                form.requestSubmit(button);
            });
        },
        true,
    );

    document.addEventListener("DOMContentLoaded", function () {
        for (const { button } of questions) {
            document.querySelectorAll(button).forEach((found) => found.classList.add("danger"));
        }
    });

    window.AskFirst = AskFirst;
})();
