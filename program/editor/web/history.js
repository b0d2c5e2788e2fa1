// The view of the runs that are remembered, of earlier sessions too: two of them side by side, and how things go.
import { look } from "./api.js";
import { chart } from "./chart.js";
import { announceError, byId, counted, el, formatTime, icon } from "./dom.js";

const runsOfTrends = 30;
const good = new Set(["succeeded", "nothing to do"]);
const signOf = (run) =>
  good.has(run.result) ? ["done", "success"] : run.result === "stopped" ? ["skipped", ""] : ["error", "error"];

const day = new Intl.DateTimeFormat("en", { day: "numeric", month: "short" });
const clock = new Intl.DateTimeFormat("en", { hour: "2-digit", minute: "2-digit", hourCycle: "h23" });

function began(run) {
  const time = new Date(run.began);
  const days = Math.round((new Date().setHours(0, 0, 0, 0) - new Date(time).setHours(0, 0, 0, 0)) / 86400000);
  return `${["today", "yesterday"][days] ?? day.format(time)} ${clock.format(time)}`;
}

export class HistoryView {
  // `told(answer)`: what the history says of tests and findings.
  constructor(told) {
    this.told = told;
    this.runs = []; // newest first
    this.chosen = []; // numbers of at most two runs
    this.details = new Map();
  }

  async refresh() {
    try {
      const answer = await look("history");
      if (!answer) return;
      this.runs = (answer.remembered ?? []).reverse();
      this.chosen = this.runs.slice(0, 2).map((run) => run.run);
      this.told(answer);
      this.show();
    } catch (error) {
      announceError(error);
    }
  }

  show() {
    const count = this.runs.length;
    byId("history-count").textContent = count
      ? `${counted(count, "run")} of this project on this machine`
      : "No run of this project is remembered yet. Dry runs leave nothing.";
    byId("history-runs").hidden = !count;
    byId("history-runs")
      .querySelector("tbody")
      .replaceChildren(...this.runs.map((run) => this.drawRun(run)));
    this.showChosen();
  }

  drawRun(run) {
    const [sign, kind] = signOf(run);
    const box = el("input", {
      type: "checkbox",
      checked: this.chosen.includes(run.run),
      "aria-label": `Compare run ${run.run}`,
      onchange: () => this.choose(run.run, box.checked),
    });
    const figure = (value) => el("td", { class: value ? "number" : "number none" }, value.toLocaleString("en"));
    const name = el("label", { class: "whole" }, box, icon(sign, kind, run.result), String(run.run));
    return el(
      "tr",
      { "data-run": run.run },
      el("th", { scope: "row" }, name),
      el("td", {}, began(run)),
      figure(run.errors),
      figure(run.warnings),
      figure(run.tests.failed),
      el("td", { class: "number" }, formatTime(run.elapsedMs)),
    );
  }

  // Two at most: the one that was chosen first makes way.
  choose(number, isChosen) {
    this.chosen = this.chosen.filter((one) => one !== number);
    if (isChosen) this.chosen = [...this.chosen.slice(-1), number];
    this.showChosen();
  }

  showChosen() {
    for (const row of byId("history-runs").querySelectorAll("tbody tr")) {
      const isChosen = this.chosen.includes(Number(row.dataset.run));
      row.classList.toggle("chosen", isChosen);
      row.querySelector("input").checked = isChosen;
    }
    byId("history-trends").replaceChildren(...this.trends());
    this.compare();
  }

  async detailsOf(number) {
    if (!this.details.has(number)) this.details.set(number, (await look("history", { run: number })).details);
    return this.details.get(number);
  }

  async compare() {
    const [before, now] = [...this.chosen].sort((a, b) => a - b);
    const place = byId("history-detail");
    if (before === undefined) {
      place.replaceChildren();
      return;
    }
    try {
      const runs = await Promise.all((now === undefined ? [before] : [before, now]).map((number) => this.detailsOf(number)));
      place.replaceChildren(...drawComparison(runs));
    } catch (error) {
      announceError(error);
    }
  }

