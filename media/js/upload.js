// Sends a form by script, so that its page stays until all of it is sent.
(function () {
    "use strict";

    const nonceOf = (page) => page.querySelector("script[nonce]")?.nonce;

    /** Shows an answer as the browser does that has sent the form itself. Its scripts run under the policy of this
     *  page, so they carry the nonce of this one. */
    function showAnswer(text) {
        const own = nonceOf(document);
        const others = nonceOf(new DOMParser().parseFromString(text, "text/html"));
        document.open();
        document.write(others ? text.replaceAll(`nonce="${others}"`, `nonce="${own}"`) : text);
        document.close();
    }

    /** Posts a form to where its action leads, and shows the answer in the place of the page.
     *  @param submitter the button that was pressed.
     *  @param tell has `progress`, which is given the bytes that were sent and all of them; `sent`, when all is sent
     *      and no answer there; `answered`, before the answer is shown; and `failed`, given the reason.
     *  @returns the request. Who aborts it hears nothing more. */
    window.PostForm = function (form, submitter, tell) {
        const request = new XMLHttpRequest();
        request.upload.onprogress = (event) => tell.progress(event.loaded, event.total);
        request.upload.onload = tell.sent;
        request.onload = function () {
            if (request.status >= 400) {
                tell.failed(gettext("The device has not taken the file: {1} {2}.", request.status, request.statusText));
                return;
            }
            tell.answered();
            showAnswer(request.responseText);
        };
        request.onerror = () => tell.failed(gettext("The connection to the device broke."));
        request.open("POST", form.action);
        request.send(new FormData(form, submitter));
        return request;
    };
})();
