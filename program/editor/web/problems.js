// The view of all that is wrong: with the settings of the project, and in the newest run.
import { look } from "./api.js";
import { announceError, button, byId, counted, debounce, el, icon, openLink } from "./dom.js";
import { bySeverity, isBad, nameOf, placeText, projectName } from "./findings.js";
import { Split } from "./split.js";
import { countInView } from "./views.js";

const mostShown = 1000; // rows at once: who has more looks for something

export class ProblemsView {
  // `handlers`: goTo(problem) to its field, showInLog(finding).
  constructor(handlers) {
    this.handlers = handlers;
    this.settings = []; // of the check
    this.findings = []; // of the run
    this.known = new Map();
    this.least = "all";
    this.split = new Split(byId("view-problems"), (item) => this.drawDetail(item));
    this.search = byId("problem-search");
    this.search.addEventListener(
      "input",
      debounce(() => this.show(), 100),
    );
    for (const choice of byId("problem-kinds").children)
      choice.addEventListener("click", () => {
        this.least = choice.value;
        this.show();
      });
    this.showSoon = debounce(() => this.show(), 50);
  }

  setSettings(problems) {
    this.settings = problems.map((problem) => ({ ...problem, isSetting: true, severity: "warning" }));
    this.show();
  }

  // Since which run each finding is there, by its fingerprint; with the newest one that is remembered, which has others before it,
  // it is new.
  setKnown(known, remembered) {
    this.known = new Map(known.map((one) => [one.fingerprint, one.sinceRun]));
    this.newestRun = remembered.length > 1 ? remembered[0].run : undefined;
    this.showSoon();
  }

  isNew(item) {
    return this.newestRun !== undefined && this.known.get(item.fingerprint) === this.newestRun;
  }

  setFindings(findings) {
    this.findings = findings.filter(isBad);
    if (byId("view-problems").hidden) this.showCounts();
    else this.showSoon();
  }

  all() {
    return [...this.settings, ...this.findings];
  }

  showCounts() {
    const errors = this.findings.filter((finding) => finding.severity === "error").length;
    const warnings = this.all().length - errors;
    countInView("problems", errors || this.settings.length, errors ? "errors" : "problems of settings");
    const [every, bad, doubtful, fresh] = byId("problem-kinds").children;
    const news = this.findings.filter((finding) => this.isNew(finding)).length;
    fresh.textContent = `New ${news.toLocaleString("en")}`;
    fresh.hidden = this.newestRun === undefined;
    every.textContent = `All ${this.all().length.toLocaleString("en")}`;
    bad.replaceChildren(icon("error", "error", "Errors"), errors.toLocaleString("en"));
    doubtful.replaceChildren(icon("warning", "warning", "Warnings"), warnings.toLocaleString("en"));
    for (const choice of byId("problem-kinds").children)
      choice.setAttribute("aria-pressed", choice.value === this.least ? "true" : "false");
  }

  matches(item) {
    if (this.least === "new" ? !this.isNew(item) : this.least !== "all" && item.severity !== this.least) return false;
    const text = this.search.value.trim().toLowerCase();
    return [item.message, item.file, item.code, item.action, item.project, item.place].some((one) =>
      String(one ?? "")
        .toLowerCase()
        .includes(text),
    );
  }

  show() {
    this.showCounts();
    const found = this.all()
      .filter((item) => this.matches(item))
      .sort(bySeverity);
    const shown = found.slice(0, mostShown);
    const groups = new Map();
    for (const item of shown) {
      const key = item.isSetting ? "Settings" : item.file || item.action;
      if (!groups.has(key)) groups.set(key, { title: nameOf(key), more: projectName(item.project ?? ""), items: [] });
      groups.get(key).items.push(item);
    }
    const list = [...groups.values()];
    const isSame = (a, b) => (a.isSetting ? b.isSetting && a.message === b.message && a.id === b.id : a.place === b.place);
    this.split.show(list, (item) => drawRow(item, this.isNew(item)), isSame);
    if (!shown.length) this.split.list.replaceChildren(this.nothing());
    const left = found.length - shown.length;
    if (left) this.split.list.append(el("p", { class: "note" }, `${counted(left, "more problem")}: search for them.`));
  }

  nothing() {
    if (!this.all().length)
      return el("p", { class: "note" }, "Nothing is wrong with the settings, and no run has found anything.");
    const clear = () => {
      this.search.value = "";
      this.least = "all";
      this.show();
    };
    return el("p", { class: "note" }, "No problem matches. ", button("Clear", clear, { class: "compact" }));
  }

