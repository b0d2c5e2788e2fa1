// Filtering and folding; without it everything is still there to read.
const log = document.getElementById("log");
log.querySelector(".tools").hidden = false;

const problems = document.getElementById("problems");
problems.addEventListener("click", () => {
  const only = log.classList.toggle("only");
  problems.setAttribute("aria-pressed", String(only));
});

for (const [id, open] of [
  ["expand", true],
  ["collapse", false],
])
  document.getElementById(id).addEventListener("click", () => {
    for (const group of log.querySelectorAll("details")) group.open = open;
  });
