(function () {
    "use strict";

    window.LogProblems = {
        refused: (error) => "Error retrieving log: " + error,
        failed: (request, status, error) => "Error retrieving log: " + error,
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
