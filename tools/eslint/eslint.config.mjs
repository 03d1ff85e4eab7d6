// Rules for the scripts of the pages and for the tests in the browser.
import js from "@eslint/js";

const names = (text) => Object.fromEntries(text.trim().split(/\s+/).map((name) => [name, "readonly"]));

const browser = names("$ console document location getComputedStyle getSelection innerWidth Event Node fetch setTimeout requestAnimationFrame ResizeObserver setInterval clearInterval clearTimeout window sessionStorage XMLHttpRequest AbortSignal CSS FormData DOMParser URLSearchParams");
const node = names("Buffer URL process setTimeout");

/** What the scripts of the site offer to each other, to templates and to plug-ins. */
const site = names(`
    gettext ngettext
    ClearFormResultMsg FadeFormResultMsg ShowFormResultMsg ShowStaticFormResultMsg
    ShowCountFormResultMsg
    CallStatus PollStatus PollBriefStatus ShowIn ShownStatus StatusSection StatusTable ShowReport
    GroupDigits SignalBars InUnit Figures Duration PollOverview HealthPlots HoldingScale MakePlot uPlot
    ParseToolStatus ShowProgress ShowStage ShowAmount ShowNote Announce PostForm RememberFocus ShowWaiting
    AskFirst Fleet
`);

export default [
    js.configs.recommended,
    {
        rules: {
            curly: "error",
            eqeqeq: "error",
            "no-implicit-globals": "error",
            "no-shadow": "error",
            "no-var": "error",
            "prefer-const": "error",
            strict: "error",
        },
    },
    { files: ["**/*.js"], languageOptions: { sourceType: "script", globals: { ...browser, ...site } } },
    { files: ["**/*.mjs"], languageOptions: { globals: { ...browser, ...site, ...node } } },
];
