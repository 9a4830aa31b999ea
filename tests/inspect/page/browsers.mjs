// Starts browsers without a display and says what the pictures of a page contain.
import { spawn } from "node:child_process";
import { readFileSync, readdirSync } from "node:fs";
import { createRequire } from "node:module";
import path from "node:path";

const BROWSERS = { chromium: "/usr/bin/chromium", firefox: "/usr/bin/firefox-esr" };
const STEP_TIME = 60_000; // Milliseconds, for one step on a busy machine.

export const programOf = (name) => BROWSERS[name];

// Firefox has WebGL with a display only. Gives the display's name and the process.
function startDisplay() {
  return new Promise((resolve, reject) => {
    const server = spawn("Xvfb", ["-displayfd", "3", "-screen", "0", "1400x1000x24", "-nolisten", "tcp"], {
      stdio: ["ignore", "ignore", "ignore", "pipe"],
    });
    server.on("error", reject);
    server.stdio[3].once("data", (number) => resolve({ display: `:${String(number).trim()}`, server }));
  });
}

// Options: scheme, "light" or "dark"; withoutWebGl.
export async function openBrowser(name, modules, { scheme = "light", withoutWebGl = false } = {}) {
  const puppeteer = createRequire(modules + path.sep)("puppeteer-core");
  const common = { executablePath: BROWSERS[name], protocolTimeout: STEP_TIME };
  if (name === "chromium") {
    const args = ["--no-sandbox", "--disable-background-networking", "--disable-component-update", "--no-first-run"];
    args.push(...(withoutWebGl ? ["--disable-3d-apis"] : ["--use-angle=swiftshader", "--enable-unsafe-swiftshader"]));
    const browser = await puppeteer.launch({ ...common, browser: "chrome", headless: true, args });
    return { browser, scheme, close: () => browser.close() };
  }
  const { display, server } = await startDisplay();
  const browser = await puppeteer.launch({
    ...common,
    browser: "firefox",
    headless: false,
    protocol: "webDriverBiDi",
    env: { ...process.env, DISPLAY: display },
    extraPrefsFirefox: {
      "layout.css.prefers-color-scheme.content-override": scheme === "dark" ? 0 : 1,
      "webgl.disabled": withoutWebGl,
    },
  });
  const close = async () => {
    await browser.close();
    server.kill();
  };
  return { browser, scheme, close };
}

// Opens a page of the disk and waits until it has drawn. Gives the page, what it complained of, and the milliseconds.
export async function openPage({ browser, scheme }, file, width, height) {
  const page = await browser.newPage();
  const complaints = [];
  page.on("console", (message) => complaints.push(`${message.type()}: ${message.text()}`));
  page.on("pageerror", (error) => complaints.push(`error: ${error.message}`));
  page.on("dialog", (dialog) => {
    complaints.push(`dialog: ${dialog.message()}`);
    dialog.dismiss();
  });
  await page.setViewport({ width, height });
  if (browser.process().spawnfile === BROWSERS.chromium) {
    await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: scheme }]);
  }
  const start = Date.now();
  await page.goto(`file://${file}`, { timeout: STEP_TIME });
  await page.waitForFunction(() => document.body.dataset.state !== "loading", { timeout: STEP_TIME });
  return { page, complaints, time: Date.now() - start };
}

// Seconds of processor time that a process and all below it have used.
export function processorTime(root) {
  const rows = new Map();
  for (const name of readdirSync("/proc").filter((entry) => /^\d+$/.test(entry))) {
    try {
      const fields = readFileSync(`/proc/${name}/stat`, "utf8").replace(/^.*\) /, "").split(" ");
      rows.set(Number(name), { parent: Number(fields[1]), ticks: Number(fields[11]) + Number(fields[12]) });
    } catch {
      // The process has ended.
    }
  }
  const isBelow = (id) => id === root || (rows.has(id) && isBelow(rows.get(id).parent));
  let ticks = 0;
  for (const [id, row] of rows) {
    ticks += isBelow(id) ? row.ticks : 0;
  }
  return ticks / 100;
}

// The shares, 0 to 1, of the pixels of the 3D view that are coloured, of the blue of a selection, and magenta.
export async function lookAt(page, modules) {
  const { PNG } = createRequire(modules + path.sep)("pngjs");
  const area = await page.evaluate(() => {
    const { x, y, width, height } = document.getElementById("view").getBoundingClientRect();
    return { x, y, width, height };
  });
  // The page draws in the frame after a change.
  await new Promise((resolve) => setTimeout(resolve, 700));
  const picture = PNG.sync.read(Buffer.from(await page.screenshot({ clip: area })));
  const shares = { coloured: 0, blue: 0, magenta: 0, hash: 0 };
  const { data } = picture;
  const count = picture.width * picture.height;
  for (let at = 0; at < data.length; at += 4) {
    const [red, green, blue] = data.subarray(at, at + 3);
    shares.coloured += Math.max(red, green, blue) - Math.min(red, green, blue) > 40 ? 1 / count : 0;
    shares.blue += blue - red > 30 ? 1 / count : 0;
    shares.magenta += Math.min(red, blue) - green > 60 ? 1 / count : 0;
    shares.hash = (shares.hash * 31 + red + green * 3 + blue * 7) % 0x7fffffff;
  }
  return shares;
}
