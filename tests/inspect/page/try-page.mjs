// Opens pages of scene-inspect --html in a real browser, turns and clicks, and looks at what they show.
//
//     node try-page.mjs PROGRAMS REPOSITORY MODULES BROWSER
//
// BROWSER is chromium or firefox. What drives it is installed in the folder MODULES. Exit code 77: skipped.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { copyFileSync, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import path from "node:path";
import { lookAt, openBrowser, openPage, processorTime, programOf } from "./browsers.mjs";
import { field, sceneBytes, square } from "./scenes.mjs";

const [programs, repository, modules] = process.argv.slice(2, 5).map((name) => path.resolve(name));
const browserName = process.argv[5];
const here = path.join(repository, "tests/inspect/page");
const WIDE = [1280, 800];
const NARROW = [400, 800];
const MOST_SECONDS = 10; // For a million triangles, without a GPU.
const HOSTILE = "</script><img src=x onerror=alert(1)>";
const HOSTILE_TOO = "<!--<script>\u2028&amp;</script x=";

if (!existsSync(programOf(browserName))) {
  console.log(`SKIPPED: ${programOf(browserName)} isn't installed`);
  process.exit(77);
}

const folder = mkdtempSync(path.join(tmpdir(), "page-"));
const inspect = (...options) => execFileSync(path.join(programs, "scene-inspect"), options, { stdio: ["ignore", "pipe", "ignore"] });

function installModules() {
  const [pinned, installed] = [path.join(here, "package-lock.json"), path.join(modules, "installed")];
  if (existsSync(installed) && readFileSync(installed, "utf8") === readFileSync(pinned, "utf8")) {
    return;
  }
  mkdirSync(modules, { recursive: true });
  for (const name of ["package.json", "package-lock.json"]) {
    copyFileSync(path.join(here, name), path.join(modules, name));
  }
  const options = ["--prefix", modules, "ci", "--ignore-scripts", "--no-audit", "--no-fund", "--silent"];
  execFileSync("npm", options, { stdio: "inherit" });
  copyFileSync(pinned, installed);
}

function makePage(name) {
  inspect("--html", path.join(folder, `${name}.html`), path.join(folder, `${name}.bin`));
  return path.join(folder, `${name}.html`);
}

function makeScene(name, root) {
  writeFileSync(path.join(folder, `${name}.bin`), sceneBytes(root));
  return makePage(name);
}

function makeHouse() {
  const model = path.join(repository, "examples/house/house.json");
  execFileSync(path.join(programs, "orvane"), [model, path.join(folder, "house.bin"), "maps", path.join(folder, "run.log")], {
    stdio: "ignore",
  });
  return makePage("house");
}

const textOf = (page, selector) => page.$eval(selector, (element) => element.textContent);

// Clicks the name of a row of the tree.
async function clickRow(page, name) {
  const rows = await page.$$("#tree [role=treeitem] > .line > .name");
  for (const row of rows) {
    if ((await row.evaluate((element) => element.textContent)) === name) {
      await row.evaluate((element) => element.scrollIntoView({ block: "center" }));
      return row.click();
    }
  }
  return assert.fail(`no row ${name}`);
}

async function checkFacts(page, name) {
  const facts = JSON.parse(inspect("--json", path.join(folder, `${name}.bin`)).toString());
  assert.deepEqual(JSON.parse(await textOf(page, "#facts")), facts);
  const shown = await page.$$eval("[data-fact]", (elements) =>
    Object.fromEntries(elements.map((element) => [element.dataset.fact, element.textContent.replaceAll(",", "")])),
  );
  assert.equal(shown.nodes, `${facts.nodes} on ${facts.levels} levels`);
  for (const key of ["meshes", "triangles", "vertices"]) {
    assert.equal(shown[key], String(facts[key]));
  }
  assert.equal(shown.materials, String(facts.materials.length));
  assert.equal(await page.$$eval("#materials > li .swatch", (rows) => rows.length), facts.materials.length);
}

