// Questions, and the chooser for files and folders.
import { look } from "./api.js";
import { button, counted, el, icon, newId, openLink } from "./dom.js";

// What a button's function gives to keep the dialog open.
const stay = Symbol("stay");

// `buttons`: {text, value, main}; a value may be a function, which may take its time. Enter in a field presses
// the main one.
function show(title, content, buttons) {
  return new Promise((resolve) => {
    const heading = newId();
    const dialog = el("dialog", { "aria-labelledby": heading });
    const close = async (value) => {
      const result = typeof value === "function" ? await value() : value;
      if (result === stay || !dialog.open) return;
      dialog.close();
      dialog.remove();
      resolve(result);
    };
    const main = buttons.find((row) => row.main);
    const row = el(
      "div",
      { class: "buttons" },
      ...buttons.map((one) =>
        one === main ? el("button", { type: "submit", class: "main" }, one.text) : button(one.text, () => close(one.value)),
      ),
    );
    const submit = (event) => {
      event.preventDefault();
      close(main?.value);
    };
    dialog.append(el("form", { method: "dialog", onsubmit: submit }, el("h2", { id: heading }, title), content, row));
    dialog.addEventListener("cancel", (event) => {
      event.preventDefault();
      close(undefined);
    });
    document.body.append(dialog);
    dialog.showModal();
  });
}

// The value of the chosen button; undefined when the user gave up.
export function ask(title, text, buttons) {
  return show(title, el("p", {}, text), [...buttons, { text: "Cancel", value: undefined }]);
}

export function askTexts(title, fields, okText) {
  const inputs = fields.map((field) => {
    const id = newId();
    const input = field.items
      ? el("select", { id }, ...field.items.map((item) => el("option", { value: item.value }, item.text)))
      : el("input", { id, type: "text", autocomplete: "off", spellcheck: "false", value: field.value ?? false });
    return { field, input, row: el("div", { class: "field" }, el("label", { for: id }, field.label), input) };
  });
  const values = () => Object.fromEntries(inputs.map(({ field, input }) => [field.name, input.value]));
  return show(title, el("div", {}, ...inputs.map(({ row }) => row)), [
    { text: okText, value: values, main: true },
    { text: "Cancel", value: undefined },
  ]);
}

// "Text|*.a;*.b|Text|*.*" as entries; all files can be had whatever it says.
function filterEntries(filter) {
  const parts = filter.split("|");
  const entries = [];
  for (let i = 0; i + 1 < parts.length; i += 2) entries.push({ text: parts[i], patterns: parts[i + 1] });
  if (!entries.some(({ patterns }) => patterns.split(";").some((one) => ["*", "*.*"].includes(one.trim()))))
    entries.push({ text: "All Files (*.*)", patterns: "*.*" });
  return entries;
}

// The path of a file or a folder. `start` is what stands in the field.
export async function choosePath({ title, start, filter, folders }) {
  const pathId = newId();
  const path = el("input", { id: pathId, type: "text", autocomplete: "off", spellcheck: "false" });
  const list = el("ul", { class: "chooser", "aria-label": "Folders and files" });
  const problem = el("p", { class: "error", role: "status" });
  const filterId = newId();
  const filters = el(
    "select",
    { id: filterId, onchange: () => go(wanted) },
    ...filterEntries(filter).map((entry) => el("option", { value: entry.patterns }, entry.text)),
  );
  let folder = {};
  let wanted = start; // where the newest step leads to, shown or not yet
  let isTyped = false; // since that step: what comes late leaves it alone
  let goesDown = false; // into the list, once there is one

  const join = (name) => {
    if (!folder.path) return name; // a drive
    return folder.path.endsWith(folder.separator) ? folder.path + name : folder.path + folder.separator + name;
  };
  // One folder at a time: who goes elsewhere, or leaves, does not wait for a slow disk.
  let listing = new AbortController();
  const listAt = (where) => {
    listing.abort();
    listing = new AbortController();
    return look("list", { path: where, patterns: folders ? "" : filters.value }, { signal: listing.signal });
  };
  const go = async (where) => {
    wanted = where;
    isTyped = false;
    try {
      const listed = await listAt(where);
      if (listed) showFolder(listed);
    } catch (error) {
      problem.textContent = error.message;
    }
  };
  const showFolder = (listed) => {
    folder = listed;
    problem.textContent = folder.error;
    if (!isTyped) path.value = folder.path;
    const rows = [];
    if (folder.parent) rows.push(button([icon("up"), "up"], () => go(folder.parent)));
    for (const name of folder.folders)
      rows.push(button([icon("fold"), name], () => go(join(name)), { "aria-label": `Folder ${name}` }));
    if (!folders)
      for (const name of folder.files)
        rows.push(
          button(name, () => {
            path.value = join(name);
            path.focus();
          }),
        );
    list.replaceChildren(
      ...rows.map((row) => el("li", {}, row)),
      folder.more ? el("li", { class: "note" }, `and ${counted(folder.more, "name")} more: type the path`) : "",
    );
    list.scrollTop = 0;
    if (goesDown) enterList();
  };
  const enterList = () => {
    const first = list.querySelector("button");
    goesDown = !first;
    first?.focus();
  };
  // A folder is no file: to choose one leads into it.
  const choose = async () => {
    const chosen = path.value.trim();
    if (!chosen) return stay;
    if (folders) return chosen;
    try {
      const listed = await listAt(chosen);
      if (!listed) return stay;
      if (!listed.isThere) return chosen;
      isTyped = false;
      showFolder(listed);
    } catch (error) {
      problem.textContent = error.message;
    }
    return stay;
  };
  const content = el(
    "div",
    {},
    el("div", { class: "field" }, el("label", { for: pathId }, folders ? "Folder" : "File"), path),
    problem,
    list,
    folders ? null : el("div", { class: "field" }, el("label", { for: filterId }, "Files shown"), filters),
  );
  const result = show(title || (folders ? "Select Directory" : "Select File"), content, [
    { text: "Choose", value: choose, main: true },
    { text: "Cancel", value: undefined },
  ]);
  path.addEventListener("keydown", (event) => {
    if (event.key === "ArrowDown") enterList();
  });
  path.addEventListener("input", () => {
    isTyped = true;
    goesDown = false;
  });
  result.then(() => listing.abort());
  await go(start);
  if (start && !folders && !isTyped) path.value = start;
  if (!list.contains(document.activeElement)) path.focus();
  return result;
}

// Lines of a file around a problem: `place` is {event} or {finding}.
export async function showSource(place, message) {
  const source = await look("source", place);
  const rows = source.lines.map((line, index) =>
    el("li", { class: source.first + index === source.line ? "hit" : false }, el("b", {}, String(source.first + index)), line),
  );
  await show(
    `${source.file} (${source.line})`,
    el(
      "div",
      {},
      el("p", {}, message),
      el("ol", { class: "source", tabindex: "0", "aria-label": "Lines of the file" }, ...rows),
      source.open && el("p", {}, openLink(source.open)),
    ),
    [{ text: "Close", value: undefined, main: true }],
  );
}
