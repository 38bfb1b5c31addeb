// Converts the report page with its scripts and styles to C++.
//
// Usage: node build.mjs SOURCE_FOLDER UPLOT_FOLDER OUTPUT.cpp
import { createHash } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";

const [source, uplot, output] = process.argv.slice(2);
const read = (...path) => readFileSync(path.join("/"), "utf8");

// main.js is first, because it defines `data` for the other scripts.
const scripts = ["main", "time", "charts", "lanes", "tables"].map((name) => read(source, name + ".js"));
const [main, ...parts] = scripts;
const firstUse = main.indexOf("function makeCharts");
const script =
    read(uplot, "uPlot.iife.min.js") +
    "\n(() => {\n\"use strict\";\n" +
    [main.slice(0, firstUse), ...parts, main.slice(firstUse)].join("\n") +
    "})();\n";
const style = read(uplot, "uPlot.min.css") + read(source, "page.css");
if (script.includes("</script") || style.includes("</style")) {
    throw new Error("a part of the page would end its own element");
}

const hash = (text) => "'sha256-" + createHash("sha256").update(text).digest("base64") + "'";
const policy = `default-src 'none'; base-uri 'none'; form-action 'none'; script-src ${hash(script)}; style-src ${hash(style)}`;
const page = read(source, "page.html")
    .replace("{{policy}}", () => policy)
    .replace("{{style}}", () => style)
    .replace("{{script}}", () => script);
const [before, after] = page.split("{{data}}");

// Divides a text into string literals that are short enough for every compiler, never within a
// character.
const pieces = (text) => {
    const characters = Array.from(text);
    const made = [];
    for (let start = 0; start < characters.length; start += 8000) {
        made.push('    R"page(' + characters.slice(start, start + 8000).join("") + ')page",');
    }
    return made.join("\n");
};
writeFileSync(
    output,
    `#include "orv/log/show/report_page.h"

namespace orv::log {

namespace {

constexpr std::string_view Before[] = {
${pieces(before)}
};
constexpr std::string_view After[] = {
${pieces(after)}
};

}  // namespace

const std::span<const std::string_view> PageBeforeData(Before);
const std::span<const std::string_view> PageAfterData(After);

}  // namespace orv::log
`,
);
