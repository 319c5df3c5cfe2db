import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { launch, logIn, visit } from "./support/browser.mjs";
import { startSite } from "./support/site.mjs";

let site, browser;
before(async () => { [site, browser] = await Promise.all([startSite(), launch()]); });
after(async () => { await browser?.close(); await site?.stop(); });

test("somebody logs in, searches, and logs out", async () => {
  const { page, problems } = await visit(browser, site);
  await logIn(page, "guest", site.passwords.guest);
  await page.goto("/search?q=Lakeside");
  await page.getByText("Lakeside 01.jpg").first().waitFor();
  await page.locator("form[action='/logout'] button").click();
  await page.waitForURL("**/login");
  assert.deepEqual(problems(), []);
});

test("a wrong password says so and keeps the name", async () => {
  const { page } = await visit(browser, site);
  await page.goto("/login");
  await page.locator("#name").fill("guest");
  await page.locator("#password").fill("wrong");
  await page.locator("form[action='/login'] button[type=submit]").click();
  await page.getByRole("alert").waitFor();
  assert.equal(await page.locator("#name").inputValue(), "guest");
  assert.equal(await page.locator("#password").inputValue(), "");
});
