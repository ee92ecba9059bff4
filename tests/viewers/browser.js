// A headless Chromium with a profile of its own that draws by software and asks for nothing in the background.
import { join } from "node:path";
import puppeteer from "puppeteer-core";

export const startBrowser = (folder) =>
    puppeteer.launch({
        executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
        userDataDir: join(folder, "profile"),
        args: ["--no-sandbox", "--disable-quic", "--no-first-run", "--disable-background-networking", "--disable-component-update",
            "--disable-sync", "--use-angle=swiftshader", "--enable-unsafe-swiftshader"],
    });
