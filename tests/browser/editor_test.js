// The editor as a person uses it, in a real browser.

const assert = require("node:assert/strict");
const fs = require("node:fs");
const { after, before, test } = require("node:test");
const { Editor, launch, openPage, seriousFaults, settled } = require("./editor.js");

let browser;
before(async () => {
  browser = await launch();
});
after(() => browser.close());

const devenv = (more = "", name = "Übersetzen") => `    <Action Type="DEVENV" Name="${name}">
      <Solution>Greeter\\Greeter.sln</Solution> <!-- ours -->
      <SolutionConfiguration>Release|Any CPU</SolutionConfiguration>
      <VStudioVersion Name="vs2010">4</VStudioVersion>
      <UseMSBuild>False</UseMSBuild>${more}
    </Action>\n`;
const project = (actions, head = "") => `<?xml version="1.0" encoding="utf-8"?>
<!-- kept as it is -->
<BuildProject Name="日本 été">${head}
  <Actions>
${actions}  </Actions>
</BuildProject>
`;

async function withEditor(actions, work, options = {}) {
  const editor = await Editor.open("p.kxproj", { text: project(actions), ...options });
  try {
    const page = await openPage(browser, editor.address);
    await work(page, editor);
    assert.deepEqual(page.faults, []);
    await page.context().close();
  } finally {
    await editor.close();
  }
}

async function startAgain(page, editor) {
  editor.program.kill("SIGINT");
  assert.equal(await editor.ended, 0);
  await page.context().close();
  page.faults.length = 0; // it has lost its server
  await editor.start();
  return openPage(browser, editor.address);
}

async function rename(page, name) {
  await page.getByLabel("Name of the action").fill(name);
  await page.keyboard.press("Tab");
  await page.waitForSelector("#dirty:text-is('not saved')");
}

function holds(text, ...parts) {
  for (const part of parts) assert.ok(text.includes(part), `${part} is missing in ${text}`);
}

// The message of an earlier save has gone when the key is pressed.
async function save(page) {
  await page.keyboard.press("Control+s");
  await page.locator("#message", { hasText: "The project is saved." }).waitFor();
}

// Longer than it takes to press the next key.
async function answerSlowly(page, { pattern = "**/api/*", milliseconds = 150, times } = {}) {
  const later = async (route) => {
    await new Promise((resolve) => {
      setTimeout(resolve, milliseconds);
    });
    await route.continue();
  };
  await page.route(pattern, later, { times });
}

async function hasValue(page, field, value) {
  const control = page.locator(`[data-field="${field}"]`);
  const end = Date.now() + 30000;
  while ((await control.inputValue()) !== value) {
    assert.ok(Date.now() < end, `${field} holds "${await control.inputValue()}", not "${value}"`);
    await page.waitForTimeout(50);
  }
}

// Of a test that wants them; the browser tells of them a while after they are shown.
function forgetRefusals(page) {
  page.faults = page.faults.filter((fault) => !/ 422 |"error":/.test(fault));
}

// A run in which the tool does what `script` says, too.
async function runSaying(page, editor, script) {
  const text = editor.read("tool/devenv.com").replace("for ((", () => `${script}for ((`);
  fs.writeFileSync(`${editor.folder}/tool/devenv.com`, text);
  await page.click("#start");
  await page.locator("#progress", { hasText: /^Run 1: / }).waitFor();
}

async function turnTo(page, name) {
  await page.locator("#pages [role=tab]", { hasText: name }).click();
}

async function command(page, name) {
  await page.keyboard.press("Control+k");
  await page.keyboard.type(`>${name}`);
  await page.locator("dialog [role=option][aria-selected=true]", { hasText: name }).waitFor(); // what Enter takes
  await page.keyboard.press("Enter");
}

test("editing by the keyboard and the mouse changes what it should and nothing else", async () => {
  await withEditor(`${devenv()}    <Action Type="MSTEST"/>\n`, async (page, editor) => {
    await page.getByLabel("Name of the action").fill("Bauen 日本");
    await turnTo(page, "Build");
    await page.getByLabel("Extra Command Line Parameters").fill('/nologo "é"');
    await page.getByLabel("Override Compiler").check();
    await page.locator("[data-field=CompilerConstants]:enabled").waitFor();
    await turnTo(page, "Project Detection");
    await page.getByLabel("Use WebDAV").check();
    await page.getByLabel("Username").fill("müller");
    await page.locator("[data-field=edtPassword]").fill("streng-geheim");
    await save(page);
    holds(
      editor.read("p.kxproj"),
      "<!-- kept as it is -->",
      "</Solution> <!-- ours -->",
      'Name="Bauen 日本"',
      '/nologo "é"',
      "<OverrideCompiler>True",
      '<ProjLocationDetectMethod Name="useWebDAV">2',
      "müller",
      `    <Action Type="MSTEST"/>\n`,
    );
    assert.doesNotMatch(editor.read("p.kxproj") + (await page.content()), /geheim/);

    await page.locator("#tree [aria-selected=true]").focus();
    await page.keyboard.press("ArrowDown");
    await settled(page);
    await page.getByLabel("Test Metadata File:", { exact: true }).first().check();
    await page.locator("[data-field=edtTestMetadata]").fill("tests.vsmdi");
    await turnTo(page, "Publish Results");
    await page.getByLabel("Publish results using the following settings:").check();
    await page.getByLabel("Team Server:").fill("http://tfs");
    await save(page);
    holds(
      editor.read("p.kxproj"),
      "<MetadataFile>tests.vsmdi<",
      "<TeamServer>http://tfs<",
      '<PublishMode Name="pbSpecify">2<',
      "<UseMetadataFile>True<",
    );
  });
});

// What every page of every action shows, by action, page and field.
async function allValues(page, edit = async () => {}) {
  const values = {};
  for (const item of await page.locator("[role=treeitem]").all()) {
    await item.click();
    await settled(page);
    const action = await page.locator("#action-title").textContent();
    const tabs = await page.locator("#pages [role=tab]").evaluateAll((all) => all.map((one) => one.firstChild.data));
    for (const [index, tab] of tabs.entries()) {
      // two of them may have one name
      await page.locator("#pages [role=tab]").nth(index).click();
      await edit(tab);
      values[`${action}: ${index} ${tab}`] = await page.evaluate(() =>
        Object.fromEntries(
          [...document.querySelectorAll("[data-field]")].map((field) => [
            field.dataset.field,
            field.type === "password"
              ? field.placeholder
              : ["checkbox", "radio"].includes(field.type)
                ? field.checked
                : field.value,
          ]),
        ),
      );
    }
  }
  return values;
}

