// Brings what is shown up to date in place: what stays the same keeps its scroll position, focus and selection.
(function () {
    "use strict";

    /** How near to its end, in pixels, a scrolled text counts as followed. */
    const nearEnd = 4;

    /** The lines by which a new text is found in the old one, where the first have gone. */
    const knownLines = 3;

    /** How many of the first lines of the old text the new one has no longer; 0 where they have nothing in common. */
    function linesGone(before, after) {
        const start = before.indexOf(after.split("\n", knownLines).join("\n"));
        return start > 0 ? before.slice(0, start).split("\n").length - 1 : 0;
    }

    function isSelected(node) {
        const selection = window.getSelection();
        return !selection.isCollapsed && selection.containsNode(node, true);
    }

    /** What is selected waits: it is about to be copied. */
    function updateText(node, text) {
        const box = node.parentNode;
        if (node.data === text || isSelected(node)) {
            return;
        }
        const scrolled = box.scrollHeight > box.clientHeight;
        const followed = scrolled && box.scrollTop + box.clientHeight >= box.scrollHeight - nearEnd;
        const gone = linesGone(node.data, text) * parseFloat(getComputedStyle(box).lineHeight);
        node.data = text;
        if (followed) {
            box.scrollTop = box.scrollHeight;
        } else if (box.scrollTop > 0 && gone > 0) {
            box.scrollTop -= gone;
        }
    }

    function updateElement(element, next) {
        for (const { name, value } of next.attributes) {
            if (element.getAttribute(name) !== value) {
                element.setAttribute(name, value);
            }
        }
        updateChildren(element, next);
    }

    function updateChildren(element, next) {
        const nodes = [...element.childNodes];
        const wanted = [...next.childNodes];
        wanted.forEach(function (want, index) {
            const node = nodes[index];
            if (!node) {
                element.append(want);
            } else if (node.nodeName !== want.nodeName) {
                node.replaceWith(want);
            } else if (node.nodeType === Node.TEXT_NODE) {
                updateText(node, want.data);
            } else {
                updateElement(node, want);
            }
        });
        nodes.slice(wanted.length).forEach((node) => node.remove());
    }

    /** Has the box show this content, and leaves alone what of it is there already. */
    function ShowIn($box, ...content) {
        updateChildren($box[0], $("<div>").append(...content)[0]);
        MakeScrollable();
    }

    /** Lets the keyboard reach what can be scrolled. */
    function MakeScrollable() {
        for (const text of document.querySelectorAll("#config_pane pre")) {
            const scrolls = text.scrollHeight > text.clientHeight || text.scrollWidth > text.clientWidth;
            if (scrolls) {
                text.tabIndex = 0;
            } else {
                text.removeAttribute("tabindex");
            }
        }
    }

    $(document).on("pageready tabsactivate", MakeScrollable);
    $(window).on("resize", MakeScrollable);

    window.ShowIn = ShowIn;
})();
