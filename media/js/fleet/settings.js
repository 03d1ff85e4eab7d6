// The settings of devices: what they are called, how their values are shown, and inputs for them.
(function () {
    "use strict";

    const { make } = Fleet;

    let pages = [];
    let settings = []; // of all pages

    /** Resolves when the catalogue is here. */
    let loading = null;

    const matches = (pattern, key) => new RegExp(`^${pattern.split("*").map((part) => part.replaceAll(".", "\\.")).join("([^/]+)")}$`).exec(key);

    /** The setting of a key: its row of the table, the key of that as `pattern`, and what stands in the place of its
     *  "*" as `part`. */
    function find(key) {
        const exact = settings.find((setting) => setting.key === key);
        const found = exact ?? settings.find((setting) => setting.key.includes("*") && matches(setting.key, key));
        return found
            ? { ...found, pattern: found.key, part: exact ? "" : matches(found.key, key)[1] }
            : { pattern: null, label: key, kind: "text", part: "" };
    }

    function labelOf(key) {
        const { label, part } = find(key);
        return label.replace("*", part || "*");
    }

    /** A value as people read it. */
    function textOf(key, value) {
        if (value === null || value === undefined) {
            return gettext("not set");
        }
        const { kind, choices = [] } = find(key);
        if (typeof value === "object") {
            return value.set ? gettext("set, but not shown") : gettext("not set");
        }
        if (kind === "secret") {
            return gettext("not shown");
        }
        const text = String(value);
        if (kind === "switch") {
            return { yes: gettext("Yes"), no: gettext("No"), true: gettext("Yes"), false: gettext("No") }[text] ?? text;
        }
        return choices.find((choice) => choice.value === text)?.label ?? (text === "" ? gettext("empty") : text);
    }

    /** Pages with the settings that are left by `wanted`; those without any are left out. */
    function pagesOf(wanted) {
        return pages.map((page) => ({ ...page, settings: page.settings.filter(wanted) })).filter((page) => page.settings.length);
    }

    /** Whether a device takes this setting from elsewhere: files are only taken by their pages. */
    const isSettable = ({ kind }) => kind !== "file";

    // --- Inputs -----------------------------------------------------------------------------------

    const address = { inputmode: "decimal", pattern: "[0-9]{1,3}([.][0-9]{1,3}){3}", title: gettext("Four numbers with dots, such as 192.168.0.1") };
    const attributesOf = {
        number: ({ least, most }) => ({ type: "number", min: least, max: most, required: true }),
        port: ({ least, most }) => ({ type: "number", min: least, max: most, required: true }),
        address: ({ least }) => ({ ...address, required: least > 0 }),
        netmask: () => ({ ...address, required: true }),
        text: ({ least, most }) => ({ minlength: least || null, maxlength: most, required: least > 0 }),
        secret: ({ least }) => ({ type: "password", autocomplete: "new-password", minlength: least || null }),
    };
    attributesOf.name = attributesOf.text;

    function select(attributes, choices, value) {
        const known = choices.some((choice) => choice.value === value) ? choices : [{ value, label: value === "" ? "–" : value }, ...choices];
        return make("select", attributes, known.map((choice) => make("option", { value: choice.value, selected: choice.value === value }, choice.label)));
    }

    /** An input for the value of a setting, with what it has now.
     *  @param attributes of the input: at least its id. */
    function inputFor(key, value, attributes) {
        const setting = find(key);
        const text = value === null || value === undefined || typeof value === "object" ? "" : String(value);
        if (setting.kind === "switch") {
            const choices = [
                { value: "yes", label: gettext("Yes") },
                { value: "no", label: gettext("No") },
            ];
            return select(attributes, choices, { true: "yes", false: "no", "": "no" }[text] ?? text);
        }
        if (setting.choices) {
            return select(attributes, setting.choices, text);
        }
        const own = (attributesOf[setting.kind] ?? attributesOf.text)(setting);
        return make("input", { type: "text", spellcheck: "false", autocapitalize: "off", autocomplete: "off", value: text, ...own, ...attributes });
    }

    /** What a patch has for a setting that was entered. */
    function valueOf(key, text) {
        return find(key).kind === "number" && text !== "" ? Number(text) : text;
    }

    /** What somebody ought to know before he changes it. */
    function hintsOf(key) {
        const { effect, reach, kind } = find(key);
        return [
            reach ? gettext("On trial: goes back unless the device reaches the broker again.") : null,
            effect === "restart" ? gettext("Takes effect with a restart.") : null,
            kind === "secret" ? gettext("Cannot be taken back.") : null,
        ]
            .filter(Boolean)
            .join(" ");
    }

    /** Options for a select of settings, in groups by page. */
    function optionsOf(wanted) {
        const groups = pagesOf(wanted).map((page) => make("optgroup", { label: page.title }, page.settings.map(({ key, label }) => make("option", { value: key }, label))));
        return [make("option", { value: "" }, gettext("Choose a setting")), groups];
    }

    /** Lets somebody choose a setting.
     *  @param box an empty element of class "fields".
     *  @param id where the ids of the inputs begin.
     *  @param choose is given its key. */
    function picker(box, id, choose) {
        const setting = make("select", { id: `${id}_key` }, optionsOf(isSettable));
        const part = make("input", { type: "text", id: `${id}_part`, spellcheck: "false", pattern: "[^\\/]+" });
        const partRow = make("p", { hidden: true }, make("label", { for: part.id }, gettext("Which one")), part);
        const go = make("button", { type: "button", class: "plain" }, gettext("Add"));
        box.append(make("p", {}, make("label", { for: setting.id }, gettext("Setting")), setting), partRow, make("p", { class: "last" }, go));
        const chosen = () => settings.find(({ key }) => key === setting.value);

        setting.addEventListener("change", function () {
            partRow.hidden = !setting.value.includes("*");
            const parts = chosen()?.parts ?? "";
            part.placeholder = parts === "00000" ? gettext("The port: 8080") : parts.replaceAll(" ", ", ");
            part.value = "";
        });
        part.addEventListener("keydown", function (event) {
            if (event.key === "Enter") {
                event.preventDefault();
                go.click();
            }
        });
        go.addEventListener("click", function () {
            const { parts = "" } = chosen() ?? {};
            const filled = parts === "00000" ? part.value.trim().padStart(5, "0") : part.value.trim();
            part.required = !partRow.hidden;
            if (!setting.value) {
                setting.focus();
            } else if (partRow.hidden || part.reportValidity()) {
                choose(setting.value.replace("*", filled));
                setting.value = "";
                partRow.hidden = true;
            }
        });
    }

    /** Resolves when the table of settings is here. */
    function catalogue() {
        loading ??= Fleet.call("catalogue").then(
            function (answer) {
                pages = answer.pages;
                settings = pages.flatMap((page) => page.settings);
            },
            async function () {
                await new Promise((wake) => setTimeout(wake, 2000));
                loading = null;
                return catalogue();
            },
        );
        return loading;
    }

    Object.assign(Fleet, { catalogue, find, labelOf, textOf, pagesOf, isSettable, inputFor, valueOf, hintsOf, optionsOf, picker });
})();
