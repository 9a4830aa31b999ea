// Another evaluation of glTF files: the triangles that three.js shows, posed by its morphing and its joints.
import {MeshoptDecoder} from 'meshoptimizer';
import fs from 'node:fs';
import path from 'node:path';
import {Matrix4, Vector3} from 'three';
import {GLTFLoader} from 'three/addons/loaders/GLTFLoader.js';

// What the loader expects of a browser.
globalThis.self ??= globalThis;
globalThis.ProgressEvent ??= class extends Event {};
console.warn = () => {};

function readJson(bytes) {
  if (bytes.readUInt32LE(0) !== 0x46546C67) {
    return JSON.parse(bytes.toString('utf8'));
  }
  const size = bytes.readUInt32LE(12);
  const json = JSON.parse(bytes.subarray(20, 20 + size).toString('utf8'));
  const first = json.buffers?.[0];
  if (first !== undefined && first.uri === undefined) {
    first.uri = dataUri(bytes.subarray(28 + size));
  }
  return json;
}

const dataUri = bytes => 'data:application/octet-stream;base64,' + bytes.toString('base64');

// The document of a file with its buffers inside and without materials, whose pictures need a browser.
function prepare(file) {
  const json = readJson(fs.readFileSync(file));
  for (const buffer of json.buffers ?? []) {
    if (buffer.uri !== undefined && !buffer.uri.startsWith('data:')) {
      buffer.uri = dataUri(fs.readFileSync(path.join(path.dirname(file), decodeURIComponent(buffer.uri))));
    }
  }
  for (const primitive of (json.meshes ?? []).flatMap(mesh => mesh.primitives)) {
    delete primitive.material;
  }
  for (const member of ['materials', 'textures', 'images', 'samplers', 'animations', 'cameras']) {
    delete json[member];
  }
  for (const node of json.nodes ?? []) {
    delete node.camera;
  }
  return json;
}

function placesOf(mesh) {
  if (!mesh.isInstancedMesh) {
    return [mesh.matrixWorld];
  }
  return Array.from({length: mesh.count}, (_, i) => {
    const place = new Matrix4();
    mesh.getMatrixAt(i, place);
    return place.premultiply(mesh.matrixWorld);
  });
}

function addTriangles(mesh, triangles) {
  const {index, attributes} = mesh.geometry;
  const count = index === null ? attributes.position.count : index.count;
  const points = Array.from({length: attributes.position.count}, (_, i) => mesh.getVertexPosition(i, new Vector3()));
  for (const place of placesOf(mesh)) {
    const placed = points.map(point => point.clone().applyMatrix4(place));
    for (let i = 0; i + 3 <= count; i += 3) {
      const corners = [0, 1, 2].map(k => placed[index === null ? i + k : index.getX(i + k)]);
      if (corners.every(({x, y, z}) => Number.isFinite(x + y + z))) {
        triangles.push({corners: corners.map(({x, y, z}) => [x, y, -z])});
      }
    }
  }
}

// The triangles of a file in the axes of scene files, with positions alone. Throws if three.js can't read it.
export async function evaluateByThree(file) {
  const loader = new GLTFLoader().setMeshoptDecoder(MeshoptDecoder);
  const {scene} = await loader.parseAsync(JSON.stringify(prepare(file)), '');
  if (scene === undefined) {
    throw new Error('the file has no scene');
  }
  scene.updateMatrixWorld(true);
  const triangles = [];
  scene.traverseVisible(object => {
    if (object.isMesh) {
      addTriangles(object, triangles);
    }
  });
  return triangles;
}
