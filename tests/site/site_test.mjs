// Opens every page of the website from disk in a browser, in the sizes of a phone and a desktop,
// with light and dark colours. Also tests the search.
//
// Usage: node site_test.mjs CHROMIUM SITE
import assert from "node:assert/strict";
import { readdirSync } from "node:fs";
import { test } from "node:test";
import { open, useBrowser } from "./browser.mjs";

const [executablePath, site] = process.argv.slice(2);
const pages = readdirSync(site, { recursive: true }).filter((name) => name.endsWith(".html"));

useBrowser(executablePath);

test("every page fits a phone, asks the network for nothing and has no error", async () => {
    assert.ok(pages.length > 15);
    for (const page of pages) {
        const { page: tab, trouble } = await open(`${site}/${page}`, { viewport: { width: 360, height: 740 } });
        const [needed, shown] = await tab.evaluate(() =>
            [document.documentElement.scrollWidth, document.documentElement.clientWidth]);
        assert.ok(needed <= shown, `${page} is ${needed} wide`);
        assert.deepEqual(trouble, [], page);
        await tab.close();
    }
});

test("light and dark follow the system, and a switch changes them", async () => {
    const background = () => getComputedStyle(document.body).backgroundColor;
    const [light, dark] = await Promise.all(["light", "dark"].map((colorScheme) => open(`${site}/index.html`, { colorScheme })));
    const [bright, dim] = await Promise.all([light, dark].map(({ page: tab }) => tab.evaluate(background)));
    assert.notEqual(bright, dim);
    for (const [{ page: tab }, wanted] of [[light, dim], [dark, bright]]) {
        await tab.locator("form[data-md-component=palette] label:visible").click();
        await tab.waitForFunction((colour) => getComputedStyle(document.body).backgroundColor === colour, wanted);
    }
});

test("the search finds a function, and leads to it", async () => {
    const { page: tab, trouble } = await open(`${site}/index.html`);
    await tab.locator(".md-search__input").pressSequentially("OrvDevice_Disconnect");
    const found = tab.locator('a.md-search-result__link[href*="#orvdevice_disconnect"]');
    await found.first().click();
    await tab.waitForURL(/quelvixwinlib\.html.*#orvdevice_disconnect$/);
    assert.match(await tab.locator("#orvdevice_disconnect").innerText(), /OrvDevice_Disconnect/);
    assert.deepEqual(trouble, []);
});
