// What people come for, from the login to the file in their hands.
import assert from "node:assert/strict";
import { readdirSync, readFileSync, statSync } from "node:fs";
import path from "node:path";
import { after, afterEach, before, beforeEach, test } from "node:test";
import { launch, logIn, visit } from "./support/browser.mjs";
import { startSink } from "./support/sink.mjs";
import { startSite } from "./support/site.mjs";

let site, sink, browser, page, context, problems;
before(async () => {
  sink = await startSink({ secure: true });
  const { settings, environment } = sink;
  [site, browser] = await Promise.all([startSite({ settings, environment }), launch()]);
});
after(async () => {
  await browser?.close();
  await site?.stop();
  await sink?.stop();
});

// A fresh visitor for each journey, which must leave nothing in the browser's console.
beforeEach(async () => { ({ page, context, problems } = await visit(browser, site)); });
afterEach(async () => {
  await context.close();
  assert.deepEqual(problems(), []);
});

const field = () => page.locator("#q");
const hits = () => page.locator("a.hit");
const names = async () => (await page.locator("a.hit bdi").allTextContents()).map((name) => name.trim());

async function find(words, parameters = "") {
  await page.goto(`/search?q=${encodeURIComponent(words)}${parameters}`);
}

test("a wrong password says so and keeps the name", async () => {
  await page.goto("/login");
  await page.locator("#name").fill("guest");
  await page.locator("#password").fill("wrong");
  await page.locator("form[action='/login'] button[type=submit]").click();
  await page.getByRole("alert").waitFor();
  assert.equal(await page.locator("#name").inputValue(), "guest");
  assert.equal(await page.locator("#password").inputValue(), "");
});

test("logging in leads to the page that was asked for, logging out ends it", async () => {
  await page.goto("/search?q=budget");
  await page.waitForURL("**/login?to=*");
  await page.locator("#name").fill("guest");
  await page.locator("#password").fill(site.passwords.guest);
  await page.locator("form[action='/login'] button[type=submit]").click();
  await page.waitForURL("**/search?q=budget");
  const before = await context.cookies();
  await page.locator("form[action='/logout'] button").click();
  await page.waitForURL("**/login");
  await context.addCookies(before);
  await page.goto("/search?q=budget");
  await page.waitForURL("**/login?to=*");
});

test("results come while one types, and the address bar goes with them", async () => {
  await logIn(page, "guest", site.passwords.guest);
  await page.goto("/search");
  await field().pressSequentially("Lakeside 0", { delay: 20 });
  await page.getByText("Lakeside 01.jpg").first().waitFor();
  await page.waitForURL(/q=Lakeside/);
  await field().fill("Quarry");
  await page.getByText("Quarry 06.jpg").first().waitFor();
  await field().press("Enter");
  await page.goto("/search?q=Harbour");
  await page.goBack();
  await page.getByText("Quarry 06.jpg").first().waitFor();
  assert.equal(await field().inputValue(), "Quarry");
});

test("a guest finds no file that only the administrator may read", async () => {
  await logIn(page, "guest", site.passwords.guest);
  await find("Notes");
  assert.deepEqual(await names(), ["Notes of the guest.txt"]);
  await find("Salaries");
  assert.deepEqual(await names(), []);
  await page.goto("/admin");
  assert.equal(await page.getByRole("heading", { name: "That is not allowed" }).count(), 1);
});

test("columns sort, pages turn", async () => {
  await logIn(page, "administrator", site.passwords.administrator);
  await find("minutes", "&kind=Documents");
  const sortBy = async (column, direction) => {
    await page.locator(`th.col-${column} a`).click();
    await page.locator(`th.col-${column}[aria-sort=${direction}]`).waitFor();
  };
  await sortBy("name", "ascending");
  const first = await names();
  assert.deepEqual(first, [...first].sort());
  assert.equal(first.length, 25);
  await page.locator("a[rel=next]").click();
  await page.locator("a[rel=prev]").waitFor();
  const second = await names();
  assert.ok(second.length > 0 && second.every((name) => !first.includes(name)));
  await sortBy("size", "descending");
  await sortBy("name", "ascending");
  await sortBy("name", "descending");
  assert.match(page.url(), /sort=name&order=down/);
  const down = await names();
  assert.deepEqual(down, [...down].sort().reverse());
});