test("what every field of every page was given is there again when the file is opened anew", async () => {
  const types = ["DEVENV", "MSTEST", "VERSIONINFO", "SOLUTIONITERATOR"];
  await withEditor(types.map((type) => `    <Action Type="${type}"/>\n`).join(""), async (page, editor) => {
    let count = 0;
    await allValues(page, async (tab) => {
      if (tab === "All Properties") return;
      const names = (selector) => page.locator(selector).evaluateAll((fields) => fields.map((field) => field.dataset.field));
      for (const name of await names("[data-field][type=checkbox]")) {
        const box = page.locator(`[data-field="${name}"]`);
        if (await box.isEnabled()) await box.check();
      }
      await settled(page); // now the rules have enabled what they can
      for (const name of await names("[data-field]:enabled:not([type=radio]):not([type=checkbox])")) {
        const field = page.locator(`[data-field="${name}"]`);
        const [isChoice, isNumber, last] = await field.evaluate((element) => [
          element.type === "select-one",
          element.inputMode === "numeric",
          element.length - 1,
        ]);
        if (isChoice) await field.selectOption({ index: last });
        else await field.fill(isNumber ? "7" : `${name} é日本 & <${count}>`);
        count += 1;
      }
    });
    assert.ok(count > 50, `${count} fields`);
    await page.locator("[role=treeitem]").first().click();
    const given = await allValues(page);
    await save(page);
    assert.ok(JSON.stringify(given).includes("é日本 & <"));
    const again = await startAgain(page, editor);
    assert.deepEqual(await allValues(again), given);
    await command(again, "End the editor");
    await again.getByText("The editor has ended").waitFor();
    assert.equal(await editor.ended, 0);
  });
});

test("actions are added, nested, moved and removed; undo brings everything back", async () => {
  await withEditor(devenv(), async (page, editor) => {
    await page.click("#add");
    await page.getByLabel("Action", { exact: true }).selectOption("SOLUTIONITERATOR");
    await page.keyboard.press("Tab");
    await page.keyboard.press("Tab");
    await answerSlowly(page);
    for (const key of ["Enter", "Alt+ArrowUp", "ArrowDown", "Alt+ArrowRight", "Control+s"]) await page.keyboard.press(key);
    await page.waitForSelector("[aria-level='2'][aria-selected=true]");
    await page.waitForSelector("#dirty:text-is('saved')");
    assert.match(
      editor.read("p.kxproj"),
      /SOLUTIONITERATOR[^]*<Actions>\s*<Action Type="DEVENV" Name="Übersetzen">\s*<Solution>Greeter\\Greeter.sln<\/Solution> <!-- ours -->/,
    );
    await page.keyboard.press("Delete");
    await page.waitForSelector("[aria-level='2']", { state: "detached" });
    for (let steps = 0; steps < 4; steps += 1) await page.click("#undo");
    await page.waitForSelector("#undo:disabled");
    await save(page);
    assert.equal(editor.read("p.kxproj"), project(devenv()));
  });
});

test("groups stand in the tree around their actions, are renamed, entered and left", async () => {
  const group = `    <Group Name="Tools"> <!-- both -->\n${devenv("", "Erste")}    </Group>\n`;
  await withEditor(`${group}    <Action Type="MSTEST" Name="Tests" Needs="Tools"/>\n`, async (page, editor) => {
    const row = (text) => page.locator("[role=treeitem]", { hasText: text });
    await row("Tools").click();
    await page.getByLabel("Name of the group").fill("Werkzeuge é");
    await page.keyboard.press("Enter");
    await row("Werkzeuge é").waitFor();
    assert.deepEqual(await seriousFaults(page), []);
    assert.ok(await page.locator("#copy").isDisabled(), "two groups of one name could not be told apart");
    await row("Tests").click();
    await hasValue(page, "MemoAssemblies", "");
    await page.keyboard.press("Alt+ArrowRight");
    await page.locator("#tree [aria-level='2'][aria-selected=true]", { hasText: "Tests" }).waitFor();
    await answerSlowly(page, { pattern: "**/api/validate", milliseconds: 1500 });
    const isChecked = page.waitForResponse(/api.validate/);
    await page.getByLabel("Name of the action").fill("Prüfen");
    await save(page);
    holds(
      editor.read("p.kxproj"),
      `<Group Name="Werkzeuge é"> <!-- both -->\n    <Action Type="DEVENV"`,
      `<Action Type="MSTEST" Name="Prüfen" Needs="Werkzeuge é"/>\n    </Group>`,
    );
    await row("Prüfen").hover();
    await page.mouse.down();
    for (const y of [6, 2]) await row("Werkzeuge é").hover({ position: { x: 40, y } });
    await isChecked; // its marks do not take the row away that is being dragged
    await page.waitForTimeout(200);
    await page.mouse.up();
    await page.locator("[aria-level='1']", { hasText: "Prüfen" }).waitFor();
    await command(page, "Put the action into a new group");
    await page.locator("dialog").getByLabel("Name of the group").fill("Zuerst");
    await page.keyboard.press("Enter");
    await row("Zuerst").waitFor();
    await page.locator("#dissolve").click();
    await row("Zuerst").waitFor({ state: "detached" });
    for (let steps = 0; steps < 6; steps += 1) await page.click("#undo");
    await page.waitForSelector("#undo:disabled");
    await row("Tools").press("ArrowLeft");
    await row("Erste").waitFor({ state: "detached" });
  });
});

test("a variable is renamed wherever it is used, in one step", async () => {
  const text = project(
    devenv("\n      <ExtraCmdLineParams>/x %root% <!-- %Root% --> %%Root%%</ExtraCmdLineParams>"),
    `<Variables><Variable Name="Root">1</Variable><Variable Name="Taken">$(Root)</Variable></Variables>`,
  );
  await withEditor(
    "",
    async (page, editor) => {
      await page.click("#show-variables");
      const rename = async (name) => {
        await page.getByRole("button", { name: "Rename Root" }).click();
        await page.getByLabel("New name").fill(name);
        await page.keyboard.press("Enter");
      };
      await rename("taken");
      await page.locator("#message.error", { hasText: "already" }).waitFor();
      await rename("Base");
      await page.locator("#message", { hasText: "Root is Base now, and so 2 references" }).waitFor();
      await save(page);
      assert.equal(
        editor.read("p.kxproj"),
        text.replace('"Root"', '"Base"').replace("%root%", "%Base%").replace("$(Root)", "$(Base)"),
      );
      await page.click("#undo");
      await page.waitForSelector("#undo:disabled");
      forgetRefusals(page);
    },
    { text },
  );
});

test("what is typed while the page is drawn anew stays", async () => {
  const variables = `<Variables><Variable Name="A">1</Variable><Variable Name="B">2</Variable></Variables>`;
  await withEditor(
    "",
    async (page, editor) => {
      await turnTo(page, "Build");
      await answerSlowly(page);
      await page.click("#move-down");
      await page.getByLabel("Extra Command Line Parameters").fill("/moved");
      await page.waitForSelector("#action-1[aria-selected=true]");
      await page.click("#show-variables");
      await page.getByLabel("A", { exact: true }).fill("eins");
      await page.keyboard.press("Tab"); // which sends it
      await page.keyboard.press("Tab");
      await page.getByLabel("B", { exact: true }).fill("zw");
      await page.waitForSelector("#dirty:text-is('not saved')");
      await settled(page);
      await page.keyboard.type("ei");
      await save(page);
      assert.match(editor.read("p.kxproj"), />eins<[^]*>zwei<[^]*Zweite[^]*Übersetzen[^]*\/moved/);

      // The pages as they were before a box was ticked arrive behind it.
      await page.click("#tree [aria-selected=true]");
      const box = page.getByLabel("Override Compiler");
      await box.waitFor();
      await page.getByLabel("Name of the action").fill("Anders");
      const renamed = page.waitForResponse(/api.attribute/);
      const shown = page.waitForResponse(/api.action$/);
      await page.keyboard.press("Tab");
      await renamed;
      await box.check();
      await shown;
      for (let i = 0; i < 5; i += 1) assert.ok(await box.isChecked(), "it stays ticked");
      await settled(page);
      assert.ok(await box.isChecked());
      await page.locator(".changed", { has: box }).waitFor();
      await page.keyboard.press("Control+Delete"); // back to the default
      await page.locator("[data-field=OverrideCompiler]:not(:checked)").waitFor();

      // What is typed before the field is there that Enter leads to.
      await page.locator("#tree [aria-selected=true]").focus();
      for (const key of ["ArrowUp", "Enter", ..."neu.sln"]) await page.keyboard.press(key);
      await hasValue(page, "Solution", "neu.sln");
    },
    { text: project(devenv() + devenv("", "Zweite"), variables) },
  );
});

