// Usage: node try-twins.mjs ORVANE FILE...  Compares what orvane makes of glTF files with what it makes of their
// compressed twins, and with what three.js shows. Exit code 0: they agree, but for the differences explained here.
import {execFile} from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import {promisify} from 'node:util';
import {evaluateByThree} from './evaluate-by-three.mjs';
import {makers, makeTwin} from './make-twins.mjs';
import {differenceOf, extentOf, onGround, properTriangles, rangeOf, readScene, thinTriangles} from './read-scene.mjs';

const explained = [
  {file: 'models/glTF/', what: 'not read', why: 'it is glTF 1.0'},
  {file: 'wrongTypes/', what: 'not read', why: 'the JSON has wrong types'},
  {file: 'IncorrectVertexArrays/', what: 'not read', why: 'the buffer is shorter than its views'},
  {file: 'techniqueWebGL/', what: 'not read', why: 'it requires KHR_technique_webgl'},
  {file: 'glTF2/draco/', what: 'not read', why: 'gltfpack and three.js do not decode draco'},
  {file: 'BoxBadNormals', what: 'normals', why: 'zeros have no direction'},
  {file: 'issue_3269/', what: 'coordinates', why: 'a picture without coordinates lies in units of the mesh'},
];

// The largest differences between triangles. Positions are shares of the largest extent, coordinates of their range.
const step = 2 ** -14; // of quantized positions
const limits = {positions: 2 * step, normals: 0.02, coordinates: 2 ** -11, colors: 1 / 255 + 1e-6};
const limitsOfThree = {positions: 1e-6};

const [orvane, ...files] = process.argv.slice(2);
const work = fs.mkdtempSync(path.join(os.tmpdir(), 'twins-'));
process.on('exit', () => fs.rmSync(work, {recursive: true, force: true}));

// The proper triangles that orvane makes of a file, or the reason why it refuses the file.
async function convert(file) {
  const scene = path.join(work, 'scene', 'scene.bin');
  fs.rmSync(path.dirname(scene), {recursive: true, force: true});
  try {
    await promisify(execFile)(orvane, [file, scene, 'maps', path.join(work, 'scene', 'run.log')]);
  } catch (error) {
    return {reason: `refused (${error.code}): ${error.stderr.trim().split('\n').pop()}`};
  }
  return {triangles: properTriangles(readScene(fs.readFileSync(scene)))};
}

// What differs by more than its limit: words of "triangles", "positions", "normals", "coordinates" and "colors",
// with the difference. None: the scenes agree.
function differences(original, other, allowed) {
  const missing = original.length - other.length;
  if (missing < 0 || missing > thinTriangles(original, step)) {
    return [`triangles ${other.length} of ${original.length}`];
  }
  const range = Math.max(...[6, 7].map(number => rangeOf(original, number).size));
  const units = {positions: extentOf(original), coordinates: range};
  return Object.entries(allowed).flatMap(([kind, limit]) => {
    const textured = triangles => kind === 'coordinates' ? triangles.filter(({hasTexture}) => hasTexture) : triangles;
    const difference = differenceOf(textured(original), textured(other), kind);
    return difference <= limit * (units[kind] ?? 1) ? [] : [`${kind} ${difference.toPrecision(3)}`];
  });
}

const counts = {files: 0, refused: 0, compared: 0, agree: 0, explained: 0, faults: 0};
const times = new Map(); // that each explanation was needed

function conclude(file, by, found) {
  ++counts.compared;
  const row = explained.find(({file: part, what}) => file.includes(part) && found.every(text => text.startsWith(what)));
  if (found.length === 0) {
    ++counts.agree;
  } else if (row !== undefined) {
    ++counts.explained;
    times.set(row, (times.get(row) ?? 0) + 1);
  } else {
    ++counts.faults;
    console.log(`FAULT: ${file}, ${by}: ${found.join(', ')}`);
  }
}

async function tryThree(file, original) {
  try {
    const triangles = onGround(properTriangles(await evaluateByThree(file)));
    conclude(file, 'three.js', differences(original, triangles, limitsOfThree));
  } catch (error) {
    conclude(file, 'three.js', [`not read: ${error.message}`]);
  }
}

async function tryTwin(file, original, maker) {
  const twin = path.join(work, 'twin', 'twin.glb');
  fs.rmSync(path.dirname(twin), {recursive: true, force: true});
  const reason = await makeTwin(maker, file, twin);
  if (reason !== null) {
    conclude(file, maker, [`not read: ${reason}`]);
    return;
  }
  const converted = await convert(twin);
  conclude(file, maker, converted.reason ? [converted.reason] : differences(original, converted.triangles, limits));
}

for (const file of files) {
  ++counts.files;
  const original = await convert(file);
  if (original.reason !== undefined) {
    ++counts.refused;
    continue;
  }
  await tryThree(file, original.triangles);
  for (const maker of Object.keys(makers)) {
    await tryTwin(file, original.triangles, maker);
  }
}
for (const [row, count] of times) {
  console.log(`explained: ${row.file}: ${row.what} (${count}), because ${row.why}`);
}
console.log(`${counts.files} files, of which orvane refuses ${counts.refused}; ${counts.compared} comparisons: ` +
  `${counts.agree} agree, ${counts.explained} are explained, ${counts.faults} faults`);
process.exitCode = counts.faults === 0 && counts.agree > 0 ? 0 : 1;
