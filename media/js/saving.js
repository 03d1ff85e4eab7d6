// What a form does from its first change to its answer: it is sent once, it is not lost by mistake, and its answer has
// the focus where the operator has left it.
(function () {
    "use strict";

    /** After so many milliseconds a form that was sent can be sent again: the browser may have given up on it. */
    const busyTime = 30000;

    /** Where the focus was is kept under this name, from a form to the page that answers. */
    const leftAt = "left_at";

    /** Their answer is a file, and the page stays. */
    const downloads = "#advanced_syslog form, #advanced_deployer_log form, [value='Backup Configuration']";

    const posts = "#config_pane form[method='post']";
    const sent = new WeakSet();
    const changed = new WeakSet();
    let leavingBy = null; // the form whose answer is about to take the place of the page
    let uploading = false;

    const isDownload = (form, button) => $(form).add(button).is(downloads);

    // --- Sent once ------------------------------------------------------------------------------

    function release(form) {
        sent.delete(form);
        form.removeAttribute("aria-busy");
    }

    function makeBusy(form) {
        sent.add(form);
        form.setAttribute("aria-busy", "true");
        setTimeout(release, busyTime, form);
    }

    function isUpload(form) {
        return [...form.querySelectorAll("input[type='file']")].some((input) => input.files.length);
    }

    function onSubmit(event) {
        const form = event.target;
        const button = event.originalEvent?.submitter;
        if (event.isDefaultPrevented() || form.method === "get" || isDownload(form, button)) {
            return;
        }
        if (sent.has(form)) {
            event.preventDefault();
            return;
        }
        // The answer opens a tab of its own choice: not that of this address.
        if (!form.getAttribute("action")) {
            form.action = location.pathname + location.search;
        }
        makeBusy(form);
        rememberFocus(button);
        // Sending it asks nothing, leaving then does.
        changed.delete(form);
        leavingBy = form;
    }

    // --- Not lost by mistake --------------------------------------------------------------------

    function onLeave(event) {
        if (uploading || $(posts).toArray().some((form) => changed.has(form))) {
            event.preventDefault();
        }
        uploading ||= leavingBy !== null && isUpload(leavingBy);
        leavingBy = null;
    }

    // --- The focus comes back -------------------------------------------------------------------

    /** The buttons that were like this one: a rule may be gone, or open now. */
    const alike = (name) => $("#config_pane").find(":submit").filter((index, button) => button.name === name);

    /** For the page that answers what this button sends. */
    function rememberFocus(button) {
        if (button) {
            const place = { path: location.pathname, id: button.id, name: button.name };
            place.row = button.closest("tr[id]")?.id;
            place.index = alike(button.name).index(button);
            sessionStorage.setItem(leftAt, JSON.stringify(place));
        }
    }

    function returnFocus() {
        const place = JSON.parse(sessionStorage.getItem(leftAt));
        sessionStorage.removeItem(leftAt);
        if (!place || place.path !== location.pathname || document.activeElement !== document.body) {
            return;
        }
        const $row = place.row ? $(document.getElementById(place.row)) : $();
        const $same = alike(place.name);
        const candidates = [
            $(place.id ? document.getElementById(place.id) : []),
            $row.find(":submit").filter((index, button) => button.name === place.name),
            $row.find(":input:visible"),
            $same.eq(Math.min(place.index, $same.length - 1)),
        ];
        candidates.find(($found) => $found.is(":visible"))?.first().trigger("focus");
    }

    // ---------------------------------------------------------------------------------------------

    $(document)
        .on("submit", onSubmit)
        .on("input change", posts, function (event) {
            if (event.originalEvent?.isTrusted && event.target.name) {
                changed.add(this);
            }
        })
        .on("pageready", function () {
            // What was posted to get this page is forgotten: neither a reload nor the way back sends it again.
            window.history.replaceState(window.history.state, "");
            returnFocus();
        });
    $(window)
        .on("beforeunload", onLeave)
        .on("pageshow", () => $(posts).each((index, form) => release(form)));

    window.RememberFocus = rememberFocus;
})();