test("the solution's projects are offered, files are chosen, and a change by somebody else is noticed", async () => {
  await withEditor(devenv(`\n      <BuildType Name="btSelectedProjects">1</BuildType>`), async (page, editor) => {
    await turnTo(page, "Solution");
    const offered = page.locator("details:has-text('Choose from the solution')").first();
    await offered.locator("tr", { hasText: /Greeter.Text\s*Release.Any CPU/ }).waitFor();
    await offered.getByLabel("Greeter.Text").check();
    await settled(page);
    await page.locator("button[aria-label^='Browse']").first().click();
    const dialog = page.locator("dialog");
    await dialog.getByLabel("Folder Greeter.App").click();
    await dialog.getByLabel("Files shown").selectOption({ label: "All Files (*.*)" });
    await dialog.getByRole("button", { name: "Greeter.App.csproj" }).waitFor();
    await dialog.getByLabel("File", { exact: true }).fill("Greeter");
    await dialog.getByRole("button", { name: "Choose", exact: true }).click(); // a folder leads on
    await dialog.getByRole("button", { name: "Greeter.WithNative.sln" }).click();
    await dialog.getByRole("button", { name: "Choose", exact: true }).click();
    await hasValue(page, "Solution", "Greeter/Greeter.WithNative.sln");
    await save(page);
    assert.match(
      editor.read("p.kxproj"),
      /<Solution>Greeter\/Greeter.WithNative.sln<[^]*<SelectedProjects>\s*<Line>Greeter.Text<\/Line>\s*<\/SelectedProjects>/,
    );
    await offered.getByLabel("Greeter.Text").uncheck();
    await hasValue(page, "SelectedProjects", "");
    await page.getByLabel("Build Type").selectOption("All Projects");
    await page.locator("[data-field=SelectedProjects]:disabled").waitFor();
    assert.ok(await offered.getByLabel("Greeter.Text").isDisabled(), "what is ticked would not be used");
    await page.getByText('Needs "Build Type": Selected Projects.').waitFor();

    fs.appendFileSync(editor.file, "<!-- by hand -->\n");
    await page.getByLabel("Name of the action").fill("x");
    await page.keyboard.press("Control+s");
    await page.getByRole("button", { name: "Load the file" }).click();
    await settled(page);
    assert.equal(await page.getByLabel("Name of the action").inputValue(), "Übersetzen");
    await page.click("#undo");
    await settled(page);
    assert.equal(await page.getByLabel("Name of the action").inputValue(), "x");
    assert.match(editor.read("p.kxproj"), /by hand/);
  });
});

test("the projects of a solution stand in its folders, which are chosen as a whole", async () => {
  await withEditor(devenv(`\n      <BuildType Name="btSelectedProjects">1</BuildType>`), async (page, editor) => {
    const file = `${editor.folder}/Greeter/Greeter.sln`;
    const id = (name) => new RegExp(`"${name}[^{]*({[^}]*})`).exec(fs.readFileSync(file, "utf8"))[1];
    const nested = ["Greeter.Core", "Greeter.Text"].map((name) => `${id(name)} = {F}\r\n`).join("");
    const folder = `Project("{2150E333-8FDC-42A3-9474-1A3956D46DE8}") = "Bücher", "Bücher", "{F}"\r\nEndProject\r\n`;
    const section = `GlobalSection(NestedProjects) = preSolution\r\n${nested}EndGlobalSection\r\n`;
    fs.writeFileSync(
      file,
      fs.readFileSync(file, "utf8").replace(/^Global\r?\n/m, (global) => folder + global + section),
    );
    await turnTo(page, "Solution");
    const offered = page.locator("details:has-text('Choose from the solution')").first();
    const box = (name) => offered.getByLabel(name, { exact: true });
    await box("Bücher").waitFor();
    assert.deepEqual(await seriousFaults(page), []);
    const isMixed = () => box("Bücher").evaluate((element) => element.indeterminate);
    await box("Greeter.Text").check();
    assert.ok(await isMixed(), "one of its two projects is chosen");
    await box("Bücher").check();
    await hasValue(page, "SelectedProjects", "Greeter.Text\nGreeter.Core");
    assert.ok(await box("Greeter.Core").isChecked());
    await box("Greeter.App").check();
    await box("Bücher").uncheck();
    await hasValue(page, "SelectedProjects", "Greeter.App");
    assert.ok(!(await isMixed()));
  });
});

