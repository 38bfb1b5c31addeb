// Puts the page together and writes it as C++.
//
// Usage: node build.mjs SOURCE_FOLDER UPLOT_FOLDER OUTPUT.cpp
import { createHash } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";

const [source, uplot, output] = process.argv.slice(2);
const read = (...path) => readFileSync(path.join("/"), "utf8");

// `data` comes first: the others read it.
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

// Pieces that every compiler takes, none of which cuts a character.
const literal = (text) => {
    const pieces = [];
    for (let rest = Array.from(text); rest.length > 0; ) {
        pieces.push('R"page(' + rest.splice(0, 4000).join("") + ')page"');
    }
    return pieces.join("\n");
};
writeFileSync(
    output,
    `#include "orv/log/report_page.h"

namespace orv::log {

const std::string_view PageBeforeData = ${literal(before)};
const std::string_view PageAfterData = ${literal(after)};

}  // namespace orv::log
`,
);
