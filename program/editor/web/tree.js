// The tree of actions and groups: arrow keys move in it, Alt and arrow keys move the action itself. A row has its path in the tree,
// where a group is around its actions as a loop is; kxhost is told of places by these.
import { el, icon } from "./dom.js";

export class Tree {
  // `handlers`: select(id), open() for the input that has the focus then, move(direction), drop(id, to), remove(); inTurn(work)
  // calls back when nothing is under way that changes the tree, so that a key pressed meanwhile means the tree as it will be.
  constructor(element, handlers) {
    this.element = element;
    this.handlers = handlers;
    this.collapsed = new Set();
    this.problems = new Set();
    this.rows = [];
    this.nodes = [];
    this.selected = undefined;
    this.typed = undefined; // for the field that Enter leads to, while it is not there yet
    element.addEventListener("keydown", (event) => this.onKey(event));
    element.addEventListener("pointerdown", () => {
      this.dragged = undefined; // a row that went during its drag does not tell of its end
    });
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

  // The ids of actions that something is wrong with. Rows stay where they are as long as the mouse drags one.
  mark(ids) {
    if (ids.size === this.problems.size && [...ids].every((id) => this.problems.has(id))) return;
    this.problems = ids;
    if (!this.dragged) this.show(this.nodes, this.selected);
  }

  collect(nodes, level, parent) {
    nodes.forEach((node, position) => {
      const row = { node, level, parent, siblings: nodes, position, path: [...(parent?.path ?? []), position] };
      this.rows.push(row);
      if (node.children && !this.collapsed.has(node.id)) this.collect(node.children, level + 1, row);
    });
  }

  draw(row) {
    const { node, level, siblings, position } = row;
    const isSelected = node.id === this.selected;
    const title = node.name || node.typeName;
    const parts = [el("span", { class: "twist" }, node.children ? icon(this.collapsed.has(node.id) ? "fold" : "unfold") : null)];
    if (node.isGroup) parts.push(icon("group"));
    if (this.images?.has(node.type)) parts.push(el("img", { src: `image/${node.type}`, alt: "", width: 16, height: 16 }));
    parts.push(el("span", { class: "name" }, title));
    if (node.name) parts.push(el("span", { class: "unseen" }, `, ${node.typeName}`));
    if (this.problems.has(node.id)) parts.push(icon("warning", "warning"), el("span", { class: "unseen" }, ", has problems"));
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
        title: node.name ? `${title} (${node.typeName})` : title,
        draggable: "true",
        "aria-expanded": node.children ? (this.collapsed.has(node.id) ? "false" : "true") : false,
        onclick: (event) => {
          if (event.target.closest(".twist") && node.children) this.toggle(node.id);
          else this.select(node.id);
        },
      },
      ...parts,
    );
    item.style.paddingInlineStart = `${level - 0.75}rem`;
    row.item = item;
    this.letDrag(row);
    return item;
  }

  // An action goes where the mouse leaves it: before or behind another, or, over the middle of a loop or a group, into it. A group
  // stands among the outermost.
  letDrag(row) {
    const { item, node } = row;
    const mark = (place) => {
      for (const name of ["before", "inside", "behind"]) item.classList.toggle(`drop-${name}`, name === place);
    };
    const placeOf = (event) => {
      const part = event.offsetY / item.offsetHeight;
      if (mayHold(node, this.dragged.node) && part > 0.25 && part < 0.75) return "inside";
      return part < 0.5 ? "before" : "behind";
    };
    const mayDrop = () =>
      this.dragged && !isWithin(row.path, this.dragged.path) && !(this.dragged.node.isGroup && row.path.length > 1);
    item.addEventListener("dragstart", (event) => {
      this.dragged = row;
      event.dataTransfer.effectAllowed = "move";
      event.dataTransfer.setData("text/plain", node.id);
    });
    item.addEventListener("dragend", () => {
      this.dragged = undefined;
      this.show(this.nodes, this.selected);
    });
    item.addEventListener("dragover", (event) => {
      if (!mayDrop()) return;
      event.preventDefault();
      mark(placeOf(event));
    });
    item.addEventListener("dragleave", () => mark());
    item.addEventListener("drop", (event) => {
      mark();
      if (!mayDrop()) return;
      event.preventDefault();
      const { id } = this.dragged.node;
      const to = this.targetAt(row, placeOf(event));
      this.handlers.inTurn(() => this.handlers.drop(id, to));
    });
  }

  targetAt({ node, path }, place) {
    if (place === "inside") return [...path, node.children.length].join("/");
    return beside(path, place === "behind" ? 1 : 0);
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
    const { node, path, position, parent, siblings } = row;
    if (direction === "up") return position > 0 ? beside(path, -1) : undefined;
    if (direction === "down") return position + 1 < siblings.length ? beside(path, 2) : undefined;
    if (direction === "out") return parent ? beside(parent.path, 1) : undefined;
    const before = siblings[position - 1];
    return before && mayHold(before, node) ? `${beside(path, -1)}/${before.children.length}` : undefined;
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
    else if (row.parent) this.select(row.parent.node.id);
  }

  // What is typed behind Enter is meant for the field that it leads to.
  async open() {
    try {
      const input = await this.handlers.open();
      if (!this.typed || !input?.matches("input[type=text], textarea")) return;
      input.value = this.typed;
      input.dispatchEvent(new Event("input"));
    } finally {
      this.typed = undefined;
    }
  }

  collectTyped(event) {
    if (this.typed === undefined || event.ctrlKey || event.altKey || event.metaKey || event.key.length !== 1) return false;
    event.preventDefault();
    this.typed += event.key;
    return true;
  }

  onKey(event) {
    if (this.collectTyped(event)) return;
    const work = (event.altKey ? moves : keys)[event.key];
    if (!work || event.ctrlKey || event.metaKey) return;
    event.preventDefault();
    if (event.key === "Enter") this.typed = "";
    this.handlers.inTurn(() => {
      const index = this.rows.findIndex((row) => row.node.id === this.selected);
      return index < 0 ? undefined : work(this, this.rows[index], index);
    });
  }
}

const mayHold = (holder, node) => (holder.isLoop || holder.isGroup) && !node.isGroup;
const isWithin = (path, around) => around.every((position, i) => path[i] === position);
const beside = (path, steps) => [...path.slice(0, -1), path.at(-1) + steps].join("/");

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
  Enter: (tree) => tree.open(),
  Delete: (tree) => tree.handlers.remove(),
};
