// The Firmware page: how far the upload is, then how far the upgrade.
(function () {
    "use strict";

    const pollInterval = 1000; // milliseconds
    const contentType = "application/json";
    const copying = gettext("Copying file: please wait...");

    function randomHexDigits(count) {
        return Array.from({ length: count }, () => Math.floor(Math.random() * 16).toString(16)).join("");
    }

    function pollUpload(id) {
        setTimeout(function () {
            $.ajax({ url: "/progress", headers: { "X-Progress-Id": id }, dataType: "text", timeout: 5000 })
                .done((answer) => showUpload(id, ParseToolStatus(answer)))
                .fail(() => pollUpload(id));
        }, pollInterval);
    }

    function showUpload(id, progress) {
        ShowProgress(progress, ["done", "uploading"]);
        if (progress && progress.state === "done") {
            $("#tp").text(copying);
            $("#bytes").empty();
        } else {
            pollUpload(id);
        }
    }

    /** Shows the progress of an image on its way to the device in place of the page.
     *  @param page has `statusUrl` and the `method` that prepares the device, the `message` to show meanwhile, the
     *      page's own `url`, and `hasProgress`: whether the web server tells how far an upload is. */
    window.SetUpUpload = function (page) {
        function send() {
            const id = randomHexDigits(32);
            CallStatus(page.statusUrl, page.method, 20, [], { contentType });
            ShowStaticFormResultMsg(page.message);
            this.action = page.url + "?X-Progress-ID=" + id;
            $(this).add("#tabcontainer").hide();
            $(".progress_block").show();
            if (page.hasProgress) {
                pollUpload(id);
            } else {
                $("#tp").text(copying);
            }
        }

        $(() => $("form:has([name='fwupload'])").on("submit", send));
    };

    /** Shows how far the upgrade is, and goes on to a page then.
     *  @param page has `statusUrl` and the `method` that tells how far it is, the `message` to show meanwhile, and
     *      where to go when it is `done` or has `failed`. */
    window.FollowUpgrade = function (page) {
        function arm() {
            setTimeout(poll, pollInterval);
        }

        function poll() {
            CallStatus(page.statusUrl, page.method, 88, [], { contentType, timeout: 10000 })
                .done((answer) => show(ParseToolStatus(answer && answer.result)))
                .fail(arm);
        }

        function show(progress) {
            ShowProgress(progress, ["done", "upgrading", "finishing", "ram", "flash"]);
            const state = progress && progress.state;
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
            arm();
        });
    };
})();
