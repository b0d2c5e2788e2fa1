// A list beside what is to be said of the chosen one; on a narrow screen the one comes in the place of the other.
import { button, el, icon } from "./dom.js";

export class Split {
  // `view`: the section, with .list and .detail in it; `draw(item)` gives what stands in the detail.
  constructor(view, draw) {
    this.view = view;
    this.list = view.querySelector(".list");
    this.detail = view.querySelector(".detail");
    this.draw = draw;
    this.rows = []; // {item, element}
    this.chosen = undefined;
    this.isPicked = false; // by somebody; else the first one stands there until there is a better one
    this.list.addEventListener("keydown", (event) => this.onKey(event));
  }

  // `groups`: {title, more, items}; `drawItem(item)` gives what stands in the row, `isSame` tells whether two items are one.
  show(groups, drawItem, isSame) {
    const hadFocus = this.list.contains(document.activeElement);
    const before = this.chosen;
    this.rows = [];
    const parts = groups.flatMap(({ title, more, items }) => [
      title ? el("h3", {}, title, more ? el("span", { class: "type" }, ` ${more}`) : null) : "",
      ...items.map((item) => this.drawRow(item, drawItem(item))),
    ]);
    this.list.replaceChildren(...parts);
    const kept = this.isPicked ? this.rows.find((row) => isSame(row.item, before)) : undefined;
    this.choose((kept ?? this.rows[0])?.item, { quietly: true, hadFocus });
    this.isPicked = hadFocus || kept !== undefined;
  }

  drawRow(item, content) {
    const element = button(content, () => this.choose(item), { class: "entry" });
    this.rows.push({ item, element });
    return element;
  }

  choose(item, { quietly = false, hadFocus = false } = {}) {
    this.chosen = item;
    this.isPicked = hadFocus || !quietly;
    for (const row of this.rows) {
      const isChosen = row.item === item;
      if (isChosen) row.element.setAttribute("aria-current", "true");
      else row.element.removeAttribute("aria-current");
      row.element.tabIndex = isChosen ? 0 : -1;
      if (isChosen && (hadFocus || !quietly)) row.element.focus();
    }
    if (!quietly) this.view.classList.add("detailed");
    this.detail.replaceChildren(
      button([icon("back"), "Back"], () => this.back(), { class: "compact back" }),
      ...(item === undefined ? [] : this.draw(item)),
    );
    this.detail.hidden = item === undefined;
  }

  back() {
    this.view.classList.remove("detailed");
    this.rows.find((row) => row.item === this.chosen)?.element.focus();
  }

  // The next or previous one of the one that somebody has picked, else the first; gives it.
  step(direction) {
    if (!this.rows.length) return undefined;
    const at = this.rows.findIndex((row) => row.item === this.chosen);
    const row = this.rows[this.isPicked ? (at + direction + this.rows.length) % this.rows.length : 0];
    this.choose(row.item);
    return row.item;
  }

  onKey(event) {
    const at = this.rows.findIndex((row) => row.element === document.activeElement);
    const last = this.rows.length - 1;
    const to = { ArrowDown: Math.min(at + 1, last), ArrowUp: Math.max(at - 1, 0), Home: 0, End: last }[event.key];
    if (to === undefined || at < 0) return;
    event.preventDefault();
    this.choose(this.rows[to].item, { quietly: true, hadFocus: true });
  }
}
