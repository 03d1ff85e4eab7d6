(function () {
    "use strict";

    window.LogProblems = {
        refused: (error) => "Error retrieving log: " + error,
        failed: (request, status, error) => "Error retrieving log: " + error,
    };

    window.ShowLog = function ($box, result) {
        $box.empty().append($("<pre>").text($.trim(result.tail)));
    };
})();
