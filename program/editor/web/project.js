// The view of the project: its tree of actions, the pages of the selected one, its variables.
import { call, callUnlessRunning } from "./api.js";
import { ask, askTexts, choosePath } from "./dialogs.js";
import { announce, button, byId, counted, el, icon } from "./dom.js";
import { Form } from "./form.js";
import { Help } from "./help.js";
import { Tree } from "./tree.js";
import { attempt, attemptChange, inTurn, whenLetGo } from "./turns.js";
import { showVariables } from "./variables.js";
import { showView } from "./views.js";

const buildType = "DEVENV"; // builds solutions
const solutions = "Solution Files (*.sln)|*.sln";
const isSolution = (field) => field.kind === "file" && field.filter.includes(".sln");

export class ProjectView {
  // `handlers`: changed() after each edit, shown(state) when the project is there anew,
  // selected() when another row is.
  constructor(handlers) {
    this.handlers = handlers;
    this.state = {};
    this.problems = [];
    this.isAtVariables = false;
    this.shown = Promise.resolve(); // the pages of the action selected last
    this.help = new Help(byId("help"));
    this.form = new Form(byId("pages"), { changed: () => handlers.changed(), help: (field) => this.help.show(field) });
    this.tree = new Tree(byId("tree"), {
      inTurn,
      select: (id) => this.select(id),
      open: () => this.open(),
      move: (direction) => this.move(direction),
      drop: (id, to) => this.moveTo(id, to),
      remove: () => this.remove(),
    });
    this.listen();
  }

  listen() {
    const attribute = (name, value) => this.attribute(name, value);
    for (const [id, name] of [
      ["action-name", "Name"],
      ["on-failure", "ContinueOnError"],
      ["loop-variable", "LoopVariable"],
    ])
      byId(id).addEventListener("change", (event) => attribute(name, event.target.value));
    for (const [id, name] of [
      ["group-name", "Name"],
      ["group-needs", "Needs"],
    ])
      byId(id).addEventListener("change", (event) => attribute(name, event.target.value));
    byId("show-variables").addEventListener("click", () => this.showVariables());
    byId("begin").addEventListener("submit", (event) => this.begin(event));
    byId("begin-browse").addEventListener("click", () => this.browseToBegin());
    byId("tree-button").addEventListener("click", () => this.openSheet(byId("tree-button").ariaExpanded !== "true"));
    byId("tree").addEventListener("click", (event) => event.target.closest(".twist") ?? this.openSheet(false));
    byId("tree-pane").addEventListener("keydown", (event) => event.key === "Escape" && this.openSheet(false));
  }

  attribute(name, value) {
    return this.edit("attribute", { id: this.tree.selected, name, value }, false);
  }

  // On a narrow screen the tree lies over the page.
  openSheet(isOpen) {
    byId("tree-button").ariaExpanded = isOpen ? "true" : "false";
    byId("tree-pane").classList.toggle("open", isOpen);
    if (isOpen) this.tree.focusSelected();
  }

  show(answer, selected = answer.id ?? this.tree.selected) {
    this.state = answer;
    this.tree.images = new Set(answer.types.filter((type) => type.image).map((type) => type.type));
    this.tree.show(answer.tree, selected);
    if (!answer.tree.length) this.offerTypes();
    showVariables(byId("project"), answer, (operation, values) => this.edit(operation, values));
    this.listVariables();
    this.showUnsaved();
    this.handlers.shown(answer);
    return this.tree.selected;
  }

  async refresh(isRunning) {
    const selected = this.show(await call("state"));
    if (!isRunning()) await this.showAction(selected);
  }

  flush() {
    this.form.flush();
    const active = document.activeElement;
    if (!active?.matches("#project input, .action-head input, .terms input, #group-form input")) return;
    active.blur(); // which says that it has changed
    active.focus();
  }

  edit(operation, values, isNewForm = true) {
    this.flush();
    return attemptChange(
      async () => {
        const answer = await call(operation, values);
        await whenLetGo();
        if (operation === "move") this.form.follow(values.id, answer.id);
        this.form.mustRedraw = isNewForm;
        await this.showAction(this.show(answer));
        this.handlers.changed();
        return answer;
      },
      () => this.refresh(() => false),
    );
  }

  select(id) {
    this.isAtVariables = false;
    this.shown = this.showAction(id);
  }

  async open() {
    await this.shown;
    this.openSheet(false);
    if (byId("group-form").hidden) return this.form.focusFirst();
    byId("group-name").focus();
    return byId("group-name");
  }

  async showAction(id) {
    this.form.flush();
    this.showPage(id);
    const row = this.tree.rowOf(id);
    if (!row || row.node.isGroup) {
      this.form.clear();
      if (row) this.showGroup(row);
      return;
    }
    await attempt(async () => {
      const action = await callUnlessRunning("action", { id });
      await whenLetGo();
      if (!action || this.tree.selected !== id) return;
      this.showHead(action);
      this.form.problems = this.problems.filter((problem) => problem.id === id);
      this.form.show(action, this.form.id === id ? this.form.page : 0);
      this.showProblems(this.problems);
    });
  }