test("a dry run shows each line of a difference in a row, and a page that is loaded anew knows of the run", async () => {
  const stamp = { UpdateAssemblyInfo: "True", UpdateAssemblyTitle: "True", AssemblyTitle: "Neu" };
  await withEditor(
    devenv(
      Object.entries(stamp)
        .map(([name, value]) => `<${name}>${value}</${name}>`)
        .join(""),
    ),
    async (page) => {
      await answerSlowly(page, { pattern: "**/api/events?*", milliseconds: 1500, times: 1 }); // longer than the clock's beat
      await page.click("#dry-run");
      const ended = page.locator("#progress", { hasText: /^Dry run 1: / });
      await ended.waitFor();
      assert.equal(await page.textContent("#run-title"), "Dry run: nothing stands in its way");
      const head = await ended.textContent();
      await page.locator("#changes .added b", { hasText: "Neu" }).first().waitFor();
      await page.getByRole("button", { name: "Side by side" }).click();
      const sides = await page
        .locator("#changes .sides")
        .first()
        .locator("> div:has(.removed, .added, .nothing)")
        .evaluateAll((all) => all.map((row) => [...row.querySelectorAll("code")].map((code) => code.textContent)));
      assert.ok(sides.length > 0);
      assert.deepEqual(await seriousFaults(page), []);
      for (const texts of sides) assert.match(texts.join("|"), /^(.*AssemblyTitle\(.*\|)?.*AssemblyTitle\("Neu"\).*$/);
      await page.setViewportSize({ width: 700, height: 800 });
      await page.locator("#changes .sides").first().waitFor({ state: "detached" });
      await page.setViewportSize({ width: 1280, height: 720 });
      await page.click("#tab-log");
      await page.locator("#log").focus();
      await page.keyboard.press("Home");
      const added = page.locator("#log [role=option]", { hasText: '+[assembly: AssemblyTitle("Neu")]' }).first();
      await added.waitFor();
      const rows = await page.locator("#log [role=option]").evaluateAll((all) =>
        all.map((row) => {
          const { top, bottom } = row.querySelector(".text").getBoundingClientRect();
          return [top, bottom, row.textContent];
        }),
      );
      rows.forEach(([top, , text], i) => {
        assert.ok(i === 0 || top >= rows[i - 1][1] - 1, `"${text}" begins below the line before it`);
        assert.ok(!text.includes("\n"), text);
      });
      await added.click();
      await page.locator("#detail pre", { hasText: /@@[^]*Neu/ }).waitFor();
      await page.reload();
      await page.locator("#progress", { hasText: head }).waitFor({ state: "attached" });
      await page.locator("#results td").first().waitFor({ state: "attached" });
      assert.ok(await page.locator("#view-run").isVisible(), "the address says so");
    },
  );
});

test("what was not saved is offered again, a new file is not called saved, and messages go with their cause", async () => {
  await withEditor(devenv(), async (page, editor) => {
    await rename(page, "behalten");
    const again = await startAgain(page, editor);
    await again.getByRole("button", { name: "Take them over" }).click();
    await again.locator("#tree", { hasText: "behalten" }).waitFor();
    await again.waitForSelector("#unsaved:not(:has(button))", { state: "attached" });
    await save(again);
    assert.ok(!fs.existsSync(`${editor.folder}/p.unsaved.kxproj`));
    await again.keyboard.press("Alt+ArrowUp");
    await again.locator("#tree [aria-selected=true]").focus();
    await again.keyboard.press("Alt+ArrowUp");
    await again.locator("#message", { hasText: "cannot go further" }).waitFor();
    await again.click("#show-variables");
    await again.locator("#message:empty").waitFor({ state: "attached" });
    const silence = again.locator("#message.error", { hasText: "does not answer" });
    await again.context().setOffline(true);
    await again.click("#undo");
    await silence.waitFor();
    await again.click("#show-project");
    assert.ok(await silence.isVisible(), "only an answer takes that back");
    await again.context().setOffline(false);
    await again.click("#undo");
    await again.locator("#message:empty").waitFor({ state: "attached" });
    editor.file = `${editor.folder}/new.kxproj`;
    const fresh = await startAgain(again, editor);
    await fresh.waitForSelector("#dirty:text-is('not saved yet')");
    await fresh.getByLabel("Solution file", { exact: true }).fill("Greeter/Greeter.sln");
    await fresh.keyboard.press("Enter");
    await hasValue(fresh, "Solution", "Greeter/Greeter.sln");
    await fresh.click("#add");
    await fresh.getByLabel("Action", { exact: true }).selectOption("SOLUTIONITERATOR");
    await fresh.getByRole("button", { name: "Add", exact: true }).click();
    await fresh.getByRole("button", { name: "New:" }).click();
    const name = fresh.locator("dialog").getByLabel("Name");
    await name.fill("a b");
    await name.press("Enter");
    await fresh.locator("#message.error", { hasText: "cannot be the name of a variable" }).waitFor();
    await fresh.getByRole("button", { name: "New:" }).click();
    await name.fill("Projekt");
    await name.press("Enter");
    await hasValue(fresh, "cmbVariable", "Projekt");
    await save(fresh);
    assert.match(
      editor.read("new.kxproj"),
      /<Action Type="SOLUTIONITERATOR">\s*<LoopVariable>Projekt<\/LoopVariable>\s*<\/Action>/,
    );
  });
});

test("a check says what it found and leads to it", async () => {
  await withEditor(`${devenv()}    <Action Type="MSTEST" Name="Tests"/>\n`, async (page) => {
    await command(page, "Check");
    await page.locator("#message", { hasText: /problems? found: Tests\./ }).waitFor();
    await page.locator("[role=treeitem]", { hasText: "Tests" }).click();
    await turnTo(page, "Publish Results");
    await page.getByRole("button", { name: "Assembly Filename: " }).click();
    await page.waitForSelector("[data-field=MemoAssemblies]:focus");
    await page.locator("[role=treeitem]", { hasText: "Tests" }).click();
    await page.keyboard.press("Delete");
    await command(page, "Check");
    await page.locator("#message", { hasText: "No problems found." }).waitFor();
    // Asked for before the page, which is loaded anew, has begun the check of its own.
    await save(page);
    let goOn;
    const isAsked = new Promise((resolve) => {
      goOn = resolve;
    });
    await page.route("**/api/action", async (route) => {
      await isAsked;
      await route.continue();
    });
    await page.reload();
    await page.waitForSelector("#project-name:not(:text-is('Project'))");
    await command(page, "Check");
    goOn();
    await page.locator("#message", { hasText: "No problems found." }).waitFor();
  });
});

const result = (
  [name, outcome],
  index,
) => `<UnitTestResult testName="${name}" outcome="${outcome}" duration="00:00:0${index}.5000000"><Output>
<ErrorInfo><Message>Expected:&lt;6.72&gt;. Actual:&lt;6.27&gt;. été</Message><StackTrace>at Sum.Adds()</StackTrace></ErrorInfo>
</Output></UnitTestResult>`;
const results = (outcomes) => `<TestRun xmlns="http://microsoft.com/schemas/VisualStudio/TeamTest/2006">
<Results>${Object.entries(outcomes).map(result).join("")}</Results></TestRun>`;

test("tests stand with the failed ones first, and with what earlier runs say of them", async () => {
  const action = `    <Action Type="MSTEST" Name="Tests"><AssemblyFileName>a.dll</AssemblyFileName>
      <UseStandaloneMSTest>True</UseStandaloneMSTest></Action>\n`;
  await withEditor(action, async (page, editor) => {
    const run = async (number, outcomes, title) => {
      fs.writeFileSync(`${editor.folder}/tool/results.trx`, results(outcomes));
      await page.click("#start");
      await page.locator("#progress", { hasText: new RegExp(`^Run ${number}: `) }).waitFor();
      assert.match(await page.textContent("#run-title"), title);
      await page.click("#show-tests");
    };
    const kind = (name) => page.locator("#test-kinds").getByRole("button", { name }).click();
    const rows = page.locator("#view-tests .list .entry");
    const detail = page.locator("#view-tests .detail");
    await run(1, { Adds: "Failed", Waits: "Passed", Divides: "Passed" }, /^1 of 3 tests failed$/);
    await page.locator("#show-tests .count", { hasText: "1 failed" }).waitFor();
    assert.deepEqual(await page.locator("#test-kinds button").allTextContents(), ["Failed 1", "Flaky 0", "Slowest", "All 3"]);
    assert.equal(await rows.count(), 1);
    assert.deepEqual(await detail.locator("dd").allTextContents(), ["6.72", "6.27"]);
    await detail.locator(".said", { hasText: "été" }).waitFor();
    await detail.locator(".stack", { hasText: /^at Sum\.Adds\(\)$/ }).waitFor();
    await kind("Slowest");
    const names = await page.locator("#view-tests .list .what").allTextContents();
    assert.deepEqual(
      names.map((name) => /^[A-Z][a-z]+/.exec(name)[0]),
      ["Divides", "Waits", "Adds"],
    );
    await kind("All");
    await page.getByLabel("Search tests").fill("wait");
    await page.locator("#view-tests .list h3", { hasText: "1 of 3" }).waitFor();
    await detail.locator(".sub", { hasText: /, passed after 1\.5 s$/ }).waitFor();
    await page.getByLabel("Search tests").fill("nobody");
    await page.locator("#view-tests .list", { hasText: "No test matches." }).waitFor();
    await page.getByLabel("Search tests").fill("");

    await run(2, { Adds: "Passed", Divides: "Passed" }, /^Succeeded in \S+ m?s$/);
    await page.locator("#show-tests .count").waitFor({ state: "detached" });
    await rows.nth(0).click();
    await detail.locator(".note", { hasText: "Failed in 1 of 2 runs, last in run 1." }).waitFor();
    await rows.nth(1).click();
    await detail.locator(".note", { hasText: /^Passed 2 times\. Usually \S+ m?s\.$/ }).waitFor();
    await kind("Failed");
    await page.locator("#view-tests .list", { hasText: "All 2 tests passed or did not run." }).waitFor();
  });
});

test("a long log stays light, problems lead to their places, runs are compared", async () => {
  await withEditor(
    devenv(),
    async (page) => {
      await page.click("#start");
      await page.locator("#progress", { hasText: /^Run 1: failed/ }).waitFor({ timeout: 120000 });
      assert.match(await page.textContent("#run-title"), /^Übersetzen, Release\|Any CPU failed: The name /);
      const log = page.locator("#log");
      assert.ok((await log.evaluate((element) => element.scrollHeight)) > 200000 * 20);
      assert.ok((await page.locator("#log [role=option]").count()) < 100);
      await log.evaluate((element) => element.scrollBy(0, -900));
      for (const top of [9e9, -900]) {
        await log.evaluate((element, by) => element.scrollBy(0, by), top);
        await page.waitForSelector(`#log-follow[aria-pressed=${top > 0}]`);
      }
      await page.getByLabel("Search the log").fill("compiling 日本語 199999");
      await page.locator("#log-found", { hasText: "1 line" }).waitFor();
      await page.keyboard.press("Enter");
      await page.locator("#log [aria-selected=true] mark").waitFor();
      await page.keyboard.press("F8");
      await page.locator("#view-problems .source .hit.error").waitFor(); // more warnings than are listed come before it
      await page.locator("#view-problems .list .note", { hasText: "102 more problems: search for them." }).waitFor();
      await page.getByRole("button", { name: "Show in the log" }).click();
      await page.locator("#log [aria-selected=true]", { hasText: "CS0" }).waitFor();
      await page.selectOption("#filter", "3");
      await page.locator("#log .error", { hasText: "CS0103" }).click();
      await page.locator("#detail button").click();
      await page.locator("dialog .source .hit").waitFor();
      await page.keyboard.press("Escape");
      await page.click("#dry-run");
      await page.locator("#progress", { hasText: /^Dry run 2/ }).waitFor();
      await page.click("#tab-results");
      await page.getByLabel("Compare with").selectOption("1");
      await page.locator("#results", { hasText: "failed before" }).waitFor();
      await page.click("#show-history");
      await page.locator("#history-runs [data-run='1']:only-child", { hasText: "today" }).waitFor();
    },
    { environment: { LINES: "200000", WARNINGS: "1100" } },
  );
});

test("the end of a log is seen that is higher than a browser lets anything be", async () => {
  await withEditor(devenv(), async (page) => {
    const seen = await page.evaluate(async () => {
      const { Log } = await import(new URL("log.js", document.querySelector("script[src]").src));
      const element = document.createElement("div");
      document.getElementById("log").id = "other"; // its styles are for this one
      element.id = "log";
      element.style.cssText = "position: fixed; inset: 0; overflow: auto";
      document.body.append(element);
      const log = new Log(element, { open() {}, select() {} });
      for (let i = 0; i < 2000000; i += 1) log.add({ event: "message", text: `row ${i}`, depth: 0 }, i);
      const shown = () => {
        const { top, bottom } = element.getBoundingClientRect();
        const rows = [...element.querySelectorAll("[role=option]")].filter((row) => {
          const place = row.getBoundingClientRect();
          return place.top >= top - 1 && place.bottom <= bottom + 1;
        });
        return [rows[0], rows.at(-1)].map((row) => row.querySelector(".text").textContent);
      };
      log.toEnd();
      log.draw(); // as the scrolling does
      const [, last] = shown();
      log.goTo(1234567, false);
      const around = shown().map((text) => Number(text.slice(4)));
      element.scrollTop = 0;
      log.draw();
      return [shown()[0], last, around[0] <= 1234567 && around[1] >= 1234567];
    });
    assert.deepEqual(seen, ["row 0", "row 1999999", true]);
  });
});

test("the timeline of a run stands beside its log, and problems open in the user's own editor", async () => {
  const goesOn = (name) => devenv("", name).replace("<Action ", '<Action ContinueOnError="true" ');
  await withEditor(goesOn("Erste &lt;b>") + goesOn("Zweite") + goesOn("Dritte"), async (page) => {
    await page.click("#show-options");
    await page.locator("#options-pages [role=tab]", { hasText: "kxhost" }).click();
    await page.getByLabel("OpenFile").fill("javascript:{file}");
    await page.keyboard.press("Tab");
    await page.locator("#message.error", { hasText: "looks like" }).waitFor();
    await page.getByLabel("OpenFile").fill("my-editor://open/{file}?at={line}");
    await page.keyboard.press("Tab");
    await page.locator("#message", { hasText: "The options are saved." }).waitFor();
    await page.click("#start");
    await page.locator("#progress", { hasText: /^Run 1: / }).waitFor({ timeout: 120000 });
    await page.click("#tab-timeline");
    await page.locator("#panel-timeline .bar").nth(2).waitFor();
    assert.match(await page.locator("#panel-timeline title").first().textContent(), /^Erste <b>: .+ failed/);
    await page.keyboard.press("F8");
    const link = page.getByRole("link", { name: "Open in your editor" });
    assert.match(
      await link.getAttribute("href"),
      /^my-editor:\/\/open\/[^?]*\/Greeter\/\S+(DayTime\.cs\?at=3|Greeting\.cs\?at=2)$/,
    );
    forgetRefusals(page);
  });
});

test("a stop in the middle leaves no process, and the program ends without losing what is not saved", async () => {
  await withEditor(
    devenv(),
    async (page, editor) => {
      await page.click("#start");
      await page.locator("#log", { hasText: "Compiling" }).waitFor();
      await page.locator("#run-title", { hasText: /^Running: Übersetzen$/ }).waitFor();
      assert.equal(await page.locator("#save").isDisabled(), true);
      const pidFile = `${editor.folder}/tool/pid`;
      while (!fs.existsSync(pidFile) || !editor.read("tool/pid").endsWith("\n")) await page.waitForTimeout(50);
      const pid = Number(editor.read("tool/pid"));
      await page.click("#stop");
      await page.locator("#progress", { hasText: "stopped" }).waitFor();
      assert.match(await page.textContent("#run-title"), /^Stopped by you after \S+ m?s$/);
      assert.throws(() => process.kill(pid, 0));
      await page.click("#show-project");
      await rename(page, "nicht gesichert");
      await startAgain(page, editor);
      assert.match(editor.read("p.unsaved.kxproj"), /nicht gesichert/);
    },
    { environment: { SECONDS_TO_SLEEP: "600" } },
  );
});

test("300 actions, narrow and wide, light and dark: nothing that axe calls serious", async () => {
  const actions = Array.from({ length: 300 }, (_, i) => devenv("", `Aktion ${i}`)).join("");
  const editor = await Editor.open("p.kxproj", { text: project(actions) });
  try {
    let address = editor.address;
    const context = await browser.newContext({ viewport: { width: 1600, height: 900 } });
    const page = await context.newPage();
    for (const [width, colorScheme] of [
      [1600, "light"],
      [400, "dark"],
    ]) {
      await page.setViewportSize({ width, height: 900 });
      await page.emulateMedia({ colorScheme });
      await page.goto(address);
      address = page.url().replace(/\?.*/, "");
      if (width === 400) {
        await page.click("#tree-button");
        await page.keyboard.press("Escape");
        await page.locator("#tree").waitFor({ state: "hidden" });
        await page.click("#tree-button");
      }
      await page.waitForSelector("[role=treeitem] >> nth=299");
      await page.locator("#tree [aria-selected=true]").focus();
      await page.keyboard.press("End");
      await page.locator("#action-title", { hasText: "Aktion 299" }).waitFor();
      for (const view of ["project", "options", "run", "problems", "tests", "history"]) {
        await page.click(`#show-${view}`);
        await settled(page);
        assert.deepEqual(await seriousFaults(page), [], `${view} at ${width}`);
        assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= window.innerWidth), `${view} fits ${width}`);
      }
    }
  } finally {
    await editor.close();
  }
});

