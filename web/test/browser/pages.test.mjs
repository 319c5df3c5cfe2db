// What is true of every page: anybody can use it, on any screen, in both themes, with the keyboard alone
// and without script.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { assertAccessible, assertFits, launch, logIn, visit } from "./support/browser.mjs";
import { states } from "./support/pages.mjs";
import { startSink } from "./support/sink.mjs";
import { startSite } from "./support/site.mjs";

let site, sink, browser;
before(async () => {
  sink = await startSink();
  [site, browser] = await Promise.all([startSite({ settings: sink.settings }), launch()]);
});
after(async () => {
  await browser?.close();
  await site?.stop();
  await sink?.stop();
});

for (const colorScheme of ["light", "dark"]) {
  test(`axe finds nothing on any page, which fits every window, in ${colorScheme}`, async () => {
    const { page, problems } = await visit(browser, site, { colorScheme });
    for (const [name, go] of states(site)) {
      await page.setViewportSize({ width: 1440, height: 900 });
      await go(page);
      await assertAccessible(page, name);
      for (const width of [320, 768, 1440]) {
        await page.setViewportSize({ width, height: 900 });
        await assertFits(page, `${name} at ${width} px`);
      }
    }
    assert.deepEqual(problems(), []);
  });
}

test("every page speaks German to whom it should", async () => {
  const viewport = { width: 320, height: 900 };
  const { page, problems } = await visit(browser, site, { locale: "de-DE", viewport });
  for (const [name, go] of states(site)) {
    if (name === "mail-sent") continue;
    await go(page);
    assert.equal(await page.locator("html").getAttribute("lang"), "de", name);
    const text = await page.locator("body").innerText();
    assert.doesNotMatch(text, /\b(Search|Save|Log in|Log out|Preferences|Size|Modified|Documents|Download)\b/, name);
    await assertFits(page, `${name} at ${viewport.width} px`);
  }
  assert.deepEqual(problems(), []);
});

test("the keyboard alone is enough", async () => {
  const { page, problems } = await visit(browser, site);
  const focus = (id) => page.waitForFunction((wanted) => document.activeElement?.id === wanted, id);
  await page.goto("/login");
  await focus("name");
  await page.keyboard.type("guest");
  await page.keyboard.press("Tab");
  await page.keyboard.type(site.passwords.guest);
  await page.keyboard.press("Enter");
  await page.waitForURL("**/search");
  await focus("q");
  await page.keyboard.type("quarry");
  await page.getByText("Quarry 06.jpg").first().waitFor();
  await page.keyboard.press("Enter");
  await page.waitForURL(/q=quarry/);
  await page.getByText("Quarry 06.jpg").first().waitFor();
  const focused = () => page.evaluate(() => document.activeElement?.className ?? "");
  await page.locator("#q").focus();
  for (let presses = 0; (await focused()) !== "hit"; presses += 1) {
    assert.ok(presses < 5, "arrows do not lead into the results");
    await page.keyboard.press("ArrowDown");
  }
  const first = await page.evaluate(() => document.activeElement.textContent.trim());
  await page.keyboard.press("ArrowDown");
  assert.notEqual(await page.evaluate(() => document.activeElement.textContent.trim()), first);
  await page.keyboard.press("Space");
  await page.locator("dialog[open]").waitFor();
  await page.keyboard.press("Escape");
  await page.keyboard.press("/");
  await focus("q");
  assert.equal(await page.locator("#q").inputValue(), "quarry");
  await page.locator("a.hit").first().focus();
  await page.keyboard.press("Enter");
  await page.waitForURL(/\/item\//);
  assert.deepEqual(problems(), []);
});

test("everything works without script", async () => {
  const { page } = await visit(browser, site, { javaScriptEnabled: false });
  await logIn(page, "administrator", site.passwords.administrator);
  await page.locator("#q").fill("quarry");
  await page.keyboard.press("Enter");
  await page.waitForURL(/q=quarry/);
  assert.ok((await page.locator("a.hit").count()) >= 6);
  await page.locator("a.hit").first().click();
  const [download] = await Promise.all([
    page.waitForEvent("download"), page.locator("a[href$='/download']").click()]);
  assert.match(download.suggestedFilename(), /^Quarry \d\d\.jpg$/);
  await page.getByRole("link", { name: "Send by mail" }).click();
  await page.locator("#to").fill("ann@example.org");
  await page.getByRole("button", { name: "Send" }).click();
  for (let tries = 0; !(await page.getByText("The message was sent.").count()); tries += 1) {
    assert.ok(tries < 50, "the message is never sent");
    await page.goto(page.url());
  }
  await page.goto("/preferences");
  await page.getByRole("button", { name: "Save" }).click();
  await page.getByText("Your preferences were saved.").waitFor();
  await page.goto("/admin/folders");
  await page.getByRole("button", { name: "Move Finance up" }).click();
  await page.getByText("The settings were saved.").waitFor();
});

test("a name with markup is shown and not obeyed", async () => {
  const { page } = await visit(browser, site);
  let alerted = false;
  page.on("dialog", (dialog) => { alerted = true; dialog.dismiss(); });
  await logIn(page, "guest", site.passwords.guest);
  await page.goto("/search?q=onerror");
  const name = "<img src=x onerror=\"alert(1)\"> & 'quoted'.txt";
  assert.equal((await page.locator("a.hit bdi").first().textContent()).trim(), name);
  await page.locator("a.hit").first().click();
  assert.equal(await page.getByRole("heading", { level: 1 }).textContent(), name);
  assert.equal(await page.locator("img[src=x]").count(), 0);
  assert.equal(alerted, false);
});
