// Runs the project and shows what happens.
import { call, events, look } from "./api.js";
import { drawChanges, readChanges, summary } from "./changes.js";
import { charts, resultTable } from "./charts.js";
import { showSource } from "./dialogs.js";
import { announce, announceError, button, byId, counted, el, formatTime, icon } from "./dom.js";
import { isBad, placeText } from "./findings.js";
import { Log } from "./log.js";
import { LogBar } from "./logbar.js";
import { makeTabs } from "./tabs.js";

const mostSteps = 500; // of a long loop the newest
const mostInDock = 30;

export class RunView {
  // `handlers`: started(), ended(), found() when there are other findings or tests, showFinding(place), actions() the names of the
  // project's outermost actions, fileName() of the project.
  constructor(handlers) {
    this.handlers = handlers;
    this.number = 0;
    this.isWatching = false;
    this.runs = []; // of this session
    this.past = []; // remembered ones, of earlier sessions too
    this.findings = [];
    this.suites = [];
    this.log = new Log(byId("log"), {
      open: (event, text) => this.openSource({ event }, text),
      select: (line) => this.showDetail(line),
      unfiltered: () => {
        byId("filter").value = "0";
      },
      followed: (isFollowing) => byId("log-follow").setAttribute("aria-pressed", isFollowing ? "true" : "false"),
    });
    this.bar = new LogBar(this.log, () => `${handlers.fileName().replace(/\.[^.]*$/, "")}-run-${this.number}.log`);
    byId("compare").addEventListener("change", () => this.showResults());
    this.showTab = makeTabs(byId("run-tabs"), () => this.log.draw());
    this.showTab(byId("tab-log"));
  }

  async start(dryRun) {
    await call("run", { dryRun });
    announce(dryRun ? "The dry run has begun: nothing is started or changed." : "The run has begun.");
    this.watch();
  }

  async stop() {
    await call("stop");
    announce("The run is asked to stop.");
  }

  // What the page has missed: a run that went on while it was loaded anew, or the newest that has ended.
  async catchUp(isRunning) {
    if (isRunning) {
      await this.watch();
    } else if ((await call("runs")).runs.length) {
      await this.follow();
      await this.showEnd();
    }
  }

  // Follows the newest run to its end.
  async watch() {
    if (this.isWatching) return;
    this.handlers.started();
    await this.follow();
    await this.showEnd();
    announce(`The run has ended: ${this.outcome}.`, { isShown: false });
    this.handlers.ended();
  }

  async follow() {
    this.isWatching = true;
    let clock; // from the first answer on: before it, there is nothing to show of this run
    try {
      let next = 0;
      for (let goesOn = true; goesOn; ) {
        const answer = await events(this.number, next);
        if (answer.run !== this.number) this.begin(answer.run);
        for (const [i, event] of answer.events.entries()) this.take(event, answer.from + i);
        next = answer.next;
        this.counts = answer;
        this.takeFindings(answer.findings);
        this.log.refresh();
        this.showProgress();
        clock ??= setInterval(() => this.showProgress(), 1000);
        goesOn = answer.running;
      }
    } catch (error) {
      announceError(error);
    }
    clearInterval(clock);
    this.isWatching = false;
  }

  begin(number) {
    this.number = number;
    this.log.clear();
    this.log.least = Number(byId("filter").value);
    this.actions = []; // open ones
    this.steps = []; // {name, depth, line, status, elapsed}
    this.findings = [];
    this.suites = [];
    this.messages = []; // of a dry run
    this.position = "";
    this.began = performance.now();
    for (const id of ["results", "detail", "changes", "panel-timeline"]) byId(id).replaceChildren();
    for (const id of ["tab-changes", "tab-timeline"]) byId(id).hidden = true;
    this.showTab(byId("tab-log"));
  }

