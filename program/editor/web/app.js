// The page as a whole: its commands, its keys, and what every answer of kxhost says.
import { answers, call, callUnlessRunning, look, onAnswer } from "./api.js";
import { ask } from "./dialogs.js";
import { announce, announceError, byId, clearMessage, counted, debounce, el } from "./dom.js";
import { Form } from "./form.js";
import { Help } from "./help.js";
import { HistoryView } from "./history.js";
import { openPalette } from "./palette.js";
import { ProblemsView } from "./problems.js";
import { ProjectView } from "./project.js";
import { RunView } from "./run.js";
import { TestsView } from "./tests.js";
import { attempt, inTurn, whenLetGo } from "./turns.js";
import { currentView, onView, showView, startViews, views } from "./views.js";

let brief = {};
let problems = [];
let hasEnded = false;

const project = new ProjectView({
  changed: () => checkSoon(),
  selected: () => enableForSelected(),
  shown: (state) => {
    byId("project-name").textContent = state.name || fileName();
    byId("file").textContent = state.file;
  },
});
const optionsHelp = new Help(byId("options-help"));
const optionsForm = new Form(byId("options-pages"), {
  help: (field) => optionsHelp.show(field),
  changed: (answer) => {
    checkSoon();
    if (answer.pages.every((page) => page.fields.every((field) => !field.error))) announce("The options are saved.");
  },
});
const goToProblem = (problem) => {
  if (problem.options) showView("options");
  else if (problem.id) project.goTo(problem.id, problem.page, problem.field);
  else showView("project");
};
const wrong = new ProblemsView({
  goTo: goToProblem,
  showInLog: (finding) => {
    showView("run");
    if (!run.showInLog(finding)) announce("The log does not have this line.");
  },
});
const tests = new TestsView();
const past = new HistoryView((answer) => {
  wrong.setKnown(answer.known ?? [], answer.remembered ?? []);
  tests.setHistory(answer.tests ?? []);
  run.past = answer.remembered;
});
const run = new RunView({
  started: () => showView("run"),
  ended: () => {
    past.refresh();
    return refresh();
  },
  found: () => {
    wrong.setFindings(run.findings);
    tests.setSuites(run.suites);
  },
  showFinding: (place) => {
    showView("problems");
    wrong.choose(place);
  },
  actions: () =>
    (project.state.tree ?? []).flatMap((row) => (row.isGroup ? row.children : row)).map((node) => node.name || node.typeName),
  fileName,
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
  for (const id of ["dry-run", "add", "remove", "move-up", "move-down", "move-in", "move-out"]) byId(id).disabled = locked;
  byId("check").disabled = locked;
  byId("start").hidden = locked;
  byId("stop").hidden = !locked;
  for (const id of ["action-form", "group-form", "project-form", "options-form"]) byId(id).disabled = locked;
  enableForSelected();
  for (const message of answer.messages) announce(message);
});

// What can be done with some rows of the tree only.
function enableForSelected() {
  byId("copy").disabled = brief.running || !project.isActionSelected();
  byId("group").disabled = brief.running || !project.mayGroup();
}

function fileName() {
  return (project.state.file ?? "").split(/[\\/]/).at(-1);
}

function flush() {
  project.flush();
  optionsForm.flush();
}

const refresh = () => project.refresh(() => brief.running);

const checkSoon = debounce(() => !brief.running && check(), 900);
let checking = new AbortController(); // the newest check: one that is begun anew ends the one before
let checked; // what comes of it

function check() {
  checked = lookForProblems();
  return checked;
}

// Another check may begin meanwhile, as after each change: what that finds is the answer then.
async function newestCheck() {
  let seen;
  let found;
  while (seen !== checked) {
    seen = checked;
    found = await seen;
  }
  return found;
}

async function lookForProblems() {
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
    await whenLetGo();
    problems = answer.entries;
    project.showProblems(problems);
    wrong.setSettings(problems);
    return problems;
  });
}

// The same when the user asks, who wants to hear what came of it.
async function checkNow() {
  flush();
  const hint = setTimeout(() => announce("Checking… Escape ends it."), 1000);
  check();
  const found = await newestCheck().finally(() => clearTimeout(hint));
  if (!found) return;
  const places = [...new Set(found.map((problem) => problem.action))].join(", ");
  if (found.length) announce(`${counted(found.length, "problem")} found: ${places}.`, { isError: true });
  else announce("No problems found.");
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
    if (choice === "reload") await project.edit("reload", {});
  });
}

async function start(dryRun) {
  if (brief.running) return;
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
    document.body.className = "ended";
    document.body.replaceChildren(el("main", {}, el("h1", {}, "The editor has ended"), el("p", {}, "This page can be closed.")));
  });
}

// Shows or hides the help, here and in the options.
function toggleHelp() {
  document.body.classList.toggle("no-help");
}

// To the next problem, wherever one is.
function stepProblem(direction) {
  showView("problems");
  wrong.split.step(direction);
}

// Goes to the search of the view.
function searchHere() {
  const box = document.querySelector(".view:not([hidden]) input[type=search]");
  box?.focus();
  box?.select();
  return box;
}

