(function () {
    "use strict";

    const rebootLimit = 100; // counts
    const rebootMinimum = 25; // counts, of a second each: a restart takes at least that long
    const homePause = 2000; // milliseconds

    /** Counts down until the device answers again, and goes home.
     *  @param url of this page.
     *  @param message before the count. */
    window.WaitForServiceReboot = function (url, message) {
        let counter = 0;

        function arm() {
            setTimeout(check, 1000);
        }

        function check() {
            counter++;
            ShowCountFormResultMsg(message + (rebootLimit - counter));
            Announce(message);
            if (counter < rebootMinimum) {
                arm();
                return;
            }
            $.ajax({ type: "HEAD", url: "//" + location.host + url + "?rand=" + Math.random(), timeout: 3000 })
                .done(function () {
                    ShowStaticFormResultMsg(gettext("Reboot is successfully finished "), "success");
                    setTimeout(() => (location.href = "/"), homePause);
                })
                .fail(function () {
                    counter += 2;
                    arm();
                });
        }

        $(arm);
    };
})();
