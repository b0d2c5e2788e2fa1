// How the fields of a page stand in rows: a box beside what it switches on, the parts of a version beside each other.

const isBox = (field) => field?.kind === "check" || field?.kind === "choice";
const isText = (field) => field?.kind === "heading" || field?.kind === "note";
const isValue = (field) => field !== undefined && !isBox(field) && !isText(field);

const part = /\s*\b(Major|Minor|Release|Build|Revision)\b\s*/;
const increment = /^Automatically Increment .*\b(Build|Revision)\b/;

// "Assembly Version Major" to "Assembly Version Revision", from this field on; {name, parts: [{entry, word}]}.
function versionAt(entries, at) {
  const parts = entries.slice(at, at + 4).map((entry) => ({ entry, word: part.exec(entry.field.label)?.[1] }));
  const names = new Set(parts.map(({ entry }) => entry.field.label.replace(part, " ").trim()));
  const words = new Set(parts.map(({ word }) => word));
  if (parts.length < 4 || names.size > 1 || words.size < 4 || words.has(undefined)) return undefined;
  return parts.every(({ entry }) => isValue(entry.field)) ? { name: [...names][0], parts } : undefined;
}

// The box that switches a version on may stand before another box that concerns it.
function versionRows(entries, at) {
  const box = isBox(entries[at].field) ? entries[at] : undefined;
  let begin = box ? at + 1 : at;
  const between = [];
  if (box && isBox(entries[begin]?.field)) between.push(entries[begin++]);
  const version = entries[begin] && versionAt(entries, begin);
  if (!version || (box && !box.field.label.endsWith(` ${version.name}`))) return undefined;
  let next = begin + 4;
  for (; increment.test(entries[next]?.field.label ?? ""); next += 1) {
    const word = increment.exec(entries[next].field.label)[1];
    const belongs = version.parts.find((one) => one.word === word);
    if (!belongs || belongs.increment) break;
    belongs.increment = entries[next];
  }
  const first = { kind: "version", box, ...version };
  return { rows: [first, ...between.map((entry) => ({ kind: "box", box: entry, values: [] }))], next };
}

// Values without a label stand beside the box before them; one with a label does so if the box speaks of it in one word more.
function boxRow(entries, at) {
  const box = entries[at];
  const values = [];
  let next = at + 1;
  while (isValue(entries[next]?.field) && !entries[next].field.label) values.push(entries[next++]);
  const follower = entries[next]?.field;
  const words = follower?.label && box.field.label.split(` ${follower.label}`);
  if (!values.length && isValue(follower) && words.length === 2 && !words[1] && !words[0].includes(" "))
    values.push(entries[next++]);
  return { rows: [{ kind: "box", box, values }], next };
}

// `entries`: {field, page, index}. A row is {kind, ...}: heading and note {entry}; box {box, values}; value {entry}; version
// {box, name, parts: [{entry, word, increment}]}.
export function rowsOf(entries) {
  const rows = [];
  for (let at = 0; at < entries.length; ) {
    const entry = entries[at];
    const made = isText(entry.field)
      ? { rows: [{ kind: entry.field.kind, entry }], next: at + 1 }
      : (versionRows(entries, at) ??
        (isBox(entry.field) ? boxRow(entries, at) : { rows: [{ kind: "value", entry }], next: at + 1 }));
    rows.push(...made.rows);
    at = made.next;
  }
  return rows;
}

// All that the user can change in a row.
export function entriesOf(row) {
  const parts = (row.parts ?? []).flatMap((one) => [one.entry, one.increment]);
  return [row.box, row.entry, ...(row.values ?? []), ...parts].filter((entry) => entry && !isText(entry.field));
}

// Whether it is not as it is when nothing is set; of a group of choices the chosen one tells.
export function isChanged(field) {
  if (field.default === undefined || !field.enabled) return false;
  if (field.kind === "secret") return field.isSet;
  if (field.kind === "choice") return field.value === "True" && field.default !== "True";
  return field.value !== field.default;
}
