// The browser, what a person does in it, and what every page must be.
import assert from "node:assert/strict";
import { existsSync, readFileSync } from "node:fs";
import { createRequire } from "node:module";

const require = createRequire(import.meta.url);
const program = "/usr/bin/chromium";

function needed(name) {
  try {
    return require(name);
  } catch (error) {
    throw new Error(`${name} is missing: script/setup installs it (${error.message})`);
  }
}

const { chromium } = needed("playwright-core");
needed("axe-core");
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

export async function launch() {
  if (!existsSync(program)) throw new Error(`${program} is missing: script/setup installs it`);
  // Root gets no sandbox from the kernel's namespaces; nothing but our own pages is shown.
  const args = process.getuid() === 0 ? ["--no-sandbox"] : [];
  return chromium.launch({ executablePath: program, args });
}

// A visitor with a browser profile of their own. Whatever a page logs as an error fails the test that
// asks `visitor.problems()`.
export async function visit(browser, site, options = {}) {
  const context = await browser.newContext({ baseURL: site.address, locale: "en-GB", ...options });
  context.setDefaultTimeout(10_000);
  const page = await context.newPage();
  const problems = [];
  page.on("pageerror", (error) => problems.push(`script: ${error.message}`));
  page.on("console", (message) => {
    if (message.type() === "error" && !/status of 4\d\d/.test(message.text())) {
      problems.push(message.text());
    }
  });
  return { context, page, problems: () => problems };
}

export async function logIn(page, name, password) {
  await page.goto("/login");
  await page.locator("#name").fill(name);
  await page.locator("#password").fill(password);
  await page.locator("form[action='/login'] button[type=submit]").click();
  await page.waitForURL((address) => !address.pathname.startsWith("/login"));
}

// Fails with the rule, the reason and the place of each thing that axe finds.
export async function assertAccessible(page, what) {
  await page.evaluate(axe);
  const { violations } = await page.evaluate(() => globalThis.axe.run(document, {
    runOnly: ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22aa", "best-practice"],
  }));
  const found = violations.flatMap((rule) => rule.nodes.map((node) =>
    `${rule.id}: ${node.failureSummary.replace(/\s+/g, " ")} at ${node.target.join(" ")}`));
  assert.deepEqual(found, [], what);
}

// Nothing may stick out of the window.
export async function assertFits(page, what) {
  const { wide, window } = await page.evaluate(() => ({
    wide: document.documentElement.scrollWidth, window: document.documentElement.clientWidth,
  }));
  assert.ok(wide <= window, `${what}: ${wide} px wide in a window of ${window} px`);
}
