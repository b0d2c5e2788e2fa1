// The pages of an action, or of the options, drawn from what kxhost says about their fields.
import { call } from "./api.js";
import { makeControl } from "./controls.js";
import { announceError, button, counted, debounce, el, icon, newId } from "./dom.js";
import { entriesOf, isChanged, rowsOf } from "./layout.js";
import { makeOffers } from "./offers.js";
import { whenLetGo } from "./turns.js";

const everything = "All Properties"; // the page that has each property once more

export class Form {
  // `handlers`: changed(answer) after each edit, help(field) for the field that the user is at or points to.
  constructor(element, handlers) {
    this.handlers = handlers;
    this.id = undefined;
    this.page = 0;
    this.problems = [];
    this.flushers = new Set();
    this.underWay = 0; // edits that are not answered yet
    this.newest = Promise.resolve(); // the newest of them
    this.controls = [];
    this.rows = [];
    this.search = "";
    this.onlyChanged = false;
    this.tabs = el("div", { class: "tabs", role: "tablist", "aria-label": "Pages" });
    this.panel = el("div", { role: "tabpanel", id: newId() });
    element.append(this.tabs, this.makeTools(), this.panel);
    this.tabs.addEventListener("keydown", (event) => this.onTabKey(event));
    this.panel.addEventListener("focusin", (event) => this.tellOf(event.target));
    this.panel.addEventListener("mouseover", (event) => this.tellOf(event.target));
    this.panel.addEventListener("mouseleave", () => this.tellOf(document.activeElement));
    this.panel.addEventListener("keydown", (event) => this.onKey(event));
  }

  makeTools() {
    this.searchBox = el("input", {
      type: "search",
      autocomplete: "off",
      spellcheck: "false",
      oninput: debounce(() => this.find(this.searchBox.value, this.onlyChanged), 150),
      onkeydown: (event) => event.key === "Escape" && this.find("", false),
    });
    this.changedButton = button("", () => this.find(this.search, !this.onlyChanged), {
      class: "compact",
      "aria-pressed": "false",
    });
    this.note = el("span", { class: "type", role: "status" });
    this.tools = el(
      "div",
      { class: "form-tools" },
      el("label", { class: "find" }, icon("find"), this.searchBox),
      this.changedButton,
      this.note,
    );
    return this.tools;
  }

  show(action, page = this.page) {
    const isSame = this.id === action.id && !this.mustRedraw;
    this.mustRedraw = false;
    if (this.id !== action.id) this.forgetSearch();
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
    this.rows = [];
    this.panel.replaceChildren();
  }

  forgetSearch() {
    this.search = "";
    this.searchBox.value = "";
    this.onlyChanged = false;
  }

  fieldOf({ page, index }) {
    return this.pages[page]?.fields[index];
  }

  sameFields() {
    return this.controls.every((control) => {
      const field = this.fieldOf(control.entry);
      return field?.name === control.entry.field.name && field.label === control.entry.field.label;
    });
  }

  // What somebody is typing reaches kxhost before anything else is done.
  flush() {
    for (const flush of [...this.flushers]) flush();
  }

  isSearching() {
    return this.search !== "" || this.onlyChanged;
  }

  find(text, onlyChanged) {
    this.flush();
    this.search = text.trim().toLowerCase();
    if (this.searchBox.value.trim().toLowerCase() !== this.search) this.searchBox.value = text;
    this.onlyChanged = onlyChanged;
    this.draw();
  }

  entriesOfPage(page) {
    let before = "";
    return this.pages[page].fields.map((field, index) => {
      if (field.label) before = field.label;
      return { field, page, index, before };
    });
  }

  // What is shown: a page, or of all pages what was looked for.
  sections() {
    if (!this.isSearching()) return [{ rows: rowsOf(this.entriesOfPage(this.page)) }];
    const matches = ({ field }) =>
      [field.label, field.property, field.hint].some((text) => text.toLowerCase().includes(this.search)) &&
      (!this.onlyChanged || isChanged(field));
    return this.pages
      .map((page, index) => ({
        title: page.name,
        rows: page.name === everything ? [] : rowsOf(this.entriesOfPage(index)).filter((row) => entriesOf(row).some(matches)),
      }))
      .filter((section) => section.rows.length);
  }

  draw() {
    this.shownPage = this.page;
    this.controls = [];
    this.rows = [];
    this.drawTabs();
    const sections = this.sections();
    this.panel.setAttribute("aria-label", this.isSearching() ? "What was found" : this.pages[this.page].name);
    this.panel.replaceChildren(
      ...sections.flatMap(({ title, rows }) => [
        ...(title ? [el("h3", {}, title)] : []),
        ...rows.map((row) => this.drawRow(row)),
      ]),
    );
    if (!sections.length) this.panel.replaceChildren(this.nothingFound());
    this.update(true);
    const found = this.rows.length;
    this.note.textContent = this.isSearching() && found ? counted(found, "property") : "";
  }

