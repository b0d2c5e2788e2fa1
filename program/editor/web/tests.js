// The view of the unit tests of the newest run: failures first, with their messages and stacks.
import { byId, counted, debounce, el, formatTime, icon } from "./dom.js";
import { Split } from "./split.js";
import { countInView } from "./views.js";

const mostShown = 1000; // rows at once

// From the results that an action sent: {name, suite, state, time, message, stack, action}.
function readSuite({ action, xml }) {
  const page = new DOMParser().parseFromString(xml, "text/xml");
  return [...page.querySelectorAll("testcase")].map((test) => {
    const failure = test.querySelector("failure, error");
    const message = failure?.getAttribute("message") ?? "";
    return {
      name: test.getAttribute("name"),
      suite: test.getAttribute("classname") ?? "",
      state: failure ? "failed" : test.querySelector("skipped") ? "not run" : "passed",
      milliseconds: Number(test.getAttribute("time") ?? 0) * 1000,
      message,
      stack: (failure?.textContent ?? "").replace(message, "").trim(),
      action,
    };
  });
}

const signs = { failed: ["error", "error"], passed: ["done", "success"], "not run": ["skipped", ""] };
const kinds = {
  failed: { title: "Failed", of: (tests) => tests.filter((test) => test.state === "failed") },
  slow: { title: "Slowest", of: (tests) => [...tests].sort((a, b) => b.milliseconds - a.milliseconds).slice(0, 25) },
  all: { title: "All", of: (tests) => tests },
};

export class TestsView {
  constructor() {
    this.tests = [];
    this.read = 0; // suites
    this.kind = undefined; // what the user chose
    this.split = new Split(byId("view-tests"), drawDetail);
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

  setSuites(suites) {
    if (suites.length === this.read) return;
    if (suites.length < this.read) this.tests = [];
    for (const suite of suites.slice(this.tests.length ? this.read : 0)) this.tests.push(...readSuite(suite));
    this.read = suites.length;
    this.show();
  }

  show() {
    const failed = kinds.failed.of(this.tests).length;
    countInView("tests", failed, "failed");
    const kind = this.kind ?? (failed ? "failed" : "all");
    for (const choice of byId("test-kinds").children) {
      const count = { failed, all: this.tests.length }[choice.value];
      choice.textContent = [kinds[choice.value].title, count?.toLocaleString("en")].filter(Boolean).join(" ");
      choice.setAttribute("aria-pressed", choice.value === kind ? "true" : "false");
    }
    const text = this.search.value.trim().toLowerCase();
    const found = kinds[kind].of(this.tests).filter((test) => `${test.suite}.${test.name}`.toLowerCase().includes(text));
    const more = found.length > mostShown ? `${mostShown} of ${found.length}` : `${found.length} of ${this.tests.length}`;
    const groups = found.length ? [{ title: kinds[kind].title, more, items: found.slice(0, mostShown) }] : [];
    this.split.show(groups, drawRow, (a, b) => a === b);
    if (!found.length) this.split.list.replaceChildren(el("p", { class: "note" }, this.nothing(text, failed)));
  }

  nothing(text, failed) {
    if (!this.tests.length) return "The newest run has run no tests.";
    return text || failed ? "No test matches." : `All ${counted(this.tests.length, "test")} passed or did not run.`;
  }
}

function drawRow(test) {
  const [sign, kind] = signs[test.state];
  return [
    icon(sign, kind, test.state),
    el("span", { class: "what" }, test.name, el("span", { class: "where" }, test.suite)),
    el("span", { class: "type" }, formatTime(test.milliseconds)),
  ];
}

// "Expected:<6.72>. Actual:<6.27>." says two values that are to be compared.
function compared(message) {
  const found = /Expected:?\s*<([^]*?)>\.?\s*Actual:?\s*<([^]*?)>/.exec(message);
  if (!found) return [];
  const row = (name, text, kind) => el("div", {}, el("dt", {}, name), el("dd", {}, el("code", { class: kind }, text)));
  return [el("dl", { class: "facts" }, row("Expected", found[1]), row("Actual", found[2], "error"))];
}

function drawDetail(test) {
  const time = test.milliseconds ? ` after ${formatTime(test.milliseconds)}` : "";
  return [
    el("h2", {}, test.name),
    el("p", { class: "sub" }, icon(...signs[test.state]), `${test.suite}, ${test.state}${test.state === "not run" ? "" : time}`),
    test.message ? el("p", { class: "said" }, test.message) : "",
    ...compared(test.message),
    test.stack ? el("pre", { class: "stack", tabindex: "0", "aria-label": "Stack" }, test.stack) : "",
  ];
}
