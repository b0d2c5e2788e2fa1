// The log of a run: groups that fold, and only the rows on the screen drawn, however long it grows.
import { el, formatTime } from "./dom.js";

const rowHeight = 20;
const statusNames = ["", "success", "warning", "error"];

// All that a browser breaks a line at; an end of line behind the last one begins no further line.
function linesOf(text) {
  const lines = text.split(/\r\n|[\n\r\v\f\u0085\u2028\u2029]/);
  if (lines.length > 1 && lines.at(-1) === "") lines.pop();
  return lines;
}

export class Log {
  // `open(event, text)`: the user wants to see the place that a message names.
  constructor(element, { open, select }) {
    this.element = element;
    this.open = open;
    this.select = select;
    this.spacer = el("div", { class: "spacer" });
    this.rows = el("div", { class: "rows" });
    element.append(this.spacer, this.rows);
    element.addEventListener("scroll", () => this.draw());
    element.addEventListener("keydown", (event) => this.onKey(event));
    new ResizeObserver(() => this.draw()).observe(element);
    this.clear();
  }

  clear() {
    // One a row: {isGroup, depth, text, whole, status, position, parent, worst, collapsed, file, line, elapsed}
    this.lines = [];
    this.visible = []; // indices of lines
    this.openGroups = [];
    this.least = 0;
    this.current = -1; // a line
    this.follow = true;
    this.draw();
  }

  // `event` is its position in the run's events.
  add(event, position) {
    if (event.event === "metric" || event.event === "runEnd") return;
    if (event.event === "actionEnd" || event.event === "groupEnd") {
      this.endGroup(event);
      return;
    }
    const isGroup = event.event === "action" || event.event === "group";
    const parent = this.openGroups.at(-1) ?? -1;
    const whole = this.textOf(event);
    const [first, ...others] = linesOf(whole);
    const line = {
      isGroup,
      depth: event.depth,
      text: first,
      whole,
      status: event.status ?? 0,
      position,
      parent,
      worst: event.status ?? 0,
      collapsed: false,
      file: event.file,
      line: event.line,
      elapsed: undefined,
      time: event.time.slice(11, 19),
    };
    const index = this.addRow(line);
    if (line.status >= 2) this.spread(index, line.status);
    if (isGroup) this.openGroups.push(index);
    // Rows are as high as one line: each further line of a text has its own, inside a group whose title it is.
    const rest = isGroup ? { isGroup: false, depth: line.depth + 1, parent: index } : {};
    for (const text of others) this.addRow({ ...line, ...rest, text });
  }

  addRow(line) {
    const index = this.lines.push(line) - 1;
    if (this.isShown(line)) this.visible.push(index);
    return index;
  }

  textOf(event) {
    if (event.event === "action") return `${event.description || event.name}${event.pass ? ` (${event.pass})` : ""}`;
    return event.event === "group" ? event.title : event.text;
  }

  endGroup(event) {
    const index = this.openGroups.pop();
    const line = this.lines[index];
    if (!line) return;
    line.elapsed = event.elapsedMs;
    line.status = event.event === "actionEnd" ? (event.succeeded ? 1 : 3) : (event.status ?? 0);
    if (line.status > line.worst) line.worst = line.status;
    if (line.status >= 2) this.spread(index, line.status);
  }

  // A group in which something is wrong shows it, and stays where a filter looks for problems.
  spread(index, status) {
    let mustCollect = false;
    for (let at = this.lines[index].parent; at >= 0; at = this.lines[at].parent) {
      const group = this.lines[at];
      if (group.worst < this.least && status >= this.least) mustCollect = true;
      if (group.worst < status) group.worst = status;
    }
    if (mustCollect) this.collect();
  }

  isShown(line) {
    if (line.worst < this.least) return false;
    for (let at = line.parent; at >= 0; at = this.lines[at].parent) if (this.lines[at].collapsed) return false;
    return true;
  }

  collect() {
    this.visible = [];
    let hiddenBelow = Infinity;
    this.lines.forEach((line, index) => {
      if (line.depth > hiddenBelow) return;
      hiddenBelow = line.isGroup && line.collapsed ? line.depth : Infinity;
      if (line.worst >= this.least) this.visible.push(index);
    });
    if (this.collected) this.collected();
  }

