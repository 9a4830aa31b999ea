// The tree of nodes as a list that folds. Rows are made when they are first unfolded, so that large trees open fast.
import { appendRows, count, counted, element, visible } from "./words.js";

const ROWS_AT_ONCE = 200;
// Rows that are unfolded at first, at most.
const FIRST_ROWS = 30;

// A node without a name or meshes and with one child only stands for that child.
function contentOf(nodes, node) {
  while (node > 0 && nodes.name[node] === "" && nodes.ownMeshes[node] === 0 && nodes.children[node].length === 1) {
    node = nodes.children[node][0];
  }
  return node;
}

export function nameOf(scene, node) {
  return visible(scene.nodes.name[node]) || (node === 0 ? visible(scene.title) : `node ${node}`);
}

function makeRow(tree, node) {
  const { scene, rows } = tree;
  const { nodes } = scene;
  const label = element("span", { className: "name", textContent: nameOf(scene, node) });
  label.classList.toggle("unnamed", nodes.name[node] === "" && node > 0);
  const line = element("div", { className: "line" }, element("span", { className: "fold" }), label);
  line.append(element("small", { textContent: count(nodes.triangles[node]) }));
  line.title = `${nameOf(scene, node)}: node ${node}, ${counted(nodes.triangles[node], "triangle", "triangles")}`;
  const row = element("li", { tabIndex: -1, dataset: { node } }, line);
  row.setAttribute("role", "treeitem");
  row.setAttribute("aria-selected", "false");
  row.setAttribute("aria-label", nameOf(scene, node));
  if (nodes.children[node].length > 0) {
    row.setAttribute("aria-expanded", "false");
  }
  rows.set(node, row);
  return row;
}

function setOpen(tree, row, isOpen) {
  if (!row.hasAttribute("aria-expanded")) {
    return;
  }
  row.setAttribute("aria-expanded", String(isOpen));
  if (isOpen && !row.querySelector("ul")) {
    const { nodes } = tree.scene;
    const children = nodes.children[row.dataset.node];
    const list = element("ul");
    list.setAttribute("role", "group");
    const made = (place) => makeRow(tree, contentOf(nodes, children[place]));
    appendRows(list, children.length, made, ROWS_AT_ONCE);
    row.append(list);
  }
}

function focusRow(tree, row) {
  tree.focused?.setAttribute("tabindex", "-1");
  tree.focused = row;
  row.setAttribute("tabindex", "0");
}

// The rows that can be seen, in order.
function seenRows(tree) {
  return [...tree.box.querySelectorAll("[role=treeitem]")].filter((row) => row.offsetParent !== null);
}

function moveFocus(tree, row) {
  if (row) {
    focusRow(tree, row);
    row.focus();
  }
}

function stepOf(tree, key, row) {
  const isOpen = row.getAttribute("aria-expanded");
  const rows = seenRows(tree);
  const place = rows.indexOf(row);
  switch (key) {
    case "ArrowDown":
      return rows[place + 1];
    case "ArrowUp":
      return rows[place - 1];
    case "Home":
      return rows[0];
    case "End":
      return rows.at(-1);
    case "ArrowRight":
      if (isOpen === "false") {
        setOpen(tree, row, true);
        return row;
      }
      return isOpen === "true" ? rows[place + 1] : row;
    case "ArrowLeft":
      if (isOpen === "true") {
        setOpen(tree, row, false);
        return row;
      }
      return row.parentElement.closest("[role=treeitem]") ?? row;
    default:
      return undefined;
  }
}

function listen(tree, onChoose) {
  tree.box.addEventListener("click", (event) => {
    const row = event.target.closest("[role=treeitem]");
    if (!row || event.target.closest("button")) {
      return;
    }
    focusRow(tree, row);
    if (event.target.closest(".fold")) {
      setOpen(tree, row, row.getAttribute("aria-expanded") === "false");
    } else {
      onChoose(Number(row.dataset.node));
    }
  });
  tree.box.addEventListener("keydown", (event) => {
    const row = event.target.closest("[role=treeitem]");
    if (!row || event.ctrlKey || event.metaKey || event.altKey || event.target !== row) {
      return;
    }
    if (event.key === "Enter" || event.key === " ") {
      onChoose(Number(row.dataset.node));
    } else {
      const step = stepOf(tree, event.key, row);
      if (step === undefined && !["ArrowDown", "ArrowUp"].includes(event.key)) {
        return;
      }
      moveFocus(tree, step);
    }
    event.preventDefault();
    event.stopPropagation();
  });
}

// Unfolds level by level while the rows are few.
function unfoldFirst(tree, root) {
  let level = [root];
  let shown = 1;
  while (level.length > 0) {
    const next = level.reduce((sum, row) => sum + tree.scene.nodes.children[row.dataset.node].length, 0);
    if (level[0] !== root && shown + next > FIRST_ROWS) {
      return;
    }
    shown += next;
    level.forEach((row) => setOpen(tree, row, true));
    level = level.flatMap((row) => [...(row.querySelector("ul")?.querySelectorAll(":scope > [role=treeitem]") ?? [])]);
  }
}

// Calls onChoose with the number of a node that is clicked.
export function showTree(box, scene, onChoose) {
  const tree = { box, scene, rows: new Map(), focused: null, chosen: null };
  const list = element("ul");
  list.setAttribute("role", "tree");
  list.setAttribute("aria-label", "Nodes");
  const root = makeRow(tree, 0);
  list.append(root);
  box.append(list);
  unfoldFirst(tree, root);
  focusRow(tree, root);
  listen(tree, onChoose);
  return tree;
}

// Marks the row of a node, or none for null. Unfolds the way to it if its row is not among those that a button hides.
export function markChosen(tree, node) {
  tree.chosen?.setAttribute("aria-selected", "false");
  tree.chosen = null;
  if (node === null) {
    return;
  }
  const { nodes } = tree.scene;
  const way = [];
  for (let at = nodes.parent[node]; at !== null; at = nodes.parent[at]) {
    way.push(at);
  }
  for (const step of way.reverse()) {
    const row = tree.rows.get(step);
    if (row) {
      setOpen(tree, row, true);
    }
  }
  const row = tree.rows.get(contentOf(nodes, node));
  if (row) {
    tree.chosen = row;
    row.setAttribute("aria-selected", "true");
    focusRow(tree, row);
    row.querySelector(".line").scrollIntoView({ block: "nearest" });
  }
}
