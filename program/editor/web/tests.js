// The view of the unit tests of the newest run: failures first, with their messages and stacks.
import { strip } from "./chart.js";
import { byId, counted, debounce, el, formatTime, icon } from "./dom.js";
import { Split } from "./split.js";
import { countInView } from "./views.js";

const mostShown = 1000; // rows at once

// From the results that an action sent: {name, suite, key, state, milliseconds, message, stack}. The key is what the history calls
// the test: behind its suite, which has the passes of loops and, when its name comes again, a number.
function readSuite({ passes, xml }, seen) {
  const page = new DOMParser().parseFromString(xml, "text/xml");
  const name = `${page.documentElement.getAttribute("name") ?? ""}${passes ? ` (${passes})` : ""}`;
  seen.set(name, (seen.get(name) ?? 0) + 1);
  const suite = seen.get(name) > 1 ? `${name} (${seen.get(name)})` : name;
  return [...page.querySelectorAll("testcase")].map((test) => {
    const failure = test.querySelector("failure, error");
    const message = failure?.getAttribute("message") ?? "";
    return {
      name: test.getAttribute("name"),
      key: `${suite}/${test.getAttribute("name")}`,
      suite: test.getAttribute("classname") ?? "",
      state: failure ? "failed" : test.querySelector("skipped") ? "not run" : "passed",
      milliseconds: Number(test.getAttribute("time") ?? 0) * 1000,
      message,
      stack: (failure?.textContent ?? "").replace(message, "").trim(),
    };
  });
}

const signs = { failed: ["error", "error"], passed: ["done", "success"], "not run": ["skipped", ""] };
const kinds = {
  failed: { title: "Failed", of: (tests) => tests.filter((test) => test.state === "failed") },
  flaky: { title: "Flaky", of: (tests, view) => tests.filter((test) => view.historyOf(test)?.flaky) },
  slow: { title: "Slowest", of: (tests) => [...tests].sort((a, b) => b.milliseconds - a.milliseconds).slice(0, 25) },
  all: { title: "All", of: (tests) => tests },
};

export class TestsView {
  constructor() {
    this.begin([]);
    this.history = new Map();
    this.kind = undefined; // what the user chose
    this.split = new Split(byId("view-tests"), (test) => drawDetail(test, this.historyOf(test)));
    this.search = byId("test-search");
    this.search.addEventListener(
      "input",
      debounce(() => this.show(), 100),
    );
    for (const choice of byId("test-kinds").children)
      choice.addEventListener("click", () => {
        this.kind = choice.value;
        this.show();
      });
    this.show();
  }

  // What became of them in the last runs, by "suite/name".
  setHistory(tests) {
    this.history = new Map(tests.map((test) => [test.name, test]));
    this.show();
  }

  historyOf(test) {
    return this.history.get(test.key);
  }

  // `suites` grows while a run goes on; the next run has another list.
  begin(suites) {
    this.suites = suites;
    this.tests = [];
    this.read = 0; // suites
    this.seen = new Map(); // how often each name of a suite has come
  }

  setSuites(suites) {
    if (suites === this.suites && suites.length === this.read) return;
    if (suites !== this.suites) this.begin(suites);
    for (const suite of suites.slice(this.read)) this.tests.push(...readSuite(suite, this.seen));
    this.read = suites.length;
    this.show();
  }

  show() {
    const failed = kinds.failed.of(this.tests).length;
    countInView("tests", failed, "failed");
    const kind = this.kind ?? (failed ? "failed" : "all");
    for (const choice of byId("test-kinds").children) {
      const count = { failed, flaky: kinds.flaky.of(this.tests, this).length, all: this.tests.length }[choice.value];
      choice.textContent = [kinds[choice.value].title, count?.toLocaleString("en")].filter(Boolean).join(" ");
      choice.setAttribute("aria-pressed", choice.value === kind ? "true" : "false");
    }
    const text = this.search.value.trim().toLowerCase();
    const found = kinds[kind].of(this.tests, this).filter((test) => `${test.suite}.${test.name}`.toLowerCase().includes(text));
    const more = found.length > mostShown ? `${mostShown} of ${found.length}` : `${found.length} of ${this.tests.length}`;
    const groups = found.length ? [{ title: kinds[kind].title, more, items: found.slice(0, mostShown) }] : [];
    this.split.show(
      groups,
      (test) => drawRow(test, this.historyOf(test)),
      (a, b) => a === b,
    );
    if (!found.length) this.split.list.replaceChildren(el("p", { class: "note" }, this.nothing(text, failed)));
  }

  nothing(text, failed) {
    if (!this.tests.length) return "The newest run has run no tests.";
    return text || failed ? "No test matches." : `All ${counted(this.tests.length, "test")} passed or did not run.`;
  }
}

function drawRow(test, history) {
  const [sign, kind] = signs[test.state];
  return [
    icon(sign, kind, test.state),
    el("span", { class: "what" }, test.name, el("span", { class: "where" }, test.suite)),
    el("span", { class: "type measures" }, history ? strip(history.strip) : null, formatTime(test.milliseconds)),
  ];
}

// "Expected:<6.72>. Actual:<6.27>." says two values that are to be compared.
function compared(message) {
  const found = /Expected:?\s*<([^]*?)>\.?\s*Actual:?\s*<([^]*?)>/.exec(message);
  if (!found) return [];
  const row = (name, text, kind) => el("div", {}, el("dt", {}, name), el("dd", {}, el("code", { class: kind }, text)));
  return [el("dl", { class: "facts" }, row("Expected", found[1]), row("Actual", found[2], "error"))];
}

function drawHistory(history) {
  const { runs, failures, usualMs, lastFailure, flaky } = history;
  const often = failures
    ? `Failed in ${failures} of ${counted(runs, "run")}, last in run ${lastFailure}.`
    : `Passed ${counted(runs, "time")}.`;
  const words = `${often} Usually ${formatTime(usualMs)}.${flaky ? " Flaky: its outcome changes without a reason." : ""}`;
  return [el("h3", {}, "Last runs"), strip(history.strip), el("p", { class: "note" }, words)];
}

function drawDetail(test, history) {
  const time = test.milliseconds ? ` after ${formatTime(test.milliseconds)}` : "";
  return [
    el("h2", {}, test.name),
    el("p", { class: "sub" }, icon(...signs[test.state]), `${test.suite}, ${test.state}${test.state === "not run" ? "" : time}`),
    test.message ? el("p", { class: "said" }, test.message) : "",
    ...compared(test.message),
    test.stack ? el("pre", { class: "stack", tabindex: "0", "aria-label": "Stack" }, test.stack) : "",
    ...(history ? drawHistory(history) : []),
  ];
}
