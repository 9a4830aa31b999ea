// Reads scene files, as docs/scene-file.md describes them, and compares triangles.

// The corners of the triangles of a scene file: of each 8 numbers (position, normal, texture coordinates), then
// the colour of its material and whether it has a texture.
export function readScene(bytes) {
  const triangles = [];
  let at = 12;
  let nodes = 1;
  while (nodes > 0) {
    const meshes = bytes.readInt32LE(at + 328);
    nodes += bytes.readInt32LE(at + 332) - 1;
    at += 340;
    for (let mesh = 0; mesh < meshes; ++mesh) {
      at = readMesh(bytes, at, triangles);
    }
  }
  return triangles;
}

function readMesh(bytes, at, triangles) {
  const vertices = at + 52 + 124 + 2 * bytes.readUInt32LE(at + 56) + 2 * bytes.readUInt32LE(at + 96);
  const vertexCount = bytes.readInt32LE(at + 4);
  const indices = vertices + 36 * vertexCount;
  const end = indices + 12 * bytes.readInt32LE(at + 8);
  const color = [0, 1, 2, 3].map(i => bytes.readFloatLE(at + 64 + 4 * i));
  const hasTexture = bytes.readUInt32LE(at + 96) > 1;
  for (let index = indices; index < end; index += 12) {
    triangles.push({hasTexture, color, corners: [0, 4, 8].map(corner => {
      const vertex = vertices + 32 * bytes.readUInt32LE(index + corner);
      return Array.from({length: 8}, (_, i) => bytes.readFloatLE(vertex + 4 * i));
    })});
  }
  return end;
}

// Without those that have not three distinct corners.
export function properTriangles(triangles) {
  return triangles.filter(({corners: [a, b, c]}) => {
    const differ = (p, q) => p[0] !== q[0] || p[1] !== q[1] || p[2] !== q[2];
    return differ(a, b) && differ(b, c) && differ(c, a);
  });
}

// How many of them have two corners within a distance on each axis, as a share of the largest extent: quantization
// can join these.
export function thinTriangles(triangles, share) {
  const distance = share * extentOf(triangles);
  const near = (p, q) => [0, 1, 2].every(axis => Math.abs(p[axis] - q[axis]) <= distance);
  return triangles.filter(({corners: [a, b, c]}) => near(a, b) || near(b, c) || near(c, a)).length;
}

// The triangles of a model as those of its scene: both sides of each, on the ground, in the middle.
export function onGround(triangles) {
  const [x, y, z] = [0, 1, 2].map(axis => rangeOf(triangles, axis));
  const origin = [(x.least + x.most) / 2, y.least, (z.least + z.most) / 2];
  return triangles.flatMap(({corners}) => {
    const moved = {corners: corners.map(corner => corner.map((value, axis) => value - origin[axis]))};
    return [moved, moved];
  });
}

export function extentOf(triangles) {
  return Math.max(...[0, 1, 2].map(axis => rangeOf(triangles, axis).size));
}

export function rangeOf(triangles, number) {
  let least = Infinity;
  let most = -Infinity;
  for (const {corners} of triangles) {
    for (const corner of corners) {
      least = Math.min(least, corner[number]);
      most = Math.max(most, corner[number]);
    }
  }
  return {least, most, size: most - least};
}

// The values of a measure, sorted. If each of some values changes by at most d, so does each of them in sorted
// order: so the triangles of two scenes can be compared without knowing which is which. If the second scene lacks n
// values, its value i is between the values i and i + n of the first, but for d.
function sortedValues(triangles, measure) {
  return new Float64Array(triangles.flatMap(measure)).sort();
}

function distanceOfSorted(values, others) {
  const missing = values.length - others.length;
  let largest = missing < 0 ? Infinity : 0;
  others.forEach((other, i) => {
    const distance = Math.max(values[i] - other, other - values[i + missing], 0);
    largest = distance <= largest ? largest : distance; // also if it isn't a number
  });
  return largest;
}

const along = (direction, first = 0) => corner => direction.reduce((sum, d, i) => sum + d * corner[first + i], 0);
const ofCorners = value => triangle => triangle.corners.map(value);
const ofCentre = value => triangle => triangle.corners.reduce((sum, corner) => sum + value(corner) / 3, 0);

const directions = [[1, 0, 0], [0, 1, 0], [0, 0, 1], [0.48, 0.6, 0.64], [0.6, -0.64, 0.48]];
const ways = [[1, 0], [0, 1], [0.6, 0.8], [0.8, -0.6]];
const measures = {
  positions: directions.flatMap(d => [ofCorners(along(d)), ofCentre(along(d))]),
  normals: directions.map(d => ofCorners(along(d, 3))),
  coordinates: ways.flatMap(d => [ofCorners(along(d, 6)), ofCentre(along(d, 6))]),
  colors: [0, 1, 2, 3].map(i => triangle => triangle.color[i]),
};

// The largest difference of the sorted values of a kind of measures.
export function differenceOf(first, second, kind) {
  return Math.max(...measures[kind].map(
    measure => distanceOfSorted(sortedValues(first, measure), sortedValues(second, measure))));
}
