// How a page looks, compared with the picture of it that is kept in the folder looks. Both are so small that letters are
// shades of grey: what is seen is where things stand, how large and in which colour, and not which font draws them.
//
// WEBCONFIG_LOOKS=renew keeps what is seen as the new pictures.

import { existsSync, mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { fileURLToPath } from "node:url";

const folder = fileURLToPath(new URL("looks", import.meta.url));
const renewed = process.env.WEBCONFIG_LOOKS === "renew";

/** Pixels of a style sheet, to each side, that become one of the picture. */
const pixelSize = 8;
/** Of 255, in any of the three colours: more than another font changes. */
const shade = 48;
/** So large a part of a picture may be different. A button in another colour is more, a wholly different font is less, as
 *  long as its letters are as wide. */
const tolerated = 0.0025;

/** What is not the same on each device, or each day; and a font that all have who have Chromium, for its widths. */
const changing = `body, input, select, button { font-family: "DejaVu Sans", sans-serif !important }
    .alerts, .form_result_msg, .saved_changes { display: none !important }
    #banner_right, .ui-serial-number { visibility: hidden !important }
    * { caret-color: transparent !important; transition: none !important }`;

/** In an empty page: the picture of a screenshot, and how much of it is another than in the one that is kept. */
async function compare({ seen, kept, scale, limit }) {
    const load = async (png) => window.createImageBitmap(await (await fetch(`data:image/png;base64,${png}`)).blob());
    function pixels(image, width, height) {
        const canvas = new window.OffscreenCanvas(width, height);
        const context = canvas.getContext("2d");
        context.imageSmoothingQuality = "high";
        context.drawImage(image, 0, 0, width, height);
        return { canvas, data: context.getImageData(0, 0, width, height).data };
    }
    const whole = await load(seen);
    const [width, height] = [Math.round(whole.width / scale), Math.round(whole.height / scale)];
    const { canvas, data } = pixels(whole, width, height);
    const bytes = new Uint8Array(await (await canvas.convertToBlob()).arrayBuffer());
    const picture = window.btoa(String.fromCharCode(...bytes));
    const reference = kept && (await load(kept));
    if (!reference || reference.width !== width || reference.height !== height) {
        return { picture, different: 1 };
    }
    const other = pixels(reference, width, height).data;
    let count = 0;
    for (let at = 0; at < data.length; at += 4) {
        count += [0, 1, 2].some((colour) => Math.abs(data[at + colour] - other[at + colour]) > limit);
    }
    return { picture, different: count / (width * height) };
}

/** What is wrong with the look of a page: nothing, or a line that tells how much is different and where to see it. */
export async function differenceOf(page, session, name) {
    const ratio = await page.evaluate((css) => {
        const adopted = new window.CSSStyleSheet();
        adopted.replaceSync(css);
        document.adoptedStyleSheets = [adopted];
        document.activeElement.blur();
        window.scrollTo(0, 0);
        return window.devicePixelRatio;
    }, changing);
    const { data: seen } = await session.send("Page.captureScreenshot");
    await page.evaluate(() => (document.adoptedStyleSheets = []));
    const file = join(folder, `${name}.png`);
    const kept = existsSync(file) && !renewed ? readFileSync(file, "base64") : null;
    const blank = await page.context().newPage();
    const { picture, different } = await blank.evaluate(compare, { seen, kept, scale: pixelSize * ratio, limit: shade });
    await blank.close();
    if (renewed) {
        mkdirSync(folder, { recursive: true });
        writeFileSync(file, picture, "base64");
        return [];
    }
    if (different <= tolerated) {
        return [];
    }
    const shown = join(tmpdir(), `${name}.png`);
    writeFileSync(shown, seen, "base64");
    return [`${(100 * different).toFixed(1)} % looks unlike ${file}: see ${shown}`];
}
