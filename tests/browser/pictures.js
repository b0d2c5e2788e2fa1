// The pictures of the documentation: node pictures.js FOLDER (scripts/make-pictures calls it).

const path = require("node:path");
const { Editor, launch, openPage, settled } = require("./editor.js");

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
  await browser.close();
  await editor.close();
})();
