// The page as a whole: what is chosen, what the buttons do.
import { answers, call, callUnlessRunning, forgetGeneration, look, onAnswer } from "./api.js";
import { ask, askTexts } from "./dialogs.js";
import { announce, announceError, button, byId, clearMessage, counted, debounce, el } from "./dom.js";
import { Form } from "./form.js";
import { showProject } from "./project.js";
import { RunView } from "./run.js";
import { Tree } from "./tree.js";

let state = {};
let brief = {};
let problems = [];
let hasEnded = false;
let turn = Promise.resolve(); // the newest command, see inTurn
let change = turn; // the newest change, until what came of it is shown
let shown = turn; // the pages of the action selected last
const views = ["actions", "project", "options", "run"];

const form = new Form(byId("pages"), { changed: () => checkSoon() });
const optionsForm = new Form(byId("options-pages"), {
  changed: (answer) => {
    checkSoon();
    if (answer.pages.every((page) => page.fields.every((field) => !field.error))) announce("The options are saved.");
  },
});
const run = new RunView({ started: () => showView("run"), ended: () => refresh() });
const tree = new Tree(byId("tree"), {
  inTurn,
  select: (id) => {
    shown = showAction(id);
  },
  open: async () => {
    await shown;
    byId("pages").querySelector("input:enabled, select:enabled, textarea:enabled, button")?.focus();
  },
  move: (direction) => moveAction(direction),
  remove: () => removeAction(),
});

onAnswer((answer) => {
  brief = answer;
  clearMessage(answers);
  byId("dirty").textContent = answer.dirty ? "not saved" : answer.hasFile ? "saved" : "not saved yet";
  byId("dirty").className = answer.dirty ? "warning" : "";
  document.title = `${answer.dirty ? "● " : ""}${fileName()} – kxhost`;
  const locked = answer.running;
  byId("save").disabled = locked || (answer.hasFile && !answer.dirty);
  byId("undo").disabled = locked || !answer.canUndo;
  byId("redo").disabled = locked || !answer.canRedo;
  for (const id of ["start", "dry-run", "check", "add", "copy", "remove", "move-up", "move-down", "move-in", "move-out"])
    byId(id).disabled = locked;
  byId("stop").disabled = !locked;
  for (const id of ["action-form", "project-form", "options-form"]) byId(id).disabled = locked;
  for (const message of answer.messages) announce(message);
});

function fileName() {
  return (state.file ?? "").split(/[\\/]/).at(-1);
}

// Does it, and says why it could not be done.
async function attempt(work) {
  try {
    return await work();
  } catch (error) {
    announceError(error);
    return undefined;
  }
}

// The same for a change: what could not be done may have been asked about a project that is different now.
async function attemptChange(work) {
  try {
    return await work();
  } catch (error) {
    forgetGeneration();
    await attempt(refresh);
    announceError(error);
    return undefined;
  }
}

// One command after the other: one that is given while another is under way means the project as that will leave it.
function inTurn(command) {
  turn = turn
    .then(() => change)
    .then(() => command())
    .catch(announceError);
  return turn;
}

function flush() {
  form.flush();
  optionsForm.flush();
  const active = document.activeElement;
  if (!active?.matches("#project input, .head input")) return;
  active.blur(); // which says that it has changed
  active.focus();
}

function showState(answer, selected = answer.id ?? tree.selected) {
  state = answer;
  byId("project-name").textContent = state.name || fileName();
  byId("file").textContent = state.file;
  tree.images = new Set(state.types.filter((type) => type.image).map((type) => type.type));
  tree.show(state.tree, selected);
  byId("no-actions").hidden = state.tree.length > 0;
  showProject(byId("project"), state, editProject);
  showUnsaved();
  return tree.selected;
}

async function refresh() {
  const selected = showState(await call("state"));
  if (!brief.running) await showAction(selected);
}

function edit(operation, values, isNewForm = true) {
  flush();
  change = attemptChange(async () => {
    const answer = await call(operation, values);
    if (operation === "move") form.follow(values.id, answer.id);
    form.mustRedraw = isNewForm;
    const selected = showState(answer);
    await showAction(selected);
    checkSoon();
    return answer;
  });
  return change;
}

const editProject = (operation, values) => edit(operation, values);

async function showAction(id) {
  form.flush();
  byId("action-form").hidden = id === undefined;
  if (id === undefined) {
    form.clear();
    return;
  }
  await attempt(async () => {
    const action = await callUnlessRunning("action", { id });
    if (!action || tree.selected !== id) return;
    byId("action-title").textContent = action.name || action.typeName;
    setUnlessTyping(byId("action-name"), action.name);
    byId("on-failure").value = action.continueOnError;
    byId("loop-variable-row").hidden = action.loopVariable === undefined;
    setUnlessTyping(byId("loop-variable"), action.loopVariable ?? "");
    form.problems = problems.filter((problem) => problem.id === id);
    form.show(action, form.id === id ? form.page : 0);
    showProblems();
  });
}

