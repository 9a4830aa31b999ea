// Reads scene files with the reader in JavaScript: NODE_PATH=MODULES node read.js READER, with a path per line on
// standard input. Prints for each the number of its triangles, or the name of the error.
const fs = require("fs");
const path = require("path");
const KaitaiStream = require("kaitai-struct/KaitaiStream");
const SceneFile = require(path.resolve(process.argv[2]));

function countTriangles(scene) {
  const nodes = [scene.root];
  let count = 0;
  while (nodes.length > 0) {
    const node = nodes.pop();
    nodes.push(...node.children);
    for (const mesh of node.meshes) {
      count += mesh.triangles.length;
    }
  }
  return count;
}

function read(file) {
  const stream = new KaitaiStream(new Uint8Array(fs.readFileSync(file)).buffer);
  const scene = new SceneFile(stream);
  if (!stream.isEof()) {
    throw new Error("the reader stops before the end");
  }
  return countTriangles(scene);
}

for (const file of fs.readFileSync(0, "utf8").trim().split("\n")) {
  try {
    console.log(read(file));
  } catch (error) {
    console.log(error.name);
  }
}
