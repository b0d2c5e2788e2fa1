// The tree of actions: arrow keys move in it, Alt and arrow keys move the action itself.
import { el } from "./dom.js";

export class Tree {
  // `handlers`: select(id), open(), move(direction), remove(); inTurn(work) calls back when nothing is under way that changes
  // the tree, so that a key pressed meanwhile means the tree as it will be.
  constructor(element, handlers) {
    this.element = element;
    this.handlers = handlers;
    this.collapsed = new Set();
    this.problems = new Set();
    this.rows = [];
    this.nodes = [];
    this.selected = undefined;
    element.addEventListener("keydown", (event) => this.onKey(event));
  }

  show(nodes, selected) {
    this.nodes = nodes;
    const hadFocus = this.element.contains(document.activeElement);
    this.rows = [];
    this.collect(nodes, 1, undefined);
    const found = this.rows.find((row) => row.node.id === selected);
    this.selected = found ? selected : this.rows[0]?.node.id;
    this.element.replaceChildren(...this.rows.map((row) => this.draw(row)));
    if (hadFocus) this.focusSelected();
  }

  // The ids of actions that something is wrong with.
  mark(ids) {
    this.problems = ids;
    this.show(this.nodes, this.selected);
  }

  collect(nodes, level, parent) {
    nodes.forEach((node, position) => {
      this.rows.push({ node, level, parent, siblings: nodes, position });
      if (node.children && !this.collapsed.has(node.id)) this.collect(node.children, level + 1, node);
    });
  }

  draw(row) {
    const { node, level, siblings, position } = row;
    const isSelected = node.id === this.selected;
    const title = node.name || node.typeName;
    const parts = [
      el("span", { class: "twist", "aria-hidden": "true" }, node.children ? (this.collapsed.has(node.id) ? "▸" : "▾") : ""),
    ];
    if (this.images?.has(node.type)) parts.push(el("img", { src: `image/${node.type}`, alt: "", width: 16, height: 16 }));
    parts.push(el("span", { class: "name" }, title));
    if (node.name) parts.push(el("span", { class: "type" }, node.typeName));
    if (this.problems.has(node.id))
      parts.push(
        el("span", { class: "mark", title: "Something is wrong here" }, "⚠", el("span", { class: "sr" }, " has problems")),
      );
    const item = el(
      "li",
      {
        role: "treeitem",
        id: `action-${node.id.replaceAll("/", "-")}`,
        "aria-level": level,
        "aria-setsize": siblings.length,
        "aria-posinset": position + 1,
        "aria-selected": isSelected ? "true" : "false",
        tabindex: isSelected ? 0 : -1,
        "aria-expanded": node.children ? (this.collapsed.has(node.id) ? "false" : "true") : false,
        onclick: (event) => {
          if (event.target.classList.contains("twist") && node.children) this.toggle(node.id);
          else this.select(node.id);
        },
      },
      ...parts,
    );
    item.style.paddingInlineStart = `${level * 1.1 - 0.6}rem`;
    row.item = item;
    return item;
  }

  select(id) {
    this.selected = id;
    for (const row of this.rows) {
      const isSelected = row.node.id === id;
      row.item.setAttribute("aria-selected", isSelected ? "true" : "false");
      row.item.tabIndex = isSelected ? 0 : -1;
    }
    this.focusSelected();
    this.handlers.select(id);
  }

  focusSelected() {
    (this.rowOf(this.selected)?.item ?? this.element).focus();
  }

  rowOf(id) {
    return this.rows.find((row) => row.node.id === id);
  }

  toggle(id) {
    if (!this.collapsed.delete(id)) this.collapsed.add(id);
    this.show(this.nodes, this.selected);
  }

  // Where the selected action goes; undefined when it can go no further that way.
  targetOf(direction) {
    const row = this.rowOf(this.selected);
    if (!row) return undefined;
    const path = row.node.id.split("/").map(Number);
    const at = (steps) => [...path.slice(0, -1), row.position + steps].join("/");
    if (direction === "up") return row.position > 0 ? at(-1) : undefined;
    if (direction === "down") return row.position + 1 < row.siblings.length ? at(2) : undefined;
    if (direction === "out") return row.parent ? [...path.slice(0, -2), path.at(-2) + 1].join("/") : undefined;
    const before = row.siblings[row.position - 1];
    return before?.isLoop ? `${before.id}/${before.children.length}` : undefined;
  }

  goTo(index) {
    const row = this.rows[index];
    if (row) this.select(row.node.id);
  }

  isFolded({ node }) {
    return this.collapsed.has(node.id);
  }

  unfoldOrEnter(row, index) {
    if (this.isFolded(row)) this.toggle(row.node.id);
    else if (row.node.children?.length) this.goTo(index + 1);
  }

  foldOrLeave(row) {
    if (row.node.children?.length && !this.isFolded(row)) this.toggle(row.node.id);
    else if (row.parent) this.select(row.parent.id);
  }

  onKey(event) {
    const work = (event.altKey ? moves : keys)[event.key];
    if (!work || event.ctrlKey || event.metaKey) return;
    event.preventDefault();
    this.handlers.inTurn(() => {
      const index = this.rows.findIndex((row) => row.node.id === this.selected);
      return index < 0 ? undefined : work(this, this.rows[index], index);
    });
  }
}

const moves = {
  ArrowUp: (tree) => tree.handlers.move("up"),
  ArrowDown: (tree) => tree.handlers.move("down"),
  ArrowLeft: (tree) => tree.handlers.move("out"),
  ArrowRight: (tree) => tree.handlers.move("in"),
};

const keys = {
  ArrowDown: (tree, _row, index) => tree.goTo(index + 1),
  ArrowUp: (tree, _row, index) => tree.goTo(index - 1),
  Home: (tree) => tree.goTo(0),
  End: (tree) => tree.goTo(tree.rows.length - 1),
  ArrowRight: (tree, row, index) => tree.unfoldOrEnter(row, index),
  ArrowLeft: (tree, row) => tree.foldOrLeave(row),
  Enter: (tree) => tree.handlers.open(),
  Delete: (tree) => tree.handlers.remove(),
};
