// What the page computes of tensors, against numbers worked out by hand.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { columnsFor, derive } from '../../src/report/page/src/quantities.js';

const tensor = { kind: 'tensor', halvedShear: false };
const of = (quantity, row, field = tensor) => derive(field, quantity, row.map((value) => Float32Array.of(value)))[0];
const near = (a, b) => assert.ok(Math.abs(a - b) < 1e-4, `${a}, not ${b}`);

test('uniaxial tension', () => {
  const s = [100, 0, 0, 0, 0, 0];
  near(of('maxprincipal', s), 100);
  near(of('midprincipal', s), 0);
  near(of('minprincipal', s), 0);
  near(of('tresca', s), 100);
  near(of('press', s), -100 / 3);
  near(of('inv3', s), 100);
});

test('pure shear', () => {
  const s = [0, 0, 0, 30, 0, 0];
  near(of('maxprincipal', s), 30);
  near(of('midprincipal', s), 0);
  near(of('minprincipal', s), -30);
  near(of('maxinplaneprincipal', s), 30);
  near(of('mininplane_principal', s), -30);
  near(of('tresca', s), 60);
});

// 2 I + the matrix of ones times 3: eigenvalues 2, 2, 11.
test('a full tensor', () => {
  const s = [5, 5, 5, 3, 3, 3];
  near(of('maxprincipal', s), 11);
  near(of('midprincipal', s), 2);
  near(of('minprincipal', s), 2);
  near(of('outofplane_principal', s), 5);
});

test('engineering shears are halved, equal principal values stay equal', () => {
  near(of('maxprincipal', [0, 0, 0, 60, 0, 0], { ...tensor, halvedShear: true }), 30);
  near(of('tresca', [7, 7, 7, 0, 0, 0]), 0);
});

test('magnitude of a vector, and which columns are needed', () => {
  near(of('mag', [2, 3, 6], { kind: 'vector' }), 7);
  assert.deepEqual(columnsFor({ kind: 'vector' }, 'mag'), ['1', '2', '3']);
  assert.deepEqual(columnsFor(tensor, 'mises'), ['mises']);
  assert.deepEqual(columnsFor(tensor, 'tresca'), ['11', '22', '33', '12', '13', '23']);
  assert.deepEqual(columnsFor(tensor, '13'), ['13']);
});
