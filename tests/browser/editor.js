// What the tests of the editor and the pictures of its documentation share: the program, a project, a browser.

const { spawn } = require("node:child_process");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const { chromium } = require("playwright-core");

const root = path.resolve(__dirname, "../..");

// In place of Visual Studio: says what a build says, as often as LINES and WARNINGS tell, and then takes as long as
// SECONDS_TO_SLEEP.
const tool = `#!/bin/bash
echo "------ Build started: Project: Greeter.Core, Configuration: Release Any CPU ------"
echo "$PWD/Greeter.Text/Greeting.cs(2,1): warning CS0168: The variable 'été' is declared but never used"
for ((i = 0; i < LINES; ++i)); do echo "Compiling 日本語 $i"; done
for ((i = 0; i < WARNINGS; ++i)); do echo "Many.cs($i): warning CS1: $i"; done
if [ "\${SECONDS_TO_SLEEP:-0}" -gt 0 ]; then echo $$ > "$(dirname "$0")/pid"; sleep "$SECONDS_TO_SLEEP" & wait; fi
echo "$PWD/Greeter.Core/DayTime.cs(3,1): error CS0103: The name 'x' does not exist in the current context"
echo "Greeter.Core - 1 error(s), 1 warning(s)"
exit 1
`;

// In place of MSTest: leaves the results of results.trx beside it, and fails with them; not before a file "wait" there has gone.
const testTool = `#!/bin/bash
while [ -e "$(dirname "$0")/wait" ]; do sleep 0.1; done
for argument; do case "$argument" in /resultsfile:*) cp "$(dirname "$0")/results.trx" "\${argument#*:}" ;; esac; done
! grep -q 'outcome="Failed"' "$(dirname "$0")/results.trx"
`;

class Editor {
  // A folder of its own with the examples and a tool; `environment` is added to that of the program.
  static async open(project, { text, environment = {}, binaries = process.env.KX_BIN } = {}) {
    const editor = new Editor();
    editor.folder = fs.mkdtempSync(path.join(os.tmpdir(), "kx-editor-"));
    fs.cpSync(path.join(root, "examples"), editor.folder, { recursive: true });
    fs.mkdirSync(path.join(editor.folder, "tool"));
    fs.writeFileSync(path.join(editor.folder, "tool/devenv.com"), tool, { mode: 0o755 });
    fs.writeFileSync(path.join(editor.folder, "tool/MSTest.exe"), testTool, { mode: 0o755 });
    editor.file = path.join(editor.folder, project);
    if (text) fs.writeFileSync(editor.file, text);
    editor.environment = {
      ...process.env,
      HOME: editor.folder,
      XDG_CONFIG_HOME: path.join(editor.folder, "config"),
      XDG_STATE_HOME: path.join(editor.folder, "state"),
      LINES: "3",
      ...environment,
    };
    delete editor.environment.KX_MSBUILD;
    editor.binaries = binaries;
    await editor.start();
    return editor;
  }

  async start() {
    const found = ["MSDevPath2010", "StandaloneMSTestDir"].flatMap((name) => [
      "--option",
      `VisualStudioDotNet.${name}=${path.join(this.folder, "tool")}`,
    ]);
    this.program = spawn(path.join(this.binaries, "kxhost"), ["edit", this.file, "--no-browser", ...found], {
      cwd: this.folder,
      env: this.environment,
    });
    this.ended = new Promise((resolve) => {
      this.program.on("exit", resolve);
    });
    let output = "";
    this.address = await new Promise((resolve, reject) => {
      this.program.stdout.on("data", (data) => {
        output += data;
        const found = /http:\S+/.exec(output);
        if (found) resolve(found[0]);
      });
      this.program.stderr.on("data", (data) => {
        output += data;
      });
      this.program.on("exit", () => reject(new Error(`kxhost ended: ${output}`)));
    });
  }

  read(name) {
    return fs.readFileSync(path.join(this.folder, name), "utf8");
  }

  async close() {
    if (this.program.exitCode === null) this.program.kill("SIGINT");
    await this.ended;
    fs.rmSync(this.folder, { recursive: true, force: true });
  }
}

function launch() {
  return chromium.launch({ executablePath: process.env.KX_CHROMIUM || "/usr/bin/chromium", args: ["--no-sandbox"] });
}

// The page of the editor, with all that went wrong in it.
async function openPage(browser, address, options = {}) {
  const context = await browser.newContext({ viewport: { width: 1200, height: 900 }, ...options });
  const page = await context.newPage();
  page.faults = [];
  page.on("pageerror", (error) => page.faults.push(error.message));
  page.on("console", (message) => message.type() === "error" && page.faults.push(message.text()));
  page.on("response", async (response) => {
    if (response.status() >= 400) page.faults.push(`${response.url()}: ${await response.text().catch(() => "")}`);
  });
  await page.goto(address);
  await page.waitForSelector("#project-name:not(:text-is('Project'))");
  return page;
}

// What axe calls serious. It is run as a debugger does, which the page's own rules for scripts do not bind.
async function seriousFaults(page) {
  const session = await page.context().newCDPSession(page);
  await session.send("Runtime.evaluate", { expression: fs.readFileSync(require.resolve("axe-core/axe.min.js"), "utf8") });
  const expression =
    "axe.run().then((r) => JSON.stringify(r.violations.map((v) => [v.id, v.impact, v.nodes.map((n) => n.html)])))";
  const found = await session.send("Runtime.evaluate", { expression, awaitPromise: true });
  return JSON.parse(found.result.value).filter(([, impact]) => impact === "serious" || impact === "critical");
}

// Everything that was asked of kxhost has been answered and shown.
async function settled(page) {
  await page.waitForSelector("main[aria-busy=false]");
}

module.exports = { Editor, launch, openPage, seriousFaults, settled };