test("variables and property sets are added, changed and removed, and what is not saved is asked about at the end", async () => {
  await withEditor(devenv(), async (page, editor) => {
    const dialog = page.locator("dialog");
    const press = (name) => page.getByRole("button", { name, exact: true }).click();
    const add = async (what, name, value) => {
      await press(what);
      await dialog.getByLabel("Name").fill(name);
      if (value) await dialog.getByLabel("Value").fill(value);
      else await dialog.getByLabel("Kind").selectOption("Win32");
      await page.keyboard.press("Enter");
      await page.locator("#project", { hasText: name }).waitFor();
    };
    await page.click("#show-variables");
    await add("Add a variable…", "Root", "eins");
    await add("Add a variable…", "Gone", "zwei");
    await add("Add a property set…", "Stamp");
    await add("Add a value…", "CompanyName", "Bücher & Co");
    await add("Add a value…", "Comments", "weg");
    await page.getByLabel("Root", { exact: true }).fill("drei");
    for (const name of ["Gone", "Comments"]) {
      await page.getByRole("button", { name: `Remove ${name}`, exact: true }).hover();
      await page.mouse.down(); // which sends what was typed
      await page.waitForTimeout(300); // longer than its answer takes
      await page.mouse.up();
      await page.getByLabel(name, { exact: true }).waitFor({ state: "detached" });
    }
    await save(page);
    holds(editor.read("p.kxproj"), "drei", "Stamp", "CompanyName", "Bücher &amp; Co");
    assert.doesNotMatch(editor.read("p.kxproj"), /eins|Gone|zwei|Comments|weg/);
    await press("Remove the property set Stamp");
    await page.locator("#project", { hasText: "Stamp" }).waitFor({ state: "detached" });
    const again = await startAgain(page, editor);
    await again.getByRole("button", { name: "Remove them" }).click();
    await again.getByRole("button", { name: "Remove", exact: true }).last().click();
    await again.waitForSelector("#unsaved:not(:has(button))", { state: "attached" });
    assert.ok(!fs.existsSync(`${editor.folder}/p.unsaved.kxproj`));
    const end = async (last, choice) => {
      await rename(last, choice);
      await command(last, "End the editor");
      await last.getByRole("button", { name: choice }).click();
      await last.getByText("The editor has ended").waitFor();
      assert.equal(await editor.ended, 0);
      assert.equal(editor.read("p.kxproj").includes(choice), choice === "Save and end");
    };
    await end(again, "End without saving");
    await editor.start();
    await end(await openPage(browser, editor.address), "Save and end");
  });
});

