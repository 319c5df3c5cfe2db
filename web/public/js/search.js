// The search page: results while one types, suggestions, and everything by the keyboard. All of it
// works without, by links and Enter.

import { completing } from "./completions.js";
import { showPreview } from "./preview.js";

const form = document.getElementById("search");
const field = document.getElementById("q");
const results = document.getElementById("results");
const live = document.getElementById("live");
const failed = document.getElementById("failed");

// One and two characters find so much that it is worth waiting whether more come.
const REST_FEW = 150;
const REST = 40;
const BUSY = 400;

// By which the server knows that one page asks again, and gives up what that asked for before.
const pageId = crypto.getRandomValues(new Uint32Array(2)).join("-");

let timer;
let running;
let shownAddress = location.pathname + location.search;

function addressOf() {
  const parts = new URLSearchParams();
  for (const [name, value] of new FormData(form)) {
    if (value !== "" || name !== "q") parts.append(name, value);
  }
  const view = new URLSearchParams(location.search).get("view");
  if (view) parts.append("view", view);
  return `${form.getAttribute("action")}?${parts}`;
}

// Gets the results at the address and shows them; what was asked for before is given up.
async function show(address, { remember = true } = {}) {
  running?.abort();
  running = new AbortController();
  const { signal } = running;
  const slow = setTimeout(() => {
    results.setAttribute("aria-busy", "true");
    live.textContent = form.dataset.wait;
  }, 300);
  try {
    const separator = address.includes("?") ? "&" : "?";
    const answer = await fetch(`${address}${separator}part=results&page_id=${pageId}`, { signal, headers: { Accept: "text/html" } });
    if (answer.redirected) return location.assign(address); // the session is over
    if (answer.status === 429) return searchSoon(BUSY); // what was given up still runs there
    if (!answer.ok) throw new Error(`status ${answer.status}`);
    failed.hidden = true;
    const text = await answer.text();
    const focused = document.activeElement.classList.contains("hit") && document.activeElement.pathname;
    results.innerHTML = text; // made by our own templates, which escape
    if (focused) (hits().find((hit) => hit.pathname === focused) ?? field).focus();
    shownAddress = address;
    if (remember) history.replaceState(null, "", address);
    live.textContent = results.querySelector("[data-said], [role=alert]")?.textContent.trim() ?? "";
    markProblem();
  } catch (error) {
    if (error.name === "AbortError") return;
    failed.hidden = false;
  } finally {
    clearTimeout(slow);
    if (!signal.aborted) results.setAttribute("aria-busy", "false");
  }
}

function markProblem() {
  const problem = document.getElementById("problem");
  field.toggleAttribute("aria-invalid", Boolean(problem));
  if (problem) field.setAttribute("aria-describedby", "problem");
  else field.removeAttribute("aria-describedby");
}

function searchSoon(rest = field.value.trim().length < 3 ? REST_FEW : REST) {
  clearTimeout(timer);
  timer = setTimeout(() => {
    const address = addressOf();
    if (address !== shownAddress) show(address);
  }, rest);
}

form.addEventListener("submit", (event) => {
  event.preventDefault();
  clearTimeout(timer);
  const address = addressOf();
  history.pushState(null, "", address);
  show(address, { remember: false });
});
field.addEventListener("input", () => searchSoon());
for (const choice of form.querySelectorAll("select")) {
  choice.addEventListener("change", () => form.requestSubmit());
}

// Links to other kinds, orders and pages of the same search.
results.addEventListener("click", (event) => {
  const link = event.target.closest("a");
  if (!link || event.ctrlKey || event.metaKey || event.shiftKey || event.button !== 0) return;
  const address = new URL(link.href);
  if (address.origin !== location.origin || address.pathname !== "/search") return;
  event.preventDefault();
  const path = address.pathname + address.search;
  history.pushState(null, "", path);
  take(address.searchParams);
  show(path, { remember: false }).then(() => {
    results.querySelector("h2")?.scrollIntoView({ block: "nearest" });
    if (document.activeElement === document.body) focusLike(path);
  });
});

// Keeps the focus near where it was: on the link that led here, if there is one still.
function focusLike(path) {
  const link = [...results.querySelectorAll("a")].find((one) => one.getAttribute("href") === path);
  (link ?? results.querySelector("a[aria-current]") ?? field).focus();
}

// Shows in the form what an address asks for.
function take(parts) {
  field.value = parts.get("q") ?? "";
  for (const choice of form.querySelectorAll("select")) {
    if (parts.has(choice.name)) choice.value = parts.get(choice.name);
    if (choice.selectedIndex < 0) choice.selectedIndex = 0;
  }
}

addEventListener("popstate", () => {
  take(new URLSearchParams(location.search));
  show(location.pathname + location.search, { remember: false });
});

// Arrows go through the results, space previews, and a slash leads back to the field.
const hits = () => [...results.querySelectorAll(".hit")];

function move(step) {
  const all = hits();
  const at = all.indexOf(document.activeElement);
  if (at + step < 0) field.focus();
  else all[Math.min(at + step, all.length - 1)]?.focus();
}

const completions = completing(field, document.getElementById("completions"), document.getElementById("completion-words"), () => searchSoon());

addEventListener("keydown", (event) => {
  if (event.ctrlKey || event.metaKey || event.altKey || event.isComposing) return;
  const onHit = document.activeElement?.classList.contains("hit");
  const inText = document.activeElement?.matches("input:not([type=checkbox]), select, textarea, [contenteditable]");
  if (event.key === "/" && !inText) {
    field.focus();
    field.select();
  } else if (event.key === "ArrowDown" && (onHit || (document.activeElement === field && !completions.isOpen()))) {
    move(1);
  } else if (event.key === "ArrowUp" && onHit) {
    move(-1);
  } else if (event.key === " " && onHit) {
    showPreview(document.activeElement);
  } else {
    return;
  }
  event.preventDefault();
});
