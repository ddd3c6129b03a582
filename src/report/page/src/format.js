// Numbers and names as users read them.

// Six significant digits, as in the records.
export function number(value) {
  if (typeof value !== 'number') return String(value);
  if (!Number.isFinite(value)) return String(value);
  return String(Number(value.toPrecision(6)));
}

export function bytes(count) {
  return count >= 1e9 ? `${(count / 1e9).toFixed(1)} GB` : count >= 1e6 ? `${(count / 1e6).toFixed(1)} MB` : `${Math.ceil(count / 1e3)} kB`;
}

export const count = (n, one, many = `${one}s`) => `${n.toLocaleString('en')} ${n === 1 ? one : many}`;

const QUANTITIES = {
  '': 'value', mag: 'magnitude', mises: 'Mises', tresca: 'Tresca', press: 'pressure', inv3: 'third invariant',
  maxprincipal: 'max. principal', midprincipal: 'mid. principal', minprincipal: 'min. principal',
  maxinplaneprincipal: 'max. in-plane principal', mininplane_principal: 'min. in-plane principal',
  outofplane_principal: 'out-of-plane principal',
};

export const quantity = (name) => QUANTITIES[name] ?? name;
export const fieldQuantity = (field, name) => (name === '' ? field : /^\d+$/.test(name) ? `${field}${name}` : `${field}, ${quantity(name)}`);

export function frame(steps, { step, frame: index }) {
  const { name, frames } = steps[step];
  const { number: increment, value, description } = frames[index];
  return description ? `${name}, ${description}` : `${name}, frame ${increment}: ${number(value)}`;
}

// "node 12 (element 7, point 2)" of a place.
export function place(at) {
  const parts = [];
  if (at.instance) parts.push(at.instance);
  if (at.node !== undefined) parts.push(`node ${at.node}`);
  if (at.cell !== undefined) parts.push(`element ${at.cell}`);
  if (at.point !== undefined) parts.push(`point ${at.point}`);
  return parts.join(', ');
}
