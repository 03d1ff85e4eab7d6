(function () {
    "use strict";

    /** The template "ntpd_chrony" has the frame of the tables, and a button that stays from refresh to refresh. */
    function showChrony($box, result) {
        if (!result.running) {
            ShowIn($box, $("<h3>").text("State"), $("<p>").text("Stopped"));
            return;
        }
        if (!$box.children("form").length) {
            $box.html($("#ntpd_chrony").html());
        }
        ShowIn($box.children(".tracking"), StatusSection("Tracking", result.tracking, true));
        ShowIn($box.children(".sources"), StatusSection("Sources", result.rawOutput, true));
        ShowIn($box.children(".clients"), StatusSection("Clients", result.clients, true));
    }

    function showNtpd($box, result) {
        const synchronised = (flag) => (flag ? "Synchronised" : "Not synchronised");
        const rows = [["Running", result.running ? "Yes" : "No"]];
        if (result.running && result.hasGps) {
            rows.push(["GPS", synchronised(result.gpsSync)], ["PPS", synchronised(result.ppsSync)]);
        }
        if (result.running) {
            rows.push(["Synchronised To", result.syncTo]);
        }
        ShowIn($box, StatusTable("State", rows), StatusSection("Raw Output", result.rawOutput, true));
    }

    window.ShowTimeStatus = function ($box, result) {
        (result.isChronyd ? showChrony : showNtpd)($box, result);
    };
})();
