// Questions, and the chooser for files and folders.
import { call } from "./api.js";
import { button, el, newId } from "./dom.js";

// `buttons`: {text, value, main}; a value may be a function. Enter in a field presses the main one.
function show(title, content, buttons) {
  return new Promise((resolve) => {
    const heading = newId();
    const dialog = el("dialog", { "aria-labelledby": heading });
    const close = (value) => {
      dialog.close();
      dialog.remove();
      resolve(typeof value === "function" ? value() : value);
    };
    const main = buttons.find((row) => row.main);
    const row = el("div", { class: "buttons" }, ...buttons.map((one) => one === main
      ? el("button", { type: "submit", class: "main" }, one.text)
      : button(one.text, () => close(one.value))));
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
      : el("input", { id, type: "text", autocomplete: "off" });
    return { field, input, row: el("div", { class: "field" }, el("label", { for: id }, field.label), input) };
  });
  const values = () => Object.fromEntries(inputs.map(({ field, input }) => [field.name, input.value]));
  return show(title, el("div", {}, ...inputs.map(({ row }) => row)),
    [{ text: okText, value: values, main: true }, { text: "Cancel", value: undefined }]);
}

// The path of a file or a folder. `start` is what stands in the field.
export async function choosePath({ title, start, filter, folders }) {
  const pathId = newId();
  const path = el("input", { id: pathId, type: "text", autocomplete: "off", spellcheck: "false" });
  const list = el("ul", { class: "chooser", "aria-label": "Folders and files" });
  const problem = el("p", { class: "error", role: "status" });
  let folder = {};

  const join = (name) => {
    if (!folder.path) return name; // a drive
    return folder.path.endsWith(folder.separator) ? folder.path + name : folder.path + folder.separator + name;
  };
  const go = async (where) => {
    try {
      folder = await call("list", { path: where, filter: folders ? "" : filter });
    } catch (error) {
      problem.textContent = error.message;
      return;
    }
    problem.textContent = folder.error;
    path.value = folder.path;
    const rows = [];
    if (folder.parent) rows.push(button("↑ up", () => go(folder.parent)));
    for (const name of folder.folders) rows.push(button(`▸ ${name}`, () => go(join(name)), { "aria-label": `Folder ${name}` }));
    if (!folders)
      for (const name of folder.files)
        rows.push(button(name, () => {
          path.value = join(name);
          path.focus();
        }));
    list.replaceChildren(...rows.map((row) => el("li", {}, row)));
    list.scrollTop = 0;
  };
  const content = el("div", {},
    el("div", { class: "field" }, el("label", { for: pathId }, folders ? "Folder" : "File"), path), problem, list);
  const result = show(title || (folders ? "Select Directory" : "Select File"), content,
    [{ text: "Choose", value: () => path.value, main: true }, { text: "Cancel", value: undefined }]);
  path.addEventListener("keydown", (event) => {
    if (event.key === "ArrowDown") list.querySelector("button")?.focus();
  });
  await go(start);
  if (start && !folders) path.value = start;
  path.focus();
  return result;
}

// Lines of a file around a problem.
export async function showSource(event, message) {
  const source = await call("source", { event });
  const rows = source.lines.map((line, index) =>
    el("li", { value: source.first + index, class: source.first + index === source.line ? "error" : false }, line));
  await show(`${source.file} (${source.line})`,
    el("div", {}, el("p", {}, message),
      el("ol", { class: "source", tabindex: "0", "aria-label": "Lines of the file", start: source.first }, ...rows)),
    [{ text: "Close", value: undefined, main: true }]);
}