  // One that is not in the list is searched for.
  choose(place) {
    const find = () => this.split.rows.find(({ item }) => !item.isSetting && item.place === place);
    if (!find()) {
      this.least = "all";
      this.search.value = this.findings.find((finding) => finding.place === place)?.message ?? "";
      this.show();
    }
    const row = find();
    if (row) this.split.choose(row.item);
  }

  drawDetail(item) {
    return item.isSetting ? this.drawSetting(item) : this.drawFinding(item);
  }

  drawSetting(problem) {
    const go = button("Go to the property", () => this.handlers.goTo(problem));
    return [
      el("h2", {}, problem.message),
      el("p", { class: "sub" }, icon("warning", "warning", "Warning"), "A run would stumble over this setting."),
      el("p", { class: "buttons" }, go),
      facts([
        ["Action", problem.action],
        [
          "Property",
          problem.options ? `Options: ${problem.options}` : problem.page === undefined ? problem.place : problem.place,
        ],
      ]),
    ];
  }

  drawFinding(finding) {
    const what = [finding.severity === "error" ? "Error" : "Warning", finding.code].filter(Boolean).join(" ");
    const where = finding.file && [
      ` in ${nameOf(finding.file)}`,
      finding.line && `line ${finding.line}`,
      finding.column && `column ${finding.column}`,
    ];
    const place = finding.file ? where.filter(Boolean).join(", ") : "";
    const source = el("div");
    const buttons = el("p", { class: "buttons" });
    if (finding.line) this.showSource(finding, source, buttons);
    const copy = () =>
      navigator.clipboard.writeText(`${finding.file}(${finding.line ?? 1}): ${what}: ${finding.message}`).catch(announceError);
    buttons.append(
      button([icon("run"), "Show in the log"], () => this.handlers.showInLog(finding)),
      button([icon("copy"), "Copy"], copy),
    );
    return [
      el("h2", {}, finding.message),
      el("p", { class: "sub" }, icon(finding.severity, finding.severity), `${what}${place}`),
      source,
      buttons,
      facts([
        ["File", finding.file],
        ["Project", finding.project],
        ["Configuration", finding.configuration],
        ["Action", finding.action],
        ["Told", finding.occurrences > 1 ? counted(finding.occurrences, "time") : ""],
        ["Since", this.known.has(finding.fingerprint) ? `run ${this.known.get(finding.fingerprint)}` : ""],
        ["Advice", finding.advice],
      ]),
      ...this.others(finding),
    ];
  }

  others(finding) {
    const same = this.findings.filter((one) => one !== finding && finding.code && one.code === finding.code).slice(0, 20);
    if (!same.length) return [];
    const rows = same.map((one) =>
      el(
        "li",
        {},
        button(
          [icon(one.severity, one.severity), placeText(one), el("span", { class: "type" }, one.message)],
          () => this.choose(one.place),
          { class: "quiet" },
        ),
      ),
    );
    return [el("h3", {}, "The same in this run"), el("ul", { class: "same" }, ...rows)];
  }

  async showSource(finding, element, buttons) {
    try {
      const source = await look("source", { finding: finding.place });
      if (!source) return;
      const rows = source.lines.map((line, index) => {
        const number = source.first + index;
        return el("li", { class: number === source.line ? `hit ${finding.severity}` : false }, el("b", {}, String(number)), line);
      });
      if (source.open) buttons.prepend(openLink(source.open));
      element.replaceChildren(el("ol", { class: "source", tabindex: "0", "aria-label": "Lines of the file" }, ...rows));
    } catch (error) {
      element.replaceChildren(el("p", { class: "note" }, error.message));
    }
  }
}

export function facts(rows) {
  const shown = rows.filter(([, text]) => text);
  return el("dl", { class: "facts" }, ...shown.map(([name, text]) => el("div", {}, el("dt", {}, name), el("dd", {}, text))));
}

function drawRow(item, isNew) {
  const code = item.isSetting ? item.action : item.code;
  const place = item.isSetting ? item.place : item.line ? `line ${item.line}` : "";
  return [
    icon(item.severity, item.severity, item.severity),
    el("span", { class: "what" }, item.message, el("span", { class: "where" }, el("code", {}, code ?? ""), place)),
    isNew ? el("span", { class: "badge" }, "new") : "",
  ];
}
