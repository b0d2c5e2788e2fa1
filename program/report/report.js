// Searching, filtering, grouping and reading charts; without it everything is still there to read.
const find = (id) => document.getElementById(id);
const all = (selector, within = document) => [...within.querySelectorAll(selector)];

for (const tools of all(".tools")) tools.hidden = false;

const plural = (count, what) => `${count.toLocaleString("en")} ${what}${count === 1 ? "" : "s"}`;

// The last call wins; typing stays fluent however much there is to look through.
function later(work, delay = 80) {
  let timer;
  return () => {
    clearTimeout(timer);
    timer = setTimeout(work, delay);
  };
}

// What is chosen stands in the address, so that it can be sent along: "#problems?severity=error&text=x".
function choiceInAddress() {
  const [place, choice] = decodeURI(location.hash.slice(1)).split("?");
  return place === "problems" && choice ? Object.fromEntries(new URLSearchParams(choice)) : {};
}

// --- Problems ---

const groups = find("groups");
const problems = groups ? all(".f", groups) : [];
const chosen = { severity: "", novelty: "", group: "file", text: "" };
const facts = new Map();

function learn(row) {
  const group = row.closest(".group");
  const cells = row.children;
  facts.set(row, {
    group,
    place: cells[0].textContent,
    cell: cells[0],
    file: group.dataset.f ?? "",
    rule: cells[1].textContent,
    project: row.dataset.p ?? group.dataset.p ?? "",
    text: `${group.dataset.f ?? ""} ${row.textContent} ${row.dataset.p ?? group.dataset.p ?? ""}`.toLowerCase(),
  });
}

function matches(row) {
  const kinds = row.classList;
  if (chosen.severity && !kinds.contains(chosen.severity)) return false;
  if (chosen.novelty && !kinds.contains(chosen.novelty)) return false;
  return facts.get(row).text.includes(chosen.text.toLowerCase());
}

function showProblems() {
  let shown = 0;
  const filled = new Map();
  for (const row of problems) {
    row.hidden = !matches(row);
    if (row.hidden) continue;
    if (!row.classList.contains("fixed") || chosen.novelty === "fixed") ++shown;
    const group = row.closest(".group");
    filled.set(group, (filled.get(group) ?? 0) + 1);
  }
  // Who looks for something wants to see it, unless it is a lot.
  const isNarrow = shown <= 100 && !!(chosen.text || chosen.severity || chosen.novelty);
  for (const group of all(".group", groups)) {
    group.hidden = !filled.has(group);
    if (isNarrow && !group.hidden) group.open = true;
    const count = group.querySelector("[data-count]");
    if (count) count.textContent = plural(filled.get(group) ?? 0, "problem");
  }
  find("problem-count").textContent = plural(shown, "problem");
  find("no-problem").hidden = filled.size > 0;
  for (const name of ["severity", "novelty"])
    for (const button of all(`[data-${name}]`))
      button.setAttribute("aria-pressed", String(button.dataset[name] === chosen[name]));
}

function newGroup(title, rows) {
  const group = document.createElement("details");
  group.className = "group";
  group.open = rows.some((row) => row.classList.contains("error"));
  const summary = document.createElement("summary");
  const heading = document.createElement("h3");
  heading.textContent = title;
  const count = document.createElement("span");
  count.className = "counts";
  count.dataset.count = "";
  summary.append(heading, count);
  group.append(summary, ...rows);
  return group;
}

const ownGroups = groups ? all(".group", groups) : [];

