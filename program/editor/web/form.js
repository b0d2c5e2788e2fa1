// The pages of an action, drawn from what kxhost says about their fields.
import { call, look } from "./api.js";
import { askTexts, choosePath } from "./dialogs.js";
import { announceError, button, debounce, el, expectMore, newId } from "./dom.js";

const linesOf = (value) => value.replaceAll("\r\n", "\n").replace(/\n$/, "");

export class Form {
  // `handlers`: changed(answer) after each edit.
  constructor(element, handlers) {
    this.element = element;
    this.handlers = handlers;
    this.id = undefined;
    this.page = 0;
    this.problems = [];
    this.flushers = new Set();
    this.underWay = 0; // edits that are not answered yet
  }

  show(action, page = this.page) {
    const isSame = this.id === action.id && !this.mustRedraw;
    this.mustRedraw = false;
    this.id = action.id;
    this.pages = action.pages;
    this.page = Math.min(page, action.pages.length - 1);
    if (isSame && this.shownPage === this.page && this.sameFields()) this.update();
    else this.draw();
  }

  // The action has another id now: what is being typed goes on belonging to it.
  follow(from, to) {
    if (this.id === from) this.id = to;
  }

  clear() {
    this.id = undefined;
    this.controls = [];
    this.element.replaceChildren();
  }

  sameFields() {
    const fields = this.pages[this.page].fields;
    return (
      this.controls?.length === fields.length &&
      this.controls.every((control, i) => control.key === `${fields[i].name} ${fields[i].label}`)
    );
  }

  // What somebody is typing reaches kxhost before anything else is done.
  flush() {
    for (const flush of [...this.flushers]) flush();
  }

  draw() {
    this.shownPage = this.page;
    this.controls = [];
    const panelId = newId();
    const tabs = el("div", { role: "tablist", "aria-label": "Pages" });
    this.pages.forEach((page, index) => {
      const isShown = index === this.page;
      tabs.append(
        button(page.name, () => this.turnTo(index), {
          role: "tab",
          "aria-selected": isShown ? "true" : "false",
          "aria-controls": panelId,
          tabindex: isShown ? 0 : -1,
          class: this.problems.some((problem) => problem.page === index) ? "bad" : false,
        }),
      );
    });
    tabs.addEventListener("keydown", (event) => {
      const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
      if (!step) return;
      event.preventDefault();
      this.turnTo((this.page + step + this.pages.length) % this.pages.length);
      this.element.querySelector("[role=tab][aria-selected=true]").focus();
    });
    const panel = el("div", { role: "tabpanel", id: panelId, "aria-label": this.pages[this.page].name, class: "page" });
    let before = "";
    for (const field of this.pages[this.page].fields) {
      if (field.label) before = field.label;
      const control = this.makeControl(field, before);
      this.controls.push(control);
      panel.append(control.row);
    }
    this.element.replaceChildren(tabs, panel);
    this.update(true);
  }

  goTo(page, field) {
    if (page !== this.page) this.turnTo(page);
    const control = this.controls.find((one) => field && one.field?.name === field);
    (control?.input ?? this.element.querySelector("[role=tab][aria-selected=true]")).focus();
  }

  turnTo(page) {
    this.flush();
    this.page = page;
    this.draw();
  }

  // What was asked before an edit that is still on its way does not know of it: the controls keep what the user
  // has done until the answer to that.
  update(isNew = false) {
    this.pages[this.page].fields.forEach((field, i) => {
      const control = this.controls[i];
      control.field = field;
      if (isNew || this.underWay === 0) control.update?.(field);
      if (!control.problem) return;
      control.needs.textContent = field.needs;
      control.updateOffers?.(field);
      const own = this.problems.filter((entry) => entry.page === this.page && entry.field === field.name && field.name);
      const texts = [field.error, ...own.map((entry) => entry.message)].filter(Boolean);
      control.problem.replaceChildren(...texts.map((text) => el("span", {}, text)));
      control.input?.setAttribute("aria-invalid", texts.length ? "true" : "false");
    });
  }

  showProblems(problems) {
    this.problems = problems;
    if (this.pages && this.id !== undefined) this.update();
    for (const [index, tab] of this.element.querySelectorAll("[role=tab]").entries())
      tab.classList.toggle(
        "bad",
        problems.some((problem) => problem.page === index),
      );
  }

