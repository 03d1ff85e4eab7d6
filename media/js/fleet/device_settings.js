// The settings of one device: rows that are shown, those that are being edited, what was sent, and what is different on
// another device.
(function () {
    "use strict";

    const { byId, make, show, reasons, textOf, labelOf } = Fleet;

    /** What follows on these. */
    const underWay = ["waiting", "sent", "trial"];

    let device = null;
    let other = null; // the device that this one is compared with
    const edits = new Map(); // what is entered, by keys; `initial` is what the input began with
    let sent = null; // the last change of this visit, as the console tells it
    let refused = {}; // reasons, by keys

    const values = () => device.settings ?? {};
    const found = () => byId("find_setting").value.trim().toLowerCase();

    function inputId(key) {
        return `setting_${key.replaceAll(/[^\w]/g, "_")}`;
    }

    const button = (action, key, text, label) => make("button", { type: "button", class: "plain", [`data-${action}`]: key, "aria-label": label }, text);

    function editRow(key) {
        const reason = refused[key];
        const reasonId = `${inputId(key)}_reason`;
        const { initial, removed } = edits.get(key);
        const input = removed
            ? make("p", { id: inputId(key), tabindex: "-1" }, make("ins", {}, textOf(key, null)))
            : Fleet.inputFor(key, initial, {
                  id: inputId(key),
                  "data-setting": key,
                  "aria-invalid": reason ? "true" : "false",
                  "aria-describedby": reasonId,
                  class: reason ? "cppcms_error_msg" : "",
              });
        return make(
            "tr",
            { "data-key": `${key} ${removed ? "removed" : "edited"}`, class: "edited" },
            make("th", { scope: "row" }, removed ? labelOf(key) : make("label", { for: input.id }, labelOf(key)), make("code", {}, key)),
            make(
                "td",
                { colspan: other ? 2 : null },
                input,
                make("span", { id: reasonId, class: reason ? "cppcms_error_msg" : "hint" }, reason ?? Fleet.hintsOf(key)),
            ),
            make("td", { class: "act" }, button("leave", key, gettext("Cancel"), gettext("Leave {1} as it is", labelOf(key)))),
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
        const setting = Fleet.find(key);
        const buttons = [
            Fleet.isSettable(setting) && button("edit", key, gettext("Edit"), gettext("Edit {1}", labelOf(key))),
            // There are any number of these.
            setting.part && key in values() && [" ", button("remove", key, gettext("Remove"), gettext("Remove {1}", labelOf(key)))],
        ];
        return make(
            "tr",
            { "data-key": key },
            make("th", { scope: "row" }, labelOf(key), make("code", {}, key)),
            make("td", { class: key in values() ? "" : "absent" }, make("bdi", {}, text), pendingText(key)),
            other ? make("td", { "data-label": other.name || other.id }, make("bdi", {}, textOf(key, other.settings?.[key]))) : null,
            make("td", { class: "act" }, buttons),
        );
    }

    const differs = (key) => JSON.stringify(values()[key] ?? null) !== JSON.stringify(other.settings?.[key] ?? null);

    function isWanted(key) {
        const searched = [labelOf(key), key, textOf(key, values()[key])].join("\n").toLowerCase();
        return edits.has(key) || ((!other || differs(key)) && searched.includes(found()));
    }

    /** Those of the keys that belong to a page of the catalogue, in its order. */
    function keysOf(page, all) {
        const own = page.settings.map(({ key }) => key);
        return all
            .filter((key) => own.includes(Fleet.find(key).pattern))
            .sort((a, b) => own.indexOf(Fleet.find(a).pattern) - own.indexOf(Fleet.find(b).pattern) || a.localeCompare(b));
    }

    function render() {
        if (!device) {
            return; // nothing is told yet
        }
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
        return found() ? gettext("No setting matches.") : other ? gettext("All settings are the same.") : gettext("The device has not told its settings yet.");
    }

    function patch() {
        return Object.fromEntries([...edits].map(([key, { text, removed }]) => [key, removed ? null : Fleet.valueOf(key, text)]));
    }

    function showPending() {
        byId("pending").hidden = edits.size === 0;
        Fleet.tell(byId("pending_text"), ngettext("{1} setting is being edited.", "{1} settings are being edited.", edits.size));
        byId("send_change").textContent = device.online ? gettext("Send to the device") : gettext("Send: the device is offline, and has ten minutes to come back");
    }

    function startEdit(key, removed = false) {
        const value = values()[key];
        const input = Fleet.inputFor(key, value, { id: "unused" });
        edits.set(key, { initial: value, text: input.value, removed });
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
                if (!edits.has(key) && (value === null || typeof value !== "object")) {
                    edits.set(key, { initial: value, text: String(value), removed: value === null });
                }
            }
        }
        showResult();
        render();
    }

    async function send(askResult) {
        const wanted = patch();
        byId("send_change").disabled = true;
        try {
            const { change } = await Fleet.call("change", { id: device.id, patch: wanted, based_on: device.revision, restart: byId("change_restart").checked });
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

    // --- What people do ---------------------------------------------------------------------------

    function heedEdits(form) {
        const askResult = Fleet.poll(
            "changes",
            () => (sent && underWay.includes(sent.state) ? { change: sent.change, limit: 1 } : null),
            takeResult,
        );

        form.addEventListener("click", function ({ target }) {
            const { edit, remove, leave, close } = target.dataset;
            if (edit || remove) {
                startEdit(edit ?? remove, Boolean(remove));
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
                send(askResult);
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
        Fleet.picker(byId("another_setting"), "another", (key) => startEdit(key));
        byId("find_setting").addEventListener("input", render);
    }

    function heedComparison() {
        const compareWith = byId("compare_with");
        compareWith.value = new URLSearchParams(location.search).get("compare") ?? "";
        const askOther = Fleet.poll(
            "device",
            () => (compareWith.dataset.id ? { id: compareWith.dataset.id } : null),
            function (answer) {
                other = answer;
                const link = make("a", { href: Fleet.address("device", other.id) }, other.name || other.id);
                show(byId("compared"), make("span", {}, gettext("Only what differs is shown, with the value of this device first, then that of")), " ", link);
                render();
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
            render();
            askOther();
        }
        byId("settings_filters").addEventListener("submit", compare);
        byId("compare_end").addEventListener("click", function () {
            compareWith.value = "";
            compare();
        });
        compare();
    }

    /** Sets the form of the settings up.
     *  @returns a function that shows what the console tells of the device. */
    Fleet.deviceSettings = function (form) {
        heedEdits(form);
        heedComparison();
        return function (latest) {
            device = latest;
            render();
        };
    };
})();
