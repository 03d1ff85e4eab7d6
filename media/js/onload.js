// What every page does once it has loaded, and the few functions that page scripts call.
//
// Loaded in the head after jQuery and jQuery UI. A page whose scripts did not arrive (a slow or broken
// link) stays usable: only with the class "js" on the root element, set here, do style sheets hide
// anything.
(function () {
    "use strict";

    const $ = window.jQuery;
    if (!$) {
        return;
    }

    /** How long a result message that is not static stays, in milliseconds. */
    const messageTime = 8000;

    // --- Result messages ---------------------------------------------------------------------------

    /** Lets the timed messages among the given boxes fade when their time is over. */
    function fadeLater($boxes) {
        $boxes.not(".static").delay(messageTime).fadeOut("slow");
    }

    /** Hides the result messages; static ones stay. */
    function ClearFormResultMsg() {
        $(".form_result_msg").not(".static").stop(true, true).hide();
    }

    function showMessage(text, classes) {
        let $box = $(".form_result_msg").first();
        if (!$box.length) {
            $box = $("<div role='status'>").insertBefore($("body").children().not(".alerts").first());
        }
        $box.stop(true, true).attr("class", classes + " form_result_msg").text(text).show();
        fadeLater($box);
    }

    /** Shows a result message for some seconds. The text is never taken as markup.
     *  @param cssClass "success", "failure" or any other style class; empty for a neutral box. */
    function ShowFormResultMsg(text, cssClass) {
        showMessage(text, cssClass || "");
    }

    /** Shows a result message that stays, in place of the one shown before. */
    function ShowStaticFormResultMsg(text, cssClass) {
        showMessage(text, (cssClass || "") + " static");
    }

    // --- Tabs --------------------------------------------------------------------------------------

    /** Page scripts name tab options and the event of switching as jQuery UI did before 1.9: the
     *  options "fx" (one animation for showing and hiding) and "selected" (index of the open tab), and
     *  the event "tabsshow". This teaches the present tabs those names beside their own. */
    function adaptTabs() {
        function animate(panel, effect, done) {
            if (effect === this.options.fx) {
                panel.animate(effect, "fast", done);
            } else {
                this._super(panel, effect, done);
            }
        }

        $.widget("ui.tabs", $.ui.tabs, {
            _create: function () {
                const options = this.options;
                if (options.selected !== undefined) {
                    options.active = options.selected;
                }
                if (options.fx) {
                    options.show = options.hide = options.fx;
                }
                this._super();
            },
            _show: animate,
            _hide: animate,
            _trigger: function (type, event, data) {
                const goOn = this._super(type, event, data);
                if (type === "activate") {
                    this._super("show", event, data);
                }
                return goOn;
            },
        });
    }

    // --- Side menu ---------------------------------------------------------------------------------

    /** Sub-entries follow their parent as siblings and carry the id of its link as a class. */
    function subEntries(parent) {
        const id = $(parent).children("a").attr("id");
        return $(parent).nextAll(".childSideMenu").filter(function () {
            return this.classList.contains(id);
        });
    }

    function openSubMenu(parent, open) {
        subEntries(parent).toggle(open);
        $(parent).children("a").attr("aria-expanded", String(open));
    }

    /** A sub-menu is open when its parent or one of its entries is the page shown, and opens or closes
     *  with a click on a parent that has no page of its own. */
    function setUpMenu() {
        const $nav = $("#nav");
        $nav.find(".selected > a").attr("aria-current", "page");
        $nav.find(".parentSideMenu").each(function () {
            openSubMenu(this, $(this).add(subEntries(this)).is(".selected"));
        });
        $nav.on("click", ".parentSideMenu > a[href='']", function (event) {
            event.preventDefault();
            openSubMenu(this.parentNode, this.getAttribute("aria-expanded") === "false");
        });

        // Seen on narrow screens only, where the menu would push the page itself out of sight.
        $("<button type='button' id='nav_toggle' aria-controls='nav' aria-expanded='false'>")
            .text("Menu")
            .insertBefore($nav)
            .on("click", function () {
                this.setAttribute("aria-expanded", String($nav.toggleClass("open").hasClass("open")));
            });
    }

    // --- Forms -------------------------------------------------------------------------------------

    /** Ties each row's heading to its input: a click on it reaches the input, a screen reader says it. Forms
     *  of one page may use the same ids; then the first input keeps it. */
    function labelRows() {
        $("#config_pane tr").each(function (row) {
            const $heading = $(this).children("th");
            const input = $(this).children("td").find(":input").not(":submit, :button, [type='hidden']")[0];
            if (input && $heading.length === 1 && $heading.text().trim()) {
                if (document.getElementById(input.id) !== input) {
                    input.id = "row_input_" + row;
                }
                $heading.wrapInner($("<label>").attr("for", input.id));
            }
        });
    }

    /** Marks refused inputs for assistive software and puts the cursor in the first one in sight. */
    function markRefusedInputs() {
        const $refused = $("#config_pane :input.cppcms_error_msg").attr("aria-invalid", "true");
        $refused.filter(":visible").first().trigger("focus");
    }

    // --- Live status -------------------------------------------------------------------------------

    /** What a status box says when a call was answered with an error, and when it got no answer. */
    const statusProblems = {
        refused: (error) => "Error retrieving status: " + error,
        failed: (request, status, error) => "Error retrieving status: " + error + "[" + status + "]",
    };
    const briefStatusProblems = {
        refused: (error) => error,
        failed: (request) => "Invalid Status " + request.status,
    };

    /** Keeps a box fresh: calls a status method once per interval while the box is in sight. The next
     *  interval begins when the answer is there, so that calls never pile up.
     *  @param interval in milliseconds.
     *  @param show is given the box (jQuery) and each result, and fills the box.
     *  @param problems the texts for failures, such as statusProblems, which is the default.
     *  @param wanted tells whether to call; by default, whether the box is in sight. */
    function PollStatus(
        url,
        method,
        id,
        interval,
        boxSelector,
        show,
        problems = statusProblems,
        wanted = () => $(boxSelector).is(":visible"),
    ) {
        function arm() {
            setTimeout(poll, interval);
        }

        function poll() {
            if (!wanted()) {
                arm();
                return;
            }
            const $box = $(boxSelector);
            $.ajax({
                type: "POST",
                url: url,
                contentType: "application/json; charset=UTF-8",
                dataType: "json",
                data: JSON.stringify({ method: method, params: [], id: id }),
            })
                .done(function (answer) {
                    if (answer.error) {
                        $box.text(problems.refused(answer.error));
                    } else {
                        show($box, answer.result);
                    }
                })
                .fail(function (request, status, error) {
                    $box.text(problems.failed(request, status, error));
                })
                .always(arm);
        }

        arm();
    }

    /** The same for pages with short error texts, which also tell when the result is empty. */
    function PollBriefStatus(url, method, interval, boxSelector, show) {
        function showUnlessEmpty($box, result) {
            if ($.isEmptyObject(result)) {
                $box.empty().append($("<i>").text("empty status"));
            } else {
                show($box, result);
            }
        }
        PollStatus(url, method, 1, interval, boxSelector, showUnlessEmpty, briefStatusProblems);
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

    /** One preformatted text of several parts, to append to a status box.
     *  @param parts pairs of heading and text.
     *  @param note what is said below them. */
    function StatusReport(parts, note) {
        const $report = $("<pre>");
        for (const [title, text] of parts) {
            $report.append($("<h2>").text(title), document.createTextNode(text));
        }
        return $report.append($("<b>").text(note));
    }

    // --- Upload and upgrade progress -----------------------------------------------------------------

    /** Width of the whole bar, in pixels. */
    const progressWidth = 400;

    /** What a status line of a device program describes, such as { 'state' : 'flash', 'size' : 7 }. Names
     *  and texts are quoted either way. Null where the line is no such object. */
    function ParseToolStatus(line) {
        const json = String(line).replace(/"(?:[^"\\]|\\.)*"|'([^']*)'/g, (quoted, text) =>
            text === undefined ? quoted : JSON.stringify(text),
        );
        try {
            const status = JSON.parse(json);
            return $.isPlainObject(status) ? status : null;
        } catch {
            return null;
        }
    }

    /** Shows the state of a piece of work and, in the states `measured`, how much of it is done.
     *  @param progress has `state`, `received` and `size`, in bytes; null shows nothing new. */
    function ShowProgress(progress, measured) {
        if (!progress) {
            return;
        }
        $("#tp").text(progress.state);
        if (measured.includes(progress.state) && progress.size > 0) {
            $("#progressbar").width((progressWidth * progress.received) / progress.size);
            $("#bytes").text(progress.received + " / " + progress.size);
        }
    }

    /** As many random hexadecimal digits. */
    function RandomHexDigits(count) {
        return Array.from({ length: count }, () => Math.floor(Math.random() * 16).toString(16)).join("");
    }

    // -----------------------------------------------------------------------------------------------

    window.ClearFormResultMsg = ClearFormResultMsg;
    window.ShowFormResultMsg = ShowFormResultMsg;
    window.ShowStaticFormResultMsg = ShowStaticFormResultMsg;
    window.PollStatus = PollStatus;
    window.PollBriefStatus = PollBriefStatus;
    window.StatusSection = StatusSection;
    window.StatusTable = StatusTable;
    window.StatusReport = StatusReport;
    window.ParseToolStatus = ParseToolStatus;
    window.ShowProgress = ShowProgress;
    window.RandomHexDigits = RandomHexDigits;

    // Hides what carries "hiddenOnLoad" from the first paint on; page scripts show it with jQuery's show().
    document.documentElement.classList.add("js");
    $.fx.off = window.matchMedia("(prefers-reduced-motion: reduce)").matches;
    if ($.ui && $.ui.tabs) {
        adaptTabs();
    }

    $(function () {
        setUpMenu();
        labelRows();
        fadeLater($(".form_result_msg").attr("role", "status"));
    });

    // After the page's own scripts: what is in sight now is what the operator sees. Tabs whose script
    // failed must not stay hidden.
    $(window).on("load", function () {
        $("#tabcontainer").show();
        markRefusedInputs();
    });
})();