test("pictures show as thumbnails, and space previews one", async () => {
  await logIn(page, "guest", site.passwords.guest);
  await find("Vineyard", "&kind=Images");
  await page.locator(".thumbnail img").first().waitFor();
  await page.waitForFunction(() => [...document.querySelectorAll(".thumbnail img")]
    .every((image) => image.complete && image.naturalWidth > 0));
  await hits().first().focus();
  await page.keyboard.press("Space");
  const dialog = page.locator("dialog[open]");
  await dialog.locator("img").waitFor();
  await page.waitForFunction(() => document.querySelector("dialog[open] img")?.naturalWidth > 200);
  await page.keyboard.press("Escape");
  await dialog.waitFor({ state: "detached" }).catch(() => dialog.waitFor({ state: "hidden" }));
});

test("a download has the bytes of the file and its name", async () => {
  await logIn(page, "guest", site.passwords.guest);
  for (const [words, name, folder] of [
    ["Report 2022", "Report 2022.pdf", "Projects/Garden School"],
    ["Übersicht", "Übersicht der Räume.txt", "Names"],
  ]) {
    await find(words);
    await hits().first().click();
    await page.getByRole("heading", { name }).waitFor();
    const [download] = await Promise.all([
      page.waitForEvent("download"), page.locator("a[href$='/download']").click()]);
    assert.equal(download.suggestedFilename(), name);
    assert.deepEqual(readFileSync(await download.path()), readFileSync(path.join(site.tree, folder, name)));
  }
});

test("a file goes by mail, encrypted, and comes as it was", async () => {
  await logIn(page, "guest", site.passwords.guest);
  await find("Annual report");
  await hits().first().click();
  await page.getByRole("link", { name: "Send by mail" }).click();
  await page.locator("#to").fill("nobody");
  await page.getByRole("button", { name: "Send" }).click();
  await page.getByRole("alert").waitFor();
  await page.locator("#to").fill("ann@example.org, ben@example.org");
  await page.locator("#text").fill("Für Dich.");
  await page.getByRole("button", { name: "Send" }).click();
  await page.getByText("The message was sent.").waitFor();
  const [head, ...parts] = (await sink.message(1)).toString("latin1").split(/\r\n--[-=\w]+/);
  assert.match(head, /^Subject: Annual report 2025\.pdf\r$/m);
  assert.match(head, /^To: ann@example\.org, ?\r?\n? *ben@example\.org\r$/m);
  const attachment = parts.find((part) => /filename=.*Annual report 2025\.pdf/.test(part));
  const content = Buffer.from(attachment.slice(attachment.indexOf("\r\n\r\n")), "base64");
  assert.deepEqual(content, readFileSync(path.join(site.tree, "Finance/Annual report 2025.pdf")));
});

test("several files go in one message", async () => {
  await logIn(page, "guest", site.passwords.guest);
  await find("quarry");
  for (const name of ["Quarry 06.jpg", "Quarry 12.jpg"]) await page.getByLabel(`Select ${name}`).check();
  await page.getByRole("button", { name: "Send selected by mail" }).click();
  await page.getByText("Quarry 12.jpg").waitFor();
  await page.locator("#to").fill("ann@example.org");
  await page.getByRole("button", { name: "Send" }).click();
  await page.getByText("The message was sent.").waitFor();
  const [, ...parts] = (await sink.message(2)).toString("latin1").split(/\r\n--[-=\w]+/);
  for (const name of ["Quarry 06.jpg", "Quarry 12.jpg"]) {
    const attachment = parts.find((part) => part.includes(`filename="${name}"`));
    const content = Buffer.from(attachment.slice(attachment.indexOf("\r\n\r\n")), "base64");
    const file = readdirSync(site.tree, { recursive: true }).find((other) => path.basename(other) === name);
    assert.deepEqual(content, readFileSync(path.join(site.tree, file)));
  }
});

