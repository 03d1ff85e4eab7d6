// What the pages of the console are made of. Texts from outside are never taken as markup.
(function () {
    "use strict";

    const svg = "http://www.w3.org/2000/svg";

    function fill(made, attributes, content) {
        for (const [name, value] of Object.entries(attributes)) {
            if (value !== null && value !== false && value !== undefined) {
                made.setAttribute(name, value === true ? "" : value);
            }
        }
        made.append(...content.flat(Infinity).filter((part) => part !== null && part !== undefined && part !== false));
        return made;
    }

    /** An element of HTML.
     *  @param attributes those with null, undefined or false are left out.
     *  @param content texts, elements and arrays of them; null, undefined and false are left out. */
    const make = (name, attributes = {}, ...content) => fill(document.createElement(name), attributes, content);

    const makeSvg = (name, attributes, ...content) => fill(document.createElementNS(svg, name), attributes, content);

    /** Has a box show this content, and leaves alone what of it is there already. Listeners belong on the box, as its
     *  elements come to mean something else. */
    function show(box, ...content) {
        ShowIn($(box), ...content.flat(Infinity).filter((part) => part !== null && part !== undefined && part !== false));
    }

    /** Says it, once. */
    function tell(element, text) {
        if (element.textContent !== text) {
            element.textContent = text;
        }
    }

    /** The same as show() of elements with a `data-key` each: one that is there already stays the same element.
     *  @param update brings that up to date, given its index as well; by default, all that is in it. */
    function showKeyed(box, elements, update = null) {
        const known = new Map([...box.children].map((child) => [child.dataset.key, child]));
        elements.forEach(function (wanted, index) {
            const old = known.get(wanted.dataset.key);
            known.delete(wanted.dataset.key);
            const shown = old ?? wanted;
            if (box.children[index] !== shown) {
                box.insertBefore(shown, box.children[index] ?? null);
            }
            if (update) {
                update(shown, index);
            } else if (old) {
                show(old, ...wanted.childNodes);
            }
        });
        known.forEach((left) => left.remove());
        [...box.children].slice(elements.length).forEach((left) => left.remove());
    }

    // --- Tables -----------------------------------------------------------------------------------

    function heading({ title, sort, quiet }, sorting) {
        const order = sort && sorting?.sort === sort ? (sorting.descending ? "descending" : "ascending") : "none";
        const text = quiet ? make("span", { class: "unseen" }, title) : title;
        return make(
            "th",
            { role: "columnheader", scope: "col", "aria-sort": sort ? order : null },
            sort ? make("button", { type: "button", class: "sort", "data-sort": sort }, text) : text,
        );
    }

    /** A row of showTable. On a narrow screen each cell stands under its heading.
     *  @param cells texts, elements, or arrays of them; one for each column. */
    function row(key, columns, cells, attributes = {}) {
        const shown = cells.map((cell, index) => make("td", { role: "cell", "data-label": columns[index].quiet ? null : columns[index].title }, cell));
        return make("tr", { role: "row", "data-key": key, ...attributes }, shown);
    }

    /** Has a box show a table.
     *  @param columns objects with a `title`; `sort`: what it is sorted by; `quiet`: the title is for ears only.
     *  @param rows elements made by row().
     *  @param sorting `sort` and `descending` of now. */
    function showTable(box, caption, columns, rows, sorting) {
        let table = box.querySelector("table");
        if (!table) {
            const head = make("thead", { role: "rowgroup" }, make("tr", { role: "row" }));
            table = make("table", { class: "list", role: "table" }, make("caption", { class: "unseen" }), head, make("tbody", { role: "rowgroup" }));
            box.replaceChildren(table);
        }
        table.caption.textContent = caption;
        show(table.tHead.rows[0], columns.map((column) => heading(column, sorting)));
        showKeyed(table.tBodies[0], rows);
    }

    /** Which part of a list is shown, with the way to the others; buttons have the `data-offset` that they lead to. */
    function showPager(box, { offset, limit }, total) {
        box.hidden = total <= limit && offset === 0;
        if (box.hidden) {
            return;
        }
        const last = Math.min(offset + limit, total);
        const text = gettext("{1} to {2} of {3}", GroupDigits(Math.min(offset + 1, total)), GroupDigits(last), GroupDigits(total));
        const button = (title, to) => make("button", { type: "button", class: "plain", "data-offset": to }, title);
        show(box, button(gettext("Previous"), Math.max(0, offset - limit)), make("span", {}, text), button(gettext("Next"), offset + limit));
        const [previous, next] = box.querySelectorAll("button");
        previous.disabled = offset === 0;
        next.disabled = last >= total;
    }

    /** Has the buttons of a pager turn pages. */
    function onTurn(box, turn) {
        box.addEventListener("click", function ({ target }) {
            if (target.dataset.offset !== undefined) {
                turn(Number(target.dataset.offset));
            }
        });
    }

    /** Keeps a list fresh that the console gives by pages, newest first: a table and its pager, or what is said where
     *  there is nothing.
     *  @param method which gives an array of its own name, and its `total`.
     *  @param asked gives what is asked for beside the page; null: nothing.
     *  @param rowOf makes a row of an item.
     *  @param empty makes what is said.
     *  @returns a function that asks for the first page, as when something else is asked for. */
    function pagedTable(box, pager, { method, asked, limit = 50, caption, columns, rowOf, empty }) {
        const view = { offset: 0, limit };
        function wanted() {
            const what = asked();
            return what && { ...what, ...view };
        }
        const ask = Fleet.poll(method, wanted, function (answer) {
            if (answer[method].length === 0) {
                show(box, make("div", { class: "empty" }, empty()));
            } else {
                showTable(box, caption, columns, answer[method].map(rowOf));
            }
            showPager(pager, view, answer.total);
        });
        function turn(offset) {
            view.offset = offset;
            ask();
        }
        onTurn(pager, turn);
        return () => turn(0);
    }

    // --- Texts ------------------------------------------------------------------------------------

    const language = document.documentElement.lang;
    const moment = new Intl.DateTimeFormat(language, { dateStyle: "medium", timeStyle: "medium" });
    const relative = new Intl.RelativeTimeFormat(language, { numeric: "auto" });

    /** A moment, in seconds of UTC. */
    function time(seconds) {
        const date = new Date(seconds * 1000);
        return seconds ? make("time", { datetime: date.toISOString() }, moment.format(date)) : "–";
    }

    const spans = [
        [60, 1, "second"],
        [60 * 60, 60, "minute"],
        [24 * 60 * 60, 60 * 60, "hour"],
        [Infinity, 24 * 60 * 60, "day"],
    ];

    /** The same as how long ago it is. */
    function ago(seconds) {
        if (!seconds) {
            return "–";
        }
        const passed = Math.max(0, Math.round(Date.now() / 1000 - seconds));
        const [, length, unit] = spans.find(([limit]) => passed < limit);
        const date = new Date(seconds * 1000);
        const text = relative.format(-Math.floor(passed / length), unit);
        return make("time", { datetime: date.toISOString(), title: moment.format(date) }, text);
    }

    /** A time that something takes, in seconds. */
    const span = (seconds) => (seconds > 0 && seconds % 60 === 0 ? Duration(seconds) : gettext("{1} s", GroupDigits(seconds)));

    /** A word with a colour. @param tone good, bad, busy, warn or quiet. */
    const badge = (text, tone) => make("span", { class: `badge ${tone}` }, text);

    const onlineBadge = (online) => (online ? badge(gettext("Online"), "good") : badge(gettext("Offline"), "quiet"));

    /** What a change, or the member of a rollout, has come to: text and tone. */
    const memberStates = {
        done: [gettext("Done"), "good"],
        kept: [gettext("Kept"), "good"],
        sent: [gettext("Sent"), "busy"],
        trial: [gettext("On trial"), "busy"],
        refused: [gettext("Refused"), "bad"],
        failed: [gettext("Failed"), "bad"],
        returned: [gettext("Returned"), "bad"],
        silent: [gettext("Silent"), "warn"],
        withdrawn: [gettext("Withdrawn"), "quiet"],
        waiting: [gettext("Waiting"), "quiet"],
    };
    const rolloutStates = {
        running: [gettext("Running"), "busy"],
        paused: [gettext("Paused"), "warn"],
        stopped: [gettext("Stopped"), "bad"],
        done: [gettext("Done"), "good"],
        taken_back: [gettext("Taken back"), "quiet"],
        ended: [gettext("Ended"), "quiet"],
    };
    const stateBadge = (states) => (state) => badge(...(states[state] ?? [state, "quiet"]));

    /** How far a rollout is: a bar with a part for each state, which says the same in words. */
    function progress(counts, members) {
        const states = Object.keys(memberStates).filter((state) => counts[state] > 0);
        const words = states.map((state) => gettext("{1}: {2}", memberStates[state][0], GroupDigits(counts[state])));
        let start = 0;
        const parts = states.map(function (state) {
            const width = (100 * counts[state]) / Math.max(1, members);
            const part = makeSvg("rect", { class: memberStates[state][1], x: start, y: 0, width, height: 1 });
            start += width;
            return part;
        });
        const bar = { class: "progress", role: "img", "aria-label": words.join(", "), viewBox: "0 0 100 1", preserveAspectRatio: "none" };
        return makeSvg("svg", bar, ...parts);
    }

    /** Why something was refused: the message, and the reason of each setting. */
    function reasons(message, refused) {
        const settings = Object.entries(refused ?? {});
        const list = settings.map(([key, reason]) => make("li", {}, make("b", {}, Fleet.labelOf(key)), ": ", reason));
        return [message ? make("span", {}, message) : null, list.length ? make("ul", { class: "reasons" }, list) : null];
    }

    Object.assign(Fleet, {
        make,
        show,
        tell,
        showKeyed,
        row,
        showTable,
        showPager,
        onTurn,
        pagedTable,
        time,
        ago,
        span,
        badge,
        onlineBadge,
        memberStates,
        memberBadge: stateBadge(memberStates),
        rolloutBadge: stateBadge(rolloutStates),
        progress,
        reasons,
    });
})();
