// What every page does once it has loaded.
//
// A page whose scripts did not arrive (a slow or broken link) stays usable: only with the class "js" on the root
// element, set here, do style sheets hide anything.
(function () {
    "use strict";

    if (!window.jQuery) {
        return;
    }

    // --- Tabs -----------------------------------------------------------------------------------

    /** The index of the tab that a link to the page has asked for, else -1. It is asked for once: an answer to a form
     *  opens a tab of its own. */
    function namedTab(container) {
        const tab = $(container).find("> ul a").toArray().findIndex((link) => link.hash && link.hash === location.hash);
        if (tab >= 0) {
            window.history.replaceState(null, "", location.pathname + location.search);
        }
        return tab;
    }

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
                const named = namedTab(this.element);
                if (named >= 0 || options.selected !== undefined) {
                    options.active = named >= 0 ? named : options.selected;
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
            .text("Menu")
            .insertBefore($nav)
            .on("click", function () {
                this.setAttribute("aria-expanded", String($nav.toggleClass("open").hasClass("open")));
            });
    }

    // --- Forms ----------------------------------------------------------------------------------

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

    // ---------------------------------------------------------------------------------------------

    // A link to another tab of the same page.
    $(window).on("hashchange", function () {
        const $tabs = $("#tabcontainer.ui-tabs");
        const tab = namedTab($tabs);
        if (tab >= 0) {
            $tabs.tabs("option", "active", tab);
        }
    });

    // Hides what carries "hiddenOnLoad" from the first paint on; page scripts show it with jQuery's show().
    document.documentElement.classList.add("js");
    $.fx.off = window.matchMedia("(prefers-reduced-motion: reduce)").matches;
    if ($.ui && $.ui.tabs) {
        adaptTabs();
    }

    $(function () {
        setUpMenu();
        labelRows();
        FadeFormResultMsg($(".form_result_msg").attr("role", "status"));
    });

    // After the page's own scripts: what is in sight now is what the operator sees. Tabs whose script
    // failed must not stay hidden.
    $(window).on("load", function () {
        $("#tabcontainer").show();
        markRefusedInputs();
    });
})();