test("a search is saved, run again and removed", async () => {
  await logIn(page, "guest", site.passwords.guest);
  await find("kind:images quarry");
  await page.getByRole("link", { name: "Save this search" }).click();
  await page.locator("#title").fill("Pictures of the quarry");
  await page.getByRole("button", { name: "Save" }).click();
  await page.goto("/saved");
  await page.getByRole("link", { name: "Pictures of the quarry" }).click();
  await page.getByText("Quarry 06.jpg").first().waitFor();
  await page.goto("/saved");
  await page.getByRole("button", { name: /Remove/ }).click();
  await page.getByText("No search is saved yet").or(page.locator(".empty")).first().waitFor();
});

test("preferences are kept and followed", async () => {
  await logIn(page, "guest", site.passwords.guest);
  await page.goto("/preferences");
  await page.locator("#per_page").fill("5");
  await page.locator("#folder").selectOption("Minutes");
  await page.getByLabel("downloads the file").check();
  await page.getByRole("button", { name: "Save" }).click();
  await page.getByText("Your preferences were saved.").waitFor();
  await find("20", "&kind=Documents");
  assert.equal((await names()).length, 5);
  assert.equal(await page.locator("#in").inputValue(), "Minutes");
  const [download] = await Promise.all([page.waitForEvent("download"), hits().first().click()]);
  assert.ok(statSync(await download.path()).size > 0);
  await page.goto("/preferences");
  await page.locator("#per_page").fill("25");
  await page.locator("#folder").selectOption("");
  await page.getByLabel("shows the item").check();
  await page.getByRole("button", { name: "Save" }).click();
  await page.getByText("Your preferences were saved.").waitFor();
});

test("an administrator changes folders, server and mail", async () => {
  await logIn(page, "administrator", site.passwords.administrator);
  await page.getByRole("link", { name: "Administration" }).click();
  await page.getByText("The index is fresh.").waitFor();

  await page.getByRole("link", { name: "Search folders" }).click();
  await page.locator("#group_title").fill("Building");
  await page.locator("form:has(#group_title) button").click();
  await page.getByText("The settings were saved.").waitFor();
  await page.locator("#path").fill("/etc");
  await page.locator("form:has(#path) button").click();
  await page.getByText("only the sample files can be searched").waitFor();
  await page.locator("#path").fill(path.join(site.tree, "Projects/Garden School"));
  await page.locator("#folder_group").selectOption("Building");
  await page.locator("form:has(#path) button").click();
  await page.getByRole("link", { name: "Garden School", exact: true }).waitFor();
  assert.match(site.vistaro("folders", "list").toString(), /Building[\s\S]*Garden School/);
  await page.getByRole("link", { name: "Building", exact: true }).click();
  await page.getByRole("button", { name: "Remove with all its folders" }).click();
  await page.getByText("The settings were saved.").waitFor();
  assert.equal(await page.getByRole("link", { name: "Garden School", exact: true }).count(), 0);

  await page.getByRole("link", { name: "Server" }).click();
  await page.locator("#serverName").fill("not a name");
  await page.getByRole("button", { name: "Save" }).click();
  await page.getByRole("alert").waitFor();
  assert.equal(await page.locator("#serverName").inputValue(), "not a name");
  await page.locator("#serverName").fill("files.example.org");
  await page.getByRole("button", { name: "Save" }).click();
  await page.getByText("take effect when the server is started again").waitFor();
  assert.match(site.vistaro("settings", "get", "serverName").toString(), /files\.example\.org/);

  await page.getByRole("link", { name: "Mail", exact: true }).click();
  await page.getByText("A password is stored.").waitFor();
  await page.locator("#to").fill("admin@example.org");
  await page.getByRole("button", { name: "Send a test message" }).click();
  await page.getByText("The message was sent.").waitFor();
});
