(function () {
    "use strict";

    window.LogProblems = {
        refused: (error) => gettext("Error retrieving log: {1}", error),
        failed: (request, status, error) => gettext("Error retrieving log: {1}", error),
    };

    /** The newest lines are the last ones. */
    window.ShowLog = function ($box, result) {
        const isFirst = !$box.children("pre").length;
        ShowIn($box, $("<pre>").text($.trim(result.tail)));
        if (isFirst) {
            const [log] = $box.children("pre");
            log.scrollTop = log.scrollHeight;
        }
    };
})();