  async send(operation, values) {
    const id = this.id;
    this.underWay += 1;
    try {
      const answer = await call(operation, { id, page: this.page, ...values });
      if (this.id === id) this.pages = answer.pages;
      this.handlers.changed(answer, this.page);
    } catch (error) {
      announceError(error);
    }
    this.underWay -= 1;
    if (this.id === id) this.update();
  }

  makeControl(field, labelBefore) {
    const key = `${field.name} ${field.label}`;
    if (field.kind === "heading") return { key, row: el("h3", {}, field.label) };
    if (field.kind === "note") return { key, row: el("p", { class: "note" }, field.label) };
    const id = newId();
    const problemId = newId();
    const hintId = newId();
    const control = { key, field, problem: el("p", { id: problemId, class: "problem" }), needs: el("p", { class: "hint" }) };
    const needsId = newId();
    const described = [field.hint ? hintId : "", needsId, problemId].filter(Boolean).join(" ");
    const attributes = {
      id,
      "aria-describedby": described,
      "data-field": field.name,
      "aria-label": field.label ? false : labelBefore || field.title || field.property || field.name,
    };
    const maker = { choice: "makeCheck", check: "makeCheck", dropdown: "makeDropDown" }[field.kind] ?? "makeText";
    const body = this[maker](control, attributes);
    const isCheck = maker === "makeCheck";
    const label = field.label ? el("label", { for: id }, field.label) : null;
    control.needs.id = needsId;
    control.row = el(
      "div",
      { class: isCheck ? "field check" : "field" },
      ...(isCheck ? [body, label] : [label, body]),
      field.hint ? el("p", { id: hintId, class: "hint" }, field.hint) : null,
      control.needs,
      control.problem,
    );
    if (field.offers) control.row.append(this.makeOffers(control));
    return control;
  }

  makeCheck(control, attributes) {
    const isChoice = control.field.kind === "choice";
    control.input = el("input", {
      ...attributes,
      type: isChoice ? "radio" : "checkbox",
      name: isChoice ? `${this.shownPage} ${control.field.group}` : false,
      onchange: () => this.send("set", { field: control.field.name, value: control.input.checked ? "True" : "False" }),
    });
    control.update = (field) => {
      control.input.checked = field.value === "True";
      control.input.disabled = !field.enabled;
    };
    return control.input;
  }

  makeDropDown(control, attributes) {
    control.input = el("select", {
      ...attributes,
      onchange: () => this.send("set", { field: control.field.name, value: control.input.value }),
    });
    control.update = (field) => {
      const items = field.value ? field.items : ["", ...field.items];
      control.input.replaceChildren(...items.map((item) => el("option", { value: item, selected: item === field.value }, item)));
      control.input.value = field.value;
      control.input.disabled = !field.enabled;
      if (control.make) control.make.disabled = !field.enabled;
    };
    if (!control.field.takesNewItems) return control.input;
    control.make = button("New…", () => this.makeItem(control), {
      "aria-label": `New: ${attributes["aria-label"] || control.field.label}`,
    });
    return el("div", { class: "with-buttons" }, control.input, control.make);
  }

  async makeItem(control) {
    const texts = await askTexts("A new variable", [{ name: "name", label: "Name" }], "Use it");
    control.input.focus();
    if (texts?.name.trim()) await this.send("set", { field: control.field.name, value: texts.name.trim() });
  }

  makeText(control, attributes) {
    const { field } = control;
    const isList = field.kind === "list";
    const isSecret = field.kind === "secret";
    const input = el(isList ? "textarea" : "input", {
      ...attributes,
      type: isList ? false : isSecret ? "password" : "text",
      spellcheck: "false",
      autocomplete: isSecret ? "new-password" : "off",
      rows: isList ? 4 : false,
      wrap: isList ? "off" : false,
      inputmode: field.kind === "integer" ? "numeric" : false,
    });
    control.input = input;
    let sent = "";
    const commit = () => {
      if (this.flushers.delete(commit) && !isSecret) expectMore(-1);
      later.cancel();
      if (input.value === sent) return undefined;
      sent = input.value;
      return this.send("set", { field: control.field.name, value: isList ? input.value.replaceAll("\n", "\r\n") : input.value });
    };
    const later = debounce(commit, 400);
    input.addEventListener("input", () => {
      if (!isSecret && !this.flushers.has(commit)) expectMore(1);
      this.flushers.add(commit);
      if (!isSecret) later(); // half a password is none
    });
    input.addEventListener("change", commit);
    input.addEventListener("keydown", (event) => this.onTextKey(event, control, commit));
    control.update = (now) => {
      const value = isList ? linesOf(now.value) : now.value;
      const isTyped = input === document.activeElement && input.value !== sent;
      const isAtWork = isSecret || isTyped || (isList && input === document.activeElement && linesOf(input.value) === value);
      if (!isAtWork && input.value !== value) input.value = value;
      if (!isSecret && !isAtWork) sent = input.value;
      if (isSecret) input.placeholder = now.isSet ? "••••••••" : "";
      if (control.clear) control.clear.hidden = !now.isSet;
      input.disabled = !now.enabled;
      for (const other of control.buttons) other.disabled = !now.enabled;
    };
    return this.withButtons(control, commit);
  }

