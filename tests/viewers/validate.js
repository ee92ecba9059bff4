// validate.js FILE.glb...: status 1 if the validator of the format finds an error, or a warning that is not about an image,
// which is taken in as the document has it.
import { readFileSync } from "node:fs";
import { dirname, join } from "node:path";
import validator from "gltf-validator";

let faults = 0;
const files = process.argv.slice(2);
for (const file of files) {
    const report = await validator.validateBytes(new Uint8Array(readFileSync(file)), {
        maxIssues: 100,
        ignoredIssues: ["IMAGE_FEATURES_UNSUPPORTED", "IMAGE_NPOT_DIMENSIONS"],
        externalResourceFunction: async (uri) =>
            new Uint8Array(readFileSync(join(dirname(file), decodeURIComponent(uri)))),
    });
    const { numErrors, numWarnings, messages } = report.issues;
    if (numErrors + numWarnings > 0) {
        ++faults;
        console.log(`${file}: ${numErrors} errors, ${numWarnings} warnings`);
        messages.filter((each) => each.severity < 2).forEach((each) => console.log(`    ${each.code} ${each.pointer}: ${each.message}`));
    }
}
console.log(`${files.length - faults} of ${files.length} files are without fault`);
process.exit(faults === 0 && files.length > 0 ? 0 : 1);
