// The variables and property sets of the project.
import { askTexts } from "./dialogs.js";
import { announce, button, counted, el, newId } from "./dom.js";

// `edit(operation, values)` sends one change and shows the project anew. What somebody is typing stays: the project is shown
// when it is sent.
export function showVariables(element, state, edit) {
  const active = document.activeElement;
  const shown = active?.dataset?.key;
  if (shown && active.value !== active.defaultValue) return;
  element.replaceChildren(
    variables(state, edit),
    ...state.propertySets.map((set) => propertySet(set, edit)),
    button("Add a property set…", () => addSet(edit)),
  );
  if (shown) element.querySelector(`[data-key="${CSS.escape(shown)}"]`)?.focus();
}

// `more`: other buttons of the row.
function valueRow(key, name, value, change, remove, ...more) {
  const id = newId();
  const input = el("input", {
    id,
    type: "text",
    autocomplete: "off",
    spellcheck: "false",
    "data-key": key,
    value,
    onchange: () => {
      input.defaultValue = input.value; // no longer being typed
      change(input.value);
    },
  });
  return el(
    "tr",
    {},
    el("th", { scope: "row" }, el("label", { for: id }, name)),
    el("td", {}, input),
    el("td", {}, el("div", { class: "buttons" }, ...more, button("Remove", remove, { "aria-label": `Remove ${name}` }))),
  );
}

function table(caption, rows) {
  return el(
    "table",
    { class: "values" },
    el("caption", { class: "unseen" }, caption),
    el(
      "thead",
      {},
      el("tr", {}, ...["Name", "Value", ""].map((text) => (text ? el("th", { scope: "col" }, text) : el("td", {})))),
    ),
    el("tbody", {}, ...rows),
  );
}

async function rename(name, edit) {
  const texts = await askTexts(`Rename ${name} everywhere`, [{ name: "to", label: "New name", value: name }], "Rename");
  const answer = texts && (await edit("renameVariable", { name, ...texts }));
  if (answer) announce(`${name} is ${texts.to} now, and so ${counted(answer.followed, "reference")} to it.`);
}

function variables(state, edit) {
  const rows = state.variables.map(({ name, value }) =>
    valueRow(
      `variable ${name}`,
      name,
      value,
      (text) => edit("variable", { name, value: text }),
      () => edit("variable", { name, value: null }),
      button("Rename…", () => rename(name, edit), { "aria-label": `Rename ${name}` }),
    ),
  );
  return el(
    "section",
    {},
    el("h2", {}, "Variables"),
    rows.length ? table("Variables", rows) : el("p", { class: "note" }, "The project has no variables."),
    button("Add a variable…", async () => {
      const texts = await askTexts(
        "Add a variable",
        [
          { name: "name", label: "Name" },
          { name: "value", label: "Value" },
        ],
        "Add",
      );
      if (texts) edit("variable", texts);
    }),
  );
}

function propertySet(set, edit) {
  const rows = set.values.map(({ name, value }) =>
    valueRow(
      `set ${set.name} ${name}`,
      name,
      value,
      (text) => edit("propertySetValue", { set: set.name, name, value: text }),
      () => edit("propertySetValue", { set: set.name, name, value: null }),
    ),
  );
  return el(
    "section",
    {},
    el("h2", {}, `Property set ${set.name} (${set.kind})`),
    rows.length ? table(`Values of ${set.name}`, rows) : el("p", { class: "note" }, "It holds no values."),
    el(
      "div",
      { class: "buttons" },
      button("Add a value…", async () => {
        const texts = await askTexts(
          `Add a value to ${set.name}`,
          [
            { name: "name", label: "Name" },
            { name: "value", label: "Value" },
          ],
          "Add",
        );
        if (texts) edit("propertySetValue", { set: set.name, ...texts });
      }),
      button("Remove the set", () => edit("propertySet", { name: set.name, kind: null }), {
        "aria-label": `Remove the property set ${set.name}`,
      }),
    ),
  );
}

async function addSet(edit) {
  const kinds = [
    { value: "Win32", text: "Win32 version information" },
    { value: "DotNet", text: ".NET assembly information" },
  ];
  const texts = await askTexts(
    "Add a property set",
    [
      { name: "name", label: "Name" },
      { name: "kind", label: "Kind", items: kinds },
    ],
    "Add",
  );
  if (texts) edit("propertySet", texts);
}
