// A camera without perspective that looks at a model from any side, and the ways to move it: pointer, wheel, fingers, keys.
import { Matrix4, OrthographicCamera, Quaternion, Vector3 } from 'three';

const X = new Vector3(1, 0, 0);
const Y = new Vector3(0, 1, 0);
const Z = new Vector3(0, 0, 1);

export class ModelCamera {
  constructor(points) {
    this.points = points;
    this.camera = new OrthographicCamera();
    this.camera.matrixAutoUpdate = false;
    this.turn = new Quaternion(); // of the model before the camera
    this.centre = new Vector3();
    this.halfHeight = 1;
    this.radius = radiusOf(points);
    this.width = 1;
    this.height = 1;
    this.inset = 0; // pixels at the right side that something else covers
    this.lookDown(defaultDirections(points));
  }

  resize(width, height) {
    this.width = width;
    this.height = height;
  }

  // Directions of the model that go to the right, up and towards the user.
  lookDown([right, up, towards]) {
    const rows = new Matrix4().makeBasis(right, up, towards);
    this.turn.setFromRotationMatrix(rows.transpose());
  }

  rotate(aboutX, aboutY, aboutZ = 0) {
    for (const [axis, angle] of [[X, aboutX], [Y, aboutY], [Z, aboutZ]]) this.turn.premultiply(new Quaternion().setFromAxisAngle(axis, angle));
    this.turn.normalize();
  }

  // By parts of the height of the view.
  pan(right, up) {
    const shift = new Vector3(-right, -up, 0).multiplyScalar(2 * this.halfHeight);
    this.centre.add(shift.applyQuaternion(this.turn.clone().invert()));
  }

  zoom(factor) {
    this.halfHeight = Math.min(Math.max(this.halfHeight / factor, this.radius * 1e-4), this.radius * 20);
  }

  centreOn(point) {
    this.centre.copy(point);
  }

  // Makes the model fill the view from where it is seen.
  fit(points = this.points) {
    const matrix = new Matrix4().makeRotationFromQuaternion(this.turn).elements;
    const low = [Infinity, Infinity, Infinity];
    const high = [-Infinity, -Infinity, -Infinity];
    for (let i = 0; i < points.length; i += 3) {
      for (let c = 0; c < 3; ++c) {
        const at = matrix[c] * points[i] + matrix[4 + c] * points[i + 1] + matrix[8 + c] * points[i + 2];
        if (at < low[c]) low[c] = at;
        if (at > high[c]) high[c] = at;
      }
    }
    if (!(low[0] <= high[0])) return;
    this.centre.set(...low.map((l, c) => (l + high[c]) / 2)).applyQuaternion(this.turn.clone().invert());
    const free = Math.max(this.width - this.inset, this.width / 2);
    this.halfHeight = 1.06 * Math.max((high[1] - low[1]) / 2, ((high[0] - low[0]) / 2) * (this.height / free)) || 1;
    this.pan((free - this.width) / 2 / this.height, 0);
  }

  update() {
    const { camera } = this;
    camera.top = this.halfHeight;
    camera.bottom = -camera.top;
    camera.right = (this.halfHeight * this.width) / this.height;
    camera.left = -camera.right;
    // Far enough for a deformed model, and no farther: depth has few bits.
    this.distance = 4 * this.radius;
    camera.near = 0;
    camera.far = 2 * this.distance;
    camera.updateProjectionMatrix();
    const inverse = this.turn.clone().invert();
    camera.matrix.compose(Z.clone().multiplyScalar(this.distance).applyQuaternion(inverse).add(this.centre), inverse, new Vector3(1, 1, 1));
    camera.updateMatrixWorld(true);
    return camera;
  }

  // Where a point is in the view, from 0 to 1 from the left and from the top, and how deep.
  project(point) {
    const p = point.clone().project(this.camera);
    return { x: (p.x + 1) / 2, y: (1 - p.y) / 2, depth: (p.z + 1) / 2 };
  }