test("the tree, the palette and the pages are used by the keyboard", async () => {
  const group = `    <Group Name="Tools">\n${devenv("", "Erste")}    </Group>\n`;
  await withEditor(group + devenv("", "Zweite"), async (page) => {
    await page.locator("#tree [aria-selected=true]").focus();
    for (const [key, name] of Object.entries({ End: "Zweite", Home: "Tools", ArrowRight: "Erste" })) {
      await page.keyboard.press(key);
      await page.locator("#tree [aria-selected=true]:focus", { hasText: name }).waitFor();
    }
    await page.keyboard.press("Alt+ArrowLeft");
    await page.locator("#tree [aria-level='1'][aria-selected=true]:focus", { hasText: "Erste" }).waitFor();
    await page.keyboard.press("Alt+ArrowDown");
    await page.locator("[role=treeitem] >> nth=2 >> text=Erste").waitFor();
    await page.click("#copy");
    await page.locator("[role=treeitem] >> nth=3 >> text=Erste").waitFor();
    const palette = page.locator("dialog.palette");
    for (const leave of [() => page.keyboard.press("Escape"), () => page.mouse.click(5, 890)]) {
      await page.keyboard.press("Control+k");
      await page.keyboard.type("nirgends");
      await palette.getByText("Nothing matches.").waitFor();
      await page.keyboard.press("Control+a");
      await page.keyboard.type(">move");
      await page.keyboard.press("ArrowUp"); // round to the last
      assert.equal(await palette.locator("[role=option]").last().getAttribute("aria-selected"), "true");
      await leave();
      await palette.waitFor({ state: "detached" });
    }
    const search = page.locator("#pages input[type=search]");
    await search.fill("Extra Command");
    await page.locator("[data-field=ExtraCmdLineParams]").waitFor();
    assert.equal(await page.locator("#pages [data-field]").count(), 1);
    await search.fill("gibt es nicht");
    await page.getByText("No property matches.").waitFor();
    await page.getByRole("button", { name: "Clear", exact: true }).click();
    assert.equal(await search.inputValue(), "");
    const tabs = page.locator("#pages [role=tab]");
    await tabs.first().click();
    await page.keyboard.press("ArrowLeft"); // round to the last
    assert.equal(await tabs.last().getAttribute("aria-selected"), "true");
  });
});

test("the palette leads to what it names, keys go between the views, and the help makes way", async () => {
  await withEditor(`${devenv()}    <Action Type="MSTEST" Name="Prüfen"/>\n`, async (page) => {
    const pick = async (text, entry) => {
      await page.keyboard.press("Control+k");
      await page.keyboard.type(text);
      await page.locator("dialog [role=option][aria-selected=true]", { hasText: entry }).waitFor();
      await page.keyboard.press("Enter");
    };
    const selected = (name) => page.locator("#tree [aria-selected=true]", { hasText: name }).waitFor();
    await page.locator("#show-problems .count").waitFor(); // the settings are checked
    await pick("prüf", "Prüfen");
    await selected("Prüfen");
    await pick("filename blank", "Assembly Filename is blank");
    await page.waitForSelector("[data-field=MemoAssemblies]:focus");
    await page.keyboard.press("Alt+3");
    await page.getByRole("button", { name: "Go to the property" }).click();
    await page.waitForSelector("[data-field=MemoAssemblies]:focus");
    await pick("übers", "Übersetzen");
    await selected("Übersetzen");
    await settled(page); // its pages are there
    await pick("@override comp", "Override Compiler");
    await page.waitForSelector("[data-field=OverrideCompiler]:focus");
    for (const state of ["hidden", "visible"]) {
      await page.keyboard.press("F1");
      await page.locator("#help").waitFor({ state });
    }
    await command(page, "Edit variables");
    await page.getByRole("button", { name: "Add a variable…" }).waitFor();
    await command(page, "Add VS.NET Solution Iter");
    await page.locator("#tree [aria-selected=true][aria-posinset='2']").waitFor();
    await command(page, "Go to Run");
    await page.keyboard.press("F5");
    await page.locator("#progress", { hasText: /^Run 1: / }).waitFor();
    await page.keyboard.press("Control+f");
    await page.waitForSelector("#log-search:focus");
    await pick("cs0103", "does not exist");
    await page.locator("#view-problems .detail h2", { hasText: "does not exist" }).waitFor();
    await page.keyboard.press("Shift+F8");
    await page.locator("#view-problems .detail h2").filter({ hasNotText: "does not exist" }).waitFor();
  });
});

