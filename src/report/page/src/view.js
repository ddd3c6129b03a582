// The picture of the model: what is drawn, and what is under a point of it.
import {
  BufferAttribute, BufferGeometry, Color, DataTexture, DoubleSide, GLSL3, LineSegments, Mesh, NearestFilter, NoBlending, Points,
  Scene, ShaderMaterial, Vector3, WebGLRenderer, WebGLRenderTarget,
} from 'three';
import { ModelCamera } from './camera.js';
import { meanLength, onceEach } from './geometry.js';

// A number that stands for none: NaN does not survive every driver.
const NONE = 3e38;

const MOVED = 'vec3 moved() { return position + scale * u; }';
const FACES = `uniform float scale; in vec3 u; in float value; out vec3 eye; out float number; ${MOVED}
void main() { vec4 e = modelViewMatrix * vec4(moved(), 1.0); eye = e.xyz; number = value; gl_Position = projectionMatrix * e; }`;
const COLOURS = `uniform sampler2D bands; uniform float lowest, highest; uniform vec3 bare; in vec3 eye; in float number; out vec4 colour;
void main() {
  vec3 n = normalize(cross(dFdx(eye), dFdy(eye)));
  float t = highest > lowest ? (number - lowest) / (highest - lowest) : 0.5;
  vec3 c = number > 1e37 ? bare : texture(bands, vec2(clamp(t, 0.0, 1.0), 0.5)).rgb;
  colour = vec4(c * (0.45 + 0.55 * abs(n.z)), 1.0);
}`;
const FAINT = `uniform vec3 bare; in vec3 eye; in float number; out vec4 colour;
void main() { vec3 n = normalize(cross(dFdx(eye), dFdy(eye))); colour = vec4(bare * (0.5 + 0.5 * abs(n.z)), 0.16); }`;
// Depth in 24 bits, and whether there is anything.
const DEPTH = `in vec3 eye; in float number; out vec4 colour;
void main() { float z = gl_FragCoord.z * 16777215.0; colour = vec4(floor(z / 65536.0), floor(mod(z, 65536.0) / 256.0), mod(z, 256.0), 255.0) / 255.0; }`;
const LINES = `uniform float scale; in vec3 u; ${MOVED}
void main() { gl_Position = projectionMatrix * modelViewMatrix * vec4(moved(), 1.0); gl_PointSize = 7.0; }`;
const PLAIN = 'uniform vec4 ink; out vec4 colour; void main() { colour = ink; }';

export class View {
  // `model`: {coordinates, triangles (geometry.js), edges}. Throws where there is no WebGL.
  constructor(canvas, model, bands) {
    this.canvas = canvas;
    this.model = model;
    const options = { antialias: true, alpha: true, preserveDrawingBuffer: true };
    const context = canvas.getContext('webgl2', options);
    if (!context) throw new Error('no WebGL');
    this.renderer = new WebGLRenderer({ canvas, context, ...options });
    this.camera = new ModelCamera(model.coordinates);
    this.scene = new Scene();
    this.uniforms = {
      scale: { value: 0 }, lowest: { value: 0 }, highest: { value: 1 }, bands: { value: bandTexture(bands) }, bare: { value: new Color(0.62, 0.64, 0.67) },
    };
    this.target = new WebGLRenderTarget(1, 1);
    this.addObjects();
    this.showElements(null, false);
    this.showNodes(null);
  }

