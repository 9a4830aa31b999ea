// The facts, the warnings and the materials.
import { appendRows, count, counted, element, length, visible } from "./words.js";

const MATERIALS_AT_ONCE = 100;

function factRows(facts) {
  const rows = [
    ["nodes", "Nodes", `${count(facts.nodes)} on ${counted(facts.levels, "level", "levels")}`],
    ["meshes", "Meshes", count(facts.meshes)],
    ["triangles", "Triangles", count(facts.triangles)],
    ["vertices", "Vertices", count(facts.vertices)],
    ["materials", "Materials", count(facts.materials.length)],
  ];
  if (facts.bounds) {
    const { minimum, maximum } = facts.bounds;
    rows.push(
      ["size", "Size", maximum.map((high, axis) => length(high - minimum[axis])).join(" × ")],
      ["minimum", "From", minimum.map(length).join(", ")],
      ["maximum", "To", maximum.map(length).join(", ")],
    );
  }
  rows.push(["degenerateTriangles", "Without area", counted(facts.degenerateTriangles, "triangle", "triangles")]);
  return rows;
}

export function showFacts(list, facts) {
  for (const [key, label, value] of factRows(facts)) {
    list.append(
      element("div", {}, element("dt", { textContent: label }), element("dd", { textContent: value, dataset: { fact: key } })),
    );
  }
}

export function warningsOf({ facts, scene }) {
  const warnings = [];
  const missing = new Set();
  scene.materials.forEach((material, place) => {
    if (material.isMissing) {
      missing.add(facts.materials[place].texture);
    }
  });
  for (const texture of missing) {
    warnings.push(`The picture “${visible(texture)}” is missing or cannot be read. A checked pattern takes its place.`);
  }
  if (facts.nodesWithMatrix > 0) {
    warnings.push(`${counted(facts.nodesWithMatrix, "matrix", "matrices")} other than the identity not applied.`);
  }
  if (facts.nonFiniteNumbers > 0) {
    warnings.push(`${counted(facts.nonFiniteNumbers, "number is", "numbers are")} infinite or not a number.`);
  }
  const { triangles, drawn } = scene.meshes;
  const omitted = triangles.reduce((sum, number, mesh) => sum + number - drawn[mesh], 0);
  if (omitted > 0) {
    warnings.push(`${counted(omitted, "triangle", "triangles")} with such numbers omitted from the view.`);
  }
  return warnings;
}

export function showWarnings(section, warnings) {
  section.hidden = warnings.length === 0;
  const list = section.querySelector("ul");
  list.replaceChildren();
  appendRows(list, warnings.length, (row) => element("li", { textContent: warnings[row] }), 20);
}

function swatch(fact, material, addressOf) {
  const made = element("span", { className: "swatch" });
  if (material.isMissing) {
    made.classList.add("missing");
    made.append(element("b", { textContent: "?" }));
  } else if (material.picture !== null) {
    made.append(element("img", { src: addressOf(material.picture), alt: "" }));
  } else {
    const [red, green, blue, alpha] = fact.color.map((part) => Math.round(part * 255));
    const colour = element("i");
    colour.style.background = `rgb(${red} ${green} ${blue} / ${alpha / 255})`;
    made.append(colour);
  }
  return made;
}

function describe(fact, material, picture) {
  const words = [];
  if (material.isMissing) {
    words.push("picture missing");
  } else if (picture) {
    words.push(`${picture.width} × ${picture.height}`);
  } else {
    const digits = fact.color.slice(0, 3).map((part) => Math.round(part * 255).toString(16).padStart(2, "0"));
    words.push(`#${digits.join("")}`.toUpperCase());
  }
  if (fact.color[3] < 1) {
    words.push(`${Math.round(fact.color[3] * 100)} % opaque`);
  }
  words.push(counted(fact.triangles, "triangle", "triangles"));
  return words.join(" · ");
}

export function showMaterials(list, { facts, scene }) {
  const addresses = [];
  const addressOf = (place) => (addresses[place] ??= URL.createObjectURL(scene.pictures[place].blob));
  const makeRow = (row) => {
    const fact = facts.materials[row];
    const material = scene.materials[row];
    const name = element("span", { className: "name", textContent: visible(fact.name) || "Image" });
    name.classList.toggle("unnamed", fact.name === "");
    const text = element("span", { className: "text" }, name);
    text.append(element("small", { textContent: describe(fact, material, scene.pictures[material.picture]) }));
    if (fact.texture !== null) {
      text.append(element("small", { className: "path", textContent: visible(fact.texture) }));
    }
    return element("li", {}, swatch(fact, material, addressOf), text);
  };
  appendRows(list, facts.materials.length, makeRow, MATERIALS_AT_ONCE);
}
