// What a field is edited with. A control has {entry, field, input, body, update(field)}; `form.send(operation, control, values)`
// tells kxhost, and `form.flushers` are called before anything else is done.
import { askTexts, choosePath } from "./dialogs.js";
import { button, debounce, el, expectMore, icon, linesOf, newId } from "./dom.js";

// `name` is read out where no label stands beside the control.
export function makeControl(form, entry, { name, ...more } = {}) {
  const { field } = entry;
  const id = newId();
  const control = {
    entry,
    field,
    id,
    buttons: [],
    hint: el("span", { id: newId(), class: "unseen" }, field.hint),
    needs: el("p", { id: newId(), class: "needs" }),
    problem: el("p", { id: newId(), class: "problem" }),
  };
  const attributes = {
    id,
    "aria-describedby": [control.hint, control.needs, control.problem].map((one) => one.id).join(" "),
    "aria-label": name ?? false,
    "data-field": field.name,
    ...more,
  };
  const make = { choice: makeBox, check: makeBox, dropdown: makeDropDown }[field.kind] ?? makeText;
  control.body = make(form, control, attributes);
  return control;
}

function makeBox(form, control, attributes) {
  const { field, entry } = control;
  const isChoice = field.kind === "choice";
  control.input = el("input", {
    ...attributes,
    type: isChoice ? "radio" : "checkbox",
    name: isChoice ? `${entry.page} ${field.group}` : false,
    onchange: () => form.send("set", control, { value: control.input.checked ? "True" : "False" }),
  });
  control.update = (now) => {
    control.input.checked = now.value === "True";
    control.input.disabled = !now.enabled;
  };
  return control.input;
}

function makeDropDown(form, control, attributes) {
  control.input = el("select", {
    ...attributes,
    onchange: () => form.send("set", control, { value: control.input.value }),
  });
  control.update = (field) => {
    const items = field.value ? field.items : ["", ...field.items];
    control.input.replaceChildren(...items.map((item) => el("option", { value: item, selected: item === field.value }, item)));
    control.input.value = field.value;
    for (const one of [control.input, ...control.buttons]) one.disabled = !field.enabled;
  };
  if (!control.field.takesNewItems) return control.input;
  const text = `New: ${attributes["aria-label"] || control.field.label}`;
  control.buttons = [button("New…", () => makeItem(form, control), { "aria-label": text })];
  return el("div", { class: "with-buttons" }, control.input, ...control.buttons);
}

async function makeItem(form, control) {
  const texts = await askTexts("A new variable", [{ name: "name", label: "Name" }], "Use it");
  control.input.focus();
  if (texts?.name.trim()) await form.send("set", control, { value: texts.name.trim() });
}

// What is typed is sent when nothing more comes for a moment, or when the control is left; half a password is none.
function sendTyped(form, control) {
  const { input, field } = control;
  const isList = field.kind === "list";
  const isSecret = field.kind === "secret";
  const commit = () => {
    if (form.flushers.delete(commit) && !isSecret) expectMore(-1);
    later.cancel();
    if (input.value === control.sent) return undefined;
    control.sent = input.value;
    return form.send("set", control, { value: isList ? input.value.replaceAll("\n", "\r\n") : input.value });
  };
  const later = debounce(commit, 400);
  input.addEventListener("input", () => {
    if (!isSecret && !form.flushers.has(commit)) expectMore(1);
    form.flushers.add(commit);
    if (!isSecret) later();
  });
  input.addEventListener("change", commit);
  return commit;
}

function showText(control, now) {
  const { input } = control;
  const isList = now.kind === "list";
  const isSecret = now.kind === "secret";
  const value = isList ? linesOf(now.value) : now.value;
  const isActive = input === document.activeElement;
  const isTyped = isActive && input.value !== control.sent;
  const isAtWork = isSecret || isTyped || (isList && isActive && linesOf(input.value) === value);
  if (!isAtWork && input.value !== value) input.value = value;
  if (!isSecret && !isAtWork) control.sent = input.value;
  if (isSecret) input.placeholder = now.isSet ? "••••••••" : "";
  if (isList) input.rows = now.enabled || value ? Math.min(Math.max(value.split("\n").length + 1, 3), 8) : 1;
  input.disabled = !now.enabled;
  for (const other of control.buttons) other.disabled = !now.enabled;
}

function makeText(form, control, attributes) {
  const { field } = control;
  const isList = field.kind === "list";
  const isSecret = field.kind === "secret";
  control.input = el(isList ? "textarea" : "input", {
    ...attributes,
    type: isList ? false : isSecret ? "password" : "text",
    spellcheck: "false",
    autocomplete: isSecret ? "new-password" : "off",
    wrap: isList ? "off" : false,
    inputmode: field.kind === "integer" ? "numeric" : false,
  });
  control.sent = "";
  const commit = sendTyped(form, control);
  control.input.addEventListener("keydown", (event) => onTextKey(event, form, control, commit));
  control.update = (now) => showText(control, now);
  control.buttons = field.buttons.map((row) => makeButton(form, control, row, commit));
  return control.buttons.length ? el("div", { class: "with-buttons" }, control.input, ...control.buttons) : control.input;
}

function onTextKey(event, form, control, commit) {
  const { input, field } = control;
  if (event.key === "Enter" && field.buttons.some((row) => row.kind === "accept")) {
    event.preventDefault();
    commit();
    form.send("click", control, { button: "accept" });
  }
  const step = { ArrowUp: 1, ArrowDown: -1 }[event.key];
  if (field.kind === "integer" && step && /^\s*-?\d+\s*$/.test(input.value)) {
    event.preventDefault();
    input.value = String(Number(input.value) + step);
    input.dispatchEvent(new Event("input"));
  }
}

function makeButton(form, control, row, commit) {
  const { field } = control;
  const name = field.label || field.title || field.name;
  if (row.kind === "browse")
    return button("…", () => browse(form, control), {
      class: "square",
      title: row.hint || "Browse",
      "aria-label": `Browse: ${name}`,
    });
  const text = row.hint || "Add to the list";
  const click = () => {
    commit();
    form.send("click", control, { button: row.kind });
  };
  return button(icon(row.kind === "accept" ? "add" : "refresh"), click, { class: "square", title: text, "aria-label": text });
}

async function browse(form, control) {
  const { field } = control;
  const choice = await choosePath({
    title: field.title,
    start: control.input.value,
    filter: field.filter,
    folders: field.kind === "folder",
  });
  control.input.focus();
  if (choice) form.send("click", control, { button: "browse", choice });
}
