// Starts the page: reads the scene, shows the panel, then the 3D view, and connects the two.
import { readPage } from "./data.js";
import { showFacts, showMaterials, showWarnings, warningsOf } from "./panel.js";
import { createStage } from "./stage.js";
import { markChosen, nameOf, showTree } from "./tree.js";
import { counted, length, visible } from "./words.js";

const NO_WEBGL =
  "No 3D view: WebGL 2 is not available in this browser, or it is switched off. " +
  "The facts, the tree and the materials are shown all the same.";
const CLICK_SLACK = 4; // Pixels between pressing and releasing.

const part = (id) => document.getElementById(id);

function showTitle({ facts, scene }) {
  const title = visible(scene.title);
  document.title = title;
  part("title").textContent = title;
  const words = [counted(facts.triangles, "triangle", "triangles")];
  if (facts.bounds) {
    const { minimum, maximum } = facts.bounds;
    words.push(maximum.map((high, axis) => length(high - minimum[axis])).join(" × "));
  }
  part("subtitle").textContent = words.join(" · ");
}

function say(text) {
  part("message").textContent = text;
  part("message").hidden = text === "";
}

function setState(state) {
  document.body.dataset.state = state;
}

function showSelection(page, node, size) {
  const { nodes } = page.scene;
  const [name, facts] = [part("selection-name"), part("selection-facts")];
  name.textContent = nameOf(page.scene, node);
  const words = [counted(nodes.triangles[node], "triangle", "triangles")];
  words.push(size ? [size.x, size.y, size.z].map(length).join(" × ") : "nothing to show");
  facts.textContent = words.join(" · ");
  part("selection").hidden = false;
}

function connect(page, tree, stage) {
  const clear = () => {
    part("selection").hidden = true;
    markChosen(tree, null);
    stage?.clearChosen();
  };
  const select = (node, isFramed) => {
    const size = stage ? stage.choose(node, isFramed) : null;
    markChosen(tree, node);
    showSelection(page, node, size);
  };
  part("deselect").addEventListener("click", clear);
  document.addEventListener("keydown", (event) => {
    if (event.key === "Escape") {
      clear();
    }
  });
  return { clear, select };
}

function connectSwitch(id, show) {
  const button = part(id);
  button.addEventListener("click", () => {
    const isOn = button.getAttribute("aria-pressed") !== "true";
    button.setAttribute("aria-pressed", String(isOn));
    show(isOn);
  });
}

function connectKeys(stage) {
  const buttons = { 0: "home", Home: "home", w: "wireframe", b: "backs" };
  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || event.defaultPrevented) {
      return;
    }
    const button = buttons[event.key.length === 1 ? event.key.toLowerCase() : event.key];
    if (button) {
      part(button).click();
      event.preventDefault();
    } else if (event.target === part("view") && stage.pressKey(event)) {
      event.preventDefault();
    }
  });
}

function connectPointer(stage, { clear, select }) {
  const canvas = part("view");
  let pressed = null;
  canvas.addEventListener("pointerdown", (event) => {
    pressed = event.isPrimary && event.button === 0 ? [event.clientX, event.clientY] : null;
  });
  canvas.addEventListener("pointerup", (event) => {
    if (pressed && Math.hypot(event.clientX - pressed[0], event.clientY - pressed[1]) < CLICK_SLACK) {
      const node = stage.nodeAt(event);
      if (node === null) {
        clear();
      } else {
        select(node, false);
      }
    }
    pressed = null;
  });
  canvas.addEventListener("webglcontextlost", () => say("The browser has stopped the 3D view. Load the page again."));
  canvas.addEventListener("webglcontextrestored", () => say(""));
}

async function start() {
  const page = readPage();
  showTitle(page);
  showFacts(part("facts-list"), page.facts);
  let select = () => {};
  const tree = showTree(part("tree"), page.scene, (node) => select(node, true));
  // The panel first, because the view can take seconds.
  await new Promise((resolve) => setTimeout(resolve, 30));
  const stage = await createStage(part("view"), page);
  showMaterials(part("materials"), page);
  showWarnings(part("warnings"), warningsOf(page));
  const selection = connect(page, tree, stage);
  select = selection.select;
  if (!stage) {
    say(NO_WEBGL);
    setState("flat");
    return;
  }
  part("home").addEventListener("click", () => stage.frameAll());
  connectSwitch("wireframe", stage.showEdges);
  connectSwitch("backs", stage.showBacks);
  connectKeys(stage);
  connectPointer(stage, selection);
  say(page.facts.triangles === 0 ? "The scene has no triangles." : "");
  setState("ready");
}

start().catch((error) => {
  say(`The scene cannot be shown: ${error.message}`);
  setState("failed");
  throw error;
});
