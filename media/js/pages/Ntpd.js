(function () {
    "use strict";

    /** The template "ntpd_chrony" has the frame of the tables, and a button that stays from refresh to refresh. */
    function showChrony($box, result) {
        if (!result.running) {
            ShowIn($box, $("<h3>").text(gettext("State")), $("<p>").text(gettext("Stopped")));
            return;
        }
        if (!$box.children("form").length) {
            $box.html($("#ntpd_chrony").html());
        }
        ShowIn($box.children(".tracking"), StatusSection(gettext("Tracking"), result.tracking, true));
        ShowIn($box.children(".sources"), StatusSection(gettext("Sources"), result.rawOutput, true));
        ShowIn($box.children(".clients"), StatusSection(gettext("Clients"), result.clients, true));
    }

    function showNtpd($box, result) {
        const synchronised = (flag) => (flag ? gettext("Synchronised") : gettext("Not synchronised"));
        const rows = [[gettext("Running"), result.running ? gettext("Yes") : gettext("No")]];
        if (result.running && result.hasGps) {
            rows.push(["GPS", synchronised(result.gpsSync)], ["PPS", synchronised(result.ppsSync)]);
        }
        if (result.running) {
            rows.push([gettext("Synchronised To"), result.syncTo]);
        }
        ShowIn($box, StatusTable(gettext("State"), rows), StatusSection(gettext("Raw Output"), result.rawOutput, true));
    }

    window.ShowTimeStatus = function ($box, result) {
        (result.isChronyd ? showChrony : showNtpd)($box, result);
    };
})();
