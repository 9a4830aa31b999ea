// Makes compressed twins of glTF files by gltfpack and by glTF-Transform.
import {Logger, NodeIO} from '@gltf-transform/core';
import {ALL_EXTENSIONS} from '@gltf-transform/extensions';
import {draco, meshopt, quantize, textureCompress, unpartition} from '@gltf-transform/functions';
import draco3d from 'draco3dgltf';
import * as gltfpack from 'gltfpack';
import {MeshoptDecoder, MeshoptEncoder} from 'meshoptimizer';
import fs from 'node:fs';
import path from 'node:path';
import sharp from 'sharp';

await Promise.all([MeshoptDecoder.ready, MeshoptEncoder.ready]);
const io = new NodeIO().setLogger(new Logger(Logger.Verbosity.SILENT)).registerExtensions(ALL_EXTENSIONS)
  .registerDependencies({
    'draco3d.decoder': await draco3d.createDecoderModule(),
    'draco3d.encoder': await draco3d.createEncoderModule(),
    'meshopt.decoder': MeshoptDecoder,
    'meshopt.encoder': MeshoptEncoder,
  });
io.setStrictResources(false); // pictures may be missing

function pack(...options) {
  return async (source, target) => {
    await gltfpack.pack([...options, '-i', source, '-o', target], {
      read: name => fs.readFileSync(name),
      write: (name, bytes) => fs.writeFileSync(name, bytes),
    });
  };
}

function transform(...steps) {
  return async (source, target) => {
    const document = await io.read(source);
    await document.setLogger(new Logger(Logger.Verbosity.SILENT)).transform(unpartition(), ...steps);
    await io.write(target, document);
  };
}

// All of them keep positions of at least 14 bits, texture coordinates of 12 and normals of 8.
export const makers = {
  'gltfpack -c': pack('-c', '-kv'),
  'gltfpack -cc': pack('-cc', '-kv'),
  'gltfpack -cc -mi': pack('-cc', '-kv', '-mi', '-ar', '16'),
  'draco edgebreaker': transform(draco({method: 'edgebreaker'})),
  'draco sequential': transform(draco({method: 'sequential'})),
  'meshopt medium': transform(meshopt({encoder: MeshoptEncoder, level: 'medium'})),
  'meshopt high': transform(meshopt({encoder: MeshoptEncoder, level: 'high'})),
  'quantize': transform(quantize()),
  'webp': transform(textureCompress({encoder: sharp, targetFormat: 'webp', lossless: true})),
};

// Makes the twin of a file. Returns null, or why the tool doesn't make it.
export async function makeTwin(maker, source, target) {
  try {
    fs.mkdirSync(path.dirname(target), {recursive: true});
    await makers[maker](source, target);
    return null;
  } catch (error) {
    return String(error.message ?? error).split('\n')[0];
  }
}
