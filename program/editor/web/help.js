// What is to be known about the field that the user is at.
import { el } from "./dom.js";

const shownValue = (field, value) => {
  if (field.kind === "check" || field.kind === "choice") return value === "True" ? "on" : "off";
  return value.replaceAll("\r\n", "\n").trim() || "empty";
};

export class Help {
  constructor(element) {
    this.element = element;
    this.show(undefined);
  }

  show(field) {
    if (field && field === this.field) return;
    this.field = field;
    const keys = el("p", { class: "keys" }, el("kbd", {}, "F1"), " show or hide", el("kbd", {}, "Ctrl Del"), " reset");
    if (!field) {
      this.element.replaceChildren(el("p", { class: "note" }, "Point to a property, or go to it, to read about it here."), keys);
      return;
    }
    const facts = [
      ["Needs", field.needs.replace(/^Needs /, "")],
      ["Default", field.default === undefined || field.kind === "secret" ? "" : shownValue(field, field.default)],
      ["Now", field.kind === "secret" ? (field.isSet ? "set" : "not set") : shownValue(field, field.value)],
      ["Saved as", field.property],
    ].filter(([, text]) => text);
    this.element.replaceChildren(
      el("h2", {}, field.label.replace(/\s*:$/, "") || field.property || field.name),
      field.hint ? el("p", {}, field.hint) : "",
      el("dl", {}, ...facts.flatMap(([name, text]) => [el("dt", {}, name), el("dd", {}, text)])),
      keys,
    );
  }
}