  showGroup({ node }) {
    setUnlessTyping(byId("group-name"), node.name);
    setUnlessTyping(byId("group-needs"), node.needs);
    byId("group-size").textContent = `Group of ${counted(node.children.length, "action")}`;
    this.showPlace(node);
  }

  showHead(action) {
    byId("action-title").textContent = action.name || action.typeName;
    byId("action-name").placeholder = action.typeName;
    setUnlessTyping(byId("action-name"), action.name);
    byId("action-name").size = Math.min(Math.max((action.name || action.typeName).length, 8), 30);
    byId("action-type").textContent = action.name ? action.typeName : "";
    byId("on-failure").value = action.continueOnError;
    this.showTerms(action.terms);
    byId("loop-variable-row").hidden = action.loopVariable === undefined;
    setUnlessTyping(byId("loop-variable"), action.loopVariable ?? "");
    this.showPlace(action);
  }

  // On the button that opens the tree where there is no room for it.
  showPlace(row) {
    const rows = this.tree.rows;
    const at = rows.findIndex((one) => one.node.id === this.tree.selected);
    const title = el("b", {}, row.name || row.typeName);
    byId("tree-button").firstElementChild.replaceChildren(title, el("span", { class: "type" }, ` ${at + 1} of ${rows.length}`));
  }

  // What an action needs, when it is run and how long: a row each.
  showTerms(terms) {
    const rows = byId("term-rows");
    if (!rows.firstChild)
      for (const { name, help } of terms) {
        const changed = (event) => this.attribute(name, event.target.value);
        const input = el("input", { type: "text", autocomplete: "off", spellcheck: "false", onchange: changed });
        rows.append(el("label", { title: help }, name.replace(/(?<=[a-z])(?=[A-Z])/, " "), input));
      }
    terms.forEach(({ name, value, applies }, i) => {
      const input = rows.children[i].querySelector("input");
      rows.children[i].hidden = !applies;
      input.placeholder = name === "Needs" ? "the action before it; a comma alone: nothing" : "";
      setUnlessTyping(input, value);
    });
    if (terms.some((term) => term.value)) byId("terms").open = true;
  }

  showPage(id) {
    const isGroup = this.isGroupSelected();
    byId("action-form").hidden = this.isAtVariables || id === undefined || isGroup;
    byId("group-form").hidden = this.isAtVariables || !isGroup;
    byId("project-form").hidden = !this.isAtVariables;
    byId("begin").hidden = this.isAtVariables || id !== undefined;
    byId("show-variables").setAttribute("aria-pressed", this.isAtVariables ? "true" : "false");
    this.handlers.selected();
  }

  isGroupSelected() {
    return this.tree.rowOf(this.tree.selected)?.node.isGroup ?? false;
  }

  isActionSelected() {
    return this.tree.selected !== undefined && !this.isGroupSelected();
  }

  mayGroup() {
    return this.isActionSelected() && this.tree.rowOf(this.tree.selected).path.length === 1;
  }

  showVariables(name) {
    this.isAtVariables = true;
    this.openSheet(false);
    this.showPage(this.tree.selected);
    this.help.show(undefined);
    const key = name === undefined ? "" : `[data-key="${CSS.escape(`variable ${name}`)}"]`;
    (byId("project").querySelector(key || "input") ?? byId("project").querySelector("button")).focus();
  }

  listVariables() {
    const { variables, propertySets } = this.state;
    const line = (sign, name, value, key) =>
      el(
        "li",
        {},
        button([icon(sign), el("span", {}, name), el("span", { class: "type" }, value)], () => this.showVariables(key)),
      );
    byId("variables").replaceChildren(
      ...variables.map(({ name, value }) => line("variable", name, value, name)),
      ...propertySets.map(({ name, kind }) => line("save", name, kind)),
    );
  }

  // What is wrong with the project itself stands above the pages, with the selected action among them; each leads to its field.
  showProblems(problems) {
    this.problems = problems;
    this.tree.mark(new Set(problems.map((problem) => problem.id)));
    const own = problems.filter((problem) => problem.id === this.tree.selected);
    this.form.showProblems(own);
    byId("action-problems").replaceChildren(...own.map((problem) => this.problemItem(problem)));
    byId("project-problems").replaceChildren(
      ...problems.filter((problem) => problem.id === "").map((problem) => this.problemItem(problem)),
    );
  }

  problemItem(problem) {
    const text = problem.place ? `${problem.place}: ${problem.message}` : problem.message;
    const lead = () => this.form.goTo(problem.page, problem.field);
    const item = el("li", {}, icon("warning"), problem.page === undefined ? text : button(text, lead, { class: "link" }));
    if (problem.options) item.append(button("Open the options", () => showView("options"), { class: "compact" }));
    return item;
  }

  // To a field of an action.
  async goTo(id, page, field) {
    showView("project");
    if (this.tree.selected !== id || this.isAtVariables) this.tree.select(id);
    await this.shown;
    if (page !== undefined) this.form.goTo(page, field);
  }