  addObjects() {
    const shader = (vertexShader, fragmentShader, more = {}) => new ShaderMaterial({ glslVersion: GLSL3, uniforms: this.uniforms, vertexShader, fragmentShader, side: DoubleSide, ...more });
    const lines = (ink) => new ShaderMaterial({ glslVersion: GLSL3, uniforms: { scale: this.uniforms.scale, ink: { value: ink } }, vertexShader: LINES, fragmentShader: PLAIN, transparent: true });
    const behindLines = { polygonOffset: true, polygonOffsetFactor: 1, polygonOffsetUnits: 2 };
    this.depthMaterial = shader(FACES, DEPTH, { blending: NoBlending });
    this.shared = new BufferGeometry(); // a vertex for each node
    this.shared.setAttribute('position', new BufferAttribute(this.model.coordinates, 3));
    this.faces = this.add(new Mesh(new BufferGeometry(), shader(FACES, COLOURS, behindLines)));
    this.faint = this.add(new Mesh(new BufferGeometry(), shader(FACES, FAINT, { transparent: true, depthWrite: false })));
    this.edges = this.add(new LineSegments(new BufferGeometry(), lines(new Float32Array([0, 0, 0, 0.8]))));
    this.mesh = this.add(new LineSegments(new BufferGeometry(), lines(new Float32Array([0, 0, 0, 0.3]))));
    this.beams = this.add(new LineSegments(new BufferGeometry(), lines(new Float32Array([0.1, 0.3, 0.7, 1]))));
    this.dots = this.add(new Points(new BufferGeometry(), lines(new Float32Array([0.85, 0, 0.55, 1]))));
    this.values = null;
    this.perElement = false;
    this.move(null);
  }

  add(object) {
    object.frustumCulled = false;
    this.scene.add(object);
    return object;
  }

  // `displacements`: [vertices, 3], or null for none.
  move(displacements) {
    this.displacements = displacements;
    this.shared.setAttribute('u', new BufferAttribute(displacements ?? new Float32Array(this.model.coordinates.length), 3));
    this.attach();
  }

  // Numbers of vertices or elements; null for a bare model.
  paint(values, perElement) {
    this.values = values;
    this.perElement = perElement;
    this.attach();
  }

  setRange(lowest, highest) {
    this.uniforms.lowest.value = lowest;
    this.uniforms.highest.value = highest;
  }

  set scale(factor) {
    this.uniforms.scale.value = factor;
  }

  get scale() {
    return this.uniforms.scale.value;
  }

  // Where a number belongs to an element, each triangle has corners of its own.
  attach() {
    const { corners, elements } = this.model.triangles;
    const geometry = this.perElement ? new BufferGeometry() : this.shared;
    const numbers = new Float32Array(this.perElement ? corners.length : this.model.coordinates.length / 3).fill(NONE);
    if (this.values) {
      for (let i = 0; i < numbers.length; ++i) {
        const number = this.values[this.perElement ? elements[Math.floor(i / 3)] : i];
        if (Number.isFinite(number)) numbers[i] = number;
      }
    }
    if (this.perElement) {
      for (const name of ['position', 'u']) geometry.setAttribute(name, new BufferAttribute(spread(this.shared.getAttribute(name).array, corners), 3));
    }
    geometry.setAttribute('value', new BufferAttribute(numbers, 1));
    for (const object of [this.faces, this.faint]) share(object.geometry, geometry, ['position', 'u', 'value']);
    for (const object of [this.edges, this.mesh, this.beams, this.dots]) share(object.geometry, this.shared, ['position', 'u']);
    this.index();
  }

  // Shows some elements alone, or with the rest of the model faint; null for all of it.
  showElements(elements, withRest) {
    const { outer, elements: owners } = this.model.triangles;
    const wanted = elements && new Set(elements);
    const take = (isMeant, end) => {
      const list = [];
      for (let i = 0; i < end; ++i) if (isMeant(owners[i])) list.push(i);
      return list;
    };
    this.isShown = (element) => !wanted || wanted.has(element);
    this.shown = take(this.isShown, wanted ? owners.length : outer);
    this.rest = wanted && withRest ? take((element) => !wanted.has(element), outer) : [];
    this.indexLines();
    this.index();
  }

  // Marks nodes with dots.
  showNodes(vertices) {
    this.dots.visible = Boolean(vertices?.length);
    this.dots.geometry.setIndex(new BufferAttribute(new Uint32Array(vertices ?? []), 1));
  }

