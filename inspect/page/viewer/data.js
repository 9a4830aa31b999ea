// Reads what the page contains: the summary, the tree, the triangles and the pictures. PageExport.cpp writes it.

const textOf = (id) => document.getElementById(id).textContent;

// The pieces of base64 as one block.
function decodeBytes() {
  const elements = [...document.querySelectorAll("script.bytes")];
  const sizeOf = (text) => (text.length / 4) * 3 - (text.endsWith("==") ? 2 : text.endsWith("=") ? 1 : 0);
  const texts = elements.map((element) => element.textContent);
  const bytes = new Uint8Array(texts.reduce((sum, text) => sum + sizeOf(text), 0));
  let at = 0;
  texts.forEach((text, piece) => {
    texts[piece] = null;
    elements[piece].remove();
    if (bytes.setFromBase64) {
      at += bytes.subarray(at).setFromBase64(text).written;
      return;
    }
    const decoded = atob(text);
    for (let place = 0; place < decoded.length; ++place) {
      bytes[at + place] = decoded.charCodeAt(place);
    }
    at += decoded.length;
  });
  return bytes.buffer;
}

// Adds the arrays of each material and the bytes of each picture, in the order of the file.
function addArrays(scene, buffer) {
  let at = 0;
  const take = (Type, count) => {
    const array = new Type(buffer, at, count);
    at += array.byteLength;
    return array;
  };
  for (const material of scene.materials) {
    material.positions = take(Float32Array, material.vertices * 3);
    material.normals = take(Int16Array, material.vertices * 4);
    material.coordinates = material.usesPicture ? take(Float32Array, material.vertices * 2) : null;
    material.indices = take(Uint32Array, material.triangles * 3);
  }
  for (const picture of scene.pictures) {
    picture.blob = new Blob([take(Uint8Array, picture.bytes)], { type: picture.type });
  }
}

// Adds to each mesh where its triangles begin in its material's list, and to each node what is below it. The nodes
// below a node follow it directly.
function addTree(scene) {
  const { nodes, meshes } = scene;
  const count = nodes.name.length;
  const next = scene.materials.map(() => 0);
  meshes.first = meshes.drawn.map((drawn, mesh) => {
    const material = meshes.material[mesh];
    next[material] += drawn;
    return next[material] - drawn;
  });
  nodes.children = nodes.name.map(() => []);
  nodes.end = new Uint32Array(count);
  nodes.triangles = new Float64Array(count);
  nodes.ownMeshes = new Uint32Array(count);
  nodes.firstMesh = new Uint32Array(count + 1);
  meshes.node.forEach((node, mesh) => {
    nodes.triangles[node] += meshes.triangles[mesh];
    ++nodes.ownMeshes[node];
  });
  for (let node = 0; node < count; ++node) {
    nodes.firstMesh[node + 1] = nodes.firstMesh[node] + nodes.ownMeshes[node];
    if (node > 0) {
      nodes.children[nodes.parent[node]].push(node);
    }
  }
  for (let node = count - 1; node >= 0; --node) {
    nodes.end[node] = Math.max(nodes.end[node], node + 1);
    if (node > 0) {
      const parent = nodes.parent[node];
      nodes.end[parent] = Math.max(nodes.end[parent], nodes.end[node]);
      nodes.triangles[parent] += nodes.triangles[node];
    }
  }
}

export function readPage() {
  const facts = JSON.parse(textOf("facts"));
  const scene = JSON.parse(textOf("scene"));
  addArrays(scene, decodeBytes());
  addTree(scene);
  return { facts, scene };
}

// The meshes of a node and of all nodes below it, as positions in the lists: from the first up to the second.
export const meshesBelow = ({ nodes }, node) => [nodes.firstMesh[node], nodes.firstMesh[nodes.end[node]]];
