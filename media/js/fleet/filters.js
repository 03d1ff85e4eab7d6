// Which devices are meant: the form of filters, that of the list and of a new rollout.
(function () {
    "use strict";

    const { byId, make, show } = Fleet;

    /** How long somebody may pause while typing, in milliseconds. */
    const typingPause = 300;

    const simple = ["search", "firmware", "model", "tag"];
    const names = [...simple, "online", "differs", "differs_device", "differs_key", "differs_value"];

    /** Choices with how many devices have each. One that is chosen stays, though none has it any more. */
    function offer(select, counts) {
        const all = { ...(select.value && { [select.value]: 0 }), ...counts };
        const options = Object.keys(all)
            .sort()
            .map((value) => make("option", { value }, gettext("{1} ({2})", value, GroupDigits(all[value]))));
        const chosen = select.value;
        show(select, make("option", { value: "" }, gettext("All")), options);
        select.value = chosen;
    }

    /** Fills the form from the address, and keeps the address of the page as the form is.
     *  @param onChange is called when other devices are meant.
     *  @returns `select()`: what the console takes; `query()`: the same for an address; `offer(answer)`: the choices
     *      that an answer of "devices" tells; `isEmpty()`. */
    Fleet.filters = function (form, onChange) {
        const { elements } = form;
        const given = new URLSearchParams(location.search);
        let wait = null;

        function showParts() {
            const kind = elements.differs.value;
            byId("differs_device").hidden = kind !== "device";
            byId("differs_setting").hidden = kind !== "setting";
            byId("differs_value").hidden = kind !== "setting" || !elements.differs_key.value;
        }

        /** The input of the value is that of the setting. */
        function showValueInput(value = "") {
            const key = elements.differs_key.value;
            const input = Fleet.inputFor(key, value, { id: "filter_differs_value", name: "differs_value", required: null });
            byId("differs_value").replaceChildren(make("label", { for: input.id }, gettext("Value")), input);
        }

        function differs() {
            const [kind, device, key] = ["differs", "differs_device", "differs_key"].map((name) => elements[name].value.trim());
            if (kind === "device" && device) {
                return { device };
            }
            const value = elements.differs_value?.value ?? given.get("differs_value") ?? "";
            return kind === "setting" && key ? { settings: { [key]: Fleet.valueOf(key, value) } } : null;
        }

        function select() {
            const chosen = Object.fromEntries(simple.map((name) => [name, elements[name].value.trim()]).filter(([, value]) => value));
            if (elements.online.value) {
                chosen.online = elements.online.value === "true";
            }
            const other = differs();
            return other ? { ...chosen, differs: other } : chosen;
        }

        function query() {
            const values = names.map((name) => [name, elements[name]?.value.trim() ?? ""]);
            const kind = elements.differs.value;
            const idle = { "": /^differs/, device: /^differs_(key|value)$/, setting: /^differs_device$/ }[kind];
            return new URLSearchParams(values.filter(([name, value]) => value && !idle.test(name)));
        }

        function changed() {
            clearTimeout(wait);
            showParts();
            onChange();
        }

        form.addEventListener("input", function ({ target }) {
            clearTimeout(wait);
            if (target === elements.differs_key) {
                showValueInput();
            }
            wait = setTimeout(changed, target.tagName === "SELECT" ? 0 : typingPause);
        });
        form.addEventListener("submit", function (event) {
            event.preventDefault();
            changed();
        });
        form.addEventListener("reset", () => setTimeout(changed));

        // What the address names may not be among the choices yet.
        for (const name of names) {
            const input = elements[name];
            if (given.get(name) && input?.tagName === "SELECT" && ![...input.options].some(({ value }) => value === given.get(name))) {
                input.append(make("option", { value: given.get(name) }, given.get(name)));
            }
            if (given.get(name) && input) {
                input.value = given.get(name);
            }
        }
        showParts();
        Fleet.catalogue().then(function () {
            const key = elements.differs_key.value;
            elements.differs_key.replaceChildren(...Fleet.optionsOf((setting) => Fleet.isSettable(setting) && setting.kind !== "secret" && !setting.key.includes("*")).flat());
            elements.differs_key.value = key;
            showValueInput(given.get("differs_value") ?? "");
            if (elements.differs.value === "setting") {
                changed();
            }
            showParts();
        });

        return {
            select,
            query,
            isEmpty: () => Object.keys(select()).length === 0,
            offer({ firmwares = {}, models = {}, tags = {} }) {
                offer(elements.firmware, firmwares);
                offer(elements.model, models);
                offer(elements.tag, tags);
            },
        };
    };

    /** How many devices there are, and how many are meant. */
    Fleet.countText = function ({ total, matching, online }) {
        const all = ngettext("{1} device", "{1} devices", total);
        return matching === total
            ? gettext("{1}, {2} online", all, GroupDigits(online))
            : gettext("{1} of {2} match", GroupDigits(matching), all);
    };
})();
