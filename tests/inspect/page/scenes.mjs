// Scene files for the tests of the page, byte by byte.

const zeros = (count) => Buffer.alloc(count);
const wide = (text) => Buffer.from(text + "\0", "utf16le");

function words(...values) {
  const bytes = Buffer.alloc(values.length * 4);
  values.forEach((value, place) => bytes.writeUInt32LE(value, place * 4));
  return bytes;
}

const floats = (...values) => Buffer.from(Float32Array.from(values).buffer);

// A mesh of { name, texture, color, vertices (8 numbers each), indices }.
function meshBlock({ name = "", texture = "", color = [1, 1, 1, 1], vertices, indices }) {
  const [nameBytes, textureBytes] = [wide(name), wide(texture)];
  const count = vertices.length / 8;
  return Buffer.concat([
    words(0x42424242, count, indices.length / 3),
    zeros(40),
    words(0x32443244, nameBytes.length / 2, 0),
    floats(...color),
    zeros(16),
    words(textureBytes.length / 2, 0),
    floats(1),
    zeros(16),
    floats(1),
    zeros(48),
    nameBytes,
    textureBytes,
    Buffer.from(Float32Array.from(vertices).buffer),
    zeros(count * 4),
    Buffer.from(Uint32Array.from(indices).buffer),
  ]);
}

function nodeBlock({ name = "", meshes = [], children = [] }) {
  const identity = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1];
  const nameBytes = zeros(256);
  nameBytes.write(name, "latin1");
  return Buffer.concat([
    words(0x22222222),
    nameBytes,
    floats(...identity),
    words(0, meshes.length, children.length, 0),
    ...meshes.map(meshBlock),
    ...children.map(nodeBlock),
  ]);
}

// The file of a tree of { name, meshes, children }.
export const sceneBytes = (root) => Buffer.concat([words(0x11111111, 107, 0), nodeBlock(root)]);

// A square on the ground of 2 by 2 around (x, z), whose triangles are seen from above, or from below.
export function square(x, z, isSeenFromAbove, more) {
  const side = isSeenFromAbove ? 1 : -1;
  const corner = (dx, dz, u, v) => [x + dx, 0, z + dz, 0, side, 0, u, v];
  const vertices = [...corner(-1, -1, 0, 1), ...corner(-1, 1, 0, 0), ...corner(1, 1, 1, 0), ...corner(1, -1, 1, 1)];
  return { vertices, indices: isSeenFromAbove ? [0, 1, 2, 0, 2, 3] : [0, 2, 1, 0, 3, 2], ...more };
}

// A rolling field of patches of 100 by 100 squares, each in a node of its own: 20,000 triangles per patch.
export function field(patches) {
  const height = (x, z) => 6 * Math.sin(x / 40) * Math.cos(z / 30) + Math.sin(x / 3) * Math.sin(z / 4);
  const across = Math.ceil(Math.sqrt(patches));
  const patch = (number) => {
    const [left, near] = [(number % across) * 100, Math.floor(number / across) * 100];
    const vertices = [];
    const indices = [];
    for (let row = 0; row <= 100; ++row) {
      for (let column = 0; column <= 100; ++column) {
        const [x, z] = [left + column, near + row];
        vertices.push(x, height(x, z), z, 0, 1, 0, column / 10, row / 10);
        if (row < 100 && column < 100) {
          const at = row * 101 + column;
          indices.push(at, at + 101, at + 102, at, at + 102, at + 1);
        }
      }
    }
    const shade = (number % 5) * 51;
    return { name: `ground ${number % 5}`, color: [shade / 255, 0.6, 0.2, 1], vertices, indices };
  };
  const children = Array.from({ length: patches }, (_, number) => ({ name: `patch ${number}`, meshes: [patch(number)] }));
  return { children };
}