  trends() {
    const shown = this.runs.slice(0, runsOfTrends).reverse();
    if (shown.length < 2) return [];
    const figures = (title, value, more) => {
      const points = shown.map((run) => ({ label: String(run.run), value: value(run), isBad: more.isBad?.(run) }));
      return chart({ title, points, ...more });
    };
    const isBad = () => true;
    return [
      el("h3", {}, "Trends"),
      el(
        "div",
        { class: "trends" },
        figures("Time", (run) => run.elapsedMs, {
          draw: "line",
          format: formatTime,
          areTimes: true,
          isBad: (run) => !good.has(run.result),
        }),
        figures("Warnings", (run) => run.warnings, { draw: "bars" }),
        figures("Errors", (run) => run.errors, { draw: "bars", isBad }),
        figures("Failed tests", (run) => run.tests.failed, { draw: "bars", isBad }),
      ),
    ];
  }
}

const partName = (part) => [part.action, part.configuration, part.project].filter(Boolean).join(", ");

function change(before, now, format = (value) => value.toLocaleString("en")) {
  if (before === now) return "";
  return `${now > before ? "+" : "−"}${format(Math.abs(now - before))}`;
}

// A row for each figure that both runs have, and for what took other times.
function rowsOf(runs) {
  const all = (run) => run.tests.passed + run.tests.failed;
  const rows = [
    ["Result", (run) => run.result],
    ["Errors", (run) => run.errors],
    ["Warnings", (run) => run.warnings],
    [
      "Tests failed",
      (run) => run.tests.failed,
      undefined,
      (run) => (all(run) ? `${run.tests.failed} of ${all(run)}` : "none ran"),
    ],
    ["Time", (run) => run.elapsedMs, formatTime],
    ["Commit", (run) => run.commit.slice(0, 8)],
    ["Branch", (run) => run.branch],
    ["Machine", (run) => run.machine],
  ];
  const names = new Set(runs.flatMap((run) => run.parts.map(partName)));
  for (const name of names) {
    const time = (run) => run.parts.find((part) => partName(part) === name)?.elapsedMs;
    rows.push([name, time, formatTime]);
  }
  return rows.filter(([, value]) => runs.some((run) => value(run) !== undefined && value(run) !== ""));
}

function drawRow([name, value, format, show], runs) {
  const values = runs.map(value);
  const shown = runs.map((run, index) => {
    if (values[index] === undefined || values[index] === "") return "–";
    return show ? show(run) : typeof values[index] === "number" ? (format ?? String)(values[index]) : values[index];
  });
  const [before, now] = values;
  const areNumbers = typeof before === "number" && typeof now === "number";
  const difference = areNumbers ? change(before, now, format) : runs.length > 1 && before !== now ? "changed" : "";
  return el(
    "tr",
    {},
    el("th", { scope: "row" }, name),
    ...shown.map((text) => el("td", { class: "number" }, text)),
    runs.length > 1 ? el("td", { class: "number" }, difference) : "",
  );
}

// Findings that only one of two runs has.
function differences([before, now]) {
  if (!now) return [];
  const only = (run, other) => {
    const known = new Set(other.findings.map((finding) => finding.fingerprint));
    return run.findings.filter((finding) => !known.has(finding.fingerprint));
  };
  const list = (title, kind, findings) =>
    findings.length
      ? [
          el("h3", {}, title, el("span", { class: "type" }, ` ${findings.length}`)),
          el(
            "ul",
            { class: "same" },
            ...findings
              .slice(0, 50)
              .map((finding) =>
                el(
                  "li",
                  {},
                  icon(finding.severity, finding.severity),
                  el("code", {}, finding.code),
                  el("span", { class: kind }, finding.message),
                ),
              ),
          ),
        ]
      : [];
  return [...list("New", "", only(now, before)), ...list("Fixed", "type", only(before, now))];
}

function drawComparison(runs) {
  const [first, second] = runs;
  const title = second ? `Run ${second.run} against ${first.run}` : `Run ${first.run}`;
  const heads = ["What", ...runs.map((run) => String(run.run)), ...(second ? ["Change"] : [])];
  const head = heads.map((text, index) => el("th", { scope: "col", class: index ? "number" : false }, text));
  return [
    el("h2", {}, title),
    el(
      "div",
      { class: "wide", tabindex: "0", role: "region", "aria-label": title },
      el("table", {}, el("thead", {}, el("tr", {}, ...head)), el("tbody", {}, ...rowsOf(runs).map((row) => drawRow(row, runs)))),
    ),
    ...differences(runs),
  ];
}