  // What an earlier editor kept when it ended without saving.
  showUnsaved() {
    byId("unsaved").replaceChildren(
      ...this.state.unsaved.map((file) =>
        el(
          "p",
          { class: "bar" },
          el("span", {}, `Changes that were not saved when the editor ended are kept in ${file}.`),
          button("Take them over", async () => {
            if (await this.edit("unsaved", { file, take: true }))
              announce("The changes are taken over. Undo brings back what was here before.");
          }),
          button("Remove them", async () => {
            const choice = await ask("Remove the changes that were not saved?", `${file} is deleted. That cannot be undone.`, [
              { text: "Remove", value: "remove", main: true },
            ]);
            if (choice) await this.edit("unsaved", { file });
          }),
        ),
      ),
    );
  }

  async add(type) {
    const items = this.state.types.map((one) => ({ value: one.type, text: `${one.name} (${one.category})` }));
    const selected = this.tree.rowOf(this.tree.selected);
    const places = [{ value: "after", text: selected ? "behind the selected action" : "as the first" }];
    const { isLoop, isGroup } = selected?.node ?? {};
    if (isLoop || isGroup) places.push({ value: "inside", text: `inside the selected ${isLoop ? "loop" : "group"}` });
    const chosen = type
      ? { type, place: "after" }
      : await askTexts(
          "Add an action",
          [
            { name: "type", label: "Action", items },
            { name: "place", label: "Place", items: places },
          ],
          "Add",
        );
    if (!chosen) return;
    showView("project");
    this.isAtVariables = false;
    this.tree.focusSelected(); // keys that follow are meant for the new action
    await inTurn(() => this.edit("add", { type: chosen.type, to: this.placeOf(chosen.place) }));
  }

  // A project without actions asks what it shall build.
  offerTypes() {
    const others = this.state.types.filter((type) => type.type !== buildType);
    byId("begin-others").replaceChildren(
      ...others.map((type) => {
        const image = type.image ? el("img", { src: `image/${type.type}`, alt: "", width: 16, height: 16 }) : "";
        return el(
          "li",
          {},
          button([image, type.name], () => this.add(type.type), { class: "quiet" }),
        );
      }),
    );
  }

  async browseToBegin() {
    const choice = await choosePath({ title: "Select the solution", start: "", filter: solutions, folders: false });
    if (choice) byId("begin-solution").value = choice;
    byId("begin-solution").focus();
  }

  // The new action gets the solution as if it had been chosen in its page.
  async begin(event) {
    event.preventDefault();
    const choice = byId("begin-solution").value.trim();
    if (!choice) return;
    if (!(await this.edit("add", { type: buildType, to: "0" }))) return;
    const page = this.form.pages.findIndex(({ fields }) => fields.some(isSolution));
    const field = this.form.pages[page]?.fields.find(isSolution);
    if (field) await this.form.send("click", { entry: { page, field } }, { button: "browse", choice });
    byId("begin-solution").value = "";
    this.form.focusFirst();
  }

  placeOf(place) {
    const selected = this.tree.rowOf(this.tree.selected);
    if (!selected) return "0";
    return this.tree.targetAt(selected, place === "inside" ? "inside" : "behind");
  }

  async move(direction) {
    const to = this.tree.targetOf(direction);
    if (to === undefined) announce("The action cannot go further that way.");
    else await this.moveTo(this.tree.selected, to);
  }

  async moveTo(id, to) {
    await this.edit("move", { id, to }, false);
    // Unless the user has gone on to a field meanwhile.
    if (!byId("page-pane").contains(document.activeElement)) this.tree.focusSelected();
  }

  async remove() {
    if (this.tree.selected === undefined) return;
    const index = this.tree.rows.findIndex((row) => row.node.id === this.tree.selected);
    const wasGroup = this.isGroupSelected();
    await this.edit("remove", { id: this.tree.selected });
    const next = this.tree.rows[Math.min(index, this.tree.rows.length - 1)];
    if (next) this.tree.select(next.node.id);
    announce(
      `The ${wasGroup ? "group is removed with its actions. Undo brings them" : "action is removed. Undo brings it"} back.`,
    );
  }

  copy() {
    const row = this.tree.rowOf(this.tree.selected);
    return row && this.edit("copy", { id: row.node.id, to: this.tree.targetAt(row, "behind") });
  }

  // Puts the selected action into a new group.
  async group() {
    const id = this.tree.selected;
    const texts = await askTexts(
      "Put the action into a new group",
      [{ name: "name", label: "Name of the group" }],
      "Make the group",
    );
    if (texts) await this.edit("group", { id, ...texts });
  }

  async dissolve() {
    await this.edit("dissolve", { id: this.tree.selected });
    this.tree.focusSelected();
    announce("The group is dissolved; its actions stand where it was. Undo brings it back.");
  }
}

function setUnlessTyping(input, value) {
  if (input !== document.activeElement || input.value === input.dataset.shown) input.value = value;
  if (input.value === value) input.dataset.shown = value;
}