  nothingFound() {
    const text = this.onlyChanged ? "Nothing differs from the defaults. " : "No property matches. ";
    return el(
      "p",
      { class: "note" },
      text,
      button("Clear", () => this.find("", false), { class: "compact" }),
    );
  }

  drawTabs() {
    const hadFocus = this.tabs.contains(document.activeElement);
    this.tabs.replaceChildren(
      ...this.pages.map((page, index) => {
        const isShown = index === this.page && !this.isSearching();
        return button(page.name, () => this.turnTo(index), {
          role: "tab",
          "aria-selected": isShown ? "true" : "false",
          "aria-controls": this.panel.id,
          tabindex: index === this.page ? 0 : -1,
        });
      }),
    );
    const shown = this.tabs.children[this.page];
    if (hadFocus) shown.focus();
    if (this.tabs.clientWidth < this.tabs.scrollWidth) shown.scrollIntoView({ block: "nearest", inline: "nearest" });
  }

  markTabs() {
    for (const [index, tab] of [...this.tabs.children].entries()) {
      const { name, fields } = this.pages[index];
      const isBad = this.problems.some((problem) => problem.page === index);
      const marks = [];
      if (name !== everything && fields.some(isChanged))
        marks.push(
          el("span", { class: "dot", title: "Differs from the defaults" }),
          el("span", { class: "unseen" }, ", changed"),
        );
      if (isBad) marks.push(icon("warning", "warning"), el("span", { class: "unseen" }, ", has problems"));
      tab.replaceChildren(name, ...marks);
    }
  }

  markTools() {
    const fields = this.pages.filter((page) => page.name !== everything).flatMap((page) => page.fields);
    const properties = fields.filter((field) => field.name);
    const text = `Search all ${counted(properties.length, "property")}`;
    this.searchBox.placeholder = text;
    this.searchBox.setAttribute("aria-label", text);
    this.tools.hidden = properties.length < 5;
    this.changedButton.hidden = !properties.some((field) => field.default !== undefined);
    this.changedButton.textContent = `Changed ${properties.filter(isChanged).length}`;
    this.changedButton.setAttribute("aria-pressed", this.onlyChanged ? "true" : "false");
  }

  onTabKey(event) {
    const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (!step) return;
    event.preventDefault();
    this.turnTo((this.page + step + this.pages.length) % this.pages.length);
    this.tabs.children[this.page].focus();
  }

  onKey(event) {
    if (event.key !== "Delete" || !event.ctrlKey) return;
    const row = this.rows.find((one) => one.element.contains(event.target));
    if (!row || (row.reset.hidden && this.underWay === 0)) return; // what is on its way may change it
    event.preventDefault();
    this.reset(row);
  }

  controlOf(target) {
    return this.controls.find((control) => control.input === target);
  }

  tellOf(target) {
    const row = this.rows.find((one) => one.element.contains(target));
    const control = this.controlOf(target) ?? row?.controls.at(-1);
    if (control) this.handlers.help?.(control.field);
  }

  goTo(page, field) {
    if (page !== this.page || this.isSearching()) this.turnTo(page);
    const control = this.controls.find((one) => field && one.field.name === field);
    (control?.input ?? this.tabs.children[this.page]).focus();
  }

  // What the keyboard comes to first.
  focusFirst() {
    const control = this.controls.find((one) => !one.input.disabled);
    (control?.input ?? this.tabs.children[this.page])?.focus();
    return control?.input;
  }

  turnTo(page) {
    this.flush();
    this.page = page;
    this.forgetSearch();
    this.draw();
  }

  drawRow(row) {
    if (row.kind === "heading") return el("h3", {}, row.entry.field.label);
    if (row.kind === "note") return el("p", { class: "note" }, row.entry.field.label);
    const element = el("div", { class: `row ${row.kind}` });
    row = { ...row, element, controls: [] };
    row.reset = button(icon("reset"), () => this.reset(row), { class: "quiet square compact reset", hidden: true });
    const draw = { box: "drawBoxRow", value: "drawValueRow", version: "drawVersionRow" }[row.kind];
    this[draw](row);
    this.rows.push(row);
    row.reset.title = "Reset to the default (Ctrl Del)";
    row.reset.setAttribute("aria-label", "Reset");
    const name = element.querySelector(".name");
    if (name) {
      name.id = newId();
      row.reset.setAttribute("aria-describedby", name.id);
    }
    element.append(row.reset);
    return element;
  }

  add(row, entry, attributes) {
    const control = makeControl(this, entry, attributes);
    this.controls.push(control);
    row.controls.push(control);
    return control;
  }

  // A value with what is to be said about it.
  valueOf(control, ...more) {
    const offers = control.field.offers ? makeOffers(this, control) : null;
    return el("div", { class: "value" }, control.body, ...more, offers, control.needs, control.problem, control.hint);
  }