  index() {
    if (!this.shown) return;
    const { corners } = this.model.triangles;
    const indices = (list) => {
      const made = new Uint32Array(3 * list.length);
      for (let i = 0; i < list.length; ++i) for (let k = 0; k < 3; ++k) made[3 * i + k] = this.perElement ? 3 * list[i] + k : corners[3 * list[i] + k];
      return new BufferAttribute(made, 1);
    };
    this.faces.geometry.setIndex(indices(this.shown));
    this.faint.geometry.setIndex(indices(this.rest));
    this.faint.visible = this.rest.length > 0;
  }

  indexLines() {
    const { corners, rims, beams } = this.model.triangles;
    const isVertexShown = new Uint8Array(this.model.coordinates.length / 3);
    for (const triangle of this.shown) for (let k = 0; k < 3; ++k) isVertexShown[corners[3 * triangle + k]] = 1;
    const edges = this.model.edges.filter((_, i) => isVertexShown[this.model.edges[i & ~1]] && isVertexShown[this.model.edges[i | 1]]);
    const pairs = onceEach(rims, this.isShown);
    const own = [];
    for (let i = 0; i < beams.elements.length; ++i) if (this.isShown(beams.elements[i])) own.push(beams.pairs[2 * i], beams.pairs[2 * i + 1]);
    const set = (object, list) => object.geometry.setIndex(new BufferAttribute(new Uint32Array(list), 1));
    set(this.edges, edges);
    set(this.mesh, pairs);
    set(this.beams, own);
    this.meshLength = meanLength(pairs, this.model.coordinates);
  }

  // Lines of the mesh fade where they come so close that they would blacken it.
  fadeMesh(isWanted) {
    const pixels = (this.meshLength / (2 * this.camera.halfHeight)) * this.camera.height;
    const strength = Math.min(1, Math.max(0, (pixels - 4) / 16));
    this.mesh.visible = isWanted && strength > 0;
    this.mesh.material.uniforms.ink.value[3] = 0.35 * strength;
  }

  resize() {
    const { clientWidth: width, clientHeight: height } = this.canvas;
    if (!width || !height) return;
    const ratio = Math.min(window.devicePixelRatio || 1, 2);
    const isNew = this.width !== width || this.height !== height || this.ratio !== ratio;
    if (!isNew) return;
    Object.assign(this, { width, height, ratio });
    this.renderer.setPixelRatio(ratio);
    this.renderer.setSize(width, height, false);
    this.camera.resize(width, height);
  }

  draw() {
    this.resize();
    this.fadeMesh(this.wantsMesh);
    this.renderer.render(this.scene, this.camera.update());
  }

  // Where a vertex is, as it is drawn.
  pointOf(vertex) {
    const x = this.model.coordinates;
    const u = this.displacements;
    return new Vector3(...[0, 1, 2].map((c) => x[3 * vertex + c] + (u ? this.scale * u[3 * vertex + c] : 0)));
  }

  // The depth of what is seen at a place of the view, 1 for nothing.
  depthAt({ x, y }) {
    const [width, height] = [this.canvas.width, this.canvas.height];
    const { camera } = this.camera;
    camera.setViewOffset(width, height, Math.floor(x * width), Math.floor(y * height), 1, 1);
    this.scene.overrideMaterial = this.depthMaterial;
    const hidden = [this.faint, this.edges, this.mesh, this.beams, this.dots].filter((object) => object.visible);
    for (const object of hidden) object.visible = false;
    this.renderer.setRenderTarget(this.target);
    this.renderer.setClearColor(0, 0);
    this.renderer.clear();
    this.renderer.render(this.scene, camera);
    const pixel = new Uint8Array(4);
    this.renderer.readRenderTargetPixels(this.target, 0, 0, 1, 1, pixel);
    this.renderer.setRenderTarget(null);
    for (const object of hidden) object.visible = true;
    this.scene.overrideMaterial = null;
    camera.clearViewOffset();
    return pixel[3] === 0 ? 1 : (pixel[0] * 65536 + pixel[1] * 256 + pixel[2]) / 16777215;
  }

