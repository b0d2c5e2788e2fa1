// Which view is shown: the address says it, so that the browser's own keys lead back.
import { byId } from "./dom.js";

const listeners = new Map();
export const views = [...document.querySelectorAll(".rail a")].map((link) => link.hash.slice(1));

export function currentView() {
  const name = location.hash.slice(1);
  return views.includes(name) ? name : views[0];
}

function show() {
  const current = currentView();
  for (const name of views) {
    const isCurrent = name === current;
    byId(`view-${name}`).hidden = !isCurrent;
    if (isCurrent) byId(`show-${name}`).setAttribute("aria-current", "page");
    else byId(`show-${name}`).removeAttribute("aria-current");
  }
  listeners.get(current)?.();
}

// Called whenever the view comes up.
export function onView(name, listener) {
  listeners.set(name, listener);
}

export function showView(name) {
  if (currentView() !== name) history.pushState(null, "", `#${name}`);
  show();
}

// How many things in a view wait for somebody; said in words to those who do not see it.
export function countInView(name, count, words) {
  const link = byId(`show-${name}`);
  link.querySelector(".count")?.remove();
  if (!count) return;
  const badge = document.createElement("span");
  badge.className = "count";
  badge.textContent = count > 999 ? "999+" : String(count);
  const said = document.createElement("span");
  said.className = "unseen";
  said.textContent = ` ${words}`;
  badge.append(said);
  link.append(badge);
}

export function startViews() {
  window.addEventListener("hashchange", show);
  window.addEventListener("popstate", show);
  show();
}