  take(event, position) {
    const line = this.log.add(event, position);
    if (event.event === "action") {
      const name = this.log.lines[line].text;
      const { pass } = event;
      const step = { name: pass ? `${event.name} (${pass})` : event.name, pass, depth: event.nesting, line, title: name };
      this.actions.push(step);
      this.steps.push(step);
      if (event.iterations) this.position = `${event.unit || "pass"} ${event.iteration} of ${event.iterations}`;
    } else if (event.event === "actionEnd") {
      const step = this.actions.pop();
      if (step) Object.assign(step, { status: event.succeeded ? "done" : "error", elapsed: event.elapsedMs });
      if (!this.actions.length) this.position = "";
    } else if (event.event === "metric" && event.name === "Test_Results") {
      const passes = (event.passes ?? this.actions.map((step) => step.pass)).filter(Boolean); // told late, it names them
      this.suites.push({ passes: passes.join(", "), xml: event.value });
    } else if (event.dryRun) {
      this.messages.push(event.text);
    }
  }

  takeFindings(found = []) {
    for (const finding of found) this.findings[finding.place] = finding;
    this.handlers.found();
  }

  // The line of the log that tells of a finding.
  lineOf(finding) {
    const says = (line) => line.status >= 2 && line.text.includes(finding.message);
    const fits = (line) => says(line) && (!finding.line || line.line === finding.line);
    const { lines } = this.log;
    const at = lines.findIndex(fits);
    return at >= 0 ? at : lines.findIndex(says);
  }

  showInLog(finding) {
    this.showTab(byId("tab-log"));
    const line = this.lineOf(finding);
    if (line >= 0) this.log.reveal(line);
    this.log.element.focus();
    return line >= 0;
  }

  usualTime() {
    const times = this.past
      .filter((run) => run.result === "succeeded")
      .map((run) => run.elapsedMs)
      .sort((a, b) => a - b);
    return times[times.length >> 1];
  }

  showHead(sign, title, text) {
    byId("run-sign").replaceChildren(sign ? icon(sign, { done: "success", skipped: "" }[sign] ?? sign) : "");
    if (byId("run-title").textContent !== title) byId("run-title").textContent = title;
    byId("progress").textContent = text;
    const { errors = 0, warnings = 0 } = this.counts ?? {};
    const count = (kind, number, word) =>
      number
        ? [el("span", { class: kind }, icon(kind), number.toLocaleString("en"), el("span", { class: "unseen" }, ` ${word} `))]
        : [];
    byId("run-counts").replaceChildren(...count("error", errors, "errors"), ...count("warning", warnings, "warnings"));
  }

  showProgress() {
    const elapsed = performance.now() - this.began;
    const usual = this.usualTime();
    const time = usual ? `${formatTime(elapsed)} of about ${formatTime(usual)}` : formatTime(elapsed);
    const running = this.actions?.at(-1)?.name ?? "the project";
    this.showHead("running", `Running: ${running}`, [time, this.position].filter(Boolean).join(" · "));
    const bar = byId("run-bar");
    bar.hidden = false;
    if (usual) bar.value = Math.min(elapsed / usual, 0.98);
    else bar.removeAttribute("value");
    this.showSteps(true);
    this.showDock();
  }

  // What has run, what runs, and what is to come.
  showSteps(isRunning) {
    const signs = { done: ["done", "success", "succeeded"], error: ["error", "error", "failed"] };
    const steps = this.steps.slice(-mostSteps).map((step) => {
      const unfinished = isRunning ? ["running", "running", "running"] : ["skipped", "", "not ended"];
      const [sign, kind, word] = signs[step.status] ?? unfinished;
      const time = step.elapsed === undefined ? "" : formatTime(step.elapsed);
      const go = () => {
        this.showTab(byId("tab-log"));
        this.log.reveal(step.line);
      };
      const parts = [icon(sign, kind, word), el("span", { class: "name" }, step.name), el("span", { class: "type" }, time)];
      const line = button(parts, go, { title: step.title });
      line.style.setProperty("--depth", step.depth);
      return el("li", {}, line);
    });
    const begun = this.steps.filter((step) => step.depth === 0).length;
    const others = this.handlers
      .actions()
      .slice(begun)
      .map((name) =>
        el("li", { class: "to-come" }, icon("skipped", "", isRunning ? "to come" : "not run"), el("span", {}, name)),
      );
    byId("steps").replaceChildren(...steps, ...others);
  }

