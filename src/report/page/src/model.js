// What the page knows of the model: read once, before the first picture; fields frame by frame when they are wanted.
import { dequantize, description, unpack } from './data.js';
import { buildGeometry } from './geometry.js';
import { COMPONENTS, columnsFor, derive } from './quantities.js';

export async function readModel() {
  const { model } = description;
  const [coordinates, edges, nodes, cells, ...faces] = await Promise.all([
    unpack(model.coordinates), unpack(model.edges), unpack(model.nodeLabels), unpack(model.elementLabels),
    ...(model.faces ?? []).map(async (kind) => ({ ...kind, vertices: await unpack(kind.vertices), elements: await unpack(kind.elements) })),
  ]);
  const owners = model.nodeInstances ? [await unpack(model.nodeInstances), await unpack(model.elementInstances)] : [];
  return { coordinates, edges, nodes, cells, owners, instances: model.instances, triangles: buildGeometry(faces) };
}

const SETS = new Map();
export function membersOf(set) {
  if (!SETS.has(set)) SETS.set(set, unpack(description.sets[set].members));
  return SETS.get(set);
}

const KEPT = 24;
const columns = new Map();

// A column of a field in a frame; the last ones are kept.
function columnOf(entry, name) {
  const reference = entry.columns[name];
  if (columns.has(reference)) {
    const known = columns.get(reference);
    columns.delete(reference);
    columns.set(reference, known);
    return known;
  }
  const made = unpack(reference[2]).then((items) => dequantize(reference, items));
  columns.set(reference, made);
  if (columns.size > KEPT) columns.delete(columns.keys().next().value);
  return made;
}

export const fieldIn = (frame, field) => frame.fields.find((entry) => entry.field === field);

// Whether the page has what the quantity is made of.
export function hasQuantity(frame, field, quantity) {
  const entry = fieldIn(frame, field);
  return Boolean(entry) && columnsFor(description.fields[field], quantity).every((name) => name in entry.columns);
}

export async function valuesOf(frame, field, quantity) {
  const entry = fieldIn(frame, field);
  const names = columnsFor(description.fields[field], quantity);
  return derive(description.fields[field], quantity, await Promise.all(names.map((name) => columnOf(entry, name))));
}

// Displacements of a frame, [vertices, 3]: the field U; null without it.
export async function displacementsOf(frame) {
  const field = description.fields.findIndex((f) => f.name === 'U' && f.kind === 'vector' && f.on === 'vertices');
  const entry = field < 0 ? undefined : fieldIn(frame, field);
  if (!entry) return null;
  const parts = await Promise.all(COMPONENTS.vector.map((name) => columnOf(entry, name)));
  const made = new Float32Array(3 * parts[0].length);
  parts.forEach((part, c) => part.forEach((value, i) => { made[3 * i + c] = Number.isFinite(value) ? value : 0; }));
  return made;
}
