// The camera: frames boxes, turns, pans and zooms. The scene has a radius of about 1 around the origin.
import { MathUtils, PerspectiveCamera, Spherical, Vector3 } from "three";
import { OrbitControls } from "three/examples/jsm/controls/OrbitControls.js";

const FIELD_OF_VIEW = 35; // Degrees, of the shorter side.
const MARGIN = 1.25;
const FIRST_DIRECTION = new Vector3(0.62, 0.5, 1).normalize();
const STEP = MathUtils.degToRad(7.5);
const FRAME_TIME = 350; // Milliseconds.

const cornersOf = ({ min, max }) =>
  [0, 1, 2, 3, 4, 5, 6, 7].map(
    (bits) => new Vector3(bits & 1 ? max.x : min.x, bits & 2 ? max.y : min.y, bits & 4 ? max.z : min.z),
  );

// Where to look, and from how far, so that all of a box is in the middle of the picture.
function fitBox(camera, box, direction) {
  const right = new Vector3().crossVectors(new Vector3(0, 1, 0), direction).normalize();
  const up = new Vector3().crossVectors(direction, right);
  const tangentUp = Math.tan(MathUtils.degToRad(camera.fov / 2)) / MARGIN;
  const tangents = [tangentUp * camera.aspect, tangentUp];
  const target = box.getCenter(new Vector3());
  let distance = 1e-4;
  for (let round = 0; round < 4; ++round) {
    const offsets = cornersOf(box).map((corner) => corner.sub(target));
    distance = 1e-4;
    for (const offset of offsets) {
      const sides = [right, up].map((axis, place) => Math.abs(offset.dot(axis)) / tangents[place]);
      distance = Math.max(distance, offset.dot(direction) + Math.max(...sides));
    }
    // Near corners take more of the picture than far ones.
    for (const axis of [right, up]) {
      const places = offsets.map((offset) => offset.dot(axis) / (distance - offset.dot(direction)));
      target.addScaledVector(axis, ((Math.min(...places) + Math.max(...places)) / 2) * distance);
    }
  }
  return { target, distance };
}

function setSize(view, width, height) {
  view.camera.aspect = width / height;
  const half = Math.tan(MathUtils.degToRad(FIELD_OF_VIEW / 2));
  const halfHeight = width < height ? half / view.camera.aspect : half;
  view.camera.fov = MathUtils.radToDeg(Math.atan(halfHeight)) * 2;
  view.camera.updateProjectionMatrix();
}

// Moves to a place at once, or step by step.
function moveTo(view, target, position, isSlow) {
  cancelAnimationFrame(view.moving);
  const place = (part) => {
    view.controls.target.lerpVectors(view.from.target, target, part);
    view.camera.position.lerpVectors(view.from.position, position, part);
    view.controls.update();
    view.onChange();
  };
  view.from = { target: view.controls.target.clone(), position: view.camera.position.clone() };
  if (isSlow || matchMedia("(prefers-reduced-motion: reduce)").matches) {
    place(1);
    return;
  }
  const start = performance.now();
  const step = (now) => {
    const part = Math.min(1, Math.max(0, (now - start) / FRAME_TIME));
    place(1 - (1 - part) ** 3);
    if (part < 1) {
      view.moving = requestAnimationFrame(step);
    }
  };
  view.moving = requestAnimationFrame(step);
}

function frame(view, box, direction, isSlow) {
  const { target, distance } = fitBox(view.camera, box, direction);
  moveTo(view, target, target.clone().addScaledVector(direction, distance), isSlow);
}

const directionOf = (view) => view.camera.position.clone().sub(view.controls.target).normalize();

function turn(view, across, up) {
  const { camera, controls } = view;
  const offset = camera.position.clone().sub(controls.target);
  const angles = new Spherical().setFromVector3(offset);
  angles.theta += across * STEP;
  angles.phi -= up * STEP;
  camera.position.copy(controls.target).add(offset.setFromSpherical(angles.makeSafe()));
  controls.update();
  view.onChange();
}

function pan(view, across, up) {
  const { camera, controls } = view;
  const far = camera.position.distanceTo(controls.target) * 0.06;
  const step = new Vector3(across * far, up * far, 0).applyQuaternion(camera.quaternion);
  camera.position.add(step);
  controls.target.add(step);
  controls.update();
  view.onChange();
}

function zoom(view, factor) {
  const { camera, controls } = view;
  camera.position.sub(controls.target).multiplyScalar(factor).add(controls.target);
  controls.update();
  view.onChange();
}

const ARROWS = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] };

// True if the key moved the camera.
function pressKey(view, event) {
  const arrow = ARROWS[event.key];
  if (arrow) {
    (event.shiftKey ? pan : turn)(view, ...arrow);
  } else if (event.key === "+" || event.key === "=") {
    zoom(view, 0.85);
  } else if (event.key === "-" || event.key === "_") {
    zoom(view, 1 / 0.85);
  } else {
    return false;
  }
  return true;
}

// Calls onChange after each movement.
export function createView(canvas, onChange) {
  const camera = new PerspectiveCamera(FIELD_OF_VIEW, 1, 0.01, 100);
  camera.position.copy(FIRST_DIRECTION).multiplyScalar(3);
  const controls = new OrbitControls(camera, canvas);
  controls.zoomToCursor = true;
  controls.minDistance = 1e-4;
  controls.maxDistance = 60;
  controls.update();
  const view = { camera, controls, onChange, moving: 0, from: null };
  controls.addEventListener("start", () => cancelAnimationFrame(view.moving));
  controls.addEventListener("change", onChange);
  return {
    camera,
    setSize: (width, height) => setSize(view, width, height),
    frameFirst: (box) => frame(view, box, FIRST_DIRECTION, true),
    frameAll: (box, isSlow) => frame(view, box, FIRST_DIRECTION, isSlow),
    frameBox: (box, isSlow) => frame(view, box, directionOf(view), isSlow),
    pressKey: (event) => pressKey(view, event),
    // Keeps what can be seen between the two planes.
    fitPlanes: () => {
      const far = camera.position.length() + 6;
      camera.near = Math.max(camera.position.length() - 1.8, far / 8000);
      camera.far = far;
      camera.updateProjectionMatrix();
    },
  };
}
