// Rollouts: all of them, and one.
(function () {
    "use strict";

    const { byId, make, show, row, reasons } = Fleet;

    // --- All ---------------------------------------------------------------------------------------

    const columns = [
        { title: gettext("Number") },
        { title: gettext("Title") },
        { title: gettext("State") },
        { title: gettext("Progress") },
        { title: gettext("Who") },
        { title: gettext("When") },
    ];

    function rolloutRow({ rollout, title, who, time, state, reason, asked, members, counts }) {
        return row(String(rollout), columns, [
            String(rollout),
            make("a", { href: Fleet.address("rollout", rollout) }, title || gettext("Rollout {1}", rollout)),
            [Fleet.rolloutBadge(state), reason ? make("small", {}, reason) : null],
            [Fleet.progress(counts ?? {}, members), make("small", {}, gettext("{1} of {2} devices asked", GroupDigits(asked), GroupDigits(members)))],
            who || "–",
            Fleet.time(time),
        ]);
    }

    Fleet.onPage("rollouts", (box) =>
        Fleet.pagedTable(box, byId("rollout_pages"), {
            method: "rollouts",
            asked: () => ({}),
            caption: gettext("Rollouts"),
            columns,
            rowOf: rolloutRow,
            empty: () => [
                make("b", {}, gettext("Nothing was rolled out yet.")),
                make("p", {}, gettext("A rollout brings one change to many devices: first to a few, then in waves, and it stops by itself when too many fail.")),
            ],
        }),
    );

    // --- One ---------------------------------------------------------------------------------------

    const memberColumns = [
        { title: gettext("Device") },
        { title: gettext("Wave") },
        { title: gettext("State") },
        { title: gettext("Reason") },
        { title: gettext("When") },
    ];

    /** Waves count from 0; where devices try it first, they are the first one. */
    const waveText = (canaries, wave) => (canaries > 0 && wave === 0 ? gettext("1 (first ones)") : GroupDigits(wave + 1));

    function memberRow(canaries, { id, name, wave, state, code, message, refused, time }) {
        return row(id, memberColumns, [
            [make("a", { href: Fleet.address("device", id) }, name || id), name && name !== id ? make("small", {}, id) : null],
            waveText(canaries, wave),
            Fleet.memberBadge(state),
            message ? reasons(message, refused) : code || "–",
            time ? Fleet.time(time) : "–",
        ]);
    }

    const filterNames = { search: gettext("Search"), firmware: gettext("Firmware"), model: gettext("Model"), tag: gettext("Tag") };

    /** Which devices were chosen, in words. */
    function selectionText(selection, members) {
        if (!selection || Object.keys(selection).length === 0) {
            return gettext("All devices");
        }
        if (selection.ids) {
            return ngettext("{1} device, chosen by name", "{1} devices, chosen by name", selection.ids.length);
        }
        const { online, differs = {} } = selection;
        const parts = Object.keys(filterNames)
            .filter((name) => selection[name])
            .map((name) => gettext("{1}: {2}", filterNames[name], selection[name]));
        if (online !== undefined) {
            parts.push(online ? gettext("online") : gettext("offline"));
        }
        if (differs.device) {
            parts.push(gettext("settings differ from those of {1}", differs.device));
        }
        for (const [key, value] of Object.entries(differs.settings ?? {})) {
            parts.push(gettext("{1} is not {2}", Fleet.labelOf(key), Fleet.textOf(key, value)));
        }
        return gettext("{1}: then {2}", parts.join(", "), ngettext("{1} device", "{1} devices", members));
    }

    const back = (number) => make("a", { href: Fleet.address("rollout", number) }, gettext("what they had before rollout {1}", number));

    function showFacts(box, rollout) {
        const { who, time, why, patch, restart, canaries, wave, limit, patience, settle, selection, members, takes_back: first } = rollout;
        const facts = [
            [gettext("What"), first ? back(first) : Fleet.changedSettings(patch)],
            [gettext("Why"), why || "–"],
            [gettext("By"), [who || "–", ", ", Fleet.time(time)]],
            ...(first
                ? []
                : [
                      [gettext("Which devices"), selectionText(selection, members)],
                      [gettext("First"), ngettext("{1} device", "{1} devices", canaries)],
                      [gettext("Then"), gettext("waves of {1}", GroupDigits(wave))],
                      [gettext("Stops at"), gettext("more than {1} % that refuse, fail, go back or are silent", limit)],
                  ]),
            [gettext("Waits"), gettext("{1} for a device, {2} between waves", Fleet.span(patience), Fleet.span(settle))],
            [gettext("Restart"), restart ? gettext("where it is needed") : gettext("no")],
        ];
        show(box, make("dl", { class: "facts" }, facts.map(([title, text]) => make("div", {}, make("dt", {}, title), make("dd", {}, text)))));
    }

    /** Buttons, when they are there, and what they ask. */
    const actions = [
        { method: "pause", in: ["running"] },
        { method: "go_on", in: ["paused", "stopped"] },
        {
            method: "take_back",
            in: ["running", "paused", "stopped", "done", "ended"],
            title: gettext("Take this rollout back?"),
            text: gettext("All devices that have the change get the settings back that they had before. Secrets cannot be taken back."),
            go: gettext("Take back"),
        },
        {
            method: "end",
            in: ["running", "paused", "stopped"],
            title: gettext("End this rollout?"),
            text: gettext("No further device is asked, and it cannot go on any more. Devices that have the change keep it."),
            go: gettext("End it"),
        },
    ];

    function actionsOf(number, done) {
        async function act(method) {
            show(byId("rollout_failure"));
            try {
                const rollout = await Fleet.call(method, { rollout: number });
                if (method === "take_back" && rollout.rollout !== number) {
                    location.href = Fleet.address("rollout", rollout.rollout);
                }
                done();
            } catch (error) {
                show(byId("rollout_failure"), error.message);
            }
        }
        for (const { method, title, text, go } of actions) {
            byId(method).addEventListener("click", () => (title ? AskFirst(title, text, go, () => act(method)) : act(method)));
        }
        return function ({ state, takes_back: first }) {
            for (const { method, in: states } of actions) {
                byId(method).hidden = !states.includes(state) || (method === "take_back" && Boolean(first));
            }
        };
    }

    function membersOf(number) {
        let wanted = "";
        let shown = null; // the rollout

        const ask = Fleet.pagedTable(byId("members"), byId("member_pages"), {
            method: "members",
            asked: () => shown && { rollout: number, ...(wanted && { state: wanted }) },
            caption: gettext("Devices"),
            columns: memberColumns,
            rowOf: (member) => memberRow(shown.canaries, member),
            empty: () => gettext("None."),
        });
        byId("member_states").addEventListener("click", function ({ target }) {
            const button = target.closest("[data-state]");
            if (button) {
                wanted = button.dataset.state;
                showStates();
                ask();
            }
        });

        function showStates(rollout = shown) {
            shown = rollout;
            const { counts = {}, members } = rollout;
            const states = Object.keys(Fleet.memberStates).filter((state) => counts[state] > 0 || state === wanted);
            const button = (state, text, count) =>
                make("button", { type: "button", class: "plain", "data-state": state, "aria-pressed": String(state === wanted) }, text, " ", make("b", {}, GroupDigits(count)));
            Fleet.show(byId("member_states"), [
                button("", gettext("All"), members),
                ...states.map((state) => button(state, Fleet.memberStates[state][0], counts[state] ?? 0)),
            ]);
        }
        return function (rollout) {
            const isFirst = !shown;
            showStates(rollout);
            if (isFirst) {
                ask();
            }
        };
    }

    function progressText({ state, wave_now: now, waves, asked, members }) {
        const devices = gettext("{1} of {2} devices asked", GroupDigits(asked), GroupDigits(members));
        const isOver = !["running", "paused", "stopped"].includes(state) || now < 0;
        return isOver ? devices : gettext("{1}, wave {2} of {3}", devices, GroupDigits(now + 1), GroupDigits(waves));
    }

    Fleet.onPage("rollout", async function (box) {
        const number = Number(box.dataset.rollout);
        await Fleet.catalogue();
        const showStates = membersOf(number);
        const showActions = actionsOf(number, () => ask());
        const ask = Fleet.poll(
            "rollout",
            () => ({ rollout: number }),
            function (rollout) {
                byId("rollout_parts").hidden = false;
                byId("rollout_unknown").hidden = true;
                Fleet.tell(byId("config_page_title"), rollout.title || gettext("Rollout {1}", number));
                document.title = gettext("{1} – Fleet", rollout.title || gettext("Rollout {1}", number));
                show(byId("rollout_summary"), [
                    Fleet.rolloutBadge(rollout.state),
                    " ",
                    make("span", {}, rollout.reason ? gettext("{1}; {2}", rollout.reason, progressText(rollout)) : progressText(rollout)),
                ]);
                show(byId("rollout_progress"), Fleet.progress(rollout.counts ?? {}, rollout.members));
                showActions(rollout);
                showFacts(byId("rollout_facts"), rollout);
                showStates(rollout);
                const lines = (rollout.log ?? []).map(({ time, who, text }) => make("li", {}, Fleet.time(time), " ", make("b", {}, who || gettext("console")), " ", text));
                show(byId("rollout_log"), lines);
            },
            function (error) {
                byId("rollout_parts").hidden = true;
                byId("rollout_unknown").hidden = false;
                show(byId("rollout_unknown"), make("b", {}, error.message), make("p", {}, make("a", { href: Fleet.address("rollouts") }, gettext("All rollouts"))));
            },
        );
    });
})();
