(function () {
    "use strict";

    /** The template "ntpd_chrony" has the frame of the tables, and a button that stays from refresh to refresh. */
    function showChrony($box, result) {
        if (!result.running) {
            $box.empty().append($("<h3>").text("State"), $("<p>").text("Stopped"));
            return;
        }
        if (!$box.children("form").length) {
            $box.html($("#ntpd_chrony").html());
        }
        $box.children(".tracking").empty().append(StatusSection("Tracking", result.tracking, true));
        $box.children(".sources").empty().append(StatusSection("Sources", result.rawOutput, true));
        $box.children(".clients").empty().append(StatusSection("Clients", result.clients, true));
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
        $box.empty().append(StatusTable("State", rows), StatusSection("Raw Output", result.rawOutput, true));
    }

    window.ShowTimeStatus = function ($box, result) {
        (result.isChronyd ? showChrony : showNtpd)($box, result);
    };
})();
