// The Firmware page: how far the upload is, then how far the upgrade.
(function () {
    "use strict";

    const pollInterval = 1000; // milliseconds
    const contentType = "application/json";
    const copying = "Copying file: please wait...";

    function randomHexDigits(count) {
        return Array.from({ length: count }, () => Math.floor(Math.random() * 16).toString(16)).join("");
    }

    // --- Upload ---------------------------------------------------------------------------------

    /** The one under way: its `id`, its `request`, and whether the web server tells how far it is. Null: none. */
    let upload = null;

    function pollUpload(id) {
        setTimeout(function () {
            if (upload?.id !== id) {
                return;
            }
            $.ajax({ url: "/progress", headers: { "X-Progress-Id": id }, dataType: "text", timeout: 5000 })
                .done((answer) => showUpload(id, ParseToolStatus(answer)))
                .fail(() => pollUpload(id));
        }, pollInterval);
    }

    function showUpload(id, progress) {
        if (upload?.id !== id) {
            return;
        }
        ShowProgress(progress, ["done", "uploading"]);
        upload.isTold ||= Boolean(progress?.size);
        if (progress && progress.state === "done") {
            $("#tp").text(copying);
            $("#bytes").empty();
            showSent();
        } else {
            pollUpload(id);
        }
    }

    function showSent() {
        upload.isSent = true;
        $("#upload_cancel").hide();
        ShowStage(gettext("Sent. The device is looking into the file"));
        ShowNote(gettext("With a large file that may take some minutes."));
    }

    function showSilence(seconds) {
        ShowNote(seconds ? gettext("Nothing could be sent for {1} seconds. It goes on by itself when the connection is back.", seconds) : "");
    }

    /** The form is there again, with the file that was chosen. */
    function takeBack(form, reason) {
        const { isSent } = upload;
        upload = null;
        $("#upload_cancel").remove();
        ShowNote("");
        $(".progress_block").hide();
        $(form).add("#tabcontainer").show();
        $(form).find(":submit").trigger("focus");
        if (isSent) {
            reason += " " + gettext("All of the file was sent, so the upgrade may have begun: reload this page to see.");
        } else if (reason) {
            reason += " " + gettext("Nothing was installed, and the file is still chosen: it can be sent again.");
        }
        ShowStaticFormResultMsg(reason || gettext("The upload was cancelled."), reason && "failure");
    }

    function sendForm(form, submitter, id) {
        const $cancel = $("<button type='button' id='upload_cancel'>").text(gettext("Cancel"));
        upload = { id };
        ShowStage(gettext("Sending the file to the device"));
        upload.request = PostForm(form, submitter, {
            // Where the web server tells how much has come, that counts: some is always on its way.
            progress: (sent, size) => upload.isTold || ShowAmount(sent, size),
            silence: showSilence,
            sent: function () {
                upload.isSent = true;
                if (!upload.isTold) {
                    showSent();
                }
            },
            answered: () => (upload = null),
            failed: (reason) => takeBack(form, reason),
        });
        $(".progress_block").append($cancel.on("click", () => upload.request.abort()));
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
    const silenceNoted = 20;
    const silenceLong = 180;

    function stepCaption(state) {
        const states = Object.keys(steps);
        const index = states.indexOf(state);
        return index < 0 ? "" : gettext("Step {1} of {2}: {3}", index + 1, states.length, steps[state]());
    }

    function noteSilence(seconds) {
        if (seconds < silenceNoted) {
            return "";
        }
        return seconds < silenceLong
            ? gettext("No answer for {1} seconds. That is normal while the software is changed. Leave the device switched on.", seconds)
            : gettext("No answer for {1} minutes. Leave the device switched on, and check the connection to it. This page goes on asking.", Math.floor(seconds / 60));
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
                ShowFormResultMsg("Firmware upgraded successfully", "success");
                location.href = page.done;
            } else if (state === "failed") {
                ShowStaticFormResultMsg("Upgrade Failed", "failure");
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