function setUnlessTyping(input, value) {
  if (input !== document.activeElement || input.value === input.dataset.shown) input.value = value;
  if (input.value === value) input.dataset.shown = value;
}

const checkSoon = debounce(() => !brief.running && check(), 900);
let checking = new AbortController(); // the newest check: one that is begun anew ends the one before

async function check() {
  checkSoon.cancel();
  checking.abort();
  checking = new AbortController();
  const { signal } = checking;
  return attempt(async () => {
    const answer = await look("validate", {}, { signal, unlessRunning: true });
    if (!answer || signal.aborted) return undefined;
    if (answer.isOutdated) {
      checkSoon();
      return undefined;
    }
    problems = answer.entries;
    tree.mark(new Set(problems.map((problem) => problem.id)));
    showProblems();
    return problems;
  });
}

// The same when the user asks, who wants to hear what came of it.
async function checkNow() {
  flush();
  const hint = setTimeout(() => announce("Checking… Escape ends it."), 1000);
  const found = await check().finally(() => clearTimeout(hint));
  if (!found) return;
  const places = [...new Set(found.map((problem) => problem.action))].join(", ");
  if (found.length) announce(`${counted(found.length, "problem")} found: ${places}.`, { isError: true });
  else announce("No problems found.");
}

// What is wrong with the project itself stands above the views, with the selected action above its pages; each
// leads to its field.
function showProblems() {
  const own = problems.filter((problem) => problem.id === tree.selected);
  form.showProblems(own);
  byId("action-problems").replaceChildren(...own.map(problemItem));
  byId("project-problems").replaceChildren(...problems.filter((problem) => problem.id === "").map(problemItem));
}

function problemItem(problem) {
  const text = problem.place ? `${problem.place}: ${problem.message}` : problem.message;
  const item = el(
    "li",
    {},
    problem.page === undefined ? text : button(text, () => form.goTo(problem.page, problem.field), { class: "link" }),
  );
  if (problem.options)
    item.append(
      " ",
      button("Open the options", () => showView("options")),
    );
  return item;
}

// What an earlier editor kept when it ended without saving.
function showUnsaved() {
  byId("unsaved").replaceChildren(
    ...state.unsaved.map((file) =>
      el(
        "p",
        { class: "bar" },
        el("span", {}, `Changes that were not saved when the editor ended are kept in ${file}.`),
        button("Take them over", async () => {
          if (await edit("unsaved", { file, take: true }))
            announce("The changes are taken over. Undo brings back what was here before.");
        }),
        button("Remove them", async () => {
          const choice = await ask("Remove the changes that were not saved?", `${file} is deleted. That cannot be undone.`, [
            { text: "Remove", value: "remove", main: true },
          ]);
          if (choice) await edit("unsaved", { file });
        }),
      ),
    ),
  );
}

function showView(name) {
  for (const view of views) {
    byId(`view-${view}`).hidden = view !== name;
    byId(`show-${view}`).setAttribute("aria-pressed", view === name ? "true" : "false");
  }
  if (name === "options")
    attempt(async () => {
      const pages = await callUnlessRunning("action", { id: "options" });
      if (pages) optionsForm.show(pages);
    });
  if (name === "run") run.log.draw();
}

async function addAction() {
  const items = state.types.map((type) => ({ value: type.type, text: `${type.name} (${type.category})` }));
  const selected = tree.rowOf(tree.selected);
  const places = [{ value: "after", text: selected ? "behind the selected action" : "as the first" }];
  if (selected?.node.isLoop) places.push({ value: "inside", text: "inside the selected loop" });
  const chosen = await askTexts(
    "Add an action",
    [
      { name: "type", label: "Action", items },
      { name: "place", label: "Place", items: places },
    ],
    "Add",
  );
  if (!chosen) return;
  showView("actions");
  tree.focusSelected(); // keys that follow are meant for the new action
  await inTurn(() => edit("add", { type: chosen.type, to: placeOf(chosen.place) }));
}

function placeOf(place) {
  const selected = tree.rowOf(tree.selected);
  if (!selected) return "0";
  return place === "inside" ? `${selected.node.id}/${selected.node.children.length}` : behind(selected.node.id);
}

function behind(id) {
  const path = id.split("/").map(Number);
  path[path.length - 1] += 1;
  return path.join("/");
}

async function moveAction(direction) {
  const to = tree.targetOf(direction);
  if (to === undefined) {
    announce("The action cannot go further that way.");
    return;
  }
  await edit("move", { id: tree.selected, to }, false);
  tree.focusSelected();
}