  // Whether nothing of the model is before a point; its own surface may be by a few pixels.
  sees(point) {
    const at = this.camera.project(point);
    if (at.x < 0 || at.x > 1 || at.y < 0 || at.y > 1) return false;
    const pixel = (2 * this.camera.halfHeight) / this.camera.height;
    const slack = Math.max(this.camera.radius * 0.004, 3 * pixel) / (2 * this.camera.distance);
    return this.depthAt(at) >= at.depth - slack;
  }

  // What is under a place of the view: {vertex, element}, or null.
  pick(place) {
    const depth = this.depthAt(place);
    if (depth === 1) return null;
    const target = this.camera.unproject({ ...place, depth });
    const { corners, elements } = this.model.triangles;
    let best = Infinity;
    let found = null;
    for (const triangle of this.shown) {
      const d = distanceTo(this, triangle, target);
      if (d < best) {
        best = d;
        found = triangle;
      }
    }
    if (found === null) return null;
    const around = [0, 1, 2].map((k) => corners[3 * found + k]);
    around.sort((a, b) => this.pointOf(a).distanceTo(target) - this.pointOf(b).distanceTo(target));
    return { vertex: around[0], element: elements[found] };
  }
}

// How far a point is from a triangle, about: from its plane, and from its middle beyond its size.
function distanceTo(view, triangle, target) {
  const { corners } = view.model.triangles;
  const x = view.model.coordinates;
  const u = view.displacements;
  const scale = u ? view.scale : 0;
  const p = [];
  for (let k = 0; k < 3; ++k) {
    const v = 3 * corners[3 * triangle + k];
    for (let c = 0; c < 3; ++c) p.push(x[v + c] + (scale ? scale * u[v + c] : 0) - target.getComponent(c));
  }
  const ab = [p[3] - p[0], p[4] - p[1], p[5] - p[2]];
  const ac = [p[6] - p[0], p[7] - p[1], p[8] - p[2]];
  const n = [ab[1] * ac[2] - ab[2] * ac[1], ab[2] * ac[0] - ab[0] * ac[2], ab[0] * ac[1] - ab[1] * ac[0]];
  const area = Math.hypot(...n) || 1e-30;
  const away = Math.abs(n[0] * p[0] + n[1] * p[1] + n[2] * p[2]) / area;
  // Areas of the triangles that the point's foot makes with the edges: more than the triangle's own when it is outside.
  let sum = 0;
  for (let k = 0; k < 3; ++k) {
    const a = 3 * k;
    const b = 3 * ((k + 1) % 3);
    const cross = [p[a + 1] * p[b + 2] - p[a + 2] * p[b + 1], p[a + 2] * p[b] - p[a] * p[b + 2], p[a] * p[b + 1] - p[a + 1] * p[b]];
    sum += Math.abs(cross[0] * n[0] + cross[1] * n[1] + cross[2] * n[2]) / area;
  }
  return away + Math.max(0, sum - area) / Math.sqrt(area);
}

function bandTexture(bands) {
  const data = new Uint8Array(4 * bands.length);
  bands.forEach((rgb, i) => data.set([...rgb, 255], 4 * i));
  const texture = new DataTexture(data, bands.length, 1);
  texture.minFilter = NearestFilter;
  texture.magFilter = NearestFilter;
  texture.needsUpdate = true;
  return texture;
}

function spread(array, corners) {
  const made = new Float32Array(3 * corners.length);
  for (let i = 0; i < corners.length; ++i) for (let c = 0; c < 3; ++c) made[3 * i + c] = array[3 * corners[i] + c];
  return made;
}

function share(to, from, names) {
  for (const name of names) to.setAttribute(name, from.getAttribute(name));
}
