// What scripts say, in the language of the page. Comes first: every other script may use it.
(function () {
    "use strict";

    // Left by the page's "text.LANGUAGE.js"; English has none. `messages` has a text by its English one, where it
    // goes by numbers an array of them; `plural` is the index in it for a number.
    const { messages = {}, plural } = window.catalogue ?? {};

    const fill = (message, values) => message.replace(/\{(\d+)\}/g, (place, number) => values[number - 1] ?? place);

    /** @param values what stands for {1}, {2} and so on in the message. */
    function gettext(message, ...values) {
        return fill(messages[message] ?? message, values);
    }

    /** The message for a number of things, which stands for {1}. */
    function ngettext(one, many, number) {
        const forms = messages[one];
        return fill(forms ? forms[plural(number)] : number === 1 ? one : many, [number]);
    }

    Object.assign(window, { gettext, ngettext });
})();
