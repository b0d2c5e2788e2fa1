// Everything by its name: commands, properties, actions, problems.
import { el, icon, newId } from "./dom.js";

const most = 60; // of one kind that are drawn at once,
const mostBeside = 7; // and of several kinds

// `groups`: {title, sign, items: [{text, more, keys, run}]}. ">" keeps the commands, "@" the properties.
function matching(groups, text) {
  const only = { ">": "Commands", "@": "Properties" }[text[0]];
  const words = (only ? text.slice(1) : text).trim().toLowerCase().split(/\s+/).filter(Boolean);
  const found = groups
    .filter((group) => (only ? group.title === only : words.length > 0 || group.title === "Commands"))
    .map((group) => ({ ...group, items: group.items.filter((item) => words.every((word) => textOf(item).includes(word))) }))
    .filter((group) => group.items.length);
  const first = (item) => (words.some((word) => item.text.toLowerCase().startsWith(word)) ? 0 : 1);
  for (const group of found) group.items.sort((a, b) => first(a) - first(b));
  return { found, words };
}

const textOf = (item) => `${item.text} ${item.more ?? ""}`.toLowerCase();

// The text with what was looked for underlined.
function marked(text, words) {
  const at = words.map((word) => [text.toLowerCase().indexOf(word), word.length]).find(([index]) => index >= 0);
  if (!at) return [text];
  const [begin, length] = at;
  return [text.slice(0, begin), el("mark", {}, text.slice(begin, begin + length)), text.slice(begin + length)];
}

export function openPalette(groups, text = "") {
  if (document.querySelector("dialog[open]")) return;
  const before = document.activeElement;
  const listId = newId();
  const input = el("input", {
    type: "text",
    role: "combobox",
    autocomplete: "off",
    spellcheck: "false",
    "aria-expanded": "true",
    "aria-controls": listId,
    "aria-label": "Search and commands",
    placeholder: "Search, > for commands, @ for properties",
    value: text,
  });
  const list = el("ul", { role: "listbox", id: listId, "aria-label": "What matches" });
  const key = (name, does) => el("span", {}, el("kbd", {}, name), ` ${does}`);
  const foot = el(
    "footer",
    {},
    key("↑ ↓", "choose"),
    key("Enter", "go there"),
    key(">", "commands only"),
    key("@", "properties only"),
  );
  const dialog = el("dialog", { class: "palette", "aria-label": "Search and commands" });
  dialog.append(el("label", {}, icon("find"), input, el("kbd", {}, "Esc")), list, foot);
  let items = [];
  let current = 0;

  const close = () => {
    dialog.close();
    dialog.remove();
    before?.focus();
  };
  const choose = (item) => {
    close();
    item.run();
  };
  const mark = () => {
    for (const [index, item] of items.entries()) item.element.setAttribute("aria-selected", index === current ? "true" : "false");
    if (items[current]) input.setAttribute("aria-activedescendant", items[current].element.id);
    else input.removeAttribute("aria-activedescendant");
    items[current]?.element.scrollIntoView({ block: "nearest" });
  };
  const drawItem = (item, sign, words) => {
    item.element = el(
      "li",
      { role: "option", id: newId(), onclick: () => choose(item) },
      icon(sign),
      el("span", { class: "name" }, ...marked(item.text, words)),
      item.more ? el("span", { class: "type" }, item.more) : null,
      item.keys ? el("kbd", {}, item.keys) : null,
    );
    items.push(item);
    return item.element;
  };
  const draw = () => {
    const { found, words } = matching(groups, input.value);
    items = [];
    current = 0;
    const share = found.length > 1 ? mostBeside : most;
    list.replaceChildren(
      ...found.map((group) => {
        const shown = group.items.slice(0, share);
        const heading = el("li", { role: "presentation", class: "heading" }, group.title);
        const rows = shown.map((item) => drawItem({ ...item }, item.sign ?? group.sign, words));
        return el("ul", { role: "group", "aria-label": group.title }, heading, ...rows);
      }),
    );
    if (!items.length) list.replaceChildren(el("li", { class: "note" }, "Nothing matches."));
    mark();
  };
  input.addEventListener("input", draw);
  dialog.addEventListener("keydown", (event) => {
    const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    if (!step && event.key !== "Enter") return;
    event.preventDefault();
    if (!step && items[current]) choose(items[current]);
    if (step && items.length) current = (current + step + items.length) % items.length;
    mark();
  });
  dialog.addEventListener("click", (event) => event.target === dialog && close());
  dialog.addEventListener("cancel", (event) => {
    event.preventDefault();
    close();
  });
  document.body.append(dialog);
  draw();
  dialog.showModal();
}
