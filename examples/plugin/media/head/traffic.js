// The page of the traffic plug-in: the counters of all interfaces as a table, and a chart of one of them.
(function () {
    "use strict";

    const $ = window.jQuery;
    if (!$) {
        return;
    }

    /** How many rates the chart shows: at one poll a second, a minute. */
    const chartLength = 60;
    const chartHeight = 100;

    /** Names of the two directions in the results and in the style classes. */
    const directions = ["received", "sent"];

    /** A number of bytes in a unit that leaves up to three digits before the point. */
    function formatBytes(bytes) {
        const units = ["B", "kB", "MB", "GB", "TB"];
        let unit = 0;
        while (bytes >= 999.5 && unit < units.length - 1) {
            bytes /= 1000;
            unit++;
        }
        return bytes.toFixed(unit && bytes < 99.5 ? 1 : 0) + "\u00a0" + units[unit];
    }

    function formatRate(bytes) {
        return bytes === undefined ? "" : formatBytes(bytes) + "/s";
    }

    /** Bytes a second between two results, by interface: { NAME: { received, sent } }. */
    function ratesBetween(earlier, later) {
        const seconds = (later.time - earlier.time) / 1000;
        const rates = {};
        for (const now of later.interfaces) {
            const before = earlier.interfaces.find((candidate) => candidate.name === now.name);
            if (before && seconds > 0) {
                rates[now.name] = {};
                for (const direction of directions) {
                    // A counter that was set back has carried nothing.
                    const bytes = Math.max(0, now[direction].bytes - before[direction].bytes);
                    rates[now.name][direction] = bytes / seconds;
                }
            }
        }
        return rates;
    }

    function cells(tag, texts) {
        return texts.map((text) => $("<" + tag + ">").text(text));
    }

    function counterTable(interfaces, rates) {
        const $head = $("<thead>").append(
            $("<tr>").append(
                $("<th rowspan='2'>").text("Interface"),
                $("<th colspan='4'>").text("Received"),
                $("<th colspan='4'>").text("Sent"),
            ),
            $("<tr>").append(directions.flatMap(() => cells("th", ["Total", "Rate", "Packets", "Errors"]))),
        );
        const $body = $("<tbody>");
        for (const one of interfaces) {
            const $row = $("<tr>").append($("<th scope='row'>").text(one.name)).appendTo($body);
            for (const direction of directions) {
                const { bytes, packets, errors } = one[direction];
                const rate = formatRate(rates[one.name]?.[direction]);
                $row.append(cells("td", [formatBytes(bytes), rate, packets.toLocaleString("en"), errors]));
            }
        }
        return $("<table>").append($head, $body);
    }

    /** Offers the interfaces to choose from. At first the busiest one is chosen, but not the loopback. */
    function offerInterfaces($select, interfaces) {
        const names = interfaces.map((one) => one.name);
        if ($select.children().get().map((option) => option.value).join() === names.join()) {
            return;
        }
        const traffic = (one) => (one.name === "lo" ? -1 : one.received.bytes + one.sent.bytes);
        const busiest = interfaces.reduce((best, one) => (traffic(one) > traffic(best) ? one : best), interfaces[0]);
        const chosen = names.includes($select.val()) ? $select.val() : busiest?.name;
        $select.empty().append(names.map((name) => $("<option>").val(name).text(name))).val(chosen);
    }

    /** Draws the last rates of an interface, the newest at the right edge. */
    function draw(history, name) {
        const rates = history.map((each) => each[name]).filter(Boolean);
        const most = Math.max(1, ...rates.flatMap((rate) => directions.map((direction) => rate[direction])));
        for (const direction of directions) {
            const points = rates.map((rate, index) => {
                const y = chartHeight * (0.99 - (0.94 * rate[direction]) / most);
                return chartLength - rates.length + 1 + index + "," + y.toFixed(2);
            });
            $("#traffic_chart path.traffic_" + direction).attr("d", points.length ? "M" + points.join("L") : "");
        }
        $("#traffic_scale").text(rates.length ? formatRate(most) : "");
    }

    /** Keeps the page fresh.
     *  @param url of the status method.
     *  @param interval in milliseconds. */
    window.ShowTraffic = function (url, interval) {
        const $select = $("#traffic_interface");
        const history = [];
        let last = null;

        PollStatus(url, "traffic_counters", 1, interval, "#traffic_counters", function ($box, result) {
            const rates = last ? ratesBetween(last, result) : {};
            if (last) {
                history.push(rates);
                history.splice(0, history.length - chartLength);
            }
            last = result;
            offerInterfaces($select, result.interfaces);
            ShowIn($box, counterTable(result.interfaces, rates));
            draw(history, $select.val());
        });
        $select.on("change", () => draw(history, $select.val()));
    };
})();
