// Starts one browser for all tests of a test file.
import { after, before } from "node:test";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";

let browser;

export function useBrowser(executablePath) {
    before(async () => {
        const args = ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
            "--disable-background-networking", "--disable-component-update", "--disable-sync"];
        browser = await chromium.launch({ executablePath, args });
    });
    after(() => browser.close());
}

// Opens a page and collects its errors, console output and network requests in `trouble`.
export async function open(path, options) {
    const page = await browser.newPage(options);
    page.setDefaultTimeout(60000);
    const trouble = [];
    page.on("console", (message) => trouble.push(message.text()));
    page.on("pageerror", (error) => trouble.push(String(error)));
    page.on("request", (request) => request.url().startsWith("file:") || trouble.push(request.url()));
    await page.goto(pathToFileURL(path).href);
    return { page, trouble };
}
