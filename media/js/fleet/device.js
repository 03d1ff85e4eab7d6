// One device: what it is and how it does, its settings, what was changed.
(function () {
    "use strict";

    const { make, show, row, reasons, textOf, labelOf } = Fleet;

    const changesShown = 10;
    /** What follows on these. */
    const underWay = ["waiting", "sent", "trial"];

    const byId = (id) => document.getElementById(id);

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

    // --- Its settings -----------------------------------------------------------------------------

    /** The form of the settings: rows that are shown, those that are being edited, and what was sent. */
    function settingsOf(form, id) {
        let device = null;
        let other = null; // the device that this one is compared with
        const edits = new Map(); // what is entered, by keys; `initial` is what the input began with
        let sent = null; // the last change of this visit, as the console tells it
        let refused = {};

        const values = () => device.settings ?? {};
        const find = byId("find_setting");

        function inputId(key) {
            return `setting_${key.replaceAll(/[^\w]/g, "_")}`;
        }

        function editRow(key) {
            const reason = refused[key];
            const reasonId = `${inputId(key)}_reason`;
            const input = Fleet.inputFor(key, edits.get(key).initial, {
                id: inputId(key),
                "data-setting": key,
                "aria-invalid": reason ? "true" : "false",
                "aria-describedby": reasonId,
                class: reason ? "cppcms_error_msg" : "",
            });
            return make(
                "tr",
                { "data-key": `${key} edit`, class: "edited" },
                make("th", { scope: "row" }, make("label", { for: input.id }, labelOf(key)), make("code", {}, key)),
                make(
                    "td",
                    { colspan: other ? 2 : null },
                    input,
                    make("span", { id: reasonId, class: reason ? "cppcms_error_msg" : "hint" }, reason ?? Fleet.hintsOf(key)),
                ),
                make("td", { class: "act" }, make("button", { type: "button", class: "plain", "data-leave": key, "aria-label": gettext("Leave {1} as it is", labelOf(key)) }, gettext("Cancel"))),
            );
        }

        /** What is on its way to this setting. */
        function pendingText(key) {
            return sent && key in sent.patch && underWay.includes(sent.state)
                ? [" → ", make("ins", {}, textOf(key, sent.patch[key])), " ", Fleet.memberBadge(sent.state)]
                : null;
        }

        function shownRow(key) {
            const text = textOf(key, values()[key]);
            const button = Fleet.isSettable(Fleet.find(key))
                ? make("button", { type: "button", class: "plain", "data-edit": key, "aria-label": gettext("Edit {1}", labelOf(key)) }, gettext("Edit"))
                : null;
            return make(
                "tr",
                { "data-key": key },
                make("th", { scope: "row" }, labelOf(key), make("code", {}, key)),
                make("td", { class: key in values() ? "" : "absent" }, make("bdi", {}, text), pendingText(key)),
                other ? make("td", { "data-label": other.name || other.id }, make("bdi", {}, textOf(key, other.settings?.[key]))) : null,
                make("td", { class: "act" }, button),
            );
        }

        const differs = (key) => JSON.stringify(values()[key] ?? null) !== JSON.stringify(other.settings?.[key] ?? null);

        function isWanted(key) {
            const searched = [labelOf(key), key, textOf(key, values()[key])].join("\n").toLowerCase();
            return edits.has(key) || ((!other || differs(key)) && searched.includes(find.value.trim().toLowerCase()));
        }

        /** Those of the keys that belong to a page of the catalogue, in its order. */
        function keysOf(page, all) {
            const own = page.settings.map(({ key }) => key);
            return all
                .filter((key) => own.includes(Fleet.find(key).pattern))
                .sort((a, b) => own.indexOf(Fleet.find(a).pattern) - own.indexOf(Fleet.find(b).pattern) || a.localeCompare(b));
        }

        function render() {
            const all = [...new Set([...Object.keys(values()), ...Object.keys(other?.settings ?? {}), ...edits.keys()])];
            const groups = Fleet.pagesOf(() => true).map((page) => [page.title, page.path, keysOf(page, all).filter(isWanted)]);
            const unknown = all.filter((key) => Fleet.find(key).pattern === null && isWanted(key));
            const shown = [...groups, [gettext("Others"), "others", unknown]].filter(([, , keys]) => keys.length);
            Fleet.showKeyed(
                byId("setting_groups"),
                shown.map(([title, path]) =>
                    make("section", { "data-key": path, "aria-label": title }, make("h4", {}, title), make("table", { class: "settings" }, make("tbody"))),
                ),
                (section, index) => Fleet.showKeyed(section.querySelector("tbody"), shown[index][2].map((key) => (edits.has(key) ? editRow(key) : shownRow(key)))),
            );
            if (shown.length === 0) {
                show(byId("setting_groups"), make("p", { class: "empty", "data-key": "empty" }, emptyText()));
            }
            showPending();
        }

        function emptyText() {
            return find.value.trim() ? gettext("No setting matches.") : other ? gettext("All settings are the same.") : gettext("The device has not told its settings yet.");
        }

        function patch() {
            return Object.fromEntries([...edits].map(([key, { text }]) => [key, Fleet.valueOf(key, text)]));
        }

        function showPending() {
            byId("pending").hidden = edits.size === 0;
            Fleet.tell(byId("pending_text"), ngettext("{1} setting is being edited.", "{1} settings are being edited.", edits.size));
            byId("send_change").textContent = device.online ? gettext("Send to the device") : gettext("Send: the device is offline, and has ten minutes to come back");
        }

        function startEdit(key) {
            const value = values()[key];
            const input = Fleet.inputFor(key, value, { id: "unused" });
            edits.set(key, { initial: value, text: input.value });
            render();
            byId(inputId(key)).focus();
        }

        function showResult() {
            const box = byId("change_result");
            const texts = {
                waiting: device.online ? gettext("It is sent at once.") : gettext("The device is offline: it is sent when it comes back."),
                sent: gettext("The device has not answered yet."),
                trial: gettext("Stored for now: all goes back unless the device reaches the broker again."),
                done: gettext("The device has stored it."),
                kept: gettext("The device has stored it, and has reached the broker with it."),
                returned: gettext("The device did not reach the broker with it: all is as it was before."),
                failed: gettext("Some of it may be stored."),
            };
            const [, tone] = Fleet.memberStates[sent.state] ?? ["", "quiet"];
            box.className = `result ${tone}`;
            show(
                box,
                make("button", { type: "button", class: "plain", "data-close": true, "aria-label": gettext("Close") }, "×"),
                make("p", {}, Fleet.memberBadge(sent.state), " ", texts[sent.state] ?? ""),
                make("div", {}, reasons(sent.message, sent.refused)),
            );
        }

        /** Takes in what has become of the change that was sent last. */
        function takeResult({ changes: [change] }) {
            if (!change || (sent && sent.change === change.change && sent.state === change.state)) {
                return;
            }
            sent = change;
            if (change.state === "refused") {
                refused = change.refused ?? {};
                for (const [key, value] of Object.entries(change.patch)) {
                    if (!edits.has(key) && typeof value !== "object") {
                        edits.set(key, { initial: value, text: String(value) });
                    }
                }
            }
            showResult();
            render();
        }

        const askResult = Fleet.poll(
            "changes",
            () => (sent && underWay.includes(sent.state) ? { id, change: sent.change, limit: 1 } : null),
            takeResult,
        );

        async function send() {
            const wanted = patch();
            byId("send_change").disabled = true;
            try {
                const { change } = await Fleet.call("change", { id, patch: wanted, based_on: device.revision, restart: byId("change_restart").checked });
                sent = { change, patch: wanted, state: "sent" };
                refused = {};
                edits.clear();
            } catch (error) {
                refused = error.refused ?? {};
                sent = { patch: {}, state: "refused", message: error.message, refused: error.refused };
            } finally {
                byId("send_change").disabled = false;
            }
            showResult();
            render();
            askResult();
        }

        // --- What people do -----------------------------------------------------------------------

        form.addEventListener("click", function ({ target }) {
            const { edit, leave, close } = target.dataset;
            if (edit) {
                startEdit(edit);
            } else if (close !== undefined) {
                show(byId("change_result"));
            } else if (leave) {
                edits.delete(leave);
                delete refused[leave];
                render();
                form.querySelector(`[data-edit="${CSS.escape(leave)}"]`)?.focus();
            }
        });
        form.addEventListener("input", function ({ target }) {
            if (edits.has(target.dataset.setting)) {
                edits.get(target.dataset.setting).text = target.value;
            }
        });
        form.addEventListener("submit", function (event) {
            event.preventDefault();
            if (edits.size) {
                send();
            }
        });
        byId("discard_change").addEventListener("click", function () {
            edits.clear();
            refused = {};
            render();
            byId("settings_title").scrollIntoView();
        });
        window.addEventListener("beforeunload", function (event) {
            if (edits.size) {
                event.preventDefault();
            }
        });
        Fleet.picker(byId("another_setting"), "another", startEdit);
        find.addEventListener("input", () => device && render());

        // --- Compared with another one --------------------------------------------------------------

        const compareWith = byId("compare_with");
        compareWith.value = new URLSearchParams(location.search).get("compare") ?? "";
        const askOther = Fleet.poll(
            "device",
            () => (compareWith.dataset.id ? { id: compareWith.dataset.id } : null),
            function (answer) {
                other = answer;
                const link = make("a", { href: Fleet.address("device", other.id) }, other.name || other.id);
                show(byId("compared"), make("span", {}, gettext("Only what differs is shown, with the value of this device first, then that of")), " ", link);
                if (device) {
                    render();
                }
            },
            (error) => show(byId("compared"), error.message),
        );
        function compare(event) {
            event?.preventDefault();
            compareWith.dataset.id = compareWith.value.trim();
            other = null;
            show(byId("compared"));
            byId("compare_end").hidden = !compareWith.dataset.id;
            const query = compareWith.dataset.id ? `?${new URLSearchParams({ compare: compareWith.dataset.id })}` : "";
            window.history.replaceState(null, "", location.pathname + query);
            if (device) {
                render();
            }
            askOther();
        }
        byId("settings_filters").addEventListener("submit", compare);
        byId("compare_end").addEventListener("click", function () {
            compareWith.value = "";
            compare();
        });
        compare();

        return function (latest) {
            device = latest;
            render();
        };
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

        const showSettings = settingsOf(byId("settings"), id);
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
