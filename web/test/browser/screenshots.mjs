// Takes a picture of every page, in both themes and at three widths:
//   node web/test/browser/screenshots.mjs FOLDER [name…]
// in the language of the environment variable LOCALE, such as de-DE.
import path from "node:path";
import { mkdirSync } from "node:fs";
import { launch, visit } from "./support/browser.mjs";
import { states } from "./support/pages.mjs";
import { startSink } from "./support/sink.mjs";
import { startSite } from "./support/site.mjs";

const [folder, ...names] = process.argv.slice(2);
if (!folder) throw new Error("usage: node screenshots.mjs FOLDER [name…]");
mkdirSync(folder, { recursive: true });
const sink = await startSink();
const [site, browser] = await Promise.all([startSite({ settings: sink.settings }), launch()]);
try {
  for (const colorScheme of ["light", "dark"]) {
    const { page } = await visit(browser, site, {
      colorScheme, viewport: { width: 1440, height: 900 }, locale: process.env.LOCALE || "en-GB",
    });
    for (const [name, go] of states(site)) {
      await go(page);
      if (names.length > 0 && !names.includes(name)) continue;
      for (const width of [1440, 768, 320]) {
        await page.setViewportSize({ width, height: 900 });
        await page.screenshot({ path: path.join(folder, `${name}-${colorScheme}-${width}.png`), fullPage: true });
      }
      await page.setViewportSize({ width: 1440, height: 900 });
    }
  }
} finally {
  await browser.close();
  await site.stop();
  await sink.stop();
}
