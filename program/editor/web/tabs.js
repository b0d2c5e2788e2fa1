// Tabs that each show a part of a view: one stop for the Tab key, arrows move between them.

// `tabs`: buttons with aria-controls. Gives show(button).
export function makeTabs(list, shown = () => {}) {
  const tabs = () => [...list.querySelectorAll("[role=tab]")].filter((tab) => !tab.hidden);
  const show = (chosen) => {
    for (const tab of list.querySelectorAll("[role=tab]")) {
      const isChosen = tab === chosen;
      tab.setAttribute("aria-selected", isChosen ? "true" : "false");
      tab.tabIndex = isChosen ? 0 : -1;
      document.getElementById(tab.getAttribute("aria-controls")).hidden = !isChosen;
    }
    shown(chosen);
  };
  list.addEventListener("click", (event) => {
    const tab = event.target.closest("[role=tab]");
    if (tab) show(tab);
  });
  list.addEventListener("keydown", (event) => {
    const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (!step) return;
    event.preventDefault();
    const all = tabs();
    const next = all[(all.indexOf(event.target) + step + all.length) % all.length];
    show(next);
    next.focus();
  });
  return show;
}
