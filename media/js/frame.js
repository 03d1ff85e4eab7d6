// The frame around every page: banner, menu, landmarks; and when the page is shown.
//
// A page whose scripts did not arrive (a slow or broken link) stays usable: only with the class "js" on the root
// element, set here, do style sheets hide anything.
(function () {
    "use strict";

    const startPage = "/";

    if (!window.jQuery) {
        return;
    }

    // --- Side menu ------------------------------------------------------------------------------

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
            .text(gettext("Menu"))
            .insertBefore($nav)
            .on("click", function () {
                this.setAttribute("aria-expanded", String($nav.toggleClass("open").hasClass("open")));
            });
    }

    // --- Landmarks ------------------------------------------------------------------------------

    function nameLandmarks() {
        $("#banner").attr("role", "banner");
        $(".navpx").attr({ role: "navigation", "aria-label": gettext("Pages") });
        $("#config_pane").attr({ role: "main", tabindex: -1 });
        $("#footer").attr("role", "contentinfo");
        $("#old_ie_hack").attr("role", "presentation");
        $("div.alerts").attr("role", "status");
        $("#trialBox").attr({ role: "form", "aria-label": gettext("New settings on trial") });
        $(".saved_changes").attr({ role: "region", "aria-label": gettext("What was changed") });
        // Cells without a text head no row.
        $("#config_pane th:empty").attr("role", "cell");
        $("<a id='skip' href='#config_pane'>").text(gettext("Skip to the page")).prependTo("body");
    }

    function linkToStart() {
        $("#banner_middle h1").wrapInner($("<a>").attr("href", startPage));
        $("#banner_logo").on("click", () => (location.href = startPage));
    }

    // ---------------------------------------------------------------------------------------------

    // Hides what carries "hiddenOnLoad" from the first paint on; page scripts show it with jQuery's show().
    document.documentElement.classList.add("js");
    $.fx.off = window.matchMedia("(prefers-reduced-motion: reduce)").matches;

    $(function () {
        setUpMenu();
        nameLandmarks();
        linkToStart();
    });

    // Behind the page's own handlers, so that nobody sees them at work. Tabs whose script failed must not stay hidden.
    document.addEventListener("DOMContentLoaded", () =>
        $(function () {
            $("#tabcontainer").show();
            document.documentElement.classList.add("ready");
            $(document).trigger("pageready");
        }),
    );
})();