async function checkQuiet(page, complaints) {
  const resources = await page.evaluate(() => performance.getEntriesByType("resource").map((entry) => entry.name));
  assert.deepEqual(resources.filter((address) => !/^(blob|data):/.test(address)), []);
  assert.deepEqual(complaints, []);
}

// What the page's policy does to an address elsewhere, and that complaints are heard. Last, because the browser may
// complain.
async function checkPolicy(page, complaints) {
  const refused = await page.evaluate(
    () =>
      new Promise((resolve) => {
        document.addEventListener("securitypolicyviolation", (event) => resolve(event.effectiveDirective));
        setTimeout(() => resolve("nothing"), 5000);
        new Image().src = "http://127.0.0.1:9/picture.png";
      }),
  );
  assert.equal(refused, "img-src");
  await page.evaluate(() => console.error("heard"));
  await new Promise((resolve) => setTimeout(resolve, 300));
  assert.ok(complaints.includes("error: heard"), "complaints are not heard");
}

async function checkWidth(page) {
  assert.ok(await page.evaluate(() => document.scrollingElement.scrollWidth <= innerWidth), "wider than the window");
  const area = await page.$eval("#view", (view) => view.clientWidth * view.clientHeight);
  assert.ok(area > 100_000, `a view of ${area} pixels`);
}

// The example: what it shows, and what clicks and keys do.
async function tryHouse(session) {
  const { page, complaints } = await openPage(session, makeHouse(), ...WIDE);
  await checkFacts(page, "house");
  await checkWidth(page);
  const whole = await lookAt(page, modules);
  assert.ok(whole.coloured > 0.15 && whole.blue < 0.01, JSON.stringify(whole));
  assert.equal(await page.$eval("#warnings", (section) => section.hidden), true);

  await clickRow(page, "Chimney");
  const framed = await lookAt(page, modules);
  assert.ok(framed.blue > 0.04, `the chimney is not framed: ${JSON.stringify(framed)}`);
  assert.match(await textOf(page, "#selection"), /Chimney.*96 triangles/s);
  await page.keyboard.press("Escape");
  await page.click("#home");
  const home = await lookAt(page, modules);
  assert.ok(home.blue < 0.01 && Math.abs(home.coloured - whole.coloured) < 0.01, JSON.stringify(home));

  let { hash } = home;
  const actions = [["ArrowLeft"], ["+"], ["ArrowUp"], ["Shift", "ArrowRight"], ["w"]];
  await page.focus("#view");
  for (const keys of actions) {
    await Promise.all(keys.slice(0, -1).map((key) => page.keyboard.down(key)));
    await page.keyboard.press(keys.at(-1));
    await Promise.all(keys.slice(0, -1).map((key) => page.keyboard.up(key)));
    const after = await lookAt(page, modules);
    assert.ok(after.hash !== hash && after.coloured > 0.1, `${keys} shows ${JSON.stringify(after)}`);
    hash = after.hash;
  }

  await clickRow(page, "Garden");
  const row = "[role=treeitem][tabindex='0']";
  await page.focus(row);
  for (const [key, isOpen] of [["ArrowRight", "true"], ["ArrowLeft", "false"]]) {
    await page.keyboard.press(key);
    assert.equal(await page.$eval(row, (item) => item.getAttribute("aria-expanded")), isOpen, key);
  }
  await checkQuiet(page, complaints);
  await checkPolicy(page, complaints);
  await page.close();
}

