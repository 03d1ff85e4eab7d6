// Served by itself: its page stands alone, without jQuery and the other scripts of the site.
(function () {
    "use strict";

    const messageTime = 5000; // milliseconds
    const restartMinimum = 10000; // milliseconds that a restart takes at least
    const probeTimeout = 3000; // milliseconds
    const probePause = 1000; // milliseconds

    const startPage = "/";

    const element = (id) => document.getElementById("id_" + id);

    function hide(...ids) {
        ids.map(element)
            .filter(Boolean)
            .forEach((found) => (found.style.display = "none"));
    }

    const hideChoice = () => hide("domain", "domain_note", "save");

    function presetDomain(select, chosen) {
        chosen.value = select.value = element("curr_domain").value;
        if (select.selectedIndex < 0) {
            select.selectedIndex = 0;
        }
        select.onchange = () => (chosen.value = select.value);
    }

    function waitForReboot(url, home) {
        const request = new XMLHttpRequest();
        const again = () => setTimeout(waitForReboot, probePause, url, home);
        request.open("HEAD", "//" + location.host + url + "?rand=" + Math.random());
        request.timeout = probeTimeout;
        request.onload = () => (location.href = home);
        request.onerror = request.ontimeout = again;
        request.send();
    }

    /** What the frame of the other pages gives them: landmarks, and a way to them. */
    function addFrame() {
        const main = document.createElement("main");
        main.append(...document.body.children);
        main.querySelector("h2").setAttribute("aria-level", "1");
        const way = document.createElement("nav");
        const link = document.createElement("a");
        link.href = startPage;
        link.textContent = gettext("Back to the device");
        way.append(link);
        document.body.append(way, main);
    }

    /** @param url of this page.
     *  @param home where to go after the restart. */
    window.SetUpRegulatoryWifi = function (url, home) {
        addFrame();
        window.onload = function () {
            if (element("domain")) {
                presetDomain(element("domain"), element("hidden_domain"));
            }
            if (element("rebooting_txt")) {
                hide("message");
                hideChoice();
                setTimeout(waitForReboot, restartMinimum, url, home);
            } else if (element("message")) {
                setTimeout(hide, messageTime, "message");
                if (document.getElementsByName("Reboot").length) {
                    hideChoice();
                }
            }
        };
    };
})();