const whileEditing = () => !brief.running;
const atAction = () => !brief.running && project.isActionSelected();
// Every command: its name in the palette, its keys, the button that gives it (id), when it can be given (unless always).
// One that is `typed` leaves its keys to a text that has the focus.
const commands = [
  { name: "Save", keys: "Ctrl S", button: "save", run: () => save(), may: whileEditing },
  { name: "Undo", keys: "Ctrl Z", button: "undo", run: () => project.edit("undo", {}), may: () => brief.canUndo, typed: true },
  { name: "Redo", keys: "Ctrl Y", button: "redo", run: () => project.edit("redo", {}), may: () => brief.canRedo, typed: true },
  { name: "Run", keys: "F5", button: "start", run: () => start(false), may: whileEditing },
  { name: "Dry run", keys: "Ctrl Shift F5", button: "dry-run", run: () => start(true), may: whileEditing },
  { name: "Stop the run", keys: "Shift F5", run: () => attempt(() => run.stop()), may: () => brief.running, atOnce: true },
  { name: "Next problem", keys: "F8", run: () => stepProblem(1), atOnce: true },
  { name: "Previous problem", keys: "Shift F8", run: () => stepProblem(-1), atOnce: true },
  { name: "Check the settings", button: "check", run: checkNow, may: whileEditing },
  { name: "Show or hide the help", keys: "F1", run: toggleHelp, atOnce: true },
  { name: "Search this view", keys: "Ctrl F", run: searchHere, atOnce: true },
  { name: "Copy the action", button: "copy", run: () => project.copy(), may: atAction },
  {
    name: "Put the action into a new group",
    button: "group",
    run: () => project.group(),
    may: () => !brief.running && project.mayGroup(),
  },
  {
    name: "Dissolve the group",
    button: "dissolve",
    run: () => project.dissolve(),
    may: () => !brief.running && project.isGroupSelected(),
  },
  { name: "Remove the action", button: "remove", run: () => project.remove(), may: whileEditing },
  { name: "Move the action up", button: "move-up", run: () => project.move("up"), may: whileEditing },
  { name: "Move the action down", button: "move-down", run: () => project.move("down"), may: whileEditing },
  { name: "Move the action out of its loop or group", button: "move-out", run: () => project.move("out"), may: whileEditing },
  { name: "Move the action into the loop or group above", button: "move-in", run: () => project.move("in"), may: whileEditing },
  { name: "Edit variables and property sets", run: () => openVariables(), may: whileEditing, atOnce: true },
  { name: "End the editor", button: "quit", run: quit, may: whileEditing },
  ...views.map((view, index) => ({
    name: `Go to ${byId(`show-${view}`).firstChild.nextSibling.textContent}`,
    keys: `Alt ${index + 1}`,
    run: () => showView(view),
    atOnce: true,
  })),
];

function openVariables() {
  showView("project");
  project.showVariables();
}

const give = (command) => (command.atOnce ? command.run() : inTurn(command.run));

function paletteGroups() {
  const commandItems = commands
    .filter((command) => command.may?.() ?? true)
    .map((command) => ({ text: command.name, keys: command.keys, run: () => give(command) }));
  const adding = (project.state.types ?? []).map((type) => ({
    text: `Add ${type.name}`,
    more: type.category,
    run: () => project.add(type.type),
  }));
  const { form, tree } = project;
  const isShown = form.id !== undefined && form.id === tree.selected; // the pages may still be those of the action before
  const properties = (isShown ? form.pages : []).flatMap((page, index) =>
    page.fields
      .filter((field) => field.name && field.label)
      .map((field) => ({ text: field.label, more: page.name, run: () => project.goTo(tree.selected, index, field.name) })),
  );
  const actions = tree.rows.map(({ node }) => ({
    text: node.name || node.typeName,
    more: node.name ? node.typeName : "",
    run: () => project.goTo(node.id),
  }));
  const items = wrong.all().map((one) => ({
    text: one.message,
    more: [one.code || one.action, one.place].filter((part) => typeof part === "string" && part).join(", "),
    run: () => {
      if (one.isSetting) return goToProblem(one);
      showView("problems");
      return wrong.choose(one.place);
    },
  }));
  return [
    { title: "Actions", sign: "project", items: actions },
    { title: "Properties", sign: "options", items: properties },
    { title: "Problems", sign: "problems", items },
    { title: "Commands", sign: "run", items: [...commandItems, ...(brief.running ? [] : adding)] },
  ];
}

// "Ctrl Shift F5", as the table of commands writes it.
function keysOf(event) {
  const key = event.key.length === 1 ? event.key.toUpperCase() : event.key;
  const held = [(event.ctrlKey || event.metaKey) && "Ctrl", event.altKey && "Alt", event.shiftKey && "Shift"];
  return [...held, key].filter(Boolean).join(" ");
}

function onKey(event) {
  if (event.key === "Escape") checking.abort();
  if (document.querySelector("dialog[open]")) return;
  const keys = keysOf(event) === "Ctrl Shift Z" ? "Ctrl Y" : keysOf(event);
  if (keys === "Ctrl K") {
    event.preventDefault();
    openPalette(paletteGroups());
    return;
  }
  const isText = event.target.matches?.("input[type=text], input[type=password], input[type=search], textarea");
  const command = commands.find((one) => one.keys === keys);
  if (!command || (command.typed && isText)) return;
  event.preventDefault();
  if (command.may?.() ?? true) give(command);
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
  for (const command of commands) if (command.button) byId(command.button).addEventListener("click", () => inTurn(command.run));
  byId("stop").addEventListener("click", () => attempt(() => run.stop()));
  byId("palette").addEventListener("click", () => openPalette(paletteGroups()));
  byId("add").addEventListener("click", () => project.add());
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
onView("run", () => run.log.draw());
onView("problems", () => wrong.show());
onView("history", () => past.refresh());
onView("options", () =>
  attempt(async () => {
    const pages = await callUnlessRunning("action", { id: "options" });
    if (pages) optionsForm.show(pages);
  }),
);
startViews();
await attempt(refresh);
if (!brief.running) check();
past.refresh();
await attempt(() => run.catchUp(brief.running));
if (currentView() === "run") run.log.draw();
