// Suggestions for the word that is being typed: a combobox with a list, as WAI-ARIA has it.

const MOST = 8;

// Lets `field` suggest in `list` what stands in the datalist `words`. `changed` is called when a
// suggestion was taken.
export function completing(field, list, words, changed) {
  const all = [...words.options].map((option) => option.value);
  let chosen = -1;

  field.setAttribute("role", "combobox");
  field.setAttribute("aria-autocomplete", "list");
  field.setAttribute("aria-controls", list.id);
  field.setAttribute("aria-expanded", "false");

  const isOpen = () => !list.hidden;

  function close() {
    list.hidden = true;
    chosen = -1;
    field.setAttribute("aria-expanded", "false");
    field.removeAttribute("aria-activedescendant");
  }

  // What stands before the cursor since the last blank.
  function wordBefore() {
    const before = field.value.slice(0, field.selectionStart);
    return before.slice(before.lastIndexOf(" ") + 1);
  }

  function open() {
    const word = wordBefore().toLowerCase();
    const fitting = word.length < 2 ? [] : all.filter((one) => one.toLowerCase().startsWith(word) && one.toLowerCase() !== word);
    if (fitting.length === 0) return close();
    list.replaceChildren(...fitting.slice(0, MOST).map((text, at) => {
      const option = document.createElement("li");
      option.id = `completion-${at}`;
      option.role = "option";
      option.textContent = text;
      option.setAttribute("aria-selected", "false");
      return option;
    }));
    list.hidden = false;
    chosen = -1;
    field.setAttribute("aria-expanded", "true");
    field.removeAttribute("aria-activedescendant");
  }

  function choose(at) {
    chosen = (at + list.children.length) % list.children.length;
    [...list.children].forEach((option, index) => option.setAttribute("aria-selected", String(index === chosen)));
    field.setAttribute("aria-activedescendant", list.children[chosen].id);
    list.children[chosen].scrollIntoView({ block: "nearest" });
  }

  function take(text) {
    const end = field.selectionStart;
    const begin = end - wordBefore().length;
    const blank = text.endsWith(":") || field.value[end] === " " ? "" : " ";
    field.setRangeText(text + blank, begin, end, "end");
    close();
    changed();
    if (text.endsWith(":")) open();
  }

  field.addEventListener("input", open);
  field.addEventListener("blur", close);
  list.addEventListener("mousedown", (event) => {
    event.preventDefault(); // the field keeps the focus
    const option = event.target.closest("[role=option]");
    if (option) take(option.textContent);
  });
  field.addEventListener("keydown", (event) => {
    if (!isOpen() || event.isComposing) return;
    if (event.key === "ArrowDown") choose(chosen + 1);
    else if (event.key === "ArrowUp") choose(chosen < 0 ? -1 : chosen - 1);
    else if (event.key === "Escape") close();
    else if ((event.key === "Enter" || event.key === "Tab") && chosen >= 0) take(list.children[chosen].textContent);
    else {
      if (event.key === "Enter") close();
      return;
    }
    event.preventDefault();
    event.stopPropagation();
  });

  return { isOpen };
}
