// The colours that tools write into their lines.
import { el } from "./dom.js";

// biome-ignore lint/suspicious/noControlCharactersInRegex: that is how they are told
const sequence = /\x1b\[([0-9;]*)([A-Za-z])/g;
const colours = { 31: "error", 32: "success", 33: "warning", 34: "blue", 35: "violet", 36: "blue", 90: "faint" };

export const hasColours = (text) => text.includes("\x1b");
export const withoutColours = (text) => text.replace(sequence, "");

function change(style, codes) {
  for (const code of codes.split(";").map(Number)) {
    if (code === 0) style = {};
    else if (code === 1) style = { ...style, bold: true };
    else if (code === 22) style = { ...style, bold: false };
    else if (code === 39) style = { ...style, colour: undefined };
    else if (colours[code] ?? colours[code - 60]) style = { ...style, colour: colours[code] ?? colours[code - 60] };
  }
  return style;
}

// The text in pieces of one look each.
export function coloured(text) {
  const parts = [];
  let style = {};
  let begin = 0;
  const add = (piece) => {
    if (!piece) return;
    const kind = [style.colour, style.bold && "bold"].filter(Boolean).join(" ");
    parts.push(kind ? el("span", { class: kind }, piece) : piece);
  };
  for (const found of text.matchAll(sequence)) {
    add(text.slice(begin, found.index));
    if (found[2] === "m") style = change(style, found[1]);
    begin = found.index + found[0].length;
  }
  add(text.slice(begin));
  return parts;
}