function groupProblems() {
  const open = document.createDocumentFragment();
  if (chosen.group === "file") {
    for (const row of problems) {
      const { group, cell, place } = facts.get(row);
      cell.textContent = place;
      group.append(row);
    }
    open.append(...ownGroups);
  } else {
    const rows = Map.groupBy
      ? Map.groupBy(problems, (row) => facts.get(row)[chosen.group])
      : problems.reduce(
          (map, row) => map.set(facts.get(row)[chosen.group], [...(map.get(facts.get(row)[chosen.group]) ?? []), row]),
          new Map(),
        );
    for (const [title, members] of rows) {
      for (const row of members) {
        const { file, cell, place } = facts.get(row);
        cell.textContent = file ? `${file.split("/").pop()} ${place.replace("line ", "")}` : place;
      }
      open.append(newGroup(title || "In no project", members));
    }
  }
  groups.replaceChildren(open);
}

function keepChoice() {
  const choice = new URLSearchParams(
    Object.entries(chosen).filter(([name, value]) => value && !(name === "group" && value === "file")),
  );
  history.replaceState(null, "", choice.size > 0 ? `#problems?${choice}` : "#problems");
}

function choose(change) {
  const regroup = "group" in change && change.group !== chosen.group;
  Object.assign(chosen, change);
  if (regroup) groupProblems();
  showProblems();
  keepChoice();
}

if (groups) {
  problems.forEach(learn);
  const text = find("problem-find");
  const group = find("problem-group");
  text.addEventListener(
    "input",
    later(() => choose({ text: text.value })),
  );
  group.addEventListener("change", () => choose({ group: group.value }));
  for (const name of ["severity", "novelty"])
    for (const button of all(`[data-${name}]`)) button.addEventListener("click", () => choose({ [name]: button.dataset[name] }));
  find("clear").addEventListener("click", () => {
    text.value = "";
    choose({ severity: "", novelty: "", text: "" });
    text.focus();
  });
  const wanted = choiceInAddress();
  const isOffered = (name, value) => !!document.querySelector(`[data-${name}="${CSS.escape(value ?? "")}"]`);
  for (const name of ["severity", "novelty"]) if (isOffered(name, wanted[name])) chosen[name] = wanted[name] ?? "";
  text.value = chosen.text = wanted.text ?? "";
  if ([...group.options].some((option) => option.value === wanted.group)) group.value = chosen.group = wanted.group;
  if (chosen.group !== "file") groupProblems();
  showProblems();
  if (Object.keys(wanted).length > 0) find("problems").scrollIntoView();
}

// --- Tests ---

const testFind = find("test-find");
if (testFind) {
  const tests = all("#suites li").map((row) => ({ row, text: row.textContent.toLowerCase() }));
  const wasOpen = new Map(all(".suite").map((suite) => [suite, suite.open]));
  testFind.addEventListener(
    "input",
    later(() => {
      const wanted = testFind.value.toLowerCase();
      let shown = 0;
      const filled = new Set();
      for (const { row, text } of tests) {
        row.hidden = !text.includes(wanted);
        if (row.hidden) continue;
        ++shown;
        filled.add(row.closest(".suite"));
      }
      for (const [suite, open] of wasOpen) {
        suite.hidden = !filled.has(suite);
        suite.open = wanted ? !suite.hidden : open;
      }
      find("test-count").textContent = wanted ? plural(shown, "test") : "";
    }),
  );
}

// --- Charts ---

const runs = all("#runs tbody tr");
const slots = Math.max(runs.length, 12); // as the page draws them
for (const chart of all(".chart")) {
  const output = chart.querySelector("output");
  const line = chart.querySelector(".here");
  const plot = chart.querySelector("div");
  const own = output.textContent;
  let at = runs.length - 1;
  const show = (index) => {
    at = Math.max(0, Math.min(runs.length - 1, index));
    const cells = runs[at].children;
    line.setAttribute("d", `M${at + slots - runs.length + 0.5} 0V100`);
    output.textContent = `${cells[0].textContent}: ${cells[chart.dataset.column].textContent}`;
  };
  const leave = () => {
    line.setAttribute("d", "");
    output.textContent = own;
    at = runs.length - 1;
  };
  plot.addEventListener("pointermove", (event) => {
    const box = plot.getBoundingClientRect();
    show(Math.floor(((event.clientX - box.left) / box.width) * slots) - slots + runs.length);
  });
  plot.addEventListener("pointerleave", leave);
  chart.addEventListener("blur", leave);
  chart.addEventListener("keydown", (event) => {
    if (event.key === "ArrowLeft") show(at - 1);
    else if (event.key === "ArrowRight") show(at + 1);
    else return;
    event.preventDefault();
  });
}