  onTextKey(event, control, commit) {
    const hasAccept = control.field.buttons.some((row) => row.kind === "accept");
    if (event.key === "Enter" && hasAccept) {
      event.preventDefault();
      commit();
      this.send("click", { field: control.field.name, button: "accept" });
    }
    const step = { ArrowUp: 1, ArrowDown: -1 }[event.key];
    if (control.field.kind === "integer" && step && /^\s*-?\d+\s*$/.test(control.input.value)) {
      event.preventDefault();
      control.input.value = String(Number(control.input.value) + step);
      control.input.dispatchEvent(new Event("input"));
    }
  }

  withButtons(control, commit) {
    const { field, input } = control;
    const name = field.label || field.title || field.name;
    control.buttons = field.buttons.map((row) => {
      if (row.kind === "browse")
        return button("…", () => this.browse(control), { title: row.hint || "Browse", "aria-label": `Browse: ${name}` });
      const text = row.hint || "Add to the list";
      return button(
        row.kind === "accept" ? "+" : "↻",
        () => {
          commit();
          this.send("click", { field: field.name, button: row.kind });
        },
        { title: text, "aria-label": text },
      );
    });
    if (field.kind === "secret") {
      control.clear = button(
        "Remove",
        () => {
          input.value = "";
          this.send("set", { field: field.name, value: "" });
        },
        { "aria-label": `Remove the ${name.toLowerCase()} that is set` },
      );
      return el("div", { class: "with-buttons" }, input, control.clear);
    }
    return control.buttons.length ? el("div", { class: "with-buttons" }, input, ...control.buttons) : input;
  }

  async browse(control) {
    const { field } = control;
    const choice = await choosePath({
      title: field.title,
      start: control.input.value,
      filter: field.filter,
      folders: field.kind === "folder",
    });
    control.input.focus();
    if (choice) this.send("click", { field: field.name, button: "browse", choice });
  }

  // What could stand in the field: read when somebody opens it.
  makeOffers(control) {
    const list = el("ul", { class: "offers" });
    const details = el("details", { class: "offered" }, el("summary", {}, control.field.offers), list);
    control.updateOffers = (field) => {
      for (const input of list.querySelectorAll("input, button")) input.disabled = !field.enabled;
    };
    let looking = new AbortController();
    const load = async () => {
      looking.abort();
      looking = new AbortController();
      const { signal } = looking;
      if (!list.children.length) list.replaceChildren(el("li", { class: "note" }, "Looking…"));
      try {
        const offers = await look("offers", { id: this.id, page: this.page, field: control.field.name }, { signal });
        if (!offers || signal.aborted) return;
        list.replaceChildren(...offers.items.map((item) => this.drawOffer(control, item, load)));
        control.updateOffers(control.field);
        if (offers.error) list.prepend(el("li", { class: "problem" }, offers.error));
      } catch (error) {
        list.replaceChildren(el("li", { class: "problem" }, error.message));
      }
    };
    details.addEventListener("toggle", () => {
      if (details.open) load();
      else looking.abort();
    });
    const reload = debounce(() => details.open && load(), 700);
    control.input.addEventListener("input", reload);
    control.input.addEventListener("change", reload);
    return details;
  }

  drawOffer(control, item, reload) {
    if (control.field.kind !== "list") {
      const text = item.label || item.value;
      return el(
        "li",
        { class: item.chosen ? "chosen" : false },
        button(text, async () => {
          await this.send("set", { field: control.field.name, value: item.value });
          reload();
        }),
        item.chosen ? " ✓ matches" : "",
      );
    }
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
        await this.send("set", { field: control.field.name, value: control.lines.join("\r\n") });
        if (this.underWay === 0) control.lines = undefined;
      },
    });
    return el("li", {}, box, el("label", { for: id }, item.label || item.value));
  }
}
