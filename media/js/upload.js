// Sends a form by script, so that its page stays until all of it is sent.
(function () {
    "use strict";

    /** An upload of which nothing goes on for so long is lost, in milliseconds: the web server has given up by then. */
    const silenceLimit = 90000;
    /** From here on the operator is told of it. */
    const silenceNoted = 10000;

    const nonceOf = (page) => page.querySelector("script[nonce]")?.nonce;

    /** Shows an answer as the browser does that has sent the form itself. Its scripts run under the policy of this page,
     *  so they carry the nonce of this one. */
    function showAnswer(text) {
        const own = nonceOf(document);
        const others = nonceOf(new DOMParser().parseFromString(text, "text/html"));
        document.open();
        document.write(others ? text.replaceAll(`nonce="${others}"`, `nonce="${own}"`) : text);
        document.close();
    }

    /** Posts a form to where its action leads, and shows the answer in the place of the page.
     *  @param submitter the button that was pressed.
     *  @param tell has `progress`, which is given the bytes that were sent and all of them; `silence`, given the seconds
     *      in which nothing was sent, 0 when it goes on; `sent`, when all is sent and no answer there; `answered`,
     *      before the answer is shown; and `failed`, given the reason.
     *  @returns the request; to abort it fails without a reason. */
    window.PostForm = function (form, submitter, tell) {
        const request = new XMLHttpRequest();
        let movedAt = Date.now();
        let noted = false;
        let lost = false;
        const timer = setInterval(watch, 1000);

        function watch() {
            const silence = Date.now() - movedAt;
            if (silence > silenceLimit) {
                lost = true;
                request.abort();
            } else if (silence >= silenceNoted || noted) {
                noted = silence >= silenceNoted;
                tell.silence(noted ? Math.floor(silence / 1000) : 0);
            }
        }

        function fail(reason) {
            clearInterval(timer);
            tell.failed(reason);
        }

        request.upload.onprogress = function (event) {
            movedAt = Date.now();
            tell.progress(event.loaded, event.total);
        };
        request.upload.onload = function () {
            clearInterval(timer);
            tell.sent();
        };
        request.onload = function () {
            if (request.status >= 400) {
                fail(gettext("The device has not taken the file: {1} {2}.", request.status, request.statusText));
                return;
            }
            tell.answered();
            showAnswer(request.responseText);
        };
        request.onerror = () => fail(gettext("The connection to the device broke."));
        request.onabort = () => fail(lost ? gettext("The connection to the device broke.") : "");
        request.open("POST", form.action);
        request.send(new FormData(form, submitter));
        return request;
    };
})();
