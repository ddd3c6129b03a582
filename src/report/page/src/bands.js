// The colours of the bands, from the lowest to the highest, and what stands beside them.
import { byId, make } from './dom.js';
import { number } from './format.js';

const STOPS = [[48, 60, 180], [40, 150, 220], [60, 190, 130], [200, 220, 60], [250, 160, 40], [200, 30, 40]];
const COUNT = 12;

export const bands = Array.from({ length: COUNT }, (_, i) => {
  const t = (i / (COUNT - 1)) * (STOPS.length - 1);
  const k = Math.min(STOPS.length - 2, Math.floor(t));
  return STOPS[k].map((low, c) => Math.round(low + (t - k) * (STOPS[k + 1][c] - low)));
});

// Writes the limits of the bands, the highest first.
export function showLegend(lowest, highest) {
  const rows = [];
  for (let i = COUNT; i >= 0; --i) rows.push(make('li', {}, number(lowest + ((highest - lowest) * i) / COUNT)));
  byId('limits').replaceChildren(...rows);
}

export function paintLegend() {
  const bar = byId('bar');
  const context = bar.getContext('2d');
  bar.width = 1;
  bar.height = COUNT;
  bands.forEach((rgb, i) => {
    context.fillStyle = `rgb(${rgb.join()})`;
    context.fillRect(0, COUNT - 1 - i, 1, 1);
  });
}
