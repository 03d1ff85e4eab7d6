// The tabs of a page: those of jQuery UI, and what the pages ask of them beyond.
(function () {
    "use strict";

    /** What jQuery UI tells of a tab at its list item, and assistive software wants to hear of the link in it. */
    const told = ["aria-selected", "aria-controls", "tabindex"];

    /** The index of the tab that the address names, else -1. */
    function namedTab($tabs) {
        return $tabs.find("> ul a").toArray().findIndex((link) => link.hash && link.hash === location.hash);
    }

    /** A reload, and a save, come back to this tab. */
    function nameInAddress(link) {
        window.history.replaceState(window.history.state, "", link.hash);
    }

    /** A tab with a link inside would be two things that can be operated, one within the other. */
    function makeLinksTabs(tabs) {
        tabs.tabs.each(function () {
            const link = $(this).attr("role", "presentation").find(".ui-tabs-anchor").attr("role", "tab")[0];
            for (const name of told) {
                if (this.hasAttribute(name)) {
                    link.setAttribute(name, this.getAttribute(name));
                    this.removeAttribute(name);
                }
            }
            $(this).removeAttr("aria-expanded aria-labelledby");
        });
    }

    function animate(panel, effect, done) {
        if (effect === this.options.fx) {
            panel.animate(effect, "fast", done);
        } else {
            this._super(panel, effect, done);
        }
    }

    /** Page scripts name tab options and the event of switching as jQuery UI did before 1.9: the
     *  options "fx" (one animation for showing and hiding) and "selected" (index of the open tab), and
     *  the event "tabsshow". This teaches the present tabs those names beside their own. */
    const pageTabs = {
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
            if (options.active > 0) {
                nameInAddress(this.anchors[options.active]);
            }
        },
        // Not by comparing addresses: that of a page opened with a password in it is not the one that its links get.
        _isLocal: (link) => link.getAttribute("href").startsWith("#"),
        _refresh: function () {
            this._super();
            makeLinksTabs(this);
        },
        _toggle: function (event, change) {
            this._super(event, change);
            makeLinksTabs(this);
            nameInAddress(change.newTab.find(".ui-tabs-anchor")[0]);
        },
        _tabKeydown: function (event) {
            this._super(event);
            makeLinksTabs(this);
        },
        _getPanelForTab: function (tab) {
            return this.panels.filter($(tab).find(".ui-tabs-anchor").attr("href"));
        },
        _focusNextTab: function (index, forwards) {
            const next = this._findNextTab(index, forwards);
            this.anchors.eq(next).trigger("focus");
            return next;
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
    };

    if (!window.jQuery || !$.ui || !$.ui.tabs) {
        return;
    }
    $.widget("ui.tabs", $.ui.tabs, pageTabs);
    // A link to another tab of the same page.
    $(window).on("hashchange", function () {
        const $tabs = $("#tabcontainer.ui-tabs");
        const tab = namedTab($tabs);
        if (tab >= 0) {
            $tabs.tabs("option", "active", tab);
        }
    });
})();
