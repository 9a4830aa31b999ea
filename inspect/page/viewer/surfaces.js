// The triangles as three.js draws them: per material one geometry, with a mesh for each way to show it.
import {
  BackSide,
  BufferAttribute,
  BufferGeometry,
  CanvasTexture,
  Color,
  FrontSide,
  Mesh,
  MeshBasicMaterial,
  MeshLambertMaterial,
  NearestFilter,
  RepeatWrapping,
  SRGBColorSpace,
  Texture,
} from "three";

const MOST_ANISOTROPY = 8;
const BACK_COLOUR = 0xe0218a;

// Moves all positions so that the scene has its middle at the origin and a radius of 1, whatever its units. Returns the
// change.
export function normalizePositions(materials) {
  const low = [Infinity, Infinity, Infinity];
  const high = [-Infinity, -Infinity, -Infinity];
  for (const { positions } of materials) {
    for (let at = 0; at < positions.length; ++at) {
      low[at % 3] = Math.min(low[at % 3], positions[at]);
      high[at % 3] = Math.max(high[at % 3], positions[at]);
    }
  }
  if (low[0] > high[0]) {
    return null;
  }
  const middle = low.map((value, axis) => value / 2 + high[axis] / 2);
  const radius = Math.hypot(...low.map((value, axis) => high[axis] / 2 - value / 2)) || 1;
  for (const { positions } of materials) {
    for (let at = 0; at < positions.length; ++at) {
      positions[at] = (positions[at] - middle[at % 3]) / radius;
    }
  }
  return { middle, radius, ground: (low[1] - middle[1]) / radius };
}

function geometryOf(material) {
  const geometry = new BufferGeometry();
  geometry.setAttribute("position", new BufferAttribute(material.positions, 3));
  geometry.setAttribute("normal", new BufferAttribute(material.normals, 4, true));
  if (material.coordinates) {
    geometry.setAttribute("uv", new BufferAttribute(material.coordinates, 2));
  }
  geometry.setIndex(new BufferAttribute(material.indices, 1));
  return geometry;
}

function checkedPicture() {
  const size = 8;
  const canvas = document.createElement("canvas");
  canvas.width = canvas.height = size;
  const pen = canvas.getContext("2d");
  for (let field = 0; field < size * size; ++field) {
    const row = Math.floor(field / size);
    pen.fillStyle = (field + row) % 2 ? "#d9d9de" : "#b9b9c2";
    pen.fillRect(field % size, row, 1, 1);
  }
  const texture = new CanvasTexture(canvas);
  texture.magFilter = NearestFilter;
  return texture;
}

function prepare(texture, renderer) {
  texture.flipY = false;
  texture.wrapS = texture.wrapT = RepeatWrapping;
  texture.colorSpace = SRGBColorSpace;
  texture.anisotropy = Math.min(MOST_ANISOTROPY, renderer.capabilities.getMaxAnisotropy());
  texture.needsUpdate = true;
  return texture;
}

// Decodes all pictures; those that the browser can't decode become null.
export function loadPictures(pictures, renderer) {
  return Promise.all(
    pictures.map(async ({ blob }) => {
      try {
        const options = { premultiplyAlpha: "none", colorSpaceConversion: "none" };
        return prepare(new Texture(await createImageBitmap(blob, options)), renderer);
      } catch {
        return null;
      }
    }),
  );
}

function surfaceOf(fact, material, picture, missing) {
  const alpha = fact.color[3];
  const isCut = picture !== null && !material.isOpaque;
  const surface = new MeshLambertMaterial({
    map: material.usesPicture ? (picture ?? missing) : null,
    side: FrontSide,
    opacity: alpha,
    transparent: alpha < 1 || isCut,
    depthWrite: alpha === 1,
    alphaTest: isCut && alpha === 1 ? 0.05 : 0,
    polygonOffset: true,
    polygonOffsetFactor: 1,
    polygonOffsetUnits: 1,
  });
  if (!material.usesPicture) {
    surface.color = new Color().setRGB(...fact.color.slice(0, 3), SRGBColorSpace);
  }
  return surface;
}

function addPart(stage, part) {
  part.frustumCulled = false;
  part.matrixAutoUpdate = false;
  stage.add(part);
}

const OVERLAYS = {
  edges: () => new MeshBasicMaterial({ color: 0x11131a, wireframe: true, transparent: true, opacity: 0.45 }),
  backs: () =>
    new MeshLambertMaterial({
      color: BACK_COLOUR,
      emissive: BACK_COLOUR,
      emissiveIntensity: 0.25,
      side: BackSide,
      polygonOffset: true,
      polygonOffsetFactor: 2,
      polygonOffsetUnits: 2,
    }),
};

// Shows or hides "edges" or "backs". They are made when they are first shown.
export function showOverlay(surfaces, kind, isShown, stage) {
  const look = isShown && surfaces.some((surface) => !surface[kind]) ? OVERLAYS[kind]() : null;
  for (const surface of surfaces) {
    if (isShown && !surface[kind]) {
      surface[kind] = new Mesh(surface.geometry, look);
      addPart(stage, surface[kind]);
    }
    if (surface[kind]) {
      surface[kind].visible = isShown;
    }
  }
}

// Makes the meshes and adds them to the stage. Sets isMissing of materials whose picture can't be decoded.
export async function createSurfaces({ facts, scene }, renderer, stage) {
  const pictures = await loadPictures(scene.pictures, renderer);
  const missing = prepare(checkedPicture(), renderer);
  const surfaces = [];
  scene.materials.forEach((material, place) => {
    const picture = material.picture === null ? null : pictures[material.picture];
    material.isMissing = material.usesPicture && picture === null;
    material.isOpaque = material.picture === null || scene.pictures[material.picture].isOpaque;
    if (material.triangles === 0) {
      return;
    }
    const geometry = geometryOf(material);
    const mesh = new Mesh(geometry, surfaceOf(facts.materials[place], material, picture, missing));
    mesh.castShadow = facts.materials[place].color[3] > 0.5;
    mesh.receiveShadow = true;
    addPart(stage, mesh);
    surfaces.push({ place, geometry, mesh });
  });
  return surfaces;
}
