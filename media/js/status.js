// Live status: keeps a box fresh while it is in sight, and what status boxes are made of.
(function () {
    "use strict";

    /** How long a poll waits for its answer, in milliseconds: as a slow link and a hanging command of the device may
     *  take together. */
    const answerTime = 20000;

    /** What a status box says when a call was answered with an error, and when it got no answer. */
    const statusProblems = {
        refused: (error) => gettext("Error retrieving status: {1}", error),
        failed: (request, status, error) => gettext("Error retrieving status: {1}[{2}]", error, status),
    };
    const briefStatusProblems = {
        refused: (error) => error,
        failed: (request) => gettext("Invalid Status {1}", request.status),
    };

    /** Calls a status method.
     *  @param options more settings of the request.
     *  @returns the request of jQuery, which resolves to the whole answer, `error` and `result`. */
    function CallStatus(url, method, id, params = [], options = {}) {
        return $.ajax({
            type: "POST",
            url: url,
            contentType: "application/json; charset=UTF-8",
            dataType: "json",
            data: JSON.stringify({ method: method, params: params, id: id }),
            ...options,
        });
    }

    const forgetSilence = ($box) => $box.removeClass("outdated").children(".no_answer").remove();

    /** Above what the box says: since when that has not changed, and why, where that is known. */
    function tellSilence($box, since, problem) {
        const text = gettext("No answer since {1}, trying again", since.toTimeString().slice(0, 8));
        forgetSilence($box);
        if (problem) {
            $box.prepend($("<p class='no_answer'>").text(problem));
        }
        $box.addClass("outdated").prepend($("<p class='no_answer' role='status'>").text(text));
    }

    /** Keeps a box fresh: calls a status method once per interval while the box is in sight, and at once when the
     *  page is looked at again. The next interval begins when the answer is there or overdue, so that calls never
     *  pile up.
     *  @param interval in milliseconds.
     *  @param show is given the box (jQuery) and each result, and fills the box.
     *  @param problems the texts for failures, such as statusProblems, which is the default.
     *  @param wanted tells whether to call; by default, whether the box is in sight.
     *  @param params gives the parameters of the next call.
     *  @param first when the first call is made, in milliseconds. */
    function PollStatus(
        url,
        method,
        id,
        interval,
        boxSelector,
        show,
        problems = statusProblems,
        wanted = () => $(boxSelector).is(":visible"),
        { params = () => [], first = interval } = {},
    ) {
        let unansweredSince = null;
        let timer = null;

        function arm(time = interval) {
            timer = setTimeout(poll, time);
        }

        function pollAtOnce() {
            if (timer !== null) {
                clearTimeout(timer);
                poll();
            }
        }

        function showAnswer($box, answer) {
            unansweredSince = null;
            forgetSilence($box);
            try {
                if (answer.error) {
                    $box.text(problems.refused(answer.error));
                } else {
                    show($box, answer.result);
                }
            } catch (error) {
                $box.text(problems.refused(error));
                throw error;
            }
        }

        function showFailure($box, request, status, error) {
            tellSilence($box, unansweredSince, status !== "timeout" && problems.failed(request, status, error));
        }

        function poll() {
            timer = null;
            if (document.hidden || !wanted()) {
                arm();
                return;
            }
            const $box = $(boxSelector);
            unansweredSince ??= new Date();
            // Armed first: whatever showing does, the polls go on.
            CallStatus(url, method, id, params(), { timeout: answerTime })
                .always(() => arm())
                .done((answer) => showAnswer($box, answer))
                .fail((request, status, error) => showFailure($box, request, status, error));
        }

        arm(first);
        document.addEventListener("visibilitychange", pollAtOnce);
    }

    /** The same for pages with short error texts, which also tell when the result is empty. */
    function PollBriefStatus(url, method, interval, boxSelector, show) {
        function showUnlessEmpty($box, result) {
            if ($.isEmptyObject(result)) {
                ShowIn($box, $("<i>").text(gettext("empty status")));
            } else {
                show($box, result);
            }
        }
        PollStatus(url, method, 1, interval, boxSelector, showUnlessEmpty, briefStatusProblems);
    }

    const durations = {
        seconds: (count) => ngettext("{1} second", "{1} seconds", count),
        minutes: (count) => ngettext("{1} minute", "{1} minutes", count),
        hours: (count) => ngettext("{1} hour", "{1} hours", count),
    };

    /** A text of a status method, in the language of the page where it is one of ours. A duration is such as "1 hours". */
    function ShownStatus(value) {
        const text = String(value ?? "");
        const [, count, unit] = /^(\d+) (seconds|minutes|hours)$/.exec(text) ?? [];
        return unit && document.documentElement.lang !== "en" ? durations[unit](Number(count)) : gettext(text);
    }

    /** A heading with a preformatted text below, to append to a status box.
     *  @param framed puts the text into a block of its own, as fits tables: the first line keeps its indent. */
    function StatusSection(title, text, framed) {
        const $text = $("<pre>").text(
            framed ? String(text ?? "").replace(/^\s*\n|\s+$/g, "") : $.trim(text),
        );
        return $("<div>").append(
            $("<h3>").text(title),
            framed ? $("<div class='command_output'>").append($text) : $text,
        );
    }

    /** A heading with a table of two columns below, to append to a status box.
     *  @param rows pairs of heading and text. */
    function StatusTable(title, rows) {
        const $table = $("<table>");
        for (const [heading, text] of rows) {
            $table.append($("<tr>").append($("<th>").text(heading), $("<td>").text(text)));
        }
        return $("<div>").append($("<h3>").text(title), $table);
    }

    /** Shows one preformatted text of several parts, or that there is nothing to tell about what is off.
     *  @param parts pairs of heading and text. */
    function ShowReport($box, enabled, parts) {
        if (!enabled) {
            $box.text(gettext("Not enabled"));
            return;
        }
        const $report = $("<pre>");
        for (const [title, text] of parts) {
            $report.append($("<h2>").text(title), document.createTextNode(text));
        }
        ShowIn($box, $report.append($("<b>").text(gettext("(check system log file for more details)"))));
    }

    window.CallStatus = CallStatus;
    window.PollStatus = PollStatus;
    window.PollBriefStatus = PollBriefStatus;
    window.ShownStatus = ShownStatus;
    window.StatusSection = StatusSection;
    window.StatusTable = StatusTable;
    window.ShowReport = ShowReport;
})();