// Names that look like HTML, a missing picture, one-sided triangles and a long list.
async function tryHostile(session) {
  const children = [
    { name: HOSTILE, meshes: [square(0, 0, true, { name: HOSTILE, texture: "maps\\<b>none</b>.png" })] },
    { name: "below", meshes: [square(3, 0, false, { name: HOSTILE_TOO, color: [0, 0.2, 0.6, 1] })] },
    ...Array.from({ length: 500 }, (_, number) => ({ name: `node ${number}` })),
  ];
  const { page, complaints } = await openPage(session, makeScene("hostile", { children }), ...NARROW);
  await checkFacts(page, "hostile");
  await checkWidth(page);
  const names = await page.$$eval("#tree .name, #materials .name", (elements) => elements.map((name) => name.textContent));
  assert.ok(names.filter((name) => name === HOSTILE).length === 2, names.slice(0, 5).join());
  assert.ok(names.includes(HOSTILE_TOO.replace("\u2028", "\\u2028")));
  assert.equal(await page.$$eval("img[src=x], b:not(.swatch b), script:not([type])", (all) => all.length), 1);
  assert.match(await textOf(page, "#warnings"), /maps\\<b>none<\/b>\.png/);
  assert.match(await textOf(page, "#materials"), /picture missing/);

  const rows = () => page.$$eval("#tree [role=treeitem]", (all) => all.length);
  assert.equal(await rows(), 201);
  await page.$eval("#tree .more button", (button) => button.click());
  assert.equal(await rows(), 401);

  assert.ok((await lookAt(page, modules)).magenta < 0.001);
  await page.click("#backs");
  assert.ok((await lookAt(page, modules)).magenta > 0.01, "the back side is not shown");
  await checkQuiet(page, complaints);
  await page.close();
}

// A tree of thousands of nodes without names, one below the other, ends in one row.
async function tryDeep(session) {
  let root = { name: "deepest", meshes: [square(0, 0, true, { color: [0.2, 0.6, 0.2, 1] })] };
  for (let level = 0; level < 1000; ++level) {
    root = { children: [root] };
  }
  const { page, complaints } = await openPage(session, makeScene("deep", root), ...WIDE);
  await checkFacts(page, "deep");
  await clickRow(page, "deepest");
  assert.ok((await lookAt(page, modules)).blue > 0.1);
  await checkQuiet(page, complaints);
  await page.close();
}

async function tryMillion(session) {
  const file = makeScene("million", field(50));
  const before = processorTime(session.browser.process().pid);
  const { page, complaints, time } = await openPage(session, file, ...WIDE);
  const processor = processorTime(session.browser.process().pid) - before;
  const size = (readFileSync(file).length / 1e6).toFixed(1);
  console.log(`A million triangles, ${size} MB: ${time / 1000} s, of the processor ${processor.toFixed(1)} s.`);
  // On a machine that does other things too, the processor's time tells more than the clock's.
  assert.ok(Math.min(time / 1000, processor) < MOST_SECONDS);
  await checkFacts(page, "million");
  assert.ok((await lookAt(page, modules)).coloured > 0.1);
  await checkQuiet(page, complaints);
  await page.close();
}

async function tryWithoutWebGl() {
  const session = await openBrowser(browserName, modules, { withoutWebGl: true });
  try {
    const { page } = await openPage(session, path.join(folder, "house.html"), ...WIDE);
    assert.equal(await page.$eval("body", (body) => body.dataset.state), "flat");
    assert.match(await textOf(page, "#message"), /WebGL 2 is not available/);
    await clickRow(page, "Chimney");
    await checkFacts(page, "house");
  } finally {
    await session.close();
  }
}

async function tryAll() {
  const session = await openBrowser(browserName, modules);
  try {
    await tryHouse(session);
    await tryHostile(session);
    await tryDeep(session);
    await tryMillion(session);
  } finally {
    await session.close();
  }
  await tryWithoutWebGl();
  const dark = await openBrowser(browserName, modules, { scheme: "dark" });
  try {
    const { page, complaints } = await openPage(dark, path.join(folder, "house.html"), ...NARROW);
    const paper = await page.$eval("aside", (aside) => getComputedStyle(aside).backgroundColor);
    assert.ok(paper.match(/\d+/g).every((part) => Number(part) < 60), `dark paper is ${paper}`);
    assert.ok((await lookAt(page, modules)).coloured > 0.1);
    await checkQuiet(page, complaints);
  } finally {
    await dark.close();
  }
}

try {
  installModules();
  await tryAll();
  console.log(`The pages are as they should be in ${browserName}.`);
} finally {
  rmSync(folder, { recursive: true, force: true });
}
