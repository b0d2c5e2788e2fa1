// Runs the project and shows what happens.
import { call, events } from "./api.js";
import { charts, resultTable } from "./charts.js";
import { showSource } from "./dialogs.js";
import { announce, announceError, button, byId, el, formatProblems, formatTime } from "./dom.js";
import { Log } from "./log.js";

export class RunView {
  // `handlers`: started(), ended().
  constructor(handlers) {
    this.handlers = handlers;
    this.number = 0;
    this.isWatching = false;
    this.log = new Log(byId("log"), {
      open: (event, text) => this.openSource(event, text),
      select: (line) => this.showDetail(line),
    });
    byId("filter").addEventListener("change", (event) => this.log.filter(Number(event.target.value)));
    byId("fold").addEventListener("click", () => this.log.fold(true));
    byId("unfold").addEventListener("click", () => this.log.fold(false));
    byId("compare").addEventListener("change", () => this.showResults());
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
    announce(`The run has ended: ${this.outcome}.`, { isError: !this.runs.at(-1).succeeded });
    this.handlers.ended();
  }

  async follow() {
    this.isWatching = true;
    const began = performance.now();
    const clock = setInterval(() => this.showProgress(performance.now() - began), 1000);
    try {
      let next = 0;
      for (let goesOn = true; goesOn; ) {
        const answer = await events(this.number, next);
        if (answer.run !== this.number) this.begin(answer.run);
        for (const [i, event] of answer.events.entries()) this.take(event, answer.from + i);
        next = answer.next;
        this.problems = answer;
        this.log.refresh();
        this.showProgress(performance.now() - began);
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
    this.positions = [];
    this.actions = [];
    byId("results").replaceChildren();
    byId("detail").replaceChildren();
  }

  take(event, position) {
    if (event.event === "action") {
      this.actions.push(event.name);
      if (event.iterations) this.position = `${event.unit || "pass"} ${event.iteration} of ${event.iterations}`;
    } else if (event.event === "actionEnd") {
      this.actions.pop();
      if (!this.actions.length) this.position = "";
    }
    this.log.add(event, position);
  }

  showProgress(elapsed) {
    const parts = [this.actions?.at(-1), this.position, this.problems && formatProblems(this.problems), formatTime(elapsed)];
    byId("progress").textContent = parts.filter(Boolean).join(" · ");
  }

  async showEnd() {
    this.runs = (await call("runs")).runs;
    const run = this.runs.at(-1);
    if (!run) return;
    this.outcome = run.error || run.result;
    byId("progress").textContent =
      `${run.dryRun ? "Dry run" : "Run"} ${run.run}: ${this.outcome} after ${formatTime(run.elapsedMs)} · ${run.totals}`;
    const select = byId("compare");
    select.replaceChildren(
      el("option", { value: "" }, "no other run"),
      ...this.runs
        .slice(0, -1)
        .reverse()
        .map((other) => el("option", { value: other.run }, `run ${other.run}${other.dryRun ? " (dry)" : ""}: ${other.result}`)),
    );
    select.parentElement.hidden = this.runs.length < 2;
    this.showResults();
  }

  showResults() {
    const run = this.runs?.at(-1);
    if (!run) return;
    const earlier = this.runs.find((other) => String(other.run) === byId("compare").value);
    const figures = charts(run, earlier);
    byId("results").replaceChildren(
      el("h2", {}, "Results"),
      resultTable(run, earlier),
      figures.length ? el("h2", {}, "Metrics") : "",
      el("div", { class: "charts" }, ...figures),
    );
  }

  showDetail(line) {
    const parts = [el("pre", {}, line.whole)];
    if (line.file) parts.push(button(`Show ${line.file} (${line.line})`, () => this.openSource(line.position, line.whole)));
    byId("detail").replaceChildren(...parts);
  }

  async openSource(event, text) {
    try {
      await showSource(event, text);
    } catch (error) {
      announceError(error);
    }
  }
}
