// What machines are offered: its description, and that docs/api.md says what happens.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { after, before, describe, test } from "node:test";
import jsonSchema from "@json-schema-tools/meta-schema";
import openRpc from "@open-rpc/meta-schema";
import Ajv from "ajv";
import { eventually, inCheckout, inDevice } from "./device.mjs";

/** In the manual's examples, the newest change set. */
const newest = /\b57\b/g;

/** Output and status of a shell's command line inside the device. */
function shell(line) {
    const text = inDevice("sh", "-c", `{ ${line}\n} 2>&1; echo "= $?"`);
    const [, output, status] = text.match(/^([^]*?)\n?= (\d+)$/);
    return { output, status: Number(status) };
}

function post(body) {
    const options = "-s --digest -u admin:admin -H Content-Type:application/json";
    return inDevice("sh", "-c", `curl ${options} -d "$1" http://127.0.0.1/status/rpc`, "sh", body);
}

function call(method, ...params) {
    const { result, error } = JSON.parse(post(JSON.stringify({ id: 1, method, params })));
    assert.equal(error, null, method);
    return result;
}

const withNewest = (text) => text.replace(newest, () => call("history_list", 0, 1)[0].number);

const validator = () => new Ajv({ strict: false, validateFormats: false });

/** What a value is made of: of an array, its first element. */
function shape(value) {
    if (Array.isArray(value)) {
        return value.slice(0, 1).map(shape);
    }
    if (value !== null && typeof value === "object") {
        return Object.fromEntries(Object.entries(value).map(([key, member]) => [key, shape(member)]).sort());
    }
    return value === null ? null : typeof value;
}

const withoutNumbers = (text) => text.replace(/\d+/g, "#");

describe("machines", () => {
    let methods;
    let store;
    before(() => {
        methods = call("rpc.discover").methods;
        store = call("settings_get", []);
    });
    after(() => {
        for (const key of Object.keys(call("settings_get", [])).filter((name) => !(name in store))) {
            inDevice("prm", "del", key);
        }
        const text = (value) => (value?.set === false ? "" : value);
        call("settings_set", Object.fromEntries(Object.entries(store).map(([key, value]) => [key, text(value)])));
        inDevice("rm", "-f", "/var/lib/webconfig/trial", "/tmp/webconfig_reboot_flag");
    });

    test("the description is one of OpenRPC, and all that it names can be called so", () => {
        const ajv = validator();
        const isSchema = { ...jsonSchema.default, $schema: undefined };
        ajv.addSchema(isSchema, "https://meta.json-schema.tools");
        const valid = ajv.validate({ ...openRpc.default, $schema: undefined }, call("rpc.discover"));
        assert.ok(valid, ajv.errorsText());
        assert.ok(methods.length > 20);
        for (const { name, params } of methods) {
            const wrong = JSON.stringify({ id: 1, method: name, params: Array(params.length + 1).fill("x") });
            assert.equal(JSON.parse(post(wrong)).error, "Invalid parametres number", name);
        }
    });

    test("the manual's examples are what happens", () => {
        const manual = readFileSync(inCheckout("docs/api.md"), "utf8");
        const blocks = [...manual.matchAll(/^```(\w+)\n([^]*?)^```$/gm)];
        const called = new Set();
        let request;
        for (const [, language, text] of blocks) {
            if (language === "console") {
                for (const [, line, expected] of text.matchAll(/^\$ (.*)\n((?:(?!\$ ).*\n)*)/gm)) {
                    const status = Number(expected.match(/^= (\d)$/m)?.[1] ?? 0);
                    const said = shell(withNewest(line));
                    const output = expected.replace(/^= \d\n/m, "").trimEnd();
                    assert.equal(withoutNumbers(said.output), withoutNumbers(output), line);
                    assert.equal(said.status, status, line);
                }
            } else if (!request) {
                request = JSON.parse(withNewest(text));
                const described = methods.find(({ name }) => name === request.method);
                request.params.forEach((value, at) =>
                    assert.ok(validator().validate(described.params[at].schema, value), request.method));
            } else {
                const answer = post(JSON.stringify(request));
                if (request.method === "reload") {
                    assert.equal(answer, "");
                } else {
                    const described = methods.find(({ name }) => name === request.method);
                    const { result, ...rest } = JSON.parse(answer);
                    assert.deepEqual(shape({ result, ...rest }), shape(JSON.parse(text)), request.method);
                    const ajv = validator();
                    assert.ok(rest.error || ajv.validate(described.result.schema, result), ajv.errorsText());
                }
                called.add(request.method);
                request = undefined;
            }
        }
        assert.deepEqual(methods.map(({ name }) => name).filter((name) => !called.has(name)), []);
    });

    test("the service serves again", () => eventually(() => call("trial_status")));
});
