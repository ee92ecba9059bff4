// shape.js MOST SCENETOOL LINES.jsonl...: takes what `scenetool convert` printed, draws at most MOST of the results that have a
// camera in a browser by three.js, and their documents by scenetool, through the first camera, and prints how much of the covered
// pixels both cover. Status 1 if that is too little somewhere.
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { createServer } from "node:http";
import { join } from "node:path";
import { PNG } from "pngjs";
import { patience, withBrowser } from "./browser.js";

const leastAgreement = 0.97;
const edgePixels = 50; // that may differ in any case
const height = 512;
const [most, scenetool, ...lists] = process.argv.slice(2);
const conversions = lists
    .flatMap((list) => readFileSync(list, "utf8").split("\n").filter(Boolean).map((line) => JSON.parse(line)))
    .filter((line) => line.status === "converted");
// The sanitizers would count what the OpenGL driver leaves behind.
const drawing = { stdio: "ignore", env: { ...process.env, ASAN_OPTIONS: `${process.env.ASAN_OPTIONS ?? ""}:detect_leaks=0` } };
const types = { ".html": "text/html", ".js": "text/javascript", ".glb": "model/gltf-binary" };

// Which pixels a picture covers.
const covered = (bytes) => {
    const picture = PNG.sync.read(bytes);
    return Array.from({ length: picture.width * picture.height }, (_, i) => picture.data[4 * i + 3] > 127);
};

// Serves the folder of work, and one model at a time.
let model = "";
const server = createServer((request, response) => {
    const file = request.url === "/model.glb" ? model : join(process.cwd(), request.url);
    try {
        const content = readFileSync(file);
        response.writeHead(200, { "Content-Type": types[file.slice(file.lastIndexOf("."))] ?? "application/octet-stream" });
        response.end(content);
    } catch {
        response.writeHead(404).end();
    }
});
await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));

// The page's word on the model, "done" or an error, and the pixels that it covers.
const drawnByThree = async (browser, width) => {
    const page = await browser.newPage();
    await page.setViewport({ width, height });
    await page.goto(`http://127.0.0.1:${server.address().port}/page.html`, { timeout: patience });
    await page.waitForFunction(() => document.title !== "", { timeout: patience });
    const title = await page.title();
    const pixels = title === "done" ? covered(await page.screenshot({ omitBackground: true })) : [];
    await page.close();
    return { title, pixels };
};

const isEqualEverywhere = await withBrowser(async (browser, folder) => {
    let faults = 0;
    let drawn = 0;
    for (const { file: source, result } of conversions) {
        const glb = readFileSync(result);
        const json = JSON.parse(glb.subarray(20, 20 + glb.readUInt32LE(12)));
        const camera = json.cameras?.[0];
        if (!camera || !json.meshes || drawn >= Number(most)) {
            continue;
        }
        ++drawn;
        const aspect = camera.perspective?.aspectRatio ?? camera.orthographic.xmag / camera.orthographic.ymag;
        const width = Math.round(height * aspect);
        model = result;
        const { title, pixels: theirs } = await drawnByThree(browser, width);
        const picture = join(folder, "picture.png");
        execFileSync(scenetool, ["render", source, "-o", picture, "--size", `${width}x${height}`, "--background", "none"], drawing);
        const ours = covered(readFileSync(picture));
        const both = ours.filter((isCovered, pixel) => isCovered && theirs[pixel]).length;
        const either = ours.filter((isCovered, pixel) => isCovered || theirs[pixel]).length;
        const agreement = either === 0 ? 1 : both / either;
        faults += title === "done" && (agreement >= leastAgreement || either - both <= edgePixels) ? 0 : 1;
        console.log(`${agreement.toFixed(3)} of ${either} pixels${title === "done" ? "" : ", " + title}: ${source}`);
    }
    console.log(`${drawn - faults} of ${drawn} pictures agree`);
    return faults === 0;
});
server.close();
process.exit(isEqualEverywhere === false ? 1 : 0);
