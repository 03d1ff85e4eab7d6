// jquery-ui.mjs FOLDER WIDGET...: prints the modules of jQuery UI in FOLDER, each behind those that it needs, as two
// lists of CMake: what the widgets are made of, and all others.

import { readFileSync, readdirSync } from "node:fs";
import { join, normalize } from "node:path";

const [folder, ...widgets] = process.argv.slice(2);

/** What stands in the module's list of dependencies, as paths in the folder. */
function needs(module) {
    const [, list] = readFileSync(join(folder, module), "utf8").match(/\bdefine\( ?\[([^\]]*)\]/);
    return [...list.matchAll(/"(\.[^"]*)"/g)].map(([, name]) => normalize(join(module, "..", `${name}.js`)));
}

/** Adds modules, and what they need, to a set that keeps their order. */
function add(modules, chosen) {
    for (const module of modules) {
        if (!chosen.has(module)) {
            add(needs(module), chosen);
            chosen.add(module);
        }
    }
    return chosen;
}

// (Of the modules one only names others, for loaders of modules.)
const scriptsOf = (path) => readdirSync(join(folder, path)).filter((name) => name.endsWith(".js") && name !== "core.js");
const parts = add(widgets.map((name) => `widgets/${name}.js`), new Set());
const all = add(["", "effects", "widgets"].flatMap((path) => scriptsOf(path).map((name) => join(path, name))), new Set(parts));
console.log([...parts].join(";"));
console.log([...all].filter((module) => !parts.has(module)).join(";"));
