// The results and metrics of a run, beside those of an earlier one.
import { el, formatTime } from "./dom.js";

const statusNames = ["", "success", "warning", "error"];
const keyOf = (row) => `${row.action}|${row.configuration}`;

function change(now, before, format = String) {
  if (before === undefined) return "";
  if (now === before) return " (as before)";
  return ` (${now > before ? "+" : "−"}${format(Math.abs(now - before))})`;
}

export function resultTable(run, earlier) {
  const before = new Map((earlier?.rows ?? []).map((row) => [keyOf(row), row]));
  const rows = run.rows.map((row) => {
    const was = before.get(keyOf(row));
    const name = el("th", { scope: "row" }, row.action);
    name.style.paddingInlineStart = `${row.nesting + 0.5}em`;
    const changed = was && was.result !== row.result ? ` (${was.result} before)` : "";
    return el(
      "tr",
      {},
      name,
      el("td", {}, row.configuration),
      el("td", { class: statusNames[row.status] || false }, row.result + changed),
      el("td", { class: "number" }, row.errors + change(row.errors, was?.errors)),
      el("td", { class: "number" }, row.warnings + change(row.warnings, was?.warnings)),
      el("td", { class: "number" }, formatTime(row.elapsedMs) + change(row.elapsedMs, was?.elapsedMs, formatTime)),
    );
  });
  const heads = ["Action", "Configuration", "Result", "Errors", "Warnings", "Time"].map((text, i) =>
    el("th", { scope: "col", class: i > 2 ? "number" : false }, text),
  );
  return el(
    "div",
    { class: "wide", tabindex: "0", role: "region", "aria-label": "Results" },
    el("table", {}, el("thead", {}, el("tr", {}, ...heads)), el("tbody", {}, ...rows)),
  );
}

function bars(label, now, before, largest) {
  const bar = (value, kind) => {
    const shape = el("span", { class: kind });
    shape.style.width = `${largest > 0 ? (Math.max(value, 0) * 100) / largest : 0}%`;
    return shape;
  };
  return el(
    "tr",
    {},
    el("th", { scope: "row" }, label),
    el("td", {}, bar(now, "bar"), before === undefined ? null : bar(before, "bar earlier")),
    el("td", { class: "number" }, now + change(now, before)),
  );
}

export function charts(run, earlier) {
  const groups = new Map();
  const keyOfMetric = (metric) => `${metric.action}|${metric.configuration}`;
  for (const [source, which] of [
    [run, "now"],
    [earlier, "before"],
  ])
    for (const metric of source?.metrics ?? []) {
      const title = `${metric.category}: ${metric.name}`;
      if (!groups.has(title)) groups.set(title, new Map());
      const rows = groups.get(title);
      const key = keyOfMetric(metric);
      rows.set(key, {
        label: [metric.action, metric.configuration].filter(Boolean).join(" "),
        ...rows.get(key),
        [which]: metric.value,
      });
    }
  return [...groups].map(([title, rows]) => {
    const shown = [...rows.values()].filter((row) => row.now !== undefined);
    const largest = Math.max(0, ...shown.flatMap((row) => [row.now, row.before ?? 0]));
    return el(
      "figure",
      {},
      el("figcaption", {}, title),
      el("table", { class: "chart" }, el("tbody", {}, ...shown.map((row) => bars(row.label, row.now, row.before, largest)))),
    );
  });
}