  // What is wrong, newest first.
  showDock() {
    const bad = this.findings.filter(isBad).reverse();
    const dock = byId("dock");
    dock.hidden = !bad.length;
    const rows = bad.slice(0, mostInDock).map((finding) =>
      el(
        "li",
        {},
        button(
          [
            icon(finding.severity, finding.severity, finding.severity),
            el("code", {}, finding.code),
            el("span", { class: "name" }, finding.message),
            el("span", { class: "type" }, placeText(finding)),
          ],
          () => this.handlers.showFinding(finding.place),
        ),
      ),
    );
    byId("dock-list").replaceChildren(...rows);
  }

  headline(run) {
    const time = formatTime(run.elapsedMs);
    if (run.error) return ["error", run.error];
    if (run.stopped) return ["skipped", `Stopped by you after ${time}`];
    if (run.dryRun && run.succeeded) return ["dry", "Dry run: nothing stands in its way"];
    if (run.succeeded) return ["done", `${capital(run.result)} in ${time}`];
    const { passed, failed } = run.tests;
    const isWorse = this.findings.some((finding) => finding?.severity === "error" && finding.rule !== "test-failed");
    if (failed && !isWorse) return ["error", `${failed} of ${counted(passed + failed, "test")} failed`];
    const row = run.rows.find(
      (one) => one.status === 3 && !run.rows.some((other) => other.status === 3 && other.nesting > one.nesting),
    );
    const where = [row?.action, row?.configuration].filter(Boolean).join(", ");
    const cause = this.findings.find((finding) => finding?.severity === "error")?.message ?? "";
    return ["error", [where ? `${where} failed` : capital(run.result), cause].filter(Boolean).join(": ")];
  }

  async showEnd() {
    this.runs = (await call("runs")).runs;
    const run = this.runs.at(-1);
    if (!run) return;
    this.outcome = run.error || run.result;
    const isChange = run.dryRun && this.messages.length > 0;
    const changes = isChange && readChanges(this.messages);
    const words = `${run.dryRun ? "Dry run" : "Run"} ${run.run}: ${this.outcome} after ${formatTime(run.elapsedMs)} · ${run.totals}`;
    const [sign, title] = this.headline(run);
    this.showHead(sign, title, changes ? `${words} · ${summary(changes)}` : words);
    byId("run-bar").hidden = true;
    if (isChange) {
      byId("changes").replaceChildren(...drawChanges(changes));
      byId("tab-changes").hidden = false;
      if (changes.files.length) this.showTab(byId("tab-changes"));
    }
    this.offerComparison();
    this.showSteps(false);
    this.showDock();
    this.showResults();
    await this.showTimeline();
    this.handlers.found();
  }

  // kxhost draws it as in a report: all that comes from outside is escaped there, and the page runs no script of it anyway.
  async showTimeline() {
    const answer = await look("timeline");
    if (!answer?.markup) return;
    const drawn = new DOMParser().parseFromString(answer.markup, "text/html").body;
    byId("panel-timeline").replaceChildren(...drawn.children);
    byId("tab-timeline").hidden = false;
  }

  offerComparison() {
    const select = byId("compare");
    const others = this.runs.slice(0, -1).reverse();
    select.replaceChildren(
      el("option", { value: "" }, "no other run"),
      ...others.map((run) => el("option", { value: run.run }, `run ${run.run}${run.dryRun ? " (dry)" : ""}: ${run.result}`)),
    );
    select.parentElement.hidden = !others.length;
  }

  showResults() {
    const run = this.runs.at(-1);
    if (!run) return;
    const earlier = this.runs.find((other) => String(other.run) === byId("compare").value);
    const figures = charts(run, earlier);
    byId("results").replaceChildren(
      resultTable(run, earlier),
      figures.length ? el("h3", {}, "Metrics") : "",
      el("div", { class: "charts" }, ...figures),
    );
  }

  showDetail(line) {
    const isLong = line.whole.includes("\n") || line.text.length > 160;
    const parts = [];
    if (isLong) parts.push(el("pre", { tabindex: "0" }, line.whole));
    if (line.file)
      parts.push(
        button(`Show ${line.file} (${line.line})`, () => this.openSource({ event: line.position }, line.whole), {
          class: "compact",
        }),
      );
    byId("detail").replaceChildren(...parts);
  }

  async openSource(place, text) {
    try {
      await showSource(place, text);
    } catch (error) {
      announceError(error);
    }
  }
}

const capital = (text) => text.charAt(0).toUpperCase() + text.slice(1);