  // 0 everything, 2 warnings and errors, 3 errors.
  filter(least) {
    this.least = least;
    this.collect();
    this.follow = false;
    this.element.scrollTop = 0;
    this.draw();
  }

  fold(collapsed) {
    for (const line of this.lines) if (line.isGroup && line.depth > 0) line.collapsed = collapsed;
    this.collect();
    this.draw();
  }

  // After some lines were added.
  refresh() {
    this.draw();
    if (this.follow) this.element.scrollTop = this.element.scrollHeight;
  }

  draw() {
    const height = this.element.clientHeight || 400;
    this.spacer.style.height = `${this.visible.length * rowHeight}px`;
    const first = Math.max(0, Math.floor(this.element.scrollTop / rowHeight) - 5);
    const last = Math.min(this.visible.length, first + Math.ceil(height / rowHeight) + 10);
    this.rows.style.transform = `translateY(${first * rowHeight}px)`;
    const rows = [];
    for (let at = first; at < last; at += 1) rows.push(this.drawRow(this.visible[at], at));
    this.rows.replaceChildren(...rows);
    const active = this.rows.querySelector("[aria-selected=true]");
    if (active) this.element.setAttribute("aria-activedescendant", active.id);
    else this.element.removeAttribute("aria-activedescendant");
  }

  drawRow(index, at) {
    const line = this.lines[index];
    const status = line.isGroup ? Math.max(line.worst > 1 ? line.worst : 0, line.status) : line.status;
    const row = el(
      "div",
      {
        role: "option",
        id: `line-${index}`,
        "aria-selected": index === this.current ? "true" : "false",
        "aria-posinset": at + 1,
        "aria-setsize": this.visible.length,
        class: `${statusNames[status]}${line.isGroup ? " group" : ""}`,
        title: line.time,
        onclick: () => this.goTo(index, true),
      },
      el("span", { class: "twist", "aria-hidden": "true" }, line.isGroup ? (line.collapsed ? "▸" : "▾") : ""),
      status > 1 ? el("span", { class: "unseen" }, `${statusNames[status]}: `) : null,
      el("span", { class: "text" }, line.text),
      line.isGroup && line.collapsed ? el("span", { class: "unseen" }, " (folded)") : null,
      line.elapsed === undefined ? null : el("span", { class: "time" }, formatTime(line.elapsed)),
    );
    row.style.paddingInlineStart = `${line.depth * 1.1}rem`;
    return row;
  }

  goTo(index, isClick) {
    const line = this.lines[index];
    if (isClick && line.isGroup && this.current === index) this.toggle(index);
    this.current = index;
    this.follow = false;
    const at = this.visible.indexOf(index);
    const top = at * rowHeight;
    if (top < this.element.scrollTop) this.element.scrollTop = top;
    else if (top + rowHeight > this.element.scrollTop + this.element.clientHeight)
      this.element.scrollTop = top + rowHeight - this.element.clientHeight;
    this.draw();
    this.select(line);
  }

  toggle(index) {
    const line = this.lines[index];
    line.collapsed = !line.collapsed;
    this.collect();
    this.draw();
  }

  onKey(event) {
    const at = this.visible.indexOf(this.current);
    const page = Math.floor(this.element.clientHeight / rowHeight);
    const line = this.lines[this.current];
    const targets = {
      ArrowDown: at + 1,
      ArrowUp: at - 1,
      PageDown: at + page,
      PageUp: at - page,
      Home: 0,
      End: this.visible.length - 1,
    };
    if (event.key in targets) {
      event.preventDefault();
      const target = this.visible[Math.min(Math.max(targets[event.key], 0), this.visible.length - 1)];
      if (target !== undefined) this.goTo(target, false);
      this.follow = event.key === "End";
    } else if (line?.isGroup && ["ArrowLeft", "ArrowRight", "Enter", " "].includes(event.key)) {
      event.preventDefault();
      if (event.key === "Enter" || event.key === " " || line.collapsed !== (event.key === "ArrowLeft")) this.toggle(this.current);
    } else if (line?.file && event.key === "Enter") {
      event.preventDefault();
      this.open(line.position, line.whole);
    }
  }
}
