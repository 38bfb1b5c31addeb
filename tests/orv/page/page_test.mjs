// Tests the HTML report of orv in a browser: its content, its zoom, and that names run no code.
//
// Usage: node page_test.mjs ORV CHROMIUM FOLDER
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { statSync, writeFileSync } from "node:fs";
import { test } from "node:test";
import { open, useBrowser } from "./browser.mjs";

const [orv, executablePath, folder] = process.argv.slice(2);
const hostile = [
    "ORV</script><script>window.taken=1</script>",
    "ORV<img src=x onerror=window.taken=1>",
    "ORV\x1B]0;taken\x07\x1B[2J\u202Etxt",
    "ORV\r\n12:00:09.000\tOrvDevice_Connect 99\r\n",
    "ORV-->\u2028${window.taken=1}{{data}}",
];

const stamp = (ms) => new Date(ms).toISOString().slice(11, 23);
const at = (ms, text) => `${stamp(ms)}\t${text}\r\n`;

function smallLog() {
    let log = at(0, "BluetoothAvailable") + at(30, "Returned 0 after 30 ms: BluetoothAvailable");
    for (let ms = 100; ms < 20000; ms += 100) {
        const which = (ms / 100) % hostile.length;
        log += at(ms, `OnAdvertisementReceived ${which + 1} <${hostile[which]}> ${-60 - which}`);
        if (ms % 1000 === 0) log += at(ms, "OnDataReceived 1 200");
    }
    return log + at(20000, "OrvDevice_Connect 1") + at(22004, "Returned -1 after 2004 ms: OrvDevice_Connect 1");
}

function* largeLog(lines) {
    for (let line = 0; line < lines; line += 4) {
        const ms = line * 10;
        yield at(ms, `OnAdvertisementReceived ${line % 1000} <ORV-${line}> ${-40 - (line % 50)}`) +
            at(ms, "OnDataReceived 7 20") +
            at(ms, `OrvDevice_Receive ${line % 7}`) +
            at(ms, `Returned ${line % 3 ? 20 : -1} after 0 ms: OrvDevice_Receive ${line % 7}`);
    }
}

function report(name, log) {
    writeFileSync(`${folder}/${name}.log`, log);
    execFileSync(orv, ["log", "report", `${folder}/${name}.log`, "--output", `${folder}/${name}.html`]);
    return `${folder}/${name}.html`;
}

useBrowser(executablePath);

const picture = (page, id) => page.evaluate((id) => document.querySelector(`#${id} canvas`).toDataURL(), id);
const text = (page, id) => page.evaluate((id) => document.getElementById(id).innerText, id);

test("hostile names are shown and stay text", async () => {
    const { page, trouble } = await open(report("small", smallLog()));
    assert.deepEqual(trouble, []);
    assert.equal(await page.evaluate("window.taken"), undefined);
    assert.match(await page.title(), /^Log report: small/);
    const devices = await text(page, "devices");
    for (const name of ["ORV</script><script>window.taken=1", "ORV<img src=x", "ORV\\x1B]0;taken\\x07", "OrvDevice_Connect 99"]) {
        assert.ok(devices.includes(name), name + " is not in " + devices);
    }
    assert.match(await text(page, "facts"), /199\s+advertisements/);
    assert.match(await text(page, "failures"), /no answer within the limit of 2000 ms/i);
    assert.equal(await page.locator("#failures .card").count(), 1, "a forged call is not one");
});

test("zooms by dragging, by buttons and from a failure, all charts together", async () => {
    const { page, trouble } = await open(`${folder}/small.html`);
    const whole = await picture(page, "signal");
    const box = await page.locator("#lanes .u-over").boundingBox();
    await page.mouse.move(box.x + box.width * 0.2, box.y + 20);
    await page.mouse.down();
    await page.mouse.move(box.x + box.width * 0.4, box.y + 20, { steps: 4 });
    await page.mouse.up();
    await page.waitForFunction(
        (before) => document.querySelector("#signal canvas").toDataURL() !== before, whole);
    await page.click("#all");
    await page.waitForFunction(
        (before) => document.querySelector("#signal canvas").toDataURL() === before, whole);
    await page.click("#failures .link");
    await page.waitForFunction(
        (before) => document.querySelector("#signal canvas").toDataURL() !== before, whole);
    assert.deepEqual(trouble, []);
});

test("fits a telephone, light and dark", async () => {
    const pictures = [];
    for (const colorScheme of ["light", "dark"]) {
        const { page } = await open(`${folder}/small.html`, { viewport: { width: 390, height: 844 }, colorScheme });
        assert.ok(await page.evaluate("document.documentElement.scrollWidth <= innerWidth"));
        pictures.push(await picture(page, "lanes"));
    }
    assert.notEqual(pictures[0], pictures[1]);
});

test("a million lines give a page that stays small", async () => {
    const path = report("large", [...largeLog(1e6)].join(""));
    assert.ok(statSync(path).size < 1e6, String(statSync(path).size));
    const { page, trouble } = await open(path);
    const facts = (await text(page, "facts")).replace(/\s+/g, " ");
    for (const fact of ["1,000,000 lines", "250,000 calls", "83,334 failed", "250,000 advertisements"]) {
        assert.ok(facts.includes(fact), fact + " is not in " + facts);
    }
    assert.match(await text(page, "merged"), /Device links: 250,000 calls, 1,500 of them drawn one by one/);
    // Every third call fails, so the chart's lane of links must be red along its whole width.
    const redParts = await page.evaluate(() => {
        const canvas = document.querySelector("#lanes canvas"), plot = document.querySelector("#lanes .u-over");
        const scale = canvas.width / canvas.clientWidth, width = Math.floor(plot.clientWidth * scale);
        const failed = getComputedStyle(document.documentElement).getPropertyValue("--failed");
        const wanted = failed.match(/[0-9a-f]{2}/gi).map((hex) => parseInt(hex, 16));
        const { data } = canvas.getContext("2d").getImageData(plot.offsetLeft * scale, 0, width, canvas.height);
        const isRed = (pixel) => wanted.every((value, shift) => Math.abs(data[4 * pixel + shift] - value) < 9);
        const parts = new Set();
        for (let pixel = 0; pixel < data.length / 4; pixel++) {
            if (isRed(pixel)) parts.add(Math.floor((20 * (pixel % width)) / width));
        }
        return parts.size;
    });
    assert.equal(redParts, 20);
    const whole = await picture(page, "lanes");
    await page.click("#in");
    await page.waitForFunction((before) => document.querySelector("#lanes canvas").toDataURL() !== before, whole);
    assert.deepEqual(trouble, []);
});
