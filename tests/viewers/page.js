// page.js PAGE.html [PICTURE.png]: opens a page from the disk. Status 1 if it asks for anything else, shows no model, or fails.
import { writeFileSync } from "node:fs";
import { resolve } from "node:path";
import { PNG } from "pngjs";
import { patience, withBrowser } from "./browser.js";

const [file, picture] = process.argv.slice(2);
const leastPixels = 1000; // that differ from the background

const isShown = await withBrowser(async (browser) => {
    const page = await browser.newPage();
    const address = "file://" + resolve(file);
    const others = [];
    const errors = [];
    page.on("request", (request) => {
        // What is in the page itself has addresses of these kinds.
        if (request.url() !== address && !/^(blob|data):/.test(request.url())) {
            others.push(request.url());
        }
    });
    page.on("pageerror", (error) => errors.push(error.message));
    await page.setViewport({ width: 640, height: 480 });
    await page.goto(address, { timeout: patience });
    await page.waitForFunction(() => document.body.dataset.state, { timeout: patience });
    const state = await page.evaluate(() => document.body.dataset.state);
    const bytes = await page.screenshot();
    if (picture) {
        writeFileSync(picture, bytes);
    }
    const { data } = PNG.sync.read(Buffer.from(bytes));
    let pixels = 0;
    for (let i = 0; i < data.length; i += 4) {
        pixels += Math.abs(data[i] - 0x9f) + Math.abs(data[i + 1] - 0xb8) + Math.abs(data[i + 2] - 0xcc) > 6 ? 1 : 0;
    }
    console.log(`${state}, ${pixels} pixels, other addresses: ${others.join(" ") || "none"}, errors: ${errors.join("; ") || "none"}`);
    return state === "shown" && pixels >= leastPixels && others.length === 0 && errors.length === 0;
});
process.exit(isShown === false ? 1 : 0);
