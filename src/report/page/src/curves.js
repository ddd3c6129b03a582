// Curves: of histories, and of a record over the frames of its step.
import uPlot from 'uplot';
import { byId, debounced, fillSelect, make } from './dom.js';
import { description, unpack } from './data.js';
import * as format from './format.js';

const HEIGHT = 260;
const SHOWN = 2000; // rows of numbers beside the curve

export class Curves {
  constructor(records) {
    this.records = records;
    this.list = description.histories.list;
    const label = (h) => `${description.steps[h.step].name}: ${h.output}, ${h.region}`;
    fillSelect(byId('history'), this.list.map((h, i) => [i, label(h)]));
    byId('history').disabled = this.list.length === 0;
    byId('history').onchange = () => this.showHistory(Number(byId('history').value));
    byId('numbers').ontoggle = () => this.tabulate();
    new ResizeObserver(debounced(() => this.resize(), 50)).observe(byId('curve'));
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => this.redraw());
  }

  async begin() {
    if (this.list.length) await this.showHistory(0);
    else byId('curve-note').textContent = 'The database has no histories. Choose a record to see it over the frames.';
  }

  async showHistory(number) {
    const { first, samples, x, output, region, step } = this.list[number];
    this.numbers ??= Promise.all([unpack(description.histories.values), unpack(description.histories.abscissae)]);
    const [values, abscissae] = await this.numbers;
    byId('curve-note').textContent = '';
    this.draw({ title: `${output}, ${region}`, xLabel: description.steps[step].name, yLabel: output, x: Array.from(abscissae.subarray(x, x + samples)), y: Array.from(values.subarray(first, first + samples)) });
  }

  // The record and those of other frames that differ in nothing else. False where it has no frames.
  showRecord(record) {
    const meaning = this.records.meanings?.(record);
    if (!meaning || meaning.frame < 0 || !meaning.field) return false;
    this.families ??= this.group();
    const { frames } = description.steps[meaning.step];
    const points = this.families.get(keyOf(meaning)).map((i) => [frames[this.records.meanings(i).frame].value, Number(this.records.values[i])]);
    points.sort((a, b) => a[0] - b[0]);
    const name = this.records.names[record].replace(/__Frame_-?\d+__/, '__Frame_*__');
    byId('curve-note').textContent = 'A record over the frames of its step.';
    this.draw({ title: name, xLabel: description.steps[meaning.step].name, yLabel: format.fieldQuantity(meaning.field, meaning.quantity), x: points.map((p) => p[0]), y: points.map((p) => (Number.isFinite(p[1]) ? p[1] : null)) });
    return true;
  }

  group() {
    const families = new Map();
    for (let i = 0; i < this.records.names.length; ++i) {
      const meaning = this.records.meanings(i);
      if (!meaning?.field) continue;
      const key = keyOf(meaning);
      if (!families.has(key)) families.set(key, []);
      families.get(key).push(i);
    }
    return families;
  }

  draw(curve) {
    this.curve = curve;
    this.redraw();
    const { title, x, y } = curve;
    const numbers = y.filter((value) => Number.isFinite(value));
    const extent = numbers.length ? `from ${format.number(least(numbers))} to ${format.number(-least(numbers.map((v) => -v)))}` : 'without numbers';
    byId('curve').setAttribute('aria-label', `Curve of ${title}: ${format.count(x.length, 'point')}, ${extent}`);
    byId('curve-title').textContent = title;
    this.tabulate();
  }

  redraw() {
    if (!this.curve) return;
    this.plot?.destroy();
    const ink = getComputedStyle(document.documentElement).getPropertyValue('--ink');
    const lines = getComputedStyle(document.documentElement).getPropertyValue('--rule');
    const stroke = getComputedStyle(document.documentElement).getPropertyValue('--accent');
    const axis = { stroke: ink, grid: { stroke: lines, width: 1 }, ticks: { stroke: lines, width: 1 } };
    const values = (_, splits) => splits.map((value) => format.number(value));
    const { x, y, xLabel, yLabel } = this.curve;
    this.plot = new uPlot({
      width: byId('curve').clientWidth || 300, height: HEIGHT, scales: { x: { time: false } }, legend: { live: true },
      axes: [{ ...axis, label: xLabel, values }, { ...axis, label: yLabel, size: 78, values }],
      series: [{ label: xLabel, value: (_, v) => (v == null ? '' : format.number(v)) }, { label: yLabel, stroke, width: 1.75, points: { show: x.length < 60, size: 6 }, value: (_, v) => (v == null ? '' : format.number(v)) }],
    }, [x, y], byId('curve'));
  }

  resize() {
    if (this.plot && byId('curve').clientWidth) this.plot.setSize({ width: byId('curve').clientWidth, height: HEIGHT });
  }

  tabulate() {
    if (!byId('numbers').open || !this.curve) return;
    const { x, y, xLabel, yLabel } = this.curve;
    const rows = x.slice(0, SHOWN).map((value, i) => make('tr', {}, make('td', {}, format.number(value)), make('td', {}, y[i] === null ? '' : format.number(y[i]))));
    byId('numbers-table').replaceChildren(make('thead', {}, make('tr', {}, make('th', { scope: 'col' }, xLabel), make('th', { scope: 'col' }, yLabel))), make('tbody', {}, ...rows));
  }
}

const keyOf = (m) => [m.step, m.field, m.quantity, m.set, m.extreme].join('\n');
const least = (numbers) => numbers.reduce((a, b) => Math.min(a, b), Infinity);
