// What could stand in a field: names beside each other for one value, boxes below each other for a list.
import { look } from "./api.js";
import { button, debounce, el, icon, linesOf, newId } from "./dom.js";

// Looked for when it is shown, and anew when the field is edited. Gives what stands below the field; control.updateOffers follows
// whether the field is enabled.
export function makeOffers(form, control) {
  const list = el("div", { class: "offers" });
  const details = el("details", { class: "offered" }, el("summary", {}, icon("fold"), control.field.offers), list);
  const load = loader(form, control, list);
  details.addEventListener("toggle", () => {
    if (details.open) load();
    else load.end();
  });
  const reload = debounce(() => details.open && load(), 700);
  control.input.addEventListener("input", reload);
  control.input.addEventListener("change", reload);
  let wasEnabled = false;
  control.updateOffers = (field) => {
    for (const input of list.querySelectorAll("input, button")) input.disabled = !field.enabled;
    if (field.enabled && !wasEnabled) details.open = true;
    details.hidden = !field.enabled && !details.open;
    wasEnabled = field.enabled;
  };
  return details;
}

function loader(form, control, list) {
  let looking = new AbortController();
  const load = async () => {
    if (!list.isConnected) return; // the form shows something else by now
    looking.abort();
    looking = new AbortController();
    const { signal } = looking;
    if (!list.children.length) list.replaceChildren(note("Looking…"));
    const { page, field } = control.entry;
    try {
      const offers = await look("offers", { id: form.id, page, field: field.name }, { signal, unlessRunning: true });
      if (!offers || signal.aborted) return;
      list.replaceChildren(offers.error ? note(offers.error) : "", drawItems(form, control, offers, load));
      control.updateOffers(control.field);
    } catch (error) {
      list.replaceChildren(el("p", { class: "problem" }, error.message));
    }
  };
  load.end = () => looking.abort();
  return load;
}

const note = (text) => el("p", { class: "note" }, text);

function drawItems(form, control, offers, reload) {
  const { items, columns } = offers;
  if (control.field.kind !== "list")
    return el("ul", { class: "chips" }, ...items.map((item) => drawChip(form, control, item, reload)));
  const choice = new Choice(form, control, items);
  const rows = inFolders(items).map((row) => ({ ...row, parts: choice.draw(row) }));
  if (columns.length) return drawTable(rows, columns);
  return el("ul", { class: "boxes" }, ...rows.map(({ depth, parts }) => indented(el("li", {}, ...parts), depth)));
}

// What a list offers as the rows of a tree: a folder, with all that it holds, stands where the first of that does.
function inFolders(items, depth = 0) {
  const rows = [];
  const folders = new Map();
  for (const item of items) {
    const name = item.folders[depth];
    if (name === undefined) {
      rows.push({ item, items: [item], depth });
      continue;
    }
    if (!folders.has(name)) {
      folders.set(name, []);
      rows.push({ folder: name, items: folders.get(name), depth });
    }
    folders.get(name).push(item);
  }
  return rows.flatMap((row) => (row.folder === undefined ? [row] : [row, ...inFolders(row.items, depth + 1)]));
}

function indented(element, depth) {
  element.style.paddingInlineStart = depth ? `${depth * 1.5}rem` : "";
  return element;
}

// Which configuration of a project each configuration of the solution takes; those that a run would build come first.
function drawTable(rows, columns) {
  const order = columns.map((_, index) => index).sort((a, b) => columns[b].chosen - columns[a].chosen || a - b);
  const heads = order.map((index) => {
    const [name, ...platform] = columns[index].label.split("|");
    const mark = columns[index].chosen ? [icon("done"), el("span", { class: "unseen" }, "is built: ")] : [];
    const title = el("span", { class: columns[index].chosen ? "chosen" : false }, ...mark, name);
    return el("th", { scope: "col" }, title, el("span", { class: "type" }, platform.join("|")));
  });
  const cell = (item, index) => {
    const text = item.cells[index];
    return el("td", { class: text && columns[index].chosen ? false : "none" }, text || "not built");
  };
  const lines = rows.map(({ item, parts, depth }) => {
    const title = indented(el("span", { class: item ? "project" : "project folder" }, ...parts), depth);
    if (!item) return el("tr", {}, el("th", { scope: "row", colspan: order.length + 1 }, title));
    return el("tr", {}, el("th", { scope: "row" }, title), ...order.map((index) => cell(item, index)));
  });
  const head = el("tr", {}, el("th", { scope: "col" }, "Project"), ...heads);
  return el("table", {}, el("thead", {}, head), el("tbody", {}, ...lines));
}

function drawChip(form, control, item, reload) {
  const choose = async () => {
    await form.send("set", control, { value: item.value });
    reload();
  };
  const mark = item.chosen ? [icon("done"), el("span", { class: "unseen" }, "matches: ")] : [];
  return el("li", {}, button([...mark, item.label || item.value], choose, { class: item.chosen ? "chip chosen" : "chip" }));
}

// What is chosen of a list: a box for each thing, and one of three states for a folder.
class Choice {
  constructor(form, control, items) {
    this.form = form;
    this.control = control;
    this.items = items;
    this.boxes = []; // {box, items}
  }

  draw({ item, items, folder }) {
    const id = newId();
    const box = el("input", { type: "checkbox", id, onchange: () => this.choose(items, box.checked) });
    this.boxes.push({ box, items });
    show(box, items);
    if (!item) return [box, el("label", { for: id }, icon("folder"), folder)];
    const [, name, file] = /^(.*) \(([^()]*)\)$/.exec(item.label) ?? [undefined, item.label || item.value, ""];
    return [box, el("label", { for: id, title: file }, name)];
  }

  // Whatever else stands in the list stays as it is written; several boxes may be ticked in quick succession.
  async choose(items, isChosen) {
    const { control, form } = this;
    const changed = items.filter((item) => isOn(item) !== isChosen);
    const old = new Set(changed.flatMap((item) => item.lines));
    control.lines = (control.lines ?? linesOf(control.field.value).split("\n")).filter((line) => line && !old.has(line));
    for (const item of changed) Object.assign(item, { chosen: isChosen, lines: isChosen ? [item.value] : [] });
    control.lines.push(...changed.flatMap((item) => item.lines));
    for (const row of this.boxes) show(row.box, row.items);
    await form.send("set", control, { value: control.lines.join("\r\n") });
    if (form.underWay === 0) control.lines = undefined;
  }
}

const isOn = (item) => item.chosen;

function show(box, items) {
  const on = items.filter(isOn).length;
  box.checked = on === items.length;
  box.indeterminate = on > 0 && on < items.length;
}
