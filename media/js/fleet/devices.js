// The list of devices.
(function () {
    "use strict";

    const { byId, make, badge, row } = Fleet;

    /** So many chosen one by one are named in the address of a new rollout: more are better told by a tag. */
    const mostChosen = 100;
    const pageSize = 50;
    const tagsAtOnce = 1000;

    const columns = [
        { title: gettext("Selected"), quiet: true },
        { title: gettext("Name"), sort: "name" },
        { title: gettext("Id"), sort: "id" },
        { title: gettext("State"), sort: "online" },
        { title: gettext("Model"), sort: "model" },
        { title: gettext("Firmware"), sort: "firmware" },
        { title: gettext("Health") },
        { title: gettext("Tags") },
        { title: gettext("Last heard"), sort: "seen" },
    ];

    function healthOf({ temperature, load, memory, signal }) {
        const parts = [
            temperature === undefined ? null : Figures.celsius(temperature),
            load === undefined ? null : gettext("load {1}", Figures.number(load)),
            memory === undefined ? null : gettext("memory {1}", Figures.percent(memory / 100)),
        ];
        return [signal === undefined ? null : SignalBars(signal)[0], parts.filter(Boolean).join(", ") || (signal === undefined ? "–" : null)];
    }

    const chosen = new Set(); // ids
    let allMatching = false; // are chosen, instead of these
    let answer = null; // the last one
    let view = { sort: "name", descending: false, offset: 0, limit: pageSize };
    let filters = null;
    let fresh = null; // asks at once

    Fleet.stateOf = ({ online, restart, trial }) => [
        Fleet.onlineBadge(online),
        restart ? [" ", badge(gettext("Restart needed"), "warn")] : null,
        trial && trial !== "none" ? [" ", badge(gettext("On trial"), "busy")] : null,
    ];

    Fleet.tagChips = (tags) => tags.map((tag) => [make("span", { class: "chip" }, tag), " "]);

    // --- The list ---------------------------------------------------------------------------------

    function readAddress() {
        const given = new URLSearchParams(location.search);
        const known = columns.some(({ sort }) => sort && sort === given.get("sort"));
        view = { ...view, ...(known && { sort: given.get("sort"), descending: given.has("descending") }), offset: Number(given.get("offset")) || 0 };
    }

    function writeAddress() {
        const query = filters.query();
        if (view.sort !== "name" || view.descending) {
            query.set("sort", view.sort);
        }
        if (view.descending) {
            query.set("descending", "");
        }
        if (view.offset) {
            query.set("offset", view.offset);
        }
        window.history.replaceState(null, "", location.pathname + (query.size ? `?${query}` : ""));
    }

    /** Shows something else of the list. */
    function turnTo(change) {
        view = { ...view, ...change };
        writeAddress();
        fresh();
    }

    function rowOf(device) {
        const compare = filters.select().differs?.device;
        const link = Fleet.address("device", device.id) + (compare ? `?${new URLSearchParams({ compare })}` : "");
        const label = gettext("Select {1}", device.name || device.id);
        return row(device.id, columns, [
            make("input", { type: "checkbox", "data-id": device.id, "aria-label": label }),
            make("a", { href: link }, device.name || device.id),
            make("span", { class: "id", title: device.id }, device.id),
            Fleet.stateOf(device),
            make("bdi", {}, device.model || "–"),
            make("bdi", {}, device.firmware || "–"),
            healthOf(device.health ?? {}),
            device.tags?.length ? Fleet.tagChips(device.tags) : "–",
            device.online ? gettext("now") : Fleet.ago(device.seen),
        ]);
    }

    function emptyText() {
        return answer.total === 0
            ? [
                  make("b", {}, gettext("No device has said anything yet.")),
                  make(
                      "p",
                      {},
                      gettext("A device appears here when its agent (webconfig-agent) has reached the broker that this console is connected to: “webconfig.fleet.broker” in the device's configuration names it."),
                  ),
              ]
            : [make("b", {}, gettext("No device matches.")), make("p", {}, gettext("Other filters, or none, show more."))];
    }

    function showList() {
        if (answer.devices.length === 0) {
            byId("devices").replaceChildren(make("div", { class: "empty" }, emptyText()));
        } else {
            Fleet.showTable(byId("devices"), gettext("Devices"), columns, answer.devices.map(rowOf), view);
        }
        Fleet.showPager(byId("device_pages"), view, answer.matching);
        showSelection();
    }

    // --- What is selected -------------------------------------------------------------------------

    const count = () => (allMatching ? answer.matching : chosen.size);

    function showSelection() {
        for (const checkbox of document.querySelectorAll("#devices tbody input")) {
            checkbox.checked = allMatching || chosen.has(checkbox.dataset.id);
            checkbox.closest("tr").classList.toggle("chosen", checkbox.checked);
        }
        const selected = count();
        byId("with_selected").hidden = answer.devices.length === 0;
        byId("selection").textContent = selected ? gettext("{1} selected", GroupDigits(selected)) : gettext("Nothing selected");
        byId("roll_out_selected").disabled = byId("tag_selected").disabled = selected === 0;
        byId("select_none").hidden = selected === 0;
        byId("select_matching").hidden = allMatching;
        byId("select_matching").textContent = gettext("Select all {1}", GroupDigits(answer.matching));
    }

    function choose({ target }) {
        if (!target.dataset.id) {
            return;
        }
        if (allMatching) {
            // From here on, those of this page one by one.
            allMatching = false;
            answer.devices.forEach(({ id }) => chosen.add(id));
        }
        if (target.checked && chosen.size >= mostChosen) {
            ShowFormResultMsg(gettext("At most {1} devices are chosen one by one: use filters, or a tag.", mostChosen), "failure");
        } else {
            chosen[target.checked ? "add" : "delete"](target.dataset.id);
        }
        showSelection();
    }

    function chooseAll(all) {
        chosen.clear();
        allMatching = all;
        showSelection();
        byId(all ? "select_none" : "select_matching").focus();
    }

    function rollOut() {
        const query = allMatching ? filters.query() : new URLSearchParams({ ids: [...chosen].join(",") });
        location.href = `${Fleet.address("roll_out")}?${query}`;
    }

    // --- Tags -------------------------------------------------------------------------------------

    /** The ids of all that match, which the console gives by pages. */
    async function matchingIds() {
        const ids = [];
        for (let total = 1; ids.length < total; ) {
            const page = await Fleet.call("devices", { ...filters.select(), sort: "id", offset: ids.length, limit: 200 });
            ids.push(...page.devices.map(({ id }) => id));
            total = page.devices.length ? page.matching : 0;
        }
        return ids;
    }

    /** For any number of devices: a call has only some room. */
    async function tagAll(ids, add, remove) {
        let tagged = 0;
        for (let from = 0; from < ids.length; from += tagsAtOnce) {
            tagged += (await Fleet.call("tag", { ids: ids.slice(from, from + tagsAtOnce), add, remove })).devices;
        }
        return tagged;
    }

    const tagsIn = (id) => [...new Set(byId(id).value.split(",").map((tag) => tag.trim()))].filter(Boolean);

    function askForTags() {
        byId("tag_failure").textContent = "";
        byId("tag_title").textContent = ngettext("Tag {1} device", "Tag {1} devices", count());
        byId("tag_dialog").showModal();
        byId("tags_to_add").focus();
    }

    async function storeTags(event) {
        event.preventDefault();
        byId("tag_go").disabled = true;
        try {
            const ids = allMatching ? await matchingIds() : [...chosen];
            const tagged = await tagAll(ids, tagsIn("tags_to_add"), tagsIn("tags_to_remove"));
            byId("tag_dialog").close();
            byId("tags_to_add").value = byId("tags_to_remove").value = "";
            ShowFormResultMsg(ngettext("The tags of {1} device are stored.", "The tags of {1} devices are stored.", tagged), "success");
            fresh();
        } catch (error) {
            byId("tag_failure").textContent = error.message;
        } finally {
            byId("tag_go").disabled = false;
        }
    }

    // ----------------------------------------------------------------------------------------------

    function sortBy({ target }) {
        const sort = target.closest("[data-sort]")?.dataset.sort;
        if (sort) {
            turnTo({ sort, descending: view.sort === sort && !view.descending, offset: 0 });
        }
    }

    Fleet.onPage("devices", function (box) {
        readAddress();
        filters = Fleet.filters(byId("filters"), function () {
            chosen.clear();
            allMatching = false;
            turnTo({ offset: 0 });
        });
        byId("with_selected").hidden = true;
        fresh = Fleet.poll(
            "devices",
            () => ({ ...filters.select(), ...view }),
            function (result) {
                answer = result;
                Fleet.tell(byId("device_counts"), Fleet.countText(result));
                filters.offer(result);
                showList();
            },
        );

        box.addEventListener("click", sortBy);
        box.addEventListener("change", choose);
        Fleet.onTurn(byId("device_pages"), function (offset) {
            turnTo({ offset });
            byId("config_page_title").scrollIntoView();
        });
        byId("select_matching").addEventListener("click", () => chooseAll(true));
        byId("select_none").addEventListener("click", () => chooseAll(false));
        byId("roll_out_selected").addEventListener("click", rollOut);
        byId("tag_selected").addEventListener("click", askForTags);
        byId("tag_cancel").addEventListener("click", () => byId("tag_dialog").close());
        byId("tag_dialog").querySelector("form").addEventListener("submit", storeTags);
    });
})();
