// Quantities of tensors from their components 11, 22, 33, 12, 13, 23, called as in names of records.

const HALF_SHEARS = [1, 1, 1, 0.5, 0.5, 0.5];

// Eigenvalues of a symmetric matrix, largest first: Smith, Eigenvalues of a symmetric 3 x 3 matrix, CACM 4 (1961).
function principal([a, b, c, d, e, f]) {
  const mean = (a + b + c) / 3;
  const square = d * d + e * e + f * f;
  const p = Math.sqrt(((a - mean) ** 2 + (b - mean) ** 2 + (c - mean) ** 2 + 2 * square) / 6);
  if (p === 0) return [mean, mean, mean];
  const r = determinant([a - mean, b - mean, c - mean, d, e, f]) / (2 * p ** 3);
  const angle = Math.acos(Math.min(1, Math.max(-1, r))) / 3;
  const most = mean + 2 * p * Math.cos(angle);
  const least = mean + 2 * p * Math.cos(angle + (2 * Math.PI) / 3);
  return [most, 3 * mean - most - least, least];
}

function determinant([a, b, c, d, e, f]) {
  return a * (b * c - f * f) - d * (d * c - f * e) + e * (d * f - b * e);
}

function inv3(s) {
  const mean = (s[0] + s[1] + s[2]) / 3;
  return Math.cbrt(13.5 * determinant([s[0] - mean, s[1] - mean, s[2] - mean, s[3], s[4], s[5]]));
}

const inPlane = (s, sign) => (s[0] + s[1]) / 2 + sign * Math.hypot((s[0] - s[1]) / 2, s[3]);

const DERIVED = {
  tresca: (s) => { const p = principal(s); return p[0] - p[2]; },
  press: (s) => -(s[0] + s[1] + s[2]) / 3,
  inv3,
  maxprincipal: (s) => principal(s)[0],
  midprincipal: (s) => principal(s)[1],
  minprincipal: (s) => principal(s)[2],
  maxinplaneprincipal: (s) => inPlane(s, 1),
  mininplane_principal: (s) => inPlane(s, -1),
  outofplane_principal: (s) => s[2],
};

export const COMPONENTS = { vector: ['1', '2', '3'], tensor: ['11', '22', '33', '12', '13', '23'] };

// Columns that must be on the page for a quantity of the field.
export function columnsFor(field, quantity) {
  if (quantity === 'mag') return COMPONENTS.vector;
  return quantity in DERIVED ? COMPONENTS.tensor : [quantity];
}

// The numbers of a quantity from those of its columns.
export function derive(field, quantity, columns) {
  if (quantity !== 'mag' && !(quantity in DERIVED)) return columns[0];
  const made = new Float32Array(columns[0].length);
  const row = new Array(columns.length);
  const compute = quantity === 'mag' ? (u) => Math.hypot(...u) : DERIVED[quantity];
  const factors = field.halvedShear ? HALF_SHEARS : [1, 1, 1, 1, 1, 1];
  for (let i = 0; i < made.length; ++i) {
    for (let c = 0; c < columns.length; ++c) row[c] = columns[c][i] * factors[c];
    made[i] = compute(row);
  }
  return made;
}
