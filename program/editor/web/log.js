// The log of a run: groups that fold, and only the rows on the screen drawn, however long it grows.
import { coloured, hasColours, withoutColours } from "./ansi.js";
import { el, formatTime, icon } from "./dom.js";

// Browsers make nothing higher than 17 to 33 million pixels: what would be is scrolled in larger steps.
const highest = 15e6;

const statusNames = ["", "success", "warning", "error"];
const wide = /[\u1100-\u115f\u2e80-\ua4cf\uac00-\ud7a3\uf900-\ufaff\ufe30-\ufe6f\uff00-\uff60\uffe0-\uffe6]/g;

// Of a row, in columns of narrow characters.
const widthOf = (line) => line.text.length + (line.text.match(wide)?.length ?? 0) + line.depth * 2;

// All that a browser breaks a line at; an end of line behind the last one begins no further line.
function linesOf(text) {
  const lines = text.split(/\r\n|[\n\r\v\f\u0085\u2028\u2029]/);
  if (lines.length > 1 && lines.at(-1) === "") lines.pop();
  return lines;
}

export class Log {
  // `open(event, text)`: the user wants to see the place that a message names; select(line); followed(isFollowing);
  // unfiltered() when a line was to be shown that the filter hid.
  constructor(element, { open, select, followed, unfiltered }) {
    this.element = element;
    this.open = open;
    this.select = select;
    this.followed = followed;
    this.unfiltered = unfiltered;
    this.spacer = el("div", { class: "spacer" });
    this.rows = el("div", { class: "rows" });
    this.ruler = el("span", { class: "ruler", "aria-hidden": "true" }, "0".repeat(100));
    this.wraps = false;
    this.search = undefined; // an expression: what it matches is marked
    element.append(this.spacer, this.rows, this.ruler);
    element.addEventListener("scroll", () => this.onScroll());
    element.addEventListener("keydown", (event) => this.onKey(event));
    new ResizeObserver(() => this.resize()).observe(element);
    this.clear();
  }

  clear() {
    // One a row: {isGroup, depth, text, ansi, whole, status, position, parent, worst, collapsed, file, line, elapsed, width}
    this.lines = [];
    this.visible = []; // indices of lines
    this.tops = [0]; // of the visible ones, in rows, when lines wrap; behind the last one the height of all
    this.openGroups = [];
    this.least = 0;
    this.current = -1; // a line
    this.lastTop = 0;
    this.setFollow(true);
    this.draw();
  }

  setFollow(follow) {
    this.follow = follow;
    this.followed?.(follow);
  }

