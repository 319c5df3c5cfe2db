// Every page there is, in every state that looks different: its name and how a visitor gets there.
export const states = (site) => [
  ["login", async (page) => { await page.goto("/login"); }],
  ["login-refused", async (page) => {
    await page.goto("/login");
    await page.locator("#name").fill("guest");
    await page.locator("#password").fill("wrong");
    await page.locator("form[action='/login'] button[type=submit]").click();
    await page.getByRole("alert").waitFor();
  }],
  ["log-in", async (page) => {
    await page.locator("#name").fill("administrator");
    await page.locator("#password").fill(site.passwords.administrator);
    await page.locator("form[action='/login'] button[type=submit]").click();
    await page.waitForURL("**/search");
  }],
  ["search-results", async (page) => { await page.goto("/search?q=e"); }],
  ["search-names", async (page) => { await page.goto("/search?q=.txt"); }],
  ["search-thumbnails", async (page) => {
    await page.goto("/search?q=jpg&kind=Images");
    await page.waitForLoadState("networkidle");
  }],
  ["search-page", async (page) => { await page.goto("/search?q=minutes&kind=Documents&sort=name&page=2"); }],
  ["search-selected", async (page) => {
    await page.goto("/search?q=minutes");
    for (const number of [0, 1]) await page.locator(".select").nth(number).check();
  }],
  ["mail-several", async (page) => { await page.locator(".selection-bar button").click(); }],
  ["mail-nothing", async (page) => { await page.goto("/mail/new"); }],
  ["search-nothing", async (page) => { await page.goto("/search?q=nothing-is-called-so"); }],
  ["search-problem", async (page) => { await page.goto(`/search?q=${encodeURIComponent("date:sometime")}`); }],
  ["search-waiting", async (page) => {
    await page.goto("/search?q=minutes");
    await page.route("**/search?*part=results*", () => {});
    await page.locator("#q").fill("what takes long");
    await page.locator("#results[aria-busy=true]").waitFor();
  }],
  ["search-failed", async (page) => {
    await page.unrouteAll();
    await page.route("**/search?*part=results*", (route) => route.fulfill({ status: 404 }));
    await page.locator("#q").fill("what fails");
    await page.locator("#failed").waitFor();
    await page.unrouteAll();
  }],
  ["item", async (page) => {
    await page.goto("/search?q=Report");
    await page.locator("main a[href^='/item/']").first().click();
    await page.waitForLoadState("networkidle");
  }],
  ["item-markup", async (page) => {
    await page.goto("/search?q=onerror");
    await page.locator("main a[href^='/item/']").first().click();
    await page.waitForLoadState("networkidle");
  }],
  ["item-long", async (page) => {
    await page.goto("/search?q=remarks");
    await page.locator("main a[href^='/item/']").first().click();
    await page.waitForLoadState("networkidle");
  }],
  ["mail", async (page) => {
    await page.goto("/search?q=Report");
    await page.locator("main a[href^='/item/']").first().click();
    await page.locator("a[href$='/mail']").click();
  }],
  ["mail-refused", async (page) => {
    await page.locator("#to").fill("nobody");
    await page.locator("form.fields button[type=submit]").click();
    await page.getByRole("alert").waitFor();
  }],
  ["mail-sent", async (page) => {
    await page.locator("#to").fill("ann@example.org");
    await page.locator("form.fields button[type=submit]").click();
    await page.locator("#state .success").waitFor();
  }],
  ["saved-empty", async (page) => { await page.goto("/saved"); }],
  ["saved-new", async (page) => { await page.goto("/saved/new?q=kind:images"); }],
  ["saved", async (page) => {
    await page.locator("#title").fill("All pictures of the lake, and then some");
    await page.locator("main form button[type=submit]").click();
    await page.goto("/saved");
  }],
  ["preferences", async (page) => { await page.goto("/preferences"); }],
  ["preferences-saved", async (page) => {
    await page.locator("main form button[type=submit]").click();
    await page.locator(".success").waitFor();
  }],
  ["admin", async (page) => { await page.goto("/admin"); }],
  ["admin-server", async (page) => { await page.goto("/admin/server"); }],
  ["admin-folders", async (page) => { await page.goto("/admin/folders"); }],
  ["admin-folder", async (page) => { await page.goto("/admin/folders/edit?of=Projects"); }],
  ["admin-mail", async (page) => { await page.goto("/admin/mail"); }],
  ["missing", async (page) => { await page.goto("/no-such-page"); }],
];
