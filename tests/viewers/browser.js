// A headless Chromium with a profile of its own that draws by software and asks for nothing in the background.
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import puppeteer from "puppeteer-core";

export const patience = 300000; // milliseconds: a browser on a busy machine takes its time

// Calls use(browser, folder) with a folder for files of its own. Where Chromium does not start, or draws no WebGL, nothing is
// looked at: one line says so, and the result is undefined.
export const withBrowser = async (use) => {
    const folder = mkdtempSync(join(tmpdir(), "browser-"));
    let browser;
    try {
        const reason = await startIn(folder).then(
            async (started) => {
                browser = started;
                return (await drawsWebGl(browser)) ? "" : "it draws no WebGL";
            },
            (error) => error.message.split("\n")[0],
        );
        if (reason) {
            console.log(`skipped: Chromium is of no help here: ${reason}`);
            return undefined;
        }
        return await use(browser, folder);
    } finally {
        await browser?.close();
        rmSync(folder, { recursive: true, force: true, maxRetries: 5 });
    }
};

const startIn = (folder) =>
    puppeteer.launch({
        executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
        userDataDir: join(folder, "profile"),
        env: { ...process.env, HOME: folder, XDG_CONFIG_HOME: folder, XDG_CACHE_HOME: folder },
        timeout: patience,
        protocolTimeout: patience,
        args: ["--no-sandbox", "--disable-quic", "--no-first-run", "--disable-background-networking", "--disable-component-update",
            "--disable-sync", "--disable-dev-shm-usage", "--use-angle=swiftshader", "--enable-unsafe-swiftshader"],
    });

const drawsWebGl = async (browser) => {
    const page = await browser.newPage();
    const draws = await page.evaluate(() => Boolean(document.createElement("canvas").getContext("webgl2")));
    await page.close();
    return draws;
};