  // `event` is its position in the run's events.
  add(event, position) {
    if (event.event === "metric" || event.event === "runEnd") return -1;
    if (event.event === "actionEnd" || event.event === "groupEnd") return this.endGroup(event);
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
      time: event.time,
    };
    const index = this.addRow(line);
    if (line.status >= 2) this.spread(index, line.status);
    if (isGroup) this.openGroups.push(index);
    // Rows are as high as one line: each further line of a text has its own, inside a group whose title it is.
    const rest = isGroup ? { isGroup: false, depth: line.depth + 1, parent: index } : {};
    for (const text of others) this.addRow({ ...line, ...rest, text });
    return index;
  }

  addRow(line) {
    if (hasColours(line.text)) {
      line.ansi = line.text;
      line.text = withoutColours(line.text);
    }
    line.width = widthOf(line);
    const index = this.lines.push(line) - 1;
    if (this.isShown(line)) this.show(index);
    return index;
  }

  show(index) {
    this.visible.push(index);
    if (this.wraps) this.tops.push(this.tops.at(-1) + this.rowsOf(this.lines[index]));
  }

  textOf(event) {
    if (event.event === "action") return `${event.description || event.name}${event.pass ? ` (${event.pass})` : ""}`;
    return event.event === "group" ? event.title : event.text;
  }

  endGroup(event) {
    const index = this.openGroups.pop();
    const line = this.lines[index];
    if (!line) return -1;
    line.elapsed = event.elapsedMs;
    line.status = event.event === "actionEnd" ? (event.succeeded ? 1 : 3) : (event.status ?? 0);
    if (line.status > line.worst) line.worst = line.status;
    if (line.status >= 2) this.spread(index, line.status);
    return index;
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
    this.tops = [0];
    let hiddenBelow = Infinity;
    this.lines.forEach((line, index) => {
      if (line.depth > hiddenBelow) return;
      hiddenBelow = line.isGroup && line.collapsed ? line.depth : Infinity;
      if (line.worst >= this.least) this.show(index);
    });
  }

  // 0 everything, 2 warnings and errors, 3 errors.
  filter(least) {
    this.least = least;
    this.collect();
    this.setFollow(false);
    this.element.scrollTop = 0;
    this.draw();
  }

  fold(collapsed) {
    for (const line of this.lines) if (line.isGroup && line.depth > 0) line.collapsed = collapsed;
    this.collect();
    this.draw();
  }

  wrap(wraps) {
    this.wraps = wraps;
    this.element.classList.toggle("wraps", wraps);
    this.measure();
    this.collect();
    this.draw();
  }

  // How many characters stand beside each other, and how high they are.
  measure() {
    const { width, height } = this.ruler.getBoundingClientRect();
    this.rowHeight = height || 20;
    const beside = this.element.classList.contains("timed") ? 150 : 72; // what stands left of the text
    const scale = this.rowHeight / 20;
    this.columns = Math.max(20, Math.floor((this.element.clientWidth - (beside + 40) * scale) / (width / 100 || 8)));
  }

  rowsOf(line) {
    return Math.max(1, Math.ceil(line.width / this.columns));
  }

  resize() {
    if (!this.element.clientWidth && this.rowHeight) return; // another view is shown
    const before = this.columns;
    this.measure();
    if (this.wraps && before !== this.columns) this.collect();
    this.refresh();
  }

  topOf(at) {
    return this.wraps ? this.tops[at] : at;
  }

  // The height of all, and how much of it one pixel of the scroll bar moves.
  height() {
    return this.topOf(this.visible.length) * this.rowHeight;
  }

  scale() {
    const { clientHeight } = this.element;
    return this.height() > highest ? (this.height() - clientHeight) / (highest - clientHeight) : 1;
  }

  // What lies above the part that is seen.
  offset() {
    return this.element.scrollTop * this.scale();
  }

  scrollTo(offset) {
    this.element.scrollTop = offset / this.scale();
  }

  // The visible line in this row.
  atRow(row) {
    if (!this.wraps) return Math.floor(row);
    let low = 0;
    let high = this.visible.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.tops[middle + 1] <= row) low = middle + 1;
      else high = middle;
    }
    return low;
  }

  // Who scrolls away from the end wants to read; at the end one follows again.
  onScroll() {
    const { scrollTop, scrollHeight, clientHeight } = this.element;
    const isAtEnd = scrollTop + clientHeight >= scrollHeight - this.rowHeight;
    if (!this.follow && isAtEnd) this.setFollow(true);
    else if (this.follow && !isAtEnd && scrollTop < this.lastTop) this.setFollow(false);
    this.lastTop = scrollTop;
    this.draw();
  }

  toEnd() {
    this.setFollow(true);
    this.refresh();
  }

  // After some lines were added.
  refresh() {
    this.draw();
    if (this.follow) this.element.scrollTop = this.element.scrollHeight;
  }

  draw() {
    if (!this.rowHeight) this.measure();
    const height = this.element.clientHeight || 400;
    const { rowHeight } = this;
    this.spacer.style.height = `${Math.min(this.height(), highest)}px`;
    const offset = this.offset();
    const first = Math.max(0, this.atRow(offset / rowHeight) - 5);
    const last = Math.min(this.visible.length, this.atRow((offset + height) / rowHeight) + 6);
    this.rows.style.transform = `translateY(${this.element.scrollTop + this.topOf(first) * rowHeight - offset}px)`;
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
    const sign = line.isGroup ? ["", "done", "warning", "error"][status] : ["", "", "warning", "error"][status];
    const row = el(
      "div",
      {
        role: "option",
        id: `line-${index}`,
        "aria-selected": index === this.current ? "true" : "false",
        "aria-posinset": at + 1,
        "aria-setsize": this.visible.length,
        class: `${statusNames[status]}${line.isGroup ? " group" : ""}`,
        onclick: () => this.goTo(index, true),
      },
      el("span", { class: "number", "aria-hidden": "true" }, String(index + 1)),
      el("time", { "aria-hidden": "true" }, line.time ? new Date(line.time).toTimeString().slice(0, 8) : ""),
      line.isGroup ? icon(line.collapsed ? "fold" : "unfold", "twist") : null,
      sign ? icon(sign, statusNames[status]) : null,
      status > 1 ? el("span", { class: "unseen" }, `${statusNames[status]}: `) : null,
      el("span", { class: "text" }, ...this.textParts(line)),
      line.isGroup && line.collapsed ? el("span", { class: "unseen" }, " (folded)") : null,
      line.elapsed === undefined ? null : el("span", { class: "elapsed" }, formatTime(line.elapsed)),
    );
    row.style.setProperty("--depth", line.depth);
    if (this.wraps) row.style.height = `${this.rowsOf(line) * this.rowHeight}px`;
    return row;
  }

  textParts(line) {
    if (!this.search) return line.ansi ? coloured(line.ansi) : [line.text];
    const parts = [];
    let begin = 0;
    for (const found of line.text.matchAll(this.search)) {
      if (!found[0]) break;
      parts.push(line.text.slice(begin, found.index), el("mark", {}, found[0]));
      begin = found.index + found[0].length;
    }
    return [...parts, line.text.slice(begin)];
  }

  // Groups that hide it are unfolded, and a filter that does is taken back.
  reveal(index) {
    const line = this.lines[index];
    if (!line) return;
    if (!this.isShown(line)) {
      for (let at = line.parent; at >= 0; at = this.lines[at].parent) this.lines[at].collapsed = false;
      if (line.worst < this.least) {
        this.least = 0;
        this.unfiltered?.();
      }
      this.collect();
    }
    this.goTo(index, false);
  }

  goTo(index, isClick) {
    const line = this.lines[index];
    if (isClick && line.isGroup) this.toggle(index);
    this.current = index;
    this.setFollow(false);
    const at = this.visible.indexOf(index);
    const top = this.topOf(at) * this.rowHeight;
    const bottom = this.topOf(at + 1) * this.rowHeight;
    const { clientHeight } = this.element;
    this.spacer.style.height = `${Math.min(this.height(), highest)}px`;
    const offset = this.offset();
    if (top < offset || bottom > offset + clientHeight + clientHeight) this.scrollTo(top - clientHeight / 3);
    else if (bottom > offset + clientHeight) this.scrollTo(bottom - clientHeight);
    this.draw();
    this.select(line);
  }

  toggle(index) {
    const line = this.lines[index];
    line.collapsed = !line.collapsed;
    this.collect();
    this.draw();
  }

  // What is shown, as text.
  text() {
    return this.visible.map((index) => `${"  ".repeat(this.lines[index].depth)}${this.lines[index].text}\n`).join("");
  }

  onKey(event) {
    if (event.altKey || event.ctrlKey || event.metaKey) return;
    const at = this.visible.indexOf(this.current);
    const page = Math.floor(this.element.clientHeight / this.rowHeight);
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
      if (event.key === "End") this.toEnd();
    } else if (line?.isGroup && ["ArrowLeft", "ArrowRight", "Enter", " "].includes(event.key)) {
      event.preventDefault();
      if (event.key === "Enter" || event.key === " " || line.collapsed !== (event.key === "ArrowLeft")) this.toggle(this.current);
    } else if (event.key === "ArrowLeft" && line?.parent >= 0) {
      event.preventDefault();
      this.goTo(line.parent, false);
    } else if (line?.file && event.key === "Enter") {
      event.preventDefault();
      this.open(line.position, line.whole);
    }
  }
}
