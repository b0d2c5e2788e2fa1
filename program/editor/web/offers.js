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
  const boxes = items.map((item) => drawBox(form, control, item));
  if (columns.length) return drawTable(items, boxes, columns);
  return el("ul", { class: "boxes" }, ...boxes.map((box) => el("li", {}, ...box)));
}

// Which configuration of a project each configuration of the solution takes; those that a run would build come first.
function drawTable(items, boxes, columns) {
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
  const rows = items.map((item, row) =>
    el(
      "tr",
      {},
      el("th", { scope: "row" }, el("span", { class: "project" }, ...boxes[row])),
      ...order.map((index) => cell(item, index)),
    ),
  );
  const head = el("tr", {}, el("th", { scope: "col" }, "Project"), ...heads);
  return el("table", {}, el("thead", {}, head), el("tbody", {}, ...rows));
}

function drawChip(form, control, item, reload) {
  const choose = async () => {
    await form.send("set", control, { value: item.value });
    reload();
  };
  const mark = item.chosen ? [icon("done"), el("span", { class: "unseen" }, "matches: ")] : [];
  return el("li", {}, button([...mark, item.label || item.value], choose, { class: item.chosen ? "chip chosen" : "chip" }));
}

function drawBox(form, control, item) {
  const id = newId();
  const box = el("input", {
    type: "checkbox",
    id,
    checked: item.chosen,
    onchange: async () => {
      // Whatever else stands in the list stays as it is written; several boxes may be ticked in quick succession.
      const old = new Set(item.lines);
      control.lines = (control.lines ?? linesOf(control.field.value).split("\n")).filter((line) => line && !old.has(line));
      item.lines = box.checked ? [item.value] : [];
      control.lines.push(...item.lines);
      await form.send("set", control, { value: control.lines.join("\r\n") });
      if (form.underWay === 0) control.lines = undefined;
    },
  });
  const [, name, file] = /^(.*) \(([^()]*)\)$/.exec(item.label) ?? [undefined, item.label || item.value, ""];
  return [box, el("label", { for: id, title: file }, name)];
}
