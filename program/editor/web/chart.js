// A chart of figures over runs: the value of the run that is pointed to, or reached with the arrow keys, stands in its title line.
import { el } from "./dom.js";

const svg = "http://www.w3.org/2000/svg";

function shape(tag, attributes) {
  const element = document.createElementNS(svg, tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  return element;
}

const decimals = [1, 10, 100, 1e3, 1e4, 1e5, 1e6, 1e7].flatMap((power) => [1, 2, 5].map((one) => one * power));
// Milliseconds that a person counts in.
const seconds = [10, 15, 30, 60, 120, 300, 600, 1200, 1800, 3600, 7200];
const times = [...decimals.filter((one) => one <= 5000), ...seconds.map((one) => one * 1000)];

// What the axis says: from nothing to a round number at or above the largest value, in about four steps.
function scaleOf(largest, areTimes) {
  const steps = areTimes ? times : decimals;
  const step = steps.find((one) => one >= largest / 4) ?? steps.at(-1);
  const count = Math.max(Math.ceil(largest / step), 1);
  return Array.from({ length: count + 1 }, (_, index) => index * step);
}

const pathOf = (points) => points.map(([x, y], index) => `${index ? "L" : "M"}${x} ${y}`).join("");

// `points`: [{label, value, isBad}], oldest first; `draw` is "line" or "bars".
export function chart({ title, points, draw, format = String, areTimes = false }) {
  const ticks = scaleOf(Math.max(0, ...points.map((point) => point.value)), areTimes);
  const top = ticks.at(-1);
  const xOf = (index) => ((index + 0.5) / points.length) * 100;
  const yOf = (value) => 100 - (value / top) * 100;
  const picture = shape("svg", { viewBox: "0 0 100 100", preserveAspectRatio: "none", "aria-hidden": "true" });
  for (const tick of ticks) picture.append(shape("path", { class: "grid", d: `M0 ${yOf(tick)}H100` }));
  if (draw === "line") {
    picture.append(shape("path", { class: "line", d: pathOf(points.map((point, index) => [xOf(index), yOf(point.value)])) }));
    for (const [index, point] of points.entries())
      picture.append(shape("path", { class: point.isBad ? "dot bad" : "dot", d: `M${xOf(index)} ${yOf(point.value)}h0` }));
  } else {
    const width = Math.min(72 / points.length, 6);
    for (const [index, point] of points.entries()) {
      const box = { x: xOf(index) - width / 2, y: yOf(point.value), width, height: 100 - yOf(point.value) };
      picture.append(shape("rect", { class: point.isBad ? "bad" : "", ...box }));
    }
  }
  const pointer = shape("path", { class: "pointer", visibility: "hidden" });
  picture.append(pointer);

  const newest = format(points.at(-1)?.value ?? 0);
  const output = el("output", {}, newest);
  const labels = ticks.map((tick) => {
    const label = el("span", {}, format(tick));
    label.style.bottom = `${100 - yOf(tick)}%`;
    return label;
  });
  const figure = el(
    "figure",
    { class: "trend", tabindex: "0", role: "group", "aria-label": `${title}: ${newest}; left and right read the runs` },
    el("figcaption", {}, title, output),
    el("div", { class: "scale", "aria-hidden": "true" }, ...labels),
    el("div", { class: "plot" }, picture),
    el(
      "div",
      { class: "ends", "aria-hidden": "true" },
      el("span", {}, points[0]?.label ?? ""),
      el("span", {}, points.at(-1)?.label ?? ""),
    ),
  );
  let at = points.length - 1;
  const point = (index) => {
    at = Math.min(Math.max(index, 0), points.length - 1);
    pointer.setAttribute("d", `M${xOf(at)} 0V100`);
    pointer.setAttribute("visibility", "visible");
    output.textContent = `Run ${points[at].label}: ${format(points[at].value)}`;
  };
  const leave = () => {
    pointer.setAttribute("visibility", "hidden");
    output.textContent = newest;
    at = points.length - 1;
  };
  const plot = figure.querySelector(".plot");
  plot.addEventListener("pointermove", (event) => point(Math.floor((event.offsetX / plot.clientWidth) * points.length)));
  plot.addEventListener("pointerleave", leave);
  figure.addEventListener("blur", leave);
  figure.addEventListener("keydown", (event) => {
    const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (!step) return;
    event.preventDefault();
    point(pointer.getAttribute("visibility") === "hidden" ? at : at + step);
  });
  return figure;
}

const kinds = { p: "passed", f: "failed", n: "not run", "-": "absent" };

// What became of a test in the last runs, a mark a run: failures are tall, so that they are seen without colours.
export function strip(outcomes) {
  const width = 6;
  const picture = shape("svg", { class: "strip", width: outcomes.length * width, height: 16, role: "img" });
  const failures = [...outcomes].filter((one) => one === "f").length;
  picture.setAttribute("aria-label", `failed in ${failures} of the last ${outcomes.length} runs`);
  for (const [index, outcome] of [...outcomes].entries()) {
    const height = { p: 5, f: 16, n: 2, "-": 0 }[outcome] ?? 0;
    picture.append(shape("rect", { class: kinds[outcome], x: index * width, y: 16 - height, width: width - 2, height }));
  }
  return picture;
}