// --- Log ---

const log = document.querySelector(".log");
const blocks = all("pre", log);

// Line by line with numbers, once it comes into view: a log of hundreds of thousands of lines has far fewer blocks.
function spread(block) {
  if (block.classList.contains("lines")) return;
  const first = Number(block.dataset.n);
  const texts = block.textContent.replace(/\n$/, "").split("\n");
  const marked = [...block.children];
  const lines = texts.map((text, i) => {
    const line = document.createElement("span");
    line.textContent = `${text}\n`;
    line.dataset.n = first + i;
    return line;
  });
  lines[0].dataset.t = block.dataset.t;
  const [hours, minutes, seconds] = block.dataset.t.split(":").map(Number);
  for (const change of block.dataset.s?.split(" ") ?? []) {
    const [at, later] = change.split(":").map(Number);
    const time = (hours * 3600 + minutes * 60 + seconds + later) % 86400;
    const parts = [time / 3600, (time / 60) % 60, time % 60];
    if (lines[at]) lines[at].dataset.t = parts.map((part) => String(Math.floor(part)).padStart(2, "0")).join(":");
  }
  for (const mark of marked) {
    const line = lines[Number(mark.id.slice(1)) - first];
    if (line) line.id = mark.id;
  }
  if (texts.length !== Number(block.style.getPropertyValue("--n") || 1)) return; // a message of several lines
  block.classList.add("lines");
  block.replaceChildren(...lines);
}

const seen = new IntersectionObserver(
  (entries) => {
    for (const { isIntersecting, target } of entries) {
      if (!isIntersecting) continue;
      seen.unobserve(target);
      spread(target);
      paint(target);
    }
  },
  { rootMargin: "400px" },
);
for (const block of blocks) seen.observe(block);

function reveal(element) {
  for (let at = element; at; at = at.parentElement) {
    if (at.tagName === "DETAILS") at.open = true;
    if (at.hidden) at.hidden = false;
  }
  element.scrollIntoView({ block: "center" });
}

function lineOf(number) {
  let from = 0;
  let to = blocks.length;
  while (from < to) {
    const middle = (from + to) >> 1;
    if (Number(blocks[middle].dataset.n) <= number) from = middle + 1;
    else to = middle;
  }
  const block = blocks[from - 1];
  if (!block) return null;
  spread(block);
  return block.children[number - Number(block.dataset.n)] ?? block;
}

let target;
function goToAddress() {
  target?.classList.remove("target");
  const name = location.hash.slice(1);
  target = /^L\d+$/.test(name) ? lineOf(Number(name.slice(1))) : name ? find(name.split("?")[0]) : null;
  if (!target || target.tagName === "SECTION") return;
  if (log.contains(target)) {
    onlyProblems(false);
    target.classList.add("target");
  }
  reveal(target);
}
addEventListener("hashchange", goToAddress);

function onlyProblems(only) {
  log.classList.toggle("only", only);
  if (only) for (const group of all(".bad", log)) group.open = true;
  find("log-problems").setAttribute("aria-pressed", String(only));
  find("log-all").setAttribute("aria-pressed", String(!only));
}
find("log-problems").addEventListener("click", () => onlyProblems(true));
find("log-all").addEventListener("click", () => onlyProblems(false));
for (const [id, open] of [
  ["log-unfold", true],
  ["log-fold", false],
])
  find(id).addEventListener("click", () => {
    for (const group of all("details", log)) group.open = open;
  });

