// One device: what it is and how it does, its notes, what was changed.
(function () {
    "use strict";

    const { byId, make, show, row, reasons, textOf, labelOf } = Fleet;

    const changesShown = 10;
    // --- How it does ------------------------------------------------------------------------------

    const plots = new Map();

    /** The columns of the samples. Where some are missing, a line ends. */
    function dataOf(samples, name) {
        const steps = samples.slice(1).map(({ time }, index) => time - samples[index].time);
        const usual = steps.toSorted((a, b) => a - b)[Math.floor(steps.length / 2)];
        const points = samples.flatMap((sample, index) => (index > 0 && steps[index - 1] > 3 * usual ? [{ time: sample.time - 1 }, sample] : [sample]));
        return [points.map(({ time }) => time), points.map((point) => point[name] ?? null)];
    }

    function showHealth(answer) {
        // Plots have it as a part of all.
        const samples = answer.samples.map((sample) => ({ ...sample, memory: sample.memory === undefined ? undefined : sample.memory / 100 }));
        const box = byId("overview").querySelector(".plots");
        const told = HealthPlots.filter(([name]) => samples.some((sample) => (sample[name] ?? null) !== null));
        byId("no_health").hidden = told.length > 0;
        told.forEach(function ([name, title, format, scale], index) {
            if (!plots.has(name)) {
                plots.set(name, MakePlot(box, index, title, [""], format, scale, dataOf(samples, name)));
            }
            plots.get(name)(dataOf(samples, name));
        });
    }

    function showFacts({ model, firmware, serial, online, seen, uptime, restart, health = {} }) {
        const known = (figure, text) => (figure === undefined ? "–" : text());
        const facts = [
            [gettext("Model"), model || "–"],
            [gettext("Firmware"), firmware || "–"],
            [gettext("Serial number"), serial || "–"],
            [gettext("Last heard"), online ? gettext("now") : Fleet.ago(seen)],
            [gettext("Uptime"), known(uptime, () => Duration(uptime))],
            [gettext("Uplink"), health.uplink ? gettext("{1} ({2})", health.uplink, health.address || "–") : "–"],
            [gettext("Signal"), known(health.signal, () => [SignalBars(health.signal)[0], Figures.dBm(health.signal)])],
            [gettext("Restart"), restart ? gettext("needed") : gettext("not needed")],
        ];
        show(byId("overview").querySelector("dl"), facts.map(([title, text]) => make("div", {}, make("dt", {}, title), make("dd", {}, text))));
    }

    // --- What was changed -------------------------------------------------------------------------

    const changeColumns = [
        { title: gettext("When") },
        { title: gettext("Who") },
        { title: gettext("What") },
        { title: gettext("Result") },
        { title: gettext("Rollout") },
    ];

    /** The settings of a change, with what they were before. */
    Fleet.changedSettings = (patch, before) =>
        make(
            "ul",
            { class: "changes" },
            Object.entries(patch ?? {}).map(([key, value]) =>
                make("li", {}, [
                    make("span", { class: "setting" }, labelOf(key)),
                    ": ",
                    before ? [make("del", {}, textOf(key, before[key])), " → "] : null,
                    make("ins", {}, textOf(key, value)),
                ]),
            ),
        );

    function changeRow({ change, who, time, patch, before, state, message, refused, rollout, restart }) {
        const link = rollout ? make("a", { href: Fleet.address("rollout", rollout) }, String(rollout)) : "–";
        const restarted = restart ? make("small", {}, gettext("with a restart where it is needed")) : null;
        return row(change, changeColumns, [
            Fleet.time(time),
            who || "–",
            [Fleet.changedSettings(patch, before), restarted],
            [Fleet.memberBadge(state), " ", reasons(message, refused)],
            link,
        ]);
    }

    const changesOf = (id) => ({
        method: "changes",
        asked: () => ({ id }),
        limit: changesShown,
        caption: gettext("History of changes"),
        columns: changeColumns,
        rowOf: changeRow,
        empty: () => gettext("The console has not changed anything yet."),
    });

    // --- Tags and note ----------------------------------------------------------------------------

    /** Calls a method that changes something, and tells what is wrong. */
    async function attempt(method, parameters, done) {
        try {
            await Fleet.call(method, parameters);
            done?.();
        } catch (error) {
            ShowFormResultMsg(error.message, "failure");
        }
    }

    function notesOf(id, ask) {
        const note = byId("note");
        const save = byId("save_note");
        byId("device_tags").addEventListener("click", function ({ target }) {
            const { tag } = target.dataset;
            if (tag) {
                attempt("tag", { ids: [id], add: [], remove: [tag] }, ask);
                byId("new_tag").focus();
            }
        });
        byId("add_tag").addEventListener("submit", function (event) {
            event.preventDefault();
            attempt("tag", { ids: [id], add: [byId("new_tag").value.trim()], remove: [] }, ask);
            byId("new_tag").value = "";
        });
        note.addEventListener("input", () => (save.disabled = false));
        byId("note_form").addEventListener("submit", function (event) {
            event.preventDefault();
            attempt("note", { id, note: note.value }, function () {
                save.disabled = true;
                ShowFormResultMsg(gettext("The note is stored."), "success");
            });
        });

        return function ({ tags = [], note: stored = "" }) {
            const chips = tags.map((tag) => [
                make("span", { class: "chip" }, tag, make("button", { type: "button", "data-tag": tag, "aria-label": gettext("Remove the tag {1}", tag) }, "×")),
                " ",
            ]);
            show(byId("device_tags"), tags.length ? chips : make("span", { class: "absent" }, gettext("No tags")));
            if (save.disabled && note.value !== stored && document.activeElement !== note) {
                note.value = stored;
            }
        };
    }

    // ----------------------------------------------------------------------------------------------

    function showHead(device) {
        const name = device.name || device.id;
        Fleet.tell(byId("config_page_title"), name);
        document.title = gettext("{1} – Fleet", name);
        show(byId("device_summary"), Fleet.stateOf(device), " ", make("span", {}, device.id));
        byId("forget").hidden = device.online;
    }

    Fleet.onPage("device", async function (box) {
        const { id } = box.dataset;
        byId("differing_devices").href = `${Fleet.address("")}?${new URLSearchParams({ differs: "device", differs_device: id })}`;
        await Fleet.catalogue();

        const showSettings = Fleet.deviceSettings(byId("settings"));
        const showNotes = notesOf(id, () => ask());
        Fleet.pagedTable(byId("changes"), byId("change_pages"), changesOf(id));
        const askHealth = Fleet.poll("health", () => (byId("device_parts").hidden ? null : { id }), showHealth, () => {});
        const ask = Fleet.poll(
            "device",
            () => ({ id }),
            function (device) {
                if (byId("device_parts").hidden) {
                    byId("device_parts").hidden = false;
                    askHealth();
                }
                byId("device_unknown").hidden = true;
                showHead(device);
                showFacts(device);
                showNotes(device);
                showSettings(device);
            },
            function (error) {
                byId("device_parts").hidden = true;
                byId("device_unknown").hidden = false;
                show(byId("device_unknown"), make("b", {}, error.message), make("p", {}, make("a", { href: Fleet.address("") }, gettext("All devices"))));
            },
        );

        byId("forget").addEventListener("click", () =>
            AskFirst(
                gettext("Forget this device?"),
                gettext("What it has told is removed from the broker. It is listed again as soon as it connects."),
                gettext("Forget it"),
                () => attempt("forget", { id }, () => (location.href = Fleet.address(""))),
            ),
        );
    });
})();
