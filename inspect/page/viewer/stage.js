// The 3D view: draws the scene when something changes, and finds what is at a point of the picture.
import {
  Box3,
  BufferGeometry,
  DirectionalLight,
  HemisphereLight,
  Mesh,
  MeshBasicMaterial,
  PCFShadowMap,
  PlaneGeometry,
  Raycaster,
  Scene,
  ShadowMaterial,
  Vector2,
  Vector3,
  WebGLRenderer,
} from "three";
import { createView } from "./camera.js";
import { meshesBelow } from "./data.js";
import { createSurfaces, normalizePositions, showOverlay } from "./surfaces.js";

// Triangles above which movements aren't animated, nothing casts a shadow, and edges aren't smoothed, so that large
// scenes open without a GPU, too.
const MOST_ANIMATED = 150_000;
const MOST_SHADOWED = 400_000;
const MOST_SHADOWED_MATERIALS = 2000; // The same for materials, each of which is drawn by itself.
const MOST_SMOOTHED = 400_000;
const CHOSEN_COLOUR = 0x2f81f7;
const SUN = new Vector3(-0.75, 1.5, 0.9);

function createRenderer(canvas, antialias) {
  const attributes = { alpha: true, antialias, powerPreference: "high-performance" };
  const context = canvas.getContext("webgl2", attributes);
  if (!context) {
    return null;
  }
  const renderer = new WebGLRenderer({ canvas, context, ...attributes });
  renderer.setPixelRatio(Math.min(devicePixelRatio, 2));
  renderer.setClearColor(0x000000, 0);
  return renderer;
}

function addLights(stage, renderer, hasShadows, ground) {
  stage.add(new HemisphereLight(0xffffff, 0xc4c0ba, 2.05));
  const sun = new DirectionalLight(0xfffaf0, 1.75);
  sun.position.copy(SUN).multiplyScalar(2);
  stage.add(sun);
  if (!hasShadows) {
    return;
  }
  renderer.shadowMap.enabled = true;
  renderer.shadowMap.type = PCFShadowMap;
  renderer.shadowMap.autoUpdate = false;
  renderer.shadowMap.needsUpdate = true;
  sun.castShadow = true;
  sun.shadow.mapSize.set(2048, 2048);
  sun.shadow.radius = 3;
  sun.shadow.bias = -0.0004;
  sun.shadow.normalBias = 0.006;
  Object.assign(sun.shadow.camera, { left: -1.3, right: 1.3, top: 1.3, bottom: -1.3, near: 0.5, far: 7 });
  const floor = new Mesh(new PlaneGeometry(8, 8), new ShadowMaterial({ opacity: 0.22 }));
  floor.rotation.x = -Math.PI / 2;
  floor.position.y = ground - 0.002;
  floor.receiveShadow = true;
  floor.renderOrder = -1;
  stage.add(floor);
}

// The box of the triangles of the meshes from first up to last, and for each material which of its triangles these are.
function extentOf(view, first, last) {
  const { meshes, materials } = view.data.scene;
  const box = new Box3();
  const ranges = new Map();
  const point = new Vector3();
  for (let mesh = first; mesh < last; ++mesh) {
    const from = meshes.first[mesh];
    const to = from + meshes.drawn[mesh];
    const { positions, indices } = materials[meshes.material[mesh]];
    for (let at = from * 3; at < to * 3; ++at) {
      box.expandByPoint(point.fromArray(positions, indices[at] * 3));
    }
    const range = ranges.get(meshes.material[mesh]) ?? [from, to];
    ranges.set(meshes.material[mesh], [range[0], to]);
  }
  return { box, ranges };
}

function clearChosen(view) {
  for (const overlay of view.overlays) {
    view.stage.remove(overlay);
  }
  view.overlays = [];
  view.requestDraw();
}

function choose(view, node, isFramed) {
  clearChosen(view);
  const [first, last] = meshesBelow(view.data.scene, node);
  const { box, ranges } = extentOf(view, first, last);
  if (box.isEmpty()) {
    return null;
  }
  for (const { place, geometry } of node === 0 ? [] : view.surfaces) {
    const range = ranges.get(place);
    if (range) {
      const part = new BufferGeometry();
      part.setAttribute("position", geometry.getAttribute("position"));
      part.setIndex(geometry.index);
      part.setDrawRange(range[0] * 3, (range[1] - range[0]) * 3);
      const overlay = new Mesh(part, view.chosenSurface);
      overlay.frustumCulled = false;
      view.overlays.push(overlay);
      view.stage.add(overlay);
    }
  }
  if (isFramed) {
    view.camera.frameBox(box, view.isSlow);
  }
  return box.getSize(new Vector3()).multiplyScalar(view.change.radius);
}

