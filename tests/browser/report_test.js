// The report of a run in a real browser.

const assert = require("node:assert/strict");
const { execFileSync } = require("node:child_process");
const path = require("node:path");
const { test } = require("node:test");
const { Editor, launch, seriousFaults } = require("./editor.js");

const project = `<BuildProject Name="Nightly"><Actions><Action Type="DEVENV" Name="Build"><Solution>Greeter\\Greeter.sln</Solution>
  <SolutionConfiguration>Release|Any CPU</SolutionConfiguration><VStudioVersion Name="vs2010">4</VStudioVersion>
  <UseMSBuild>False</UseMSBuild></Action></Actions></BuildProject>`;

// Its address; the tool prints a warning, 3,000 lines and an error.
function writeReport(editor) {
  const report = path.join(editor.folder, "report.html");
  const options = ["--report", report, "--option", `VisualStudioDotNet.MSDevPath2010=${path.join(editor.folder, "tool")}`];
  assert.throws(() =>
    execFileSync(path.join(editor.binaries, "kxhost"), ["run", editor.file, ...options], {
      cwd: editor.folder,
      env: { ...editor.environment, LINES: "3000" },
      stdio: "pipe",
    }),
  );
  return `file://${report}`;
}

test("a report filters, groups, leads to its log and is read by anybody", async () => {
  const browser = await launch();
  const editor = await Editor.open("p.kxproj", { text: project });
  try {
    const address = writeReport(editor);
    const page = await browser.newPage({ viewport: { width: 1600, height: 900 } });
    const faults = [];
    page.on("pageerror", (error) => faults.push(error.message));
    page.on("console", (message) => message.type() === "error" && faults.push(message.text()));
    await page.goto(address);
    assert.match(await page.textContent("h1"), /^Failed: 1 error in Greeter\.Core, in DayTime\.cs$/);
    await page.click("[data-severity=warning]");
    await page.fill("#problem-find", "cs0168");
    await page.waitForURL(/#problems\?severity=warning&text=cs0168$/);
    assert.equal(await page.textContent("#problem-count"), "1 problem");
    await page.reload();
    assert.deepEqual(await page.locator(".f:not([hidden]) code").allTextContents(), ["CS0168"]);
    await page.selectOption("#problem-group", "rule");
    await page.reload(); // and it is still grouped
    await page.click("[data-severity='']");
    await page.fill("#problem-find", "nothing like it");
    await page.click("#clear");
    assert.deepEqual(await page.locator(".group > summary h3").allTextContents(), ["CS0103", "CS0168"]);
    const line = await page.getAttribute(".f.error a", "href");
    await page.locator(".f.error a").press("Enter");
    assert.match(await page.textContent(".target"), /error CS0103/);
    assert.equal(await page.getAttribute(".target", "data-n"), line.slice(2));
    assert.equal(await page.locator(".target").evaluate((e) => e.getBoundingClientRect().top < innerHeight), true);
    await page.fill("#log-find", "compiling 日本語 2999");
    await page.locator("#log-found", { hasText: "1 of 1" }).waitFor();
    await page.fill("#log-find", "compiling");
    await page.locator("#log-found", { hasText: "1 of 3,000" }).waitFor();
    const here = () =>
      page.evaluate(() =>
        [...CSS.highlights.get("found-here")].map((range) => range.startContainer.parentElement.textContent.trim()),
      );
    for (const [key, place, line] of [
      ["Enter", "2", "Compiling 日本語 1"],
      ["Shift+Enter", "1", "Compiling 日本語 0"],
      ["Shift+Enter", "3,000", "Compiling 日本語 2999"],
    ]) {
      await page.locator("#log-find").press(key);
      assert.equal(await page.textContent("#log-found"), `${place} of 3,000`);
      assert.deepEqual(await here(), [line]);
    }
    for (const [width, colorScheme] of [
      [1600, "light"],
      [400, "dark"],
    ]) {
      await page.setViewportSize({ width, height: 900 });
      await page.emulateMedia({ colorScheme });
      assert.deepEqual(await seriousFaults(page), [], `at ${width}`);
      assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), `fits ${width}`);
    }
    for (let run = 2; run <= 4; run += 1) writeReport(editor);
    await page.goto(address);
    const chart = page.locator(".chart").first();
    const own = await chart.locator("output").textContent();
    const dates = await page.locator("#runs tbody tr td:first-child, #runs tbody tr th:first-child").allTextContents();
    assert.equal(dates.length, 4);
    await chart.focus();
    for (const [key, row] of [
      ["ArrowLeft", 2],
      ["ArrowLeft", 1],
      ["ArrowLeft", 0],
      ["ArrowLeft", 0],
      ["ArrowRight", 1],
    ]) {
      await page.keyboard.press(key);
      assert.ok((await chart.locator("output").textContent()).startsWith(`${dates[row]}: `), `${key} to ${row}`);
    }
    await page.keyboard.press("Tab");
    assert.equal(await chart.locator("output").textContent(), own);
    assert.deepEqual(faults, []);
    const plain = await browser.newPage({ javaScriptEnabled: false });
    await plain.goto(address + line);
    assert.match(await plain.locator(":target").textContent(), /error CS0103/);
    assert.equal(await plain.locator(".tools").first().isVisible(), false);
  } finally {
    await editor.close();
    await browser.close();
  }
});
