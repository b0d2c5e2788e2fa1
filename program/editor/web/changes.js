// What a dry run would have started and changed.
import { button, counted, el, icon } from "./dom.js";

const start = "Dry run : this would start ";
const change = "Dry run : this would change\r\n";

// Takes the messages of a run: {files: [{path, lines}], tools: [text]}.
export function readChanges(texts) {
  const files = [];
  const tools = [];
  for (const text of texts) {
    if (text.startsWith(start)) tools.push(text.slice(start.length));
    if (!text.startsWith(change)) continue;
    const [from, , ...lines] = text.slice(change.length).split("\r\n");
    files.push({ path: from.slice(4), lines });
  }
  return { files, tools };
}

// Where two lines differ: the characters that both begin and end with, and what lies between.
function differing(a, b) {
  let begin = 0;
  while (begin < a.length && a[begin] === b[begin]) begin += 1;
  let end = 0;
  while (end < Math.min(a.length, b.length) - begin && a.at(-1 - end) === b.at(-1 - end)) end += 1;
  return [begin, end];
}

function textOf(line, other) {
  if (other === undefined) return [line];
  const [begin, end] = differing(line, other);
  if (begin + end === 0) return [line];
  return [line.slice(0, begin), el("b", {}, line.slice(begin, line.length - end)), line.slice(line.length - end)];
}

// Lines that are taken away, and as many that come in their place, are each other's.
function partners(lines) {
  const found = new Map();
  for (let i = 0; i < lines.length; ) {
    let removed = i;
    while (lines[removed]?.startsWith("-")) removed += 1;
    let added = removed;
    while (lines[added]?.startsWith("+")) added += 1;
    if (removed > i && added - removed === removed - i)
      for (let k = i; k < removed; k += 1) {
        found.set(k, k + removed - i);
        found.set(k + removed - i, k);
      }
    i = Math.max(added, i + 1);
  }
  return found;
}

const kinds = { "-": "removed", "+": "added" };

// {kind, text, before, after, other}: numbers of lines, and what stands in the place of a line that is changed.
function readLines(lines) {
  const other = partners(lines);
  let [before, after] = [0, 0];
  return lines.map((line, index) => {
    const hunk = /^@@ -(\d+)(?:,\d+)? \+(\d+)/.exec(line);
    if (hunk) [before, after] = [Number(hunk[1]) - 1, Number(hunk[2]) - 1];
    if (hunk || line.startsWith("\\")) return { kind: "hunk", text: line };
    const kind = kinds[line[0]] ?? "";
    if (kind !== "added") before += 1;
    if (kind !== "removed") after += 1;
    return { kind, text: line.slice(1), before, after, other: lines[other.get(index)]?.slice(1) };
  });
}

const drawNumber = (value) => el("span", { class: "number" }, value === undefined ? "" : String(value));
const drawSign = ({ kind }) => el("span", { class: "sign" }, { added: "+", removed: "−" }[kind] ?? "");
const drawText = ({ text, other }) => el("code", {}, ...textOf(text, other));

const drawLine = (line) =>
  el(
    "div",
    { class: line.kind || false },
    drawNumber(line.kind === "added" ? undefined : line.before),
    drawNumber(line.kind === "removed" ? undefined : line.after),
    drawSign(line),
    drawText(line),
  );

// [before, after]: lines that are taken away beside those that come in their place; undefined where there is none.
function pairs(lines) {
  const rows = [];
  const open = { removed: [], added: [] };
  const close = () => {
    const [removed, added] = [open.removed.splice(0), open.added.splice(0)];
    for (let k = 0; k < Math.max(removed.length, added.length); k += 1) rows.push([removed[k], added[k]]);
  };
  for (const line of lines) {
    if (line.kind === "added" || (line.kind === "removed" && !open.added.length)) {
      open[line.kind].push(line);
      continue;
    }
    close();
    if (line.kind === "removed") open.removed.push(line);
    else rows.push([line, line]);
  }
  close();
  return rows;
}

const drawSide = (line, side) =>
  el(
    "div",
    { class: `${side} ${line ? line.kind : "nothing"}` },
    ...(line ? [drawNumber(line[side]), drawSign(line), drawText(line)] : []),
  );

const drawPair = ([before, after]) =>
  before?.kind === "hunk"
    ? el("div", { class: "hunk" }, before.text)
    : el("div", {}, drawSide(before, "before"), drawSide(after, "after"));

function drawDifference(file, isSideBySide) {
  const lines = readLines(file.lines);
  const rows = isSideBySide ? pairs(lines).map(drawPair) : lines.map(drawLine);
  const diff = el("div", {
    class: `diff ${isSideBySide ? "sides" : ""}`,
    tabindex: "0",
    role: "region",
    "aria-label": file.path,
  });
  // What is copied is of the column in which the marking begins.
  diff.addEventListener("pointerdown", (event) => {
    diff.dataset.from = event.target.closest(".after") ? "after" : "before";
  });
  diff.append(...rows);
  return diff;
}

const counts = (file) => [
  file.lines.filter((line) => line.startsWith("+")).length,
  file.lines.filter((line) => line.startsWith("-")).length,
];

function sums(file) {
  const [added, removed] = counts(file);
  return el(
    "span",
    { class: "sums" },
    el("span", { class: "success" }, `+${added}`),
    el("span", { class: "error" }, `−${removed}`),
  );
}

// The file with what its path does not share with those of the others.
function named(path, files) {
  const parts = path.split(/[\\/]/);
  const folders = files.map((file) => file.path.split(/[\\/]/).slice(0, -1));
  const shared = parts.findIndex((part, index) => folders.some((others) => others[index] !== part));
  return el("span", {}, parts.at(-1), el("span", { class: "type" }, parts.slice(shared, -1).join("/")));
}

export function summary({ files, tools }) {
  return `Would change ${counted(files.length, "file")} and start ${counted(tools.length, "tool")}. Nothing was started or changed.`;
}

// Two columns, where there is room for them.
let isSideBySide = false;
const wide = matchMedia("(min-width: 53.75em)");
let redraw = () => {};
wide.addEventListener("change", () => redraw());

export function drawChanges({ files, tools }) {
  const parts = files.map(() => el("section", { class: "change" }));
  const choice = button("Side by side", () => {
    isSideBySide = !isSideBySide;
    redraw();
  });
  redraw = () => {
    choice.hidden = !wide.matches;
    choice.setAttribute("aria-pressed", isSideBySide ? "true" : "false");
    for (const [index, file] of files.entries()) {
      const difference = drawDifference(file, isSideBySide && wide.matches);
      parts[index].replaceChildren(el("h3", {}, file.path, " ", sums(file)), difference);
    }
  };
  redraw();
  const list = files.map((file, index) =>
    el(
      "li",
      {},
      button([named(file.path, files), sums(file)], () => parts[index].scrollIntoView({ block: "start" })),
    ),
  );
  const starts = tools.map((text) => el("li", {}, icon("run"), el("code", {}, text)));
  return [
    el(
      "nav",
      { class: "files pane", "aria-label": "Changed files" },
      files.length ? el("p", { class: "buttons" }, choice) : "",
      el("ul", {}, ...list),
      tools.length ? el("h3", {}, `Would start ${tools.length}`) : "",
      el("ul", { class: "starts" }, ...starts),
    ),
    el("div", { class: "diffs pane", tabindex: "0", role: "region", "aria-label": "Changes" }, ...parts),
  ];
}