test("the wait for a run tells how far it is, what is to come, and how long it takes as a rule", async () => {
  const tests = `      <Action Type="MSTEST" Name="Tests"><AssemblyFileName>a.dll</AssemblyFileName>
        <UseStandaloneMSTest>True</UseStandaloneMSTest></Action>\n`;
  const loop = `    <Action Type="SOLUTIONITERATOR" Name="Alle"><Solution>Greeter\\Greeter.sln</Solution>
      <LoopVariable>Project</LoopVariable>\n<Actions>\n${tests}</Actions></Action>\n`;
  await withEditor(loop + tests, async (page, editor) => {
    fs.writeFileSync(`${editor.folder}/tool/results.trx`, results({ Adds: "Passed" }));
    const progress = page.locator("#progress");
    const steps = page.locator("#steps li");
    const names = () => steps.locator(".name").allTextContents();
    await page.click("#start");
    await page.locator("#progress", { hasText: /^Run 1: succeeded/ }).waitFor();
    const projects = (await names()).slice(1, -1);
    assert.ok(projects.length > 1);
    assert.deepEqual([...new Set(projects)], projects, "a pass each");
    assert.deepEqual([(await names())[0], (await names()).at(-1)], ["Alle", "Tests"]);
    await steps.getByRole("button").nth(1).click();
    const [, pass] = /\((.*)\)/.exec(projects[0]);
    await page.locator("#log .group[aria-selected=true]", { hasText: pass }).waitFor();
    fs.writeFileSync(`${editor.folder}/tool/wait`, "");
    await page.click("#start");
    await page.locator("#progress", { hasText: /^\S+ m?s of about .* · project 1 of \d+$/ }).waitFor();
    const done = Number(await page.locator("#run-bar").getAttribute("value"));
    assert.ok(done > 0 && done < 1, `${done} of the usual time`);
    assert.deepEqual(await names(), ["Alle", projects[0]]);
    await page.locator("#steps .to-come", { hasText: /^Tests$/ }).waitFor();
    fs.rmSync(`${editor.folder}/tool/wait`);
    await page.locator("#progress", { hasText: /^Run 2: succeeded/ }).waitFor();
    assert.ok(await page.locator("#run-bar").isHidden());
    assert.equal(await page.locator("#steps .to-come").count(), 0);
    assert.doesNotMatch(await progress.textContent(), /of about/);
  });
});

test("numbers are stepped, choices go back to what they were, and folders are chosen", async () => {
  await withEditor(`${devenv()}    <Action Type="MSTEST" Name="Tests"/>\n`, async (page, editor) => {
    await turnTo(page, "Project Detection");
    const number = page.locator("[data-field=spiWebsiteNumber]");
    await number.fill("8");
    for (const key of ["ArrowUp", "ArrowUp", "ArrowDown"]) await number.press(key);
    assert.equal(await number.inputValue(), "9");
    await save(page);
    holds(editor.read("p.kxproj"), "<WMIWebsiteNum>9<");
    await answerSlowly(page, { pattern: "**/api/set" });
    await page.locator("[data-field=rbNetworkShare]").check();
    await page.locator("[data-field=edtShare]").fill("share");
    await page.locator("[data-field=rbNetworkShare]").press("Control+Delete");
    await hasValue(page, "edtShare", "wwwroot$");
    await page.locator("[data-field=rbWMI]:checked").waitFor();
    await turnTo(page, "Paths");
    await answerSlowly(page, { pattern: "**/api/list", times: 2 }); // what is done meanwhile is not lost
    await page.locator(".with-buttons:has([data-field=OutputDirectory]) button[aria-label^=Browse]").click();
    const dialog = page.locator("dialog");
    const path = dialog.getByLabel("Folder", { exact: true });
    await path.press("ArrowDown");
    await page.waitForSelector("dialog .chooser li:first-child button:focus");
    await dialog.getByLabel("Folder Greeter", { exact: true }).click();
    await path.fill("typed");
    await dialog.getByLabel("Folder Greeter.Core").waitFor();
    assert.equal(await path.inputValue(), "typed");
    await dialog.getByRole("button", { name: "up" }).click();
    await dialog.getByLabel("Folder Greeter", { exact: true }).click();
    await dialog.getByLabel("Folder Greeter.Core").waitFor();
    assert.equal(await dialog.getByRole("button", { name: "Greeter.sln" }).count(), 0, "a file is no folder");
    await dialog.getByRole("button", { name: "Choose", exact: true }).click();
    await hasValue(page, "OutputDirectory", "%ProjectDir%/Greeter");
    await page.locator("[role=treeitem]", { hasText: "Tests" }).click();
    await page.locator("[data-field=txtAssemblyFilename]").fill("eins.dll");
    await page.keyboard.press("Enter");
    await hasValue(page, "MemoAssemblies", "eins.dll");
    await hasValue(page, "txtAssemblyFilename", "");
  });
});

test("a log is read by the keyboard, folded, downloaded, and coloured as its tool wants", async () => {
  await withEditor(devenv(), async (page, editor) => {
    const colours = "echo $'\\e[1;31mrot\\e[0m und \\e[92mgrün\\e[39m'\n";
    await runSaying(page, editor, colours);
    const log = page.locator("#log");
    const line = log.locator("[role=option]", { hasText: "rot und grün" });
    const last = async () => Number(await log.locator("[role=option]").last().getAttribute("aria-setsize"));
    await page.click("#unfold");
    await log.focus();
    for (const [key, place] of Object.entries({ Home: 1, ArrowDown: 2, PageUp: 1, End: await last() })) {
      await page.keyboard.press(key);
      await log.locator(`[aria-selected=true][aria-posinset='${place}']`).waitFor();
    }
    await page.waitForSelector("#log-follow[aria-pressed=true]");
    await line.locator(".bold", { hasText: /^rot$/ }).waitFor();
    assert.equal(await line.locator("span.text span").count(), 2, "und has no colour");
    await page.getByLabel("Search the log").fill("ROT UND GRÜN");
    await page.locator("#log-found", { hasText: /^1 line$/ }).waitFor();
    await page.keyboard.press("Enter");
    await log.locator("[aria-selected=true] mark", { hasText: "rot und grün" }).waitFor();
    await log.focus();
    await page.keyboard.press("ArrowLeft"); // to the group around it
    for (const [key, state] of Object.entries({ ArrowLeft: "detached", ArrowRight: "attached", Enter: "detached" })) {
      await page.keyboard.press(key);
      await line.waitFor({ state });
    }
    const download = async () => {
      const [file] = await Promise.all([page.waitForEvent("download"), page.click("#log-download")]);
      return [file.suggestedFilename(), fs.readFileSync(await file.path(), "utf8")];
    };
    assert.ok(!(await download())[1].includes("rot"), "what is folded is not shown");
    await page.click("#unfold");
    const [name, text] = await download();
    assert.equal(name, "p-run-1.log");
    assert.match(text, /^ +rot und grün$/m);
    assert.equal(text.split("\n").length - 1, await last());
    await page.click("#log-times");
    await line.locator("time", { hasText: /^\d\d:\d\d:\d\d$/ }).waitFor({ state: "visible" });
  });
});

