// Makes the page without a scene: bundles main.js with three.js, puts it into page.html with the styles, the licence
// and a policy that admits nothing else, and writes the text as C++.
// Usage: node build.mjs MODULES OUT, where MODULES has node_modules.
import { createHash } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import path from "node:path";
import { fileURLToPath } from "node:url";

const here = path.dirname(fileURLToPath(import.meta.url));
const [modules, out] = process.argv.slice(2).map((name) => path.resolve(name));
const esbuild = createRequire(modules + "/")("esbuild");

const read = (name) => readFileSync(path.join(here, name), "utf8").replaceAll("\r\n", "\n");
const hashOf = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;

async function bundle(entry, options) {
  const result = await esbuild.build({
    entryPoints: [path.join(here, entry)],
    nodePaths: [path.join(modules, "node_modules")],
    bundle: true,
    minify: true,
    write: false,
    legalComments: "none",
    target: ["chrome100", "firefox102", "safari15.4"],
    ...options,
  });
  return result.outputFiles[0].text.trim();
}

// Text that HTML shows as it is.
const escaped = (text) => text.replaceAll("&", "&amp;").replaceAll("<", "&lt;").replaceAll(">", "&gt;");

const script = await bundle("main.js", { format: "iife" });
const style = await bundle("page.css", {});
if (/<!--|<\/?script/i.test(script) || /<\/style/i.test(style)) {
  throw new Error("the script or the style has text that ends its element");
}
const licence = readFileSync(path.join(modules, "node_modules/three/LICENSE"), "utf8").trim();
const { version } = JSON.parse(readFileSync(path.join(modules, "node_modules/three/package.json"), "utf8"));
const values = {
  POLICY:
    `default-src 'none'; script-src ${hashOf(script)}; style-src ${hashOf(style)}; img-src data: blob:; ` +
    "base-uri 'none'; form-action 'none'",
  STYLE: style,
  SCRIPT: script,
  LICENCE: escaped(licence),
  VERSION: escaped(version),
};
const page = read("page.html").replace(/\{\{([A-Z]+)\}\}/g, (_, name) => values[name]);
if (page.split("<!--SCENE-->").length !== 2) {
  throw new Error("the page needs one place for the scene");
}

// Octal escapes end after three digits, whatever follows.
const literals = Buffer.from(page, "utf8")
  .toString("latin1")
  .match(/[^]{1,4000}/g)
  .map((piece) =>
    piece.replace(/["\\?]|[^ -~]/g, (c) => (c === "\n" ? "\\n" : "\\" + c.charCodeAt(0).toString(8).padStart(3, "0"))),
  );
writeFileSync(
  out,
  '// Made from inspect/page/viewer by its build.mjs.\n#include "inspect/page/PageTemplate.h"\n\n' +
    `const std::string_view PageTemplate(\n    "${literals.join('"\n    "')}",\n    ${Buffer.byteLength(page)});\n`,
);
