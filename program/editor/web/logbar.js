// What can be done with the log: search, filter, fold, wrap, copy, download, follow.
import { announce, announceError, byId, counted, debounce } from "./dom.js";

const slice = 8; // milliseconds that a search goes on without letting the page answer

export class LogBar {
  constructor(log, fileName) {
    this.log = log;
    this.fileName = fileName;
    this.found = [];
    this.at = -1;
    this.box = byId("log-search");
    this.box.addEventListener(
      "input",
      debounce(() => this.search(), 60),
    );
    this.box.addEventListener("keydown", (event) => this.onKey(event));
    byId("filter").addEventListener("change", (event) => log.filter(Number(event.target.value)));
    byId("fold").addEventListener("click", () => log.fold(true));
    byId("unfold").addEventListener("click", () => log.fold(false));
    byId("log-wrap").addEventListener("click", (event) => log.wrap(toggle(event.currentTarget)));
    byId("log-times").addEventListener("click", (event) => {
      log.element.classList.toggle("timed", toggle(event.currentTarget));
      log.resize();
    });
    byId("log-copy").addEventListener("click", () => this.copy());
    byId("log-download").addEventListener("click", () => this.download());
    byId("log-follow").addEventListener("click", () => (log.follow ? log.setFollow(false) : log.toEnd()));
    byId("log-next").addEventListener("click", () => this.step(1));
    byId("log-previous").addEventListener("click", () => this.step(-1));
  }

  onKey(event) {
    if (event.key === "Enter") this.goOn(event.shiftKey ? -1 : 1);
    if (event.key === "Escape" && this.box.value) {
      this.box.value = "";
      this.search();
    }
  }

  // What was typed just before Enter is looked for first.
  async goOn(direction) {
    if (this.sought !== this.box.value) await this.search();
    this.step(direction);
  }

  // In slices: half a million lines take their time.
  async search() {
    const text = this.box.value;
    this.sought = text;
    const expression = text && new RegExp(text.replace(/[.*+?^${}()|[\]\\]/g, "\\$&"), "gi");
    this.log.search = expression || undefined;
    this.found = [];
    this.at = -1;
    this.log.draw();
    const { lines } = this.log;
    let end = performance.now() + slice;
    for (let index = 0; expression && index < lines.length; index += 1) {
      if (lines[index].text.search(expression) >= 0) this.found.push(index);
      if (index % 1000 || performance.now() < end) continue;
      this.showCount();
      await new Promise((resolve) => {
        setTimeout(resolve);
      });
      if (this.log.search !== expression || this.log.lines !== lines) return;
      end = performance.now() + slice;
    }
    this.showCount();
  }

  showCount() {
    const count = this.found.length;
    const text = this.at >= 0 ? `${this.at + 1} of ${count.toLocaleString("en")}` : counted(count, "line");
    byId("log-found").textContent = this.box.value ? (count ? text : "No line matches") : "";
    for (const id of ["log-next", "log-previous"]) byId(id).hidden = !count;
  }

  step(direction) {
    const count = this.found.length;
    if (!count) return;
    this.at = this.at < 0 ? (direction > 0 ? 0 : count - 1) : (this.at + direction + count) % count;
    this.log.reveal(this.found[this.at]);
    this.showCount();
  }

  async copy() {
    try {
      await navigator.clipboard.writeText(this.log.text());
      announce(`${counted(this.log.visible.length, "line")} copied.`);
    } catch (error) {
      announceError(error);
    }
  }

  download() {
    const link = document.createElement("a");
    link.href = URL.createObjectURL(new Blob([this.log.text()], { type: "text/plain" }));
    link.download = this.fileName();
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 1000);
  }
}

function toggle(button) {
  const isOn = button.getAttribute("aria-pressed") !== "true";
  button.setAttribute("aria-pressed", isOn ? "true" : "false");
  return isOn;
}
