(function () {
    "use strict";

    const rebootMinimum = 20; // seconds that a restart takes at least
    const probeTimeout = 5000; // milliseconds
    const probePause = 250; // milliseconds: a device whose server is down refuses at once

    /** Counts down until the device answers again, and goes to it.
     *  @param limit in seconds.
     *  @param message before the count. */
    window.WaitForReboot = function (limit, message) {
        let seconds = 0;
        let probing = false;
        let timer = null;
        let waiting = null;

        function setUp() {
            if (/[?&]reboot_done=1(&|$)/.test(location.search)) {
                ShowFormResultMsg(gettext("Device has finished rebooting "), "success");
                $("input[name='reboot']").closest("tr").hide();
            }
        }

        function check() {
            seconds++;
            ShowCountFormResultMsg(message + (limit - seconds));
            if (seconds > limit) {
                clearInterval(timer);
                giveUp();
            } else if (seconds > rebootMinimum && !probing) {
                probing = true;
                probe();
            }
        }

        function giveUp() {
            const address = $("#prm_lan_ipaddr").text();
            if ($("#lan_ipaddr").text() === location.hostname && address && address !== location.hostname) {
                ShowStaticFormResultMsg(gettext("Redirecting to {1}", address));
                location.replace("http://" + address + "/");
            } else {
                ShowStaticFormResultMsg(gettext("ERROR: Device is not responding"), "failure");
                waiting.isLong();
            }
        }

        function probe() {
            $.ajax({ url: "/", headers: { "Cache-Control": "no-cache" }, timeout: probeTimeout }).always(
                function (answer, outcome, request) {
                    if (outcome === "success" && request.status === 200) {
                        clearInterval(timer);
                        ShowStaticFormResultMsg(gettext("Device has finished rebooting "), "success");
                        waiting.isOver();
                        location.replace("/");
                    } else {
                        setTimeout(probe, probePause);
                    }
                },
            );
        }

        $(function () {
            if ($("form [name='_1']").length) {
                setUp();
            }
            ShowCountFormResultMsg(message);
            waiting = ShowWaiting();
            timer = setInterval(check, 1000);
            $("#banner, #content, #footer").fadeOut(500);
        });
    };
})();
