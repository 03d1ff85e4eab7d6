// The message box of a page: what became of the last action, or what goes on.
(function () {
    "use strict";

    /** How long a result message that is not static stays, in milliseconds. */
    const messageTime = 8000;

    /** Lets the timed messages among the given boxes fade when their time is over. What has failed stays until the
     *  operator has read it. */
    function FadeFormResultMsg($boxes) {
        $boxes.not(".static, .failure").delay(messageTime).fadeOut("slow");
    }

    /** Has assistive software say what is in the box: it tells what comes into one that it knows, unless that is
     *  `quiet`. */
    function announce($box, quiet = false) {
        const failed = $box.hasClass("failure");
        $box.attr({ role: failed ? "alert" : "status", "aria-live": quiet ? "off" : null }).text($box.text());
        if (failed) {
            const $close = $("<button type='button' class='close'>").attr("aria-label", gettext("Close"));
            $box.append($close.on("click", () => $box.hide()));
        }
    }

    /** Hides the result messages; static ones stay. */
    function ClearFormResultMsg() {
        $(".form_result_msg").not(".static").stop(true, true).hide();
    }

    function showMessage(text, classes, quiet) {
        let $box = $(".form_result_msg").first();
        if (!$box.length) {
            $box = $("<div>").insertBefore($("body").children().not("#skip, .alerts").first());
        }
        $box.stop(true, true).attr("class", classes + " form_result_msg").text(text).show();
        announce($box, quiet);
        FadeFormResultMsg($box);
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

    /** The same for a count, which nobody wants to hear each second. */
    function ShowCountFormResultMsg(text) {
        showMessage(text, "static", true);
    }

    $(function () {
        const $boxes = $(".form_result_msg");
        $boxes.each((index, box) => announce($(box)));
        FadeFormResultMsg($boxes);
    });

    window.FadeFormResultMsg = FadeFormResultMsg;
    window.ClearFormResultMsg = ClearFormResultMsg;
    window.ShowFormResultMsg = ShowFormResultMsg;
    window.ShowStaticFormResultMsg = ShowStaticFormResultMsg;
    window.ShowCountFormResultMsg = ShowCountFormResultMsg;
})();
