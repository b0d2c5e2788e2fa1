// The pictures of the documentation: node make-pictures.js FOLDER (scripts/make-pictures calls it).

const { spawnSync } = require("node:child_process");
const path = require("node:path");
const { Editor, launch, openPage, settled } = require("../tests/browser/editor.js");

const folder = path.resolve(process.argv[2]);

// Folders of this machine say nothing to a reader.
const shorten = ([own, binaries]) => {
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  for (let node = walker.nextNode(); node; node = walker.nextNode())
    node.data = node.data.replaceAll(own, "/src").replaceAll(binaries, "/usr/bin");
};

async function picture(page, editor, name, scrollTo) {
  await settled(page);
  await page.evaluate((top) => window.scrollTo(0, top), scrollTo);
  await page.evaluate(shorten, [editor.folder, path.resolve(editor.binaries)]);
  await page.screenshot({ path: path.join(folder, name) });
}

// What ./demo leaves, once the runs before it are remembered: its test has failed again.
async function pictureReport(browser, editor) {
  const report = path.join(editor.folder, "report.html");
  const recorded = `VisualStudioDotNet.StandaloneMSTestDir=${path.join(editor.folder, "recorded")}`;
  for (let run = 0; run < 4; run += 1) {
    const options = ["run", "greeter-tests.kxproj", "--report", report, "--option", recorded];
    const { status, stdout } = spawnSync(path.join(editor.binaries, "kxhost"), options, {
      cwd: editor.folder,
      env: editor.environment,
      encoding: "utf8",
    });
    if (status !== 1) throw new Error(`The run ended with ${status}, although one test fails: ${stdout}`);
  }
  for (const colorScheme of ["light", "dark"]) {
    const page = await browser.newPage({ viewport: { width: 1200, height: 900 }, colorScheme });
    await page.goto(`file://${report}`);
    await page.evaluate(shorten, [editor.folder, path.resolve(editor.binaries)]);
    await page.screenshot({ path: path.join(folder, `report-${colorScheme}.png`) });
    await page.close();
  }
}

(async () => {
  const browser = await launch();
  const editor = await Editor.open("greeter-loop.kxproj");
  const page = await openPage(browser, editor.address, { viewport: { width: 1200, height: 1060 } });
  await page.locator("[role=treeitem]", { hasText: "Build" }).last().click();
  await settled(page);
  await page.locator(".offers tbody tr").nth(1).waitFor();
  await picture(page, editor, "editor-pages.png", 0);
  await page.click("#start");
  await page.locator("#progress", { hasText: /^Run 1: / }).waitFor({ timeout: 120000 });
  await page.locator("#log").focus();
  await page.keyboard.press("Home");
  await page.setViewportSize({ width: 1200, height: 1060 });
  await picture(page, editor, "editor-run.png", 0);
  await pictureReport(browser, editor);
  await browser.close();
  await editor.close();
})();
