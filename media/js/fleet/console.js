// What every page of the fleet's console needs: its calls, and what is told of the console itself.
(function () {
    "use strict";

    /** How long a call waits for its answer, and how often what is shown is asked for again, in milliseconds. */
    const answerTime = 20000;
    const pollInterval = 2000;

    const byId = (id) => document.getElementById(id);

    const root = () => document.body.dataset.root;

    /** The address of a page of the console. */
    const address = (...parts) => [root(), ...parts.map(encodeURIComponent)].join("/");

    class NoAnswer extends Error {}

    /** Calls a method of the console. Fails with NoAnswer, or with what the console has refused it for: its `message`,
     *  and a `code` where it has one. */
    async function call(method, parameters = {}) {
        let response;
        try {
            response = await fetch(address("rpc"), {
                method: "POST",
                headers: { "Content-Type": "application/json" },
                body: JSON.stringify({ id: 1, method, params: [parameters] }),
                signal: AbortSignal.timeout(answerTime),
            });
        } catch {
            throw new NoAnswer(gettext("The console does not answer."));
        }
        if (!response.ok) {
            throw new NoAnswer(gettext("The console answers with error {1}.", response.status));
        }
        const { error, result } = await response.json();
        if (error) {
            throw Object.assign(new Error(), typeof error === "string" ? { message: error } : error);
        }
        return result;
    }

    // --- What is wrong ----------------------------------------------------------------------------

    /** The calls that have failed last, with what there is to say. */
    const problems = new Map();
    let silentSince = null;

    function alertOf(id, text) {
        const box = byId(id);
        box.hidden = !text;
        if (box.textContent !== text) {
            box.textContent = text;
        }
    }

    function tellProblems() {
        const [problem = ""] = problems.values();
        const since = silentSince?.toTimeString().slice(0, 8);
        alertOf("problem", problem && since ? gettext("{1} What is shown is of {2}; trying again.", problem, since) : problem);
    }

    function onFailure(method, error) {
        if (error instanceof NoAnswer) {
            silentSince ??= new Date();
        }
        problems.set(method, error.message);
        tellProblems();
    }

    function onAnswer(method) {
        silentSince = null;
        if (problems.delete(method)) {
            tellProblems();
        }
    }

    // --- Fresh ------------------------------------------------------------------------------------

    /** Keeps what is shown fresh while somebody looks.
     *  @param parameters gives those of the next call; null: there is nothing to ask.
     *  @param show is given each result.
     *  @param refused is given the error of a call that was refused; without it, the page's head tells it.
     *  @returns a function that asks at once, as when other things are to be shown; earlier answers no longer count. */
    function poll(method, parameters, show, refused = (error) => onFailure(method, error)) {
        let timer = null;
        let turn = 0;

        async function answered() {
            const mine = ++turn;
            const wanted = document.hidden ? null : parameters();
            if (wanted === null) {
                return;
            }
            let result;
            try {
                result = await call(method, wanted);
            } catch (error) {
                if (mine === turn) {
                    (error instanceof NoAnswer ? onFailure.bind(null, method) : refused)(error);
                }
                return;
            }
            if (mine === turn) {
                onAnswer(method);
                show(result);
            }
        }

        async function ask() {
            clearTimeout(timer);
            try {
                await answered();
            } finally {
                clearTimeout(timer);
                timer = setTimeout(ask, pollInterval);
            }
        }

        document.addEventListener("visibilitychange", ask);
        ask();
        return ask;
    }

    // --- The head of the page ---------------------------------------------------------------------

    function showStatus({ broker, devices, online, rollouts }) {
        alertOf(
            "broker_alert",
            broker === "connected"
                ? ""
                : gettext("Not connected to the broker: {1}. What is shown may be old; changes are sent when it is back.", broker),
        );
        const state = byId("fleet_state");
        state.textContent = gettext("{1} of {2} online", GroupDigits(online), GroupDigits(devices));
        const running = byId("running_rollouts");
        running.textContent = rollouts > 0 ? ngettext("{1} running", "{1} running", rollouts) : "";
    }

    /** Runs what fills the page that has an element of this id. */
    function onPage(id, fill) {
        document.addEventListener("DOMContentLoaded", function () {
            const element = byId(id);
            if (element) {
                fill(element);
            }
        });
    }

    onPage("banner", function (banner) {
        for (const link of banner.querySelectorAll("nav a")) {
            if (link.pathname === location.pathname) {
                link.setAttribute("aria-current", "page");
            }
        }
        for (const id of ["problem", "broker_alert"]) {
            byId(id).setAttribute("role", "alert");
        }
        poll("status", () => ({}), showStatus);
    });

    window.Fleet = { byId, address, call, poll, onPage };
})();
