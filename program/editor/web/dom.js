// Small helpers for making elements.

// el("p", { class: "x", onclick: f, hidden: true }, "text", otherElement): attributes that are false are left out.
export function el(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith("on")) element.addEventListener(name.slice(2), value);
    else if (value === true) element.setAttribute(name, "");
    else if (value !== false && value !== undefined && value !== null) element.setAttribute(name, value);
  }
  element.append(...children.filter((child) => child !== null && child !== undefined));
  return element;
}

// `content`: a text, an element, or several of them.
export function button(content, onclick, attributes = {}) {
  return el("button", { type: "button", onclick, ...attributes }, ...[content].flat());
}

// To a place in the user's own editor, whose address kxhost has made.
export function openLink(address) {
  return el("a", { href: address, class: "button" }, icon("open"), "Open in your editor");
}

const svg = "http://www.w3.org/2000/svg";

// One of the page's signs, which stand in index.html. It is decoration unless it has a name.
export function icon(sign, kind = "", name = "") {
  const element = document.createElementNS(svg, "svg");
  element.setAttribute("class", `icon ${kind}`);
  element.setAttribute(name ? "aria-label" : "aria-hidden", name || "true");
  if (name) element.setAttribute("role", "img");
  const use = document.createElementNS(svg, "use");
  use.setAttribute("href", `#i-${sign}`);
  element.append(use);
  return element;
}

export const linesOf = (value) => value.replaceAll("\r\n", "\n").replace(/\n$/, "");

let count = 0;
export function newId() {
  count += 1;
  return `n${count}`;
}

export function byId(id) {
  return document.getElementById(id);
}

// How much more is to come: answers, and what somebody has typed that is not sent yet.
let outstanding = 0;
export function expectMore(change) {
  outstanding += change;
  document.querySelector("main")?.setAttribute("aria-busy", outstanding > 0 ? "true" : "false");
}

export function debounce(work, milliseconds) {
  let timer = 0;
  const later = (...values) => {
    clearTimeout(timer);
    timer = setTimeout(() => work(...values), milliseconds);
  };
  later.cancel = () => clearTimeout(timer);
  return later;
}

// Says it to those who cannot see it, and shows it for those who can, until the user does something else. What
// only time can mend (`until`) stays until then.
let lasting = "";
// What the page shows anyway (not `isShown`) is only said.
export function announce(text, { isError = false, until = "", isShown = true } = {}) {
  const place = byId("message");
  place.textContent = text;
  place.className = isShown ? (isError ? "error" : "") : "unseen";
  lasting = until;
}

export function announceError(error) {
  announce(error.message, { isError: true, until: error.until ?? "" });
}

export function clearMessage(cause = "") {
  if (lasting === cause) announce("");
}

export function counted(count, word) {
  const many = word.endsWith("y") ? `${word.slice(0, -1)}ies` : `${word}s`;
  return `${count.toLocaleString("en")} ${count === 1 ? word : many}`;
}

export function formatProblems({ errors, warnings }) {
  return `${counted(errors, "error")}, ${counted(warnings, "warning")}`;
}

export function formatTime(milliseconds) {
  if (milliseconds < 1000) return `${Math.round(milliseconds)} ms`;
  const seconds = milliseconds / 1000;
  if (seconds < 60) return `${seconds.toFixed(1)} s`;
  return `${Math.floor(seconds / 60)} min ${Math.floor(seconds % 60)} s`;
}
