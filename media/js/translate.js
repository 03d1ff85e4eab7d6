// What scripts say, in the language of the page. Comes first: every other script may use it.
(function () {
    "use strict";

    const fill = (message, values) => message.replace(/\{(\d+)\}/g, (place, number) => values[number - 1] ?? place);

    /** @param values what stands for {1}, {2} and so on in the message. */
    function gettext(message, ...values) {
        return fill(message, values);
    }

    /** The message for a number of things, which stands for {1}. */
    function ngettext(one, many, number) {
        return fill(number === 1 ? one : many, [number]);
    }

    Object.assign(window, { gettext, ngettext });
})();