test("long lines of a log wrap, what is found is gone through, and the end is followed or left", async () => {
  await withEditor(devenv(), async (page, editor) => {
    const long = `for i in {1..60}; do echo "${"lang 日本 ".repeat(40)}$i"; done\n`;
    await runSaying(page, editor, long);
    const log = page.locator("#log");
    const chosen = (text) => log.locator("[aria-selected=true]", { hasText: text }).waitFor();
    // Nothing lies over another row, and what is at the end is seen there.
    const places = () =>
      log.evaluate((element) => {
        const { top, bottom } = element.getBoundingClientRect();
        const rows = [...element.querySelectorAll("[role=option]")].map((row) => {
          const text = row.querySelector(".text").getBoundingClientRect();
          return { top: text.top, bottom: text.bottom, text: row.textContent };
        });
        const isApart = rows.every((row, index) => index === 0 || row.top >= rows[index - 1].bottom - 1);
        return { isApart, highest: Math.max(...rows.map((row) => row.bottom - row.top)), last: rows.at(-1).bottom - bottom, top };
      });
    await page.click("#unfold");
    assert.ok((await places()).highest < 30, "a line each");
    await page.click("#log-wrap");
    await log.focus();
    for (const key of ["Home", "End"]) {
      await page.keyboard.press(key);
      const { isApart, highest, last } = await places();
      assert.ok(isApart, key);
      if (key === "End") assert.ok(highest > 30 && last <= 1, `${highest}, ${last}`);
    }
    const found = page.locator("#log-found");
    const search = page.getByLabel("Search the log");
    await search.fill("lang 日本 59");
    await page.selectOption("#filter", "3");
    await found.getByText("1 line", { exact: true }).waitFor();
    await search.press("Enter");
    await chosen("59"); // the filter hid it
    assert.equal(await page.locator("#filter").inputValue(), "0");
    assert.ok((await places()).isApart);
    await page.click("#log-wrap");
    await search.fill("compiling");
    await found.getByText("3 lines", { exact: true }).waitFor();
    for (const [key, place] of Object.entries({ "Shift+Enter": 3, Enter: 1 })) {
      await search.press(key);
      await found.getByText(`${place} of 3`, { exact: true }).waitFor();
      await chosen(`${place - 1}`);
    }
    await page.click("#log-previous");
    await found.getByText("3 of 3", { exact: true }).waitFor();
    await search.press("Escape");
    await page.waitForSelector("#log-next", { state: "hidden" });
    assert.equal((await search.inputValue()) + (await found.textContent()), "");
    for (const state of ["true", "false", "true"]) {
      await page.click("#log-follow");
      await page.waitForSelector(`#log-follow[aria-pressed=${state}]`);
    }
    await page.context().grantPermissions(["clipboard-read", "clipboard-write"]);
    await page.click("#log-copy");
    await page.locator("#message", { hasText: /^\d+ lines copied\.$/ }).waitFor();
    const lines = (await page.evaluate(() => navigator.clipboard.readText())).trimEnd().split("\n");
    assert.equal(`${lines.length} lines copied.`, await page.textContent("#message"));
    await search.fill("CS0103");
    await search.press("Enter");
    await chosen("CS0103");
    await log.press("Enter"); // to the place that it names
    await page.locator("dialog .source .hit").waitFor();
    await page.keyboard.press("Escape");
    await page.locator("#tab-log").press("ArrowLeft"); // round to the last that is there
    await page.locator("#tab-results[aria-selected=true]:focus").waitFor();
    assert.ok(await log.isHidden());
  });
});

test("problems are filtered and chosen by the keyboard, and two runs stand side by side", async () => {
  await withEditor(
    devenv(),
    async (page) => {
      for (const number of [1, 2, 3]) {
        await page.click("#start");
        await page.locator("#progress", { hasText: new RegExp(`^Run ${number}: `) }).waitFor();
      }
      await page.locator("#dock-list button", { hasText: "CS0103" }).first().click();
      const rows = page.locator("#view-problems .list .entry");
      await page.locator("#view-problems .list .entry[aria-current=true]:focus", { hasText: "The name 'x'" }).waitFor();
      await page.getByRole("button", { name: "Show in the log" }).click();
      await page.locator("#log [aria-selected=true]", { hasText: "CS0103" }).waitFor();
      await page.click("#show-problems");
      const kinds = page.locator("#problem-kinds button");
      await kinds.nth(1).click();
      assert.equal(await rows.count(), 1);
      await page.getByLabel("Search text, file or code").fill("many.cs");
      await page.getByText("No problem matches.").waitFor();
      await page.locator("#view-problems").getByRole("button", { name: "Clear" }).click();
      assert.equal(await rows.count(), Number((await kinds.first().textContent()).replace("All ", "")));
      await page.getByLabel("Search text, file or code").fill("many.cs");
      await rows.nth(3).waitFor({ state: "detached" });
      assert.equal(await rows.count(), 3);
      await rows.first().click();
      const said = page.locator("#view-problems .detail h2");
      for (const [key, index] of Object.entries({ End: 2, ArrowUp: 1, Home: 0, ArrowDown: 1 })) {
        await page.keyboard.press(key);
        assert.equal(await said.textContent(), String(index));
      }
      await page.locator("#view-problems .same button", { hasText: /2$/ }).click();
      assert.equal(await said.textContent(), "2");
      await page.setViewportSize({ width: 400, height: 800 });
      await page.locator("#view-problems").getByRole("button", { name: "Back" }).click();
      await rows.nth(2).and(page.locator(":focus")).waitFor();
      await page.setViewportSize({ width: 1200, height: 900 });
      await Promise.all([page.waitForResponse(/api.history/), page.click("#show-history")]);
      await settled(page);
      await page.getByLabel("Compare run 1").check(); // the one that was chosen first makes way
      const chosen = await page.locator("#history-runs tr.chosen").evaluateAll((all) => all.map((row) => row.dataset.run));
      assert.deepEqual(chosen, ["2", "1"]);
      await page.locator("#history-detail h2", { hasText: "Run 2 against 1" }).waitFor();
      const output = page.locator(".trend output").nth(1);
      await page.locator(".trend").nth(1).focus();
      const read = [];
      for (const key of ["ArrowLeft", "ArrowLeft", "ArrowLeft", "ArrowRight"]) {
        await page.keyboard.press(key);
        read.push(await output.textContent());
      }
      assert.deepEqual(read, ["Run 3: 4", "Run 2: 4", "Run 1: 4", "Run 2: 4"]);
      forgetRefusals(page); // there is no Many.cs
    },
    { environment: { WARNINGS: "3" } },
  );
});
