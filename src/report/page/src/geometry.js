// Faces as the program describes them, as triangles and lines for drawing.

const TRIANGLES = {
  '3/3': [[0, 1, 2]],
  '3/6': [[0, 3, 5], [3, 1, 4], [5, 4, 2], [3, 4, 5]],
  '4/4': [[0, 1, 2], [0, 2, 3]],
  '4/8': [[0, 4, 7], [4, 1, 5], [5, 2, 6], [6, 3, 7], [4, 5, 6], [4, 6, 7]],
};
// The rim of a face, along the middles of its edges.
const RIMS = { '3/3': [0, 1, 2], '3/6': [0, 3, 1, 4, 2, 5], '4/4': [0, 1, 2, 3], '4/8': [0, 4, 1, 5, 2, 6, 3, 7], '2/2': [0, 1], '2/3': [0, 2, 1] };

// {corners: triangles by vertices [n, 3], elements: of each triangle, outer: how many are of outer faces, which come first;
// rims, beams: pairs of vertices, with the element of each pair}.
export function buildGeometry(kinds) {
  const sorted = [...kinds].sort((a, b) => Number(a.inner) - Number(b.inner));
  const solid = sorted.filter((kind) => kind.corners > 2);
  const size = (list) => list.reduce((sum, k) => sum + k.elements.length * TRIANGLES[`${k.corners}/${k.nodes}`].length, 0);
  const corners = new Uint32Array(3 * size(solid));
  const elements = new Uint32Array(corners.length / 3);
  let at = 0;
  for (const { vertices, nodes, elements: owners, corners: n } of solid) {
    const pattern = TRIANGLES[`${n}/${nodes}`];
    for (let face = 0; face < owners.length; ++face) {
      for (const triangle of pattern) {
        elements[at] = owners[face];
        for (let i = 0; i < 3; ++i) corners[3 * at + i] = vertices[face * nodes + triangle[i]];
        ++at;
      }
    }
  }
  return { corners, elements, outer: size(solid.filter((kind) => !kind.inner)), rims: pairsOf(solid, true), beams: pairsOf(sorted.filter((kind) => kind.corners === 2), false) };
}

function pairsOf(kinds, isClosed) {
  const piecesOf = (kind) => RIMS[`${kind.corners}/${kind.nodes}`].length - (isClosed ? 0 : 1);
  const count = kinds.reduce((sum, kind) => sum + kind.elements.length * piecesOf(kind), 0);
  const pairs = new Uint32Array(2 * count);
  const elements = new Uint32Array(count);
  let at = 0;
  for (const kind of kinds) {
    const rim = RIMS[`${kind.corners}/${kind.nodes}`];
    for (let face = 0; face < kind.elements.length; ++face) {
      for (let i = 0; i < piecesOf(kind); ++i) {
        elements[at] = kind.elements[face];
        pairs[2 * at] = kind.vertices[face * kind.nodes + rim[i]];
        pairs[2 * at + 1] = kind.vertices[face * kind.nodes + rim[(i + 1) % rim.length]];
        ++at;
      }
    }
  }
  return { pairs, elements };
}

// Of two neighbours' rims one is enough: the one that goes from the lower to the higher vertex. Borders are feature edges
// anyway.
export function onceEach({ pairs, elements }, isShown) {
  const kept = [];
  for (let i = 0; i < elements.length; ++i) {
    if (pairs[2 * i] < pairs[2 * i + 1] && isShown(elements[i])) kept.push(pairs[2 * i], pairs[2 * i + 1]);
  }
  return new Uint32Array(kept);
}

// The mean length of some of the pairs.
export function meanLength(pairs, coordinates) {
  const step = 2 * Math.max(1, Math.floor(pairs.length / 2 / 5000));
  let sum = 0;
  let n = 0;
  for (let i = 0; i + 1 < pairs.length; i += step, ++n) {
    const [a, b] = [3 * pairs[i], 3 * pairs[i + 1]];
    sum += Math.hypot(coordinates[a] - coordinates[b], coordinates[a + 1] - coordinates[b + 1], coordinates[a + 2] - coordinates[b + 2]);
  }
  return n ? sum / n : 0;
}