  drawValueRow(row) {
    const { field, before } = row.entry;
    row.name = field.label || before;
    const control = this.add(row, row.entry, { name: field.label ? undefined : before || field.title || field.property });
    if (field.label) row.element.append(el("label", { class: "name", for: control.id }, field.label));
    else row.element.classList.add("bare");
    row.element.append(this.valueOf(control));
  }

  drawBoxRow(row) {
    const [first] = row.values;
    const isNamed = first?.field.label; // the value has the label, the box the longer one
    row.name = row.box.field.label;
    const box = this.add(row, row.box, { name: isNamed ? row.box.field.label : undefined });
    row.element.append(el("span", { class: "lead" }, box.body));
    const values = row.values.map((entry) => this.add(row, entry, { name: entry.field.label ? undefined : row.name }));
    const label = el("label", { class: "name", for: isNamed ? values[0].id : box.id }, isNamed || row.name);
    if (isNamed) label.addEventListener("click", () => values[0].input.disabled && box.input.click());
    row.element.append(label);
    if (!values.length) row.element.classList.add("only");
    const stack = values.map((control) => this.valueOf(control));
    row.element.append(el("div", { class: "values" }, ...stack, box.needs, box.problem, box.hint));
  }

  drawVersionRow(row) {
    row.name = row.name || row.parts[0].entry.field.label;
    const box = row.box && this.add(row, row.box, { name: row.box.field.label });
    if (box) row.element.append(el("span", { class: "lead" }, box.body));
    const parts = row.parts.map(({ entry, word, increment }) => {
      const control = this.add(row, entry, { name: entry.field.label });
      const more = increment && this.add(row, increment, { name: increment.field.label });
      const cell = el("div", { class: "part" }, el("label", { for: control.id }, word), control.body);
      if (more) cell.append(el("label", { class: "add-one" }, more.body, "Add one"), more.needs, more.problem, more.hint);
      cell.append(control.needs, control.problem, control.hint);
      return cell;
    });
    row.element.append(
      box ? el("label", { class: "name", for: box.id }, row.name) : el("span", { class: "name" }, row.name),
      el("div", { class: "value parts", role: "group", "aria-label": row.name }, ...parts),
    );
    if (box) row.element.append(el("div", { class: "values" }, box.needs, box.problem, box.hint));
  }

  // What was asked before an edit that is still on its way does not know of it: the controls keep what the user
  // has done until the answer to that.
  update(isNew = false) {
    for (const control of this.controls) {
      const field = this.fieldOf(control.entry);
      if (!field) continue;
      control.field = field;
      if (isNew || this.underWay === 0) control.update(field);
      control.needs.textContent = field.needs;
      control.updateOffers?.(field);
      this.showProblemsOf(control);
    }
    for (const row of this.rows) this.markRow(row);
    if (this.panel.contains(document.activeElement)) this.tellOf(document.activeElement);
    this.markTabs();
    this.markTools();
  }

  showProblemsOf(control) {
    const { field, entry } = control;
    const own = this.problems.filter((one) => one.page === entry.page && one.field === field.name);
    const texts = [field.error, ...own.map((one) => one.message)].filter(Boolean);
    control.problem.replaceChildren(...texts.map((text) => el("span", {}, text)));
    control.input.setAttribute("aria-invalid", texts.length ? "true" : "false");
  }

  markRow(row) {
    const fields = row.controls.map((control) => control.field);
    const change = fields.some(isChanged);
    row.element.classList.toggle("changed", change);
    row.element.classList.toggle("off", !fields.at(-1).enabled);
    row.reset.hidden = !change;
  }

  // Values go before the boxes that disable them, and what has just been typed with them.
  async reset(row) {
    this.flush();
    await this.newest;
    row.controls[0].input.focus();
    for (const control of [...row.controls].reverse()) {
      const { field, entry } = control;
      if (!isChanged(field)) continue;
      if (field.kind === "choice") await this.send("set", this.defaultChoice(control), { value: "True" });
      else await this.send("set", { entry }, { value: field.default });
    }
  }

  defaultChoice({ entry, field }) {
    const others = this.entriesOfPage(entry.page);
    const found = others.find((one) => one.field.group === field.group && one.field.default === "True");
    return { entry: found };
  }

  showProblems(problems) {
    this.problems = problems;
    if (this.pages && this.id !== undefined) this.update();
  }

  send(operation, control, values) {
    this.newest = this.sendNow(operation, control, values);
    return this.newest;
  }

  async sendNow(operation, { entry }, values) {
    const id = this.id;
    this.underWay += 1;
    try {
      const answer = await call(operation, { id, page: entry.page, field: entry.field.name, ...values });
      await whenLetGo();
      if (this.id === id) this.pages = answer.pages;
      this.handlers.changed(answer);
    } catch (error) {
      announceError(error);
    }
    this.underWay -= 1;
    if (this.id === id) this.update();
  }
}
