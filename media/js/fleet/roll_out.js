// A new rollout: what to change, on which devices, and how carefully.
(function () {
    "use strict";

    const { byId, make, show, labelOf } = Fleet;

    /** Settings that are to be changed, in the order in which they were chosen: rows with an input each. */
    function patchOf(box, onChange) {
        const keys = [];
        const inputId = (index) => `patch_value_${index}`;

        function rowOf(key, index) {
            const id = inputId(index);
            const input = Fleet.inputFor(key, undefined, { id, form: "roll_out", "data-setting": key, "aria-describedby": `${id}_hint` });
            return make(
                "div",
                { "data-key": key, class: "patch_row" },
                make("label", { for: id }, labelOf(key), make("code", {}, key)),
                make("div", {}, input, make("span", { id: `${id}_hint`, class: "hint" }, Fleet.hintsOf(key))),
                make("button", { type: "button", class: "plain", "data-leave": key, "aria-label": gettext("Do not change {1}", labelOf(key)) }, gettext("Remove")),
            );
        }

        let made = 0;
        function add(key) {
            if (!keys.includes(key)) {
                keys.push(key);
                box.querySelector(".empty")?.remove();
                box.append(rowOf(key, made++));
                onChange();
            }
            box.querySelector(`[data-setting="${CSS.escape(key)}"]`).focus();
        }

        function showEmpty() {
            box.replaceChildren(make("p", { class: "empty" }, gettext("Nothing yet: choose the settings that the devices are to have.")));
        }

        box.addEventListener("click", function ({ target }) {
            const key = target.dataset.leave;
            if (key) {
                keys.splice(keys.indexOf(key), 1);
                target.closest(".patch_row").remove();
                if (keys.length === 0) {
                    showEmpty();
                }
                onChange();
                byId("add_setting_key").focus();
            }
        });
        box.addEventListener("input", onChange);
        showEmpty();

        return {
            add,
            keys,
            patch: () => Object.fromEntries([...box.querySelectorAll("[data-setting]")].map((input) => [input.dataset.setting, Fleet.valueOf(input.dataset.setting, input.value)])),
        };
    }

    /** How it will go, in words. */
    function planText(devices, { canaries, wave, limit, patience, settle }) {
        const first = Math.min(canaries, devices);
        const waves = Math.ceil((devices - first) / Math.max(1, wave));
        return [
            first > 0 ? ngettext("First {1} device tries it.", "First {1} devices try it.", first) : gettext("No device tries it first."),
            devices > first
                ? ngettext("Then the others follow in {1} wave.", "Then the others follow in {1} waves.", waves)
                : "",
            gettext("Behind each of these, devices have to stay online for {1}.", Fleet.span(settle)),
            gettext("A device that says nothing for {1} is silent.", Fleet.span(patience)),
            gettext("All stops when more than {1} % refuse, fail, go back or are silent.", limit),
        ]
            .filter(Boolean)
            .join(" ");
    }

    let ids = (new URLSearchParams(location.search).get("ids") ?? "").split(",").filter(Boolean);
    let devices = 0; // that are meant
    let entered = false; // something that would be lost
    let filters = null;
    let patch = null;

    const select = () => (ids.length ? { ids } : filters.select());

    const form = () => byId("roll_out");
    const numbers = () => Object.fromEntries(["canaries", "wave", "limit", "patience", "settle"].map((name) => [name, Number(form().elements[name].value)]));

    // --- Which devices ----------------------------------------------------------------------------

    function showChosen() {
        byId("chosen_devices").hidden = ids.length === 0;
        byId("filters").hidden = ids.length > 0;
        byId("chosen_text").textContent = ngettext("{1} device was chosen:", "{1} devices were chosen:", ids.length);
        show(byId("chosen_ids"), ids.map((id) => make("li", { class: "chip" }, id)));
    }

    function deviceText(answer) {
        if (ids.length) {
            const lost = ids.length - devices;
            return lost > 0 ? ngettext("{1} of them is not known.", "{1} of them are not known.", lost) : "";
        }
        const isAll = filters.isEmpty() && devices > 0;
        return isAll ? gettext("{1}: these are all that there are.", Fleet.countText(answer)) : Fleet.countText(answer);
    }

    function showDevices(answer) {
        devices = answer.matching;
        filters.offer(answer);
        Fleet.tell(byId("device_counts"), deviceText(answer));
        byId("device_counts").classList.toggle("attention", ids.length === 0 && filters.isEmpty());
        showPlan();
    }

    // --- How --------------------------------------------------------------------------------------

    function showPlan() {
        byId("plan").textContent = devices > 0 ? planText(devices, numbers()) : gettext("No device is chosen.");
        byId("roll_out_go").disabled = devices === 0 || patch.keys.length === 0;
        byId("roll_out_go").textContent = devices > 0 ? ngettext("Roll out to {1} device", "Roll out to {1} devices", devices) : gettext("Roll out");
    }

    async function start() {
        const { title, why, restart } = form().elements;
        byId("roll_out_go").disabled = true;
        try {
            const { rollout } = await Fleet.call("roll_out", {
                title: title.value.trim(),
                why: why.value.trim(),
                restart: restart.checked,
                patch: patch.patch(),
                select: select(),
                ...numbers(),
            });
            entered = false;
            location.href = Fleet.address("rollout", rollout);
        } catch (error) {
            show(byId("roll_out_failure"), Fleet.reasons(error.message, error.refused));
            showPlan();
        }
    }

    function askFirst(event) {
        event.preventDefault();
        show(byId("roll_out_failure"));
        const settings = Object.entries(patch.patch()).map(([key, value]) => gettext("{1}: {2}", labelOf(key), Fleet.textOf(key, value)));
        AskFirst(
            ngettext("Roll out to {1} device?", "Roll out to {1} devices?", devices),
            gettext("{1}. {2}", settings.join(", "), planText(devices, numbers())),
            gettext("Roll out"),
            start,
        );
    }

    // ----------------------------------------------------------------------------------------------

    function onEntry() {
        entered = true;
        showPlan();
    }

    Fleet.onPage("roll_out", async function () {
        await Fleet.catalogue();
        patch = patchOf(byId("patch"), onEntry);
        filters = Fleet.filters(byId("filters"), () => ask());
        showChosen();
        const ask = Fleet.poll("devices", () => ({ ...select(), limit: 1 }), showDevices);

        Fleet.picker(byId("add_setting"), "add_setting", patch.add);
        byId("add_setting").addEventListener("submit", (event) => event.preventDefault());
        byId("choose_by_filters").addEventListener("click", function () {
            ids = [];
            showChosen();
            ask();
            byId("filter_search").focus();
        });
        form().addEventListener("input", onEntry);
        form().addEventListener("submit", askFirst);
        window.addEventListener("beforeunload", function (event) {
            if (entered) {
                event.preventDefault();
            }
        });
    });
})();
