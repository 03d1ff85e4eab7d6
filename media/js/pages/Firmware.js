// The Firmware page: how far the upload is, then how far the upgrade.
(function () {
    "use strict";

    const pollInterval = 1000; // milliseconds
    const contentType = "application/json";
    const copying = gettext("Copying file: please wait...");

    function randomHexDigits(count) {
        return Array.from({ length: count }, () => Math.floor(Math.random() * 16).toString(16)).join("");
    }

    // --- Upload ---------------------------------------------------------------------------------

    /** An upload of which nothing has come on for so long is told of, and is lost: the web server has given up by then.
     *  Milliseconds. */
    const silenceNoted = 10000;
    const silenceLimit = 90000;

    /** The one under way: its `id`; how many bytes of its `size` have `come`, and when the last did (`cameAt`); whether
     *  the web server `tells` how many; whether the browser has `sent` all, and whether they have `arrived`. */
    let upload = null;

    function pollUpload(id) {
        setTimeout(function () {
            if (upload?.id === id) {
                $.ajax({ url: "/progress", headers: { "X-Progress-Id": id }, dataType: "text", timeout: 5000 })
                    .done((answer) => showUpload(id, ParseToolStatus(answer)))
                    .fail(() => pollUpload(id));
            }
        }, pollInterval);
    }

    function showUpload(id, progress) {
        if (upload?.id !== id) {
            return;
        }
        ShowProgress(progress, ["done", "uploading"]);
        if (progress && progress.size > 0) {
            upload.tells = true;
            noteCome(progress.received, progress.size);
        }
        if (progress && progress.state === "done") {
            $("#tp").text(copying);
            $("#bytes").empty();
            showArrived();
        } else {
            pollUpload(id);
        }
    }

    function noteCome(come, size) {
        if (come > upload.come) {
            Object.assign(upload, { come, size, cameAt: Date.now() });
        }
    }

    function showArrived() {
        upload.arrived = true;
        clearInterval(upload.watch);
        $("#upload_cancel").hide();
        ShowStage(gettext("Sent. The device is looking into the file"));
        ShowNote(gettext("With a large file that may take some minutes."));
    }

    /** Takes the upload back: the form is there again, with the file that was chosen. */
    function endUpload(form, text, cssClass) {
        clearInterval(upload.watch);
        upload = null;
        $("#upload_cancel").remove();
        ShowNote("");
        $(".progress_block").hide();
        $(form).add("#tabcontainer").show();
        $(form).find(":submit").trigger("focus");
        ShowStaticFormResultMsg(text, cssClass);
    }

    function failUpload(form, reason) {
        // All of it may have come since the web server was asked.
        const isUncertain = upload.sent && Date.now() - upload.cameAt < silenceNoted;
        const consequence = upload.arrived || isUncertain
            ? gettext("The whole file may have arrived, and the upgrade have begun: reload this page to see.")
            : gettext("Nothing was installed, and the file is still chosen: it can be sent again.");
        endUpload(form, reason + " " + consequence, "failure");
    }

    function watchUpload(form) {
        const silence = Date.now() - upload.cameAt;
        if (silence >= silenceLimit) {
            upload.request.abort();
            failUpload(form, gettext("The connection to the device broke."));
        } else if (silence >= silenceNoted) {
            const seconds = Math.floor(silence / 1000);
            ShowNote(
                gettext("Nothing has arrived for {1} seconds. It goes on by itself when the connection is back.", seconds),
            );
            if (upload.come) {
                ShowAmount(upload.come, upload.size); // without the time left, which was another one
            }
        } else {
            ShowNote("");
        }
    }

    function cancelUpload(form) {
        upload.request.abort();
        endUpload(form, gettext("The upload was cancelled."));
    }

    function sendForm(form, submitter, id) {
        upload = { id, come: 0, cameAt: Date.now(), tells: false, sent: false, arrived: false };
        $("#tp, #bytes").empty();
        ShowStage(gettext("Sending the file to the device"));
        upload.request = PostForm(form, submitter, {
            // What the browser calls sent may still be on its way, which the web server knows better.
            progress: function (sent, size) {
                if (!upload.tells) {
                    noteCome(sent, size);
                    ShowAmount(sent, size);
                }
            },
            sent: function () {
                upload.sent = true;
                if (!upload.tells) {
                    showArrived();
                }
            },
            answered: function () {
                clearInterval(upload.watch);
                upload = null;
                RememberFocus(submitter);
            },
            failed: (reason) => failUpload(form, reason),
        });
        upload.watch = setInterval(watchUpload, 1000, form);
        const $cancel = $("<button type='button' id='upload_cancel'>").text(gettext("Cancel"));
        $(".progress_block").append($cancel.on("click", () => cancelUpload(form)));
    }

    /** Shows the progress of an image on its way to the device in place of the page.
     *  @param page has `statusUrl` and the `method` that prepares the device, the `message` to show meanwhile, the
     *      page's own `url`, and `hasProgress`: whether the web server tells how far an upload is. */
    window.SetUpUpload = function (page) {
        function send(event) {
            const id = randomHexDigits(32);
            CallStatus(page.statusUrl, page.method, 20, [], { contentType });
            ShowStaticFormResultMsg(page.message);
            this.action = page.url + "?X-Progress-ID=" + id;
            $(this).add("#tabcontainer").hide();
            $(".progress_block").show();
            event.preventDefault();
            sendForm(this, event.originalEvent.submitter, id);
            if (page.hasProgress) {
                pollUpload(id);
            } else {
                $("#tp").text(copying);
            }
        }

        $(() => $("form:has([name='fwupload'])").on("submit", send));
    };

    // --- Upgrade --------------------------------------------------------------------------------

    /** The states that the firmware tool goes through, in this order. */
    const steps = {
        upgrading: () => gettext("preparing the upgrade"),
        ram: () => gettext("loading the image"),
        flash: () => gettext("writing flash"),
        finishing: () => gettext("finishing"),
    };

    /** A device that has not answered for so long may do so still, and from then on may be lost. Seconds. */
    const silenceUsual = 20;
    const silenceLong = 180;

    function stepCaption(state) {
        const states = Object.keys(steps);
        const index = states.indexOf(state);
        return index < 0 ? "" : gettext("Step {1} of {2}: {3}", index + 1, states.length, steps[state]());
    }

    function noteSilence(seconds) {
        if (seconds < silenceUsual) {
            return "";
        }
        if (seconds < silenceLong) {
            return gettext("No answer for {1} seconds. That is normal meanwhile. Leave the device switched on.", seconds);
        }
        return gettext(
            "No answer for {1} minutes. Leave the device switched on, and look after the connection to it.",
            Math.floor(seconds / 60),
        );
    }

    /** Shows how far the upgrade is, and goes on to a page then.
     *  @param page has `statusUrl` and the `method` that tells how far it is, the `message` to show meanwhile, and
     *      where to go when it is `done` or has `failed`. */
    window.FollowUpgrade = function (page) {
        let heardAt = Date.now();
        let state = null;

        function arm() {
            setTimeout(poll, pollInterval);
        }

        function poll() {
            CallStatus(page.statusUrl, page.method, 88, [], { contentType, timeout: 10000 })
                .done(function (answer) {
                    heardAt = Date.now();
                    show(ParseToolStatus(answer && answer.result));
                })
                .fail(arm);
        }

        function show(progress) {
            if (progress && progress.state !== state) {
                state = progress.state;
                ShowStage(stepCaption(state));
            }
            ShowProgress(progress, ["done", "upgrading", "finishing", "ram", "flash"]);
            if (state === "done") {
                ShowFormResultMsg(gettext("Firmware upgraded successfully"), "success");
                location.href = page.done;
            } else if (state === "failed") {
                ShowStaticFormResultMsg(gettext("Upgrade Failed"), "failure");
                location.href = page.failed;
            } else {
                arm();
            }
        }

        $(function () {
            ShowStaticFormResultMsg(page.message);
            $(".progress_block").show();
            ShowStage(gettext("Waiting for the upgrade to begin"));
            setInterval(() => ShowNote(noteSilence(Math.floor((Date.now() - heardAt) / 1000))), 1000);
            arm();
        });
    };
})();
