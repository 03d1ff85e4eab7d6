// What has to be true before anything of the page is drawn. Needs none of the other scripts.
(function () {
    "use strict";

    const rightToLeft = /^(ar|dv|fa|he|ps|ur|yi)\b/;
    const root = document.documentElement;

    // Without it a phone lays the page out as wide as a desktop.
    const viewport = document.createElement("meta");
    viewport.name = "viewport";
    viewport.content = "width=device-width, initial-scale=1";
    document.head.append(viewport);

    root.lang ||= "en";
    root.dir ||= rightToLeft.test(root.lang) ? "rtl" : "ltr";
})();