  // The other way round.
  unproject({ x, y, depth }) {
    return new Vector3(2 * x - 1, 1 - 2 * y, 2 * depth - 1).unproject(this.camera);
  }
}

function extents(points) {
  const low = [Infinity, Infinity, Infinity];
  const high = [-Infinity, -Infinity, -Infinity];
  for (let i = 0; i < points.length; ++i) {
    if (!Number.isFinite(points[i])) continue;
    low[i % 3] = Math.min(low[i % 3], points[i]);
    high[i % 3] = Math.max(high[i % 3], points[i]);
  }
  return low.map((l, c) => Math.max(0, high[c] - l));
}

function radiusOf(points) {
  return Math.hypot(...extents(points)) / 2 || 1;
}

// The longest side to the right, the shortest towards the user, turned a little so that all three can be seen.
function defaultDirections(points) {
  const sizes = extents(points);
  const axes = [0, 1, 2].sort((a, b) => sizes[b] - sizes[a]);
  const unit = (axis) => new Vector3(...[0, 1, 2].map((c) => (c === axis ? 1 : 0)));
  const right = unit(axes[0]);
  const up = unit(axes[1]);
  const towards = right.clone().cross(up);
  const tilt = new Quaternion().setFromAxisAngle(up, -0.45).premultiply(new Quaternion().setFromAxisAngle(right, 0.0));
  const lean = new Quaternion().setFromAxisAngle(right.clone().applyQuaternion(tilt), -0.4);
  return [right, up, towards].map((v) => v.applyQuaternion(tilt).applyQuaternion(lean));
}

// Moves the camera as the user does; `moved` is called after each change.
export function control(element, camera, moved) {
  const pointers = new Map();
  const at = (event) => ({ x: event.clientX, y: event.clientY });
  const size = () => element.clientHeight || 1;

  const move = (event) => {
    const before = pointers.get(event.pointerId);
    if (!before) return;
    const now = at(event);
    const others = [...pointers].filter(([id]) => id !== event.pointerId).map(([, p]) => p);
    const [dx, dy] = [now.x - before.x, now.y - before.y];
    if (others.length) {
      const apart = (p) => Math.hypot(p.x - others[0].x, p.y - others[0].y);
      if (apart(before) > 0) camera.zoom(apart(now) / apart(before));
      camera.pan(dx / size() / 2, -dy / size() / 2);
    } else if (event.shiftKey || event.buttons & 6) {
      camera.pan(dx / size(), -dy / size());
    } else {
      camera.rotate((4 * dy) / size(), (4 * dx) / size());
    }
    pointers.set(event.pointerId, now);
    moved();
  };
  element.addEventListener('pointerdown', (event) => {
    pointers.set(event.pointerId, at(event));
    element.setPointerCapture(event.pointerId);
  });
  element.addEventListener('pointermove', move);
  for (const end of ['pointerup', 'pointercancel']) element.addEventListener(end, (event) => pointers.delete(event.pointerId));
  element.addEventListener('contextmenu', (event) => event.preventDefault());
  element.addEventListener('wheel', (event) => {
    event.preventDefault();
    camera.zoom(Math.exp(-event.deltaY / 500));
    moved();
  }, { passive: false });

  const keys = {
    ArrowLeft: (s) => (s ? camera.pan(-0.05, 0) : camera.rotate(0, -0.12)),
    ArrowRight: (s) => (s ? camera.pan(0.05, 0) : camera.rotate(0, 0.12)),
    ArrowUp: (s) => (s ? camera.pan(0, 0.05) : camera.rotate(-0.12, 0)),
    ArrowDown: (s) => (s ? camera.pan(0, -0.05) : camera.rotate(0.12, 0)),
    '+': () => camera.zoom(1.2),
    '=': () => camera.zoom(1.2),
    '-': () => camera.zoom(1 / 1.2),
    Home: () => camera.fit(),
  };
  element.addEventListener('keydown', (event) => {
    const key = keys[event.key];
    if (!key || event.ctrlKey || event.metaKey || event.altKey) return;
    event.preventDefault();
    key(event.shiftKey);
    moved();
  });
}