async function removeAction() {
  if (tree.selected === undefined) return;
  const index = tree.rows.findIndex((row) => row.node.id === tree.selected);
  await edit("remove", { id: tree.selected });
  const next = tree.rows[Math.min(index, tree.rows.length - 1)];
  if (next) tree.select(next.node.id);
  announce("The action is removed. Undo brings it back.");
}

async function save(overwrite = false) {
  flush();
  await attempt(async () => {
    const { saved } = await call("save", { overwrite });
    if (saved) {
      announce("The project is saved.");
      return;
    }
    const choice = await ask(
      "The file has been changed by somebody else",
      "It is not as it was read. Overwrite it with what is shown here, or load what is in the file? What is shown here can be brought back by Undo.",
      [
        { text: "Overwrite the file", value: "overwrite" },
        { text: "Load the file", value: "reload" },
      ],
    );
    if (choice === "overwrite") await save(true);
    if (choice === "reload") await edit("reload", {});
  });
}

const undo = () => edit("undo", {});
const redo = () => edit("redo", {});

function copyAction() {
  return tree.selected === undefined ? undefined : edit("copy", { id: tree.selected, to: behind(tree.selected) });
}

async function start(dryRun) {
  flush();
  checking.abort();
  showView("run");
  await attempt(() => run.start(dryRun));
}

async function quit() {
  flush();
  await attempt(async () => {
    let { ended } = await call("quit", {});
    if (!ended) {
      const choice = await ask("The project is not saved", "Save it before the editor ends?", [
        { text: "Save and end", value: "save", main: true },
        { text: "End without saving", value: "discard" },
      ]);
      if (choice === "save") {
        await save();
        if (!brief.dirty) ({ ended } = await call("quit", {}));
      }
      if (choice === "discard") ({ ended } = await call("quit", { discard: true }));
    }
    if (!ended) return;
    hasEnded = true;
    document.body.replaceChildren(el("main", {}, el("h1", {}, "The editor has ended"), el("p", {}, "This page can be closed.")));
  });
}

function onKey(event) {
  if (event.key === "Escape") checking.abort();
  if (!(event.ctrlKey || event.metaKey) || event.altKey || document.querySelector("dialog[open]")) return;
  const isText = event.target.matches("input[type=text], input[type=password], textarea");
  const keys = { s: save, z: isText ? undefined : event.shiftKey ? redo : undo, y: isText ? undefined : redo };
  const work = keys[event.key.toLowerCase()];
  if (!work) return;
  event.preventDefault();
  inTurn(work);
}

// Tells kxhost that a page is still there, and learns what another window has done.
async function stayInTouch() {
  if (hasEnded) return;
  try {
    const before = brief.generation;
    const answer = await call("ping");
    if (answer.generation !== before && !answer.running) await refresh();
    if (answer.running) run.watch();
  } catch (error) {
    announceError(error);
  }
}

function listen() {
  const commands = {
    save,
    undo,
    redo,
    check: checkNow,
    quit,
    start: () => start(false),
    "dry-run": () => start(true),
    remove: removeAction,
    copy: copyAction,
    "move-up": () => moveAction("up"),
    "move-down": () => moveAction("down"),
    "move-in": () => moveAction("in"),
    "move-out": () => moveAction("out"),
  };
  for (const [id, command] of Object.entries(commands)) byId(id).addEventListener("click", () => inTurn(command));
  byId("stop").addEventListener("click", () => attempt(() => run.stop()));
  byId("add").addEventListener("click", addAction);
  for (const view of views) byId(`show-${view}`).addEventListener("click", () => showView(view));
  const attribute = (name, value) => edit("attribute", { id: tree.selected, name, value }, false);
  byId("action-name").addEventListener("change", (event) => attribute("Name", event.target.value));
  byId("on-failure").addEventListener("change", (event) => attribute("ContinueOnError", event.target.value));
  byId("loop-variable").addEventListener("change", (event) => attribute("LoopVariable", event.target.value));
  document.addEventListener("keydown", onKey);
  // A message is about what the user did last.
  for (const type of ["click", "input", "change"]) document.addEventListener(type, () => clearMessage(), true);
  document.addEventListener(
    "keydown",
    (event) => !["Tab", "Shift", "Control", "Alt", "Meta"].includes(event.key) && clearMessage(),
    true,
  );
  window.addEventListener("beforeunload", (event) => {
    flush();
    if (brief.dirty && !hasEnded) event.preventDefault();
  });
  setInterval(stayInTouch, 20000);
}

listen();
showView("actions");
await attempt(refresh);
if (!brief.running) check();
await attempt(() => run.catchUp(brief.running));