// The node of the triangle at a point of the window, or null.
function nodeAt(view, event) {
  const area = view.canvas.getBoundingClientRect();
  const point = new Vector2(
    ((event.clientX - area.left) / area.width) * 2 - 1,
    1 - ((event.clientY - area.top) / area.height) * 2,
  );
  const caster = new Raycaster();
  caster.setFromCamera(point, view.camera.camera);
  const [hit] = caster.intersectObjects(view.surfaces.map(({ mesh }) => mesh));
  if (!hit) {
    return null;
  }
  const { place } = view.surfaces.find(({ mesh }) => mesh === hit.object);
  const { meshes } = view.data.scene;
  const isHit = (mesh) =>
    meshes.material[mesh] === place &&
    hit.faceIndex >= meshes.first[mesh] &&
    hit.faceIndex < meshes.first[mesh] + meshes.drawn[mesh];
  const found = meshes.node.findIndex((_, mesh) => isHit(mesh));
  return found < 0 ? null : meshes.node[found];
}

function setShown(view, kind, isShown) {
  showOverlay(view.surfaces, kind, isShown, view.stage);
  view.requestDraw();
}

function fit(view) {
  const { clientWidth: width, clientHeight: height } = view.canvas;
  const isNew = width !== view.width || height !== view.height;
  if (width > 0 && height > 0 && isNew) {
    Object.assign(view, { width, height });
    view.renderer.setSize(width, height, false);
    view.camera.setSize(width, height);
    view.requestDraw();
  }
}

function draw(view) {
  cancelAnimationFrame(view.requested);
  view.requested = 0;
  view.camera.fitPlanes();
  view.renderer.render(view.stage, view.camera.camera);
}

// Kept when the GPU, or what takes its place, has done all that it was told.
async function drawn(context) {
  const fence = context.fenceSync(context.SYNC_GPU_COMMANDS_COMPLETE, 0);
  context.flush();
  while (!context.isContextLost() && context.clientWaitSync(fence, 0, 0) === context.TIMEOUT_EXPIRED) {
    await new Promise((resolve) => setTimeout(resolve, 10));
  }
  context.deleteSync(fence);
}

// Returns null without WebGL 2. The promise is kept when the first picture is complete.
export async function createStage(canvas, data) {
  const renderer = createRenderer(canvas, data.facts.triangles <= MOST_SMOOTHED);
  if (!renderer) {
    return null;
  }
  const view = { canvas, data, renderer, stage: new Scene(), overlays: [], requested: 0 };
  view.requestDraw = () => {
    view.requested ||= requestAnimationFrame(() => draw(view));
  };
  view.change = normalizePositions(data.scene.materials) ?? { radius: 1, ground: 0 };
  view.isSlow = data.facts.triangles > MOST_ANIMATED;
  view.chosenSurface = new MeshBasicMaterial({
    color: CHOSEN_COLOUR,
    transparent: true,
    opacity: 0.38,
    depthWrite: false,
  });
  const hasShadows =
    data.facts.triangles <= MOST_SHADOWED && data.scene.materials.length <= MOST_SHADOWED_MATERIALS;
  addLights(view.stage, renderer, hasShadows, view.change.ground);
  view.surfaces = await createSurfaces(data, renderer, view.stage);
  view.camera = createView(canvas, view.requestDraw);
  const { box } = extentOf(view, 0, data.scene.meshes.node.length);
  const whole = box.isEmpty() ? new Box3(new Vector3(-1, -1, -1), new Vector3(1, 1, 1)) : box;
  fit(view);
  view.camera.frameFirst(whole);
  draw(view);
  await drawn(renderer.getContext());
  new ResizeObserver(() => fit(view)).observe(canvas);
  return {
    frameAll: () => view.camera.frameAll(whole, view.isSlow),
    choose: (node, isFramed) => choose(view, node, isFramed),
    clearChosen: () => clearChosen(view),
    nodeAt: (event) => nodeAt(view, event),
    showEdges: (isShown) => setShown(view, "edges", isShown),
    showBacks: (isShown) => setShown(view, "backs", isShown),
    pressKey: (event) => view.camera.pressKey(event),
  };
}
