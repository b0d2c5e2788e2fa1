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

function drawLines(lines) {
  const other = partners(lines);
  let [before, after] = [0, 0];
  return lines.map((line, index) => {
    const hunk = /^@@ -(\d+)(?:,\d+)? \+(\d+)/.exec(line);
    if (hunk) [before, after] = [Number(hunk[1]) - 1, Number(hunk[2]) - 1];
    const kind = hunk || line.startsWith("\\") ? "hunk" : { "-": "removed", "+": "added" }[line[0]] || "";
    if (kind !== "added" && kind !== "hunk") before += 1;
    if (kind !== "removed" && kind !== "hunk") after += 1;
    const text =
      kind === "hunk" ? [line] : textOf(line.slice(1), other.has(index) ? lines[other.get(index)].slice(1) : undefined);
    const number = (shown, value) => el("span", { class: "number" }, shown ? String(value) : "");
    return el(
      "div",
      { class: kind || false },
      number(kind === "" || kind === "removed", before),
      number(kind === "" || kind === "added", after),
      el("span", { class: "sign" }, kind === "added" ? "+" : kind === "removed" ? "−" : ""),
      el("code", {}, ...text),
    );
  });
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

export function drawChanges({ files, tools }) {
  const parts = files.map((file) =>
    el(
      "section",
      { class: "change" },
      el("h3", {}, file.path, " ", sums(file)),
      el("div", { class: "diff", tabindex: "0", role: "region", "aria-label": file.path }, ...drawLines(file.lines)),
    ),
  );
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
      el("ul", {}, ...list),
      tools.length ? el("h3", {}, `Would start ${tools.length}`) : "",
      el("ul", { class: "starts" }, ...starts),
    ),
    el("div", { class: "diffs pane", tabindex: "0", role: "region", "aria-label": "Changes" }, ...parts),
  ];
}