const search = { text: "", hits: [], at: -1, turn: 0 };
const marks = window.CSS?.highlights ? { found: new Highlight(), "found-here": new Highlight() } : null;
for (const [name, mark] of Object.entries(marks ?? {})) CSS.highlights.set(name, mark);

// The places of the searched text in a block that is spread.
function rangesIn(block) {
  const ranges = [];
  if (!search.text || !block.classList.contains("lines")) return ranges;
  const walker = document.createTreeWalker(block, NodeFilter.SHOW_TEXT);
  for (let node = walker.nextNode(); node; node = walker.nextNode()) {
    const text = node.data.toLowerCase();
    for (let at = text.indexOf(search.text); at >= 0; at = text.indexOf(search.text, at + search.text.length)) {
      const range = document.createRange();
      range.setStart(node, at);
      range.setEnd(node, at + search.text.length);
      ranges.push(range);
    }
  }
  return ranges;
}

function paint(block) {
  if (marks) for (const range of rangesIn(block)) marks.found.add(range);
}

function sayHit() {
  const count = search.hits.length;
  find("log-found").textContent = !search.text
    ? ""
    : count === 0
      ? "not found"
      : `${(search.at + 1).toLocaleString("en")} of ${count.toLocaleString("en")}`;
}

function showHit() {
  sayHit();
  if (search.at < 0) return;
  const [block, number] = search.hits[search.at];
  spread(block);
  const range = rangesIn(block)[number];
  paint(block);
  if (!range) return;
  onlyProblems(false);
  reveal(range.startContainer.parentElement);
  if (!marks) return;
  marks["found-here"].clear();
  marks["found-here"].add(range);
}

function step(by) {
  if (search.hits.length === 0) return;
  search.at = (search.at + by + search.hits.length) % search.hits.length;
  showHit();
}

// In slices: the page answers while a long log is looked through.
function searchLog() {
  const turn = ++search.turn;
  search.text = find("log-find").value.toLowerCase();
  search.hits = [];
  search.at = -1;
  marks?.found.clear();
  marks?.["found-here"].clear();
  if (!search.text) return showHit();
  let next = 0;
  const slice = () => {
    if (turn !== search.turn) return;
    const until = performance.now() + 30;
    for (; next < blocks.length && performance.now() < until; ++next) {
      const text = blocks[next].textContent.toLowerCase();
      let number = 0;
      for (let at = text.indexOf(search.text); at >= 0; at = text.indexOf(search.text, at + search.text.length))
        search.hits.push([blocks[next], number++]);
    }
    const isFirst = search.at < 0 && search.hits.length > 0;
    if (isFirst) {
      search.at = 0;
      for (const block of all(".lines", log)) paint(block);
    }
    if (isFirst) showHit();
    else if (search.at >= 0 || next === blocks.length) sayHit();
    if (next < blocks.length) setTimeout(slice);
  };
  slice();
}
find("log-find").addEventListener("input", later(searchLog, 150));
find("log-find").addEventListener("keydown", (event) => {
  if (event.key !== "Enter") return;
  event.preventDefault();
  step(event.shiftKey ? -1 : 1);
});
find("log-next").addEventListener("click", () => step(1));
find("log-previous").addEventListener("click", () => step(-1));

// --- Contents ---

const links = all(".contents a");
const visible = new IntersectionObserver(
  (entries) => {
    for (const { isIntersecting, target: section } of entries) {
      if (!isIntersecting) continue;
      for (const link of links)
        if (link.hash === `#${section.id}`) link.setAttribute("aria-current", "true");
        else link.removeAttribute("aria-current");
    }
  },
  { rootMargin: "-20% 0px -70%" },
);
for (const section of all("main > section")) visible.observe(section);

// On paper everything that folds would be missing.
addEventListener("beforeprint", () => {
  for (const part of all(".group, .test, .fold")) part.open = true;
});

goToAddress();
