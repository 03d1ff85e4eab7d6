// All tests in one process, with one browser.

import { readdirSync } from "node:fs";

for (const name of readdirSync(new URL(".", import.meta.url)).sort()) {
    if (name.endsWith(".test.mjs")) {
        await import(`./${name}`);
    }
}
