// The records: a list of which only the rows in sight are in the document, and words that find some of them.
import { byId, make } from './dom.js';
import { description, unpack } from './data.js';
import * as format from './format.js';

const ROW = 24;
const PRINTED = 400;

// {names, values: texts; columns of the description's `meanings` as arrays} of the file with records; without one, of the
// extremes of what the page shows, over the whole model.
export async function readRecords() {
  const { records } = description;
  if (!records) return recordsOfFrames();
  const lines = new TextDecoder().decode(await unpack(records.lines)).split('\n');
  lines.pop();
  const all = { names: [], values: [], meanings: null };
  for (const line of lines) {
    const tab = line.indexOf('\t');
    all.names.push(line.slice(0, tab));
    all.values.push(line.slice(tab + 1));
  }
  if (records.columns) {
    const columns = Object.fromEntries(await Promise.all(Object.entries(records.columns).map(async ([name, reference]) => [name, await unpack(reference)])));
    all.meanings = (i) => meaningOf(records, columns, i);
  }
  return all;
}

// {kind, step, frame, field, quantity, set, extreme, history, place}; null for a record that the database does not know.
function meaningOf(records, columns, i) {
  if (columns.step[i] < 0) return null;
  const text = (name) => (columns[name][i] < 0 ? undefined : records.texts[columns[name][i]]);
  const meaning = { step: columns.step[i], frame: columns.frame[i], field: text('field'), quantity: text('quantity') ?? '', set: text('set') ?? '', extreme: text('extreme') ?? '' };
  const place = { value: undefined };
  for (const name of ['vertex', 'element', 'node', 'cell', 'point']) if (columns[name] && columns[name][i] >= 0) place[name] = columns[name][i];
  if (columns.instance && columns.instance[i] >= 0) place.instance = description.model.instances[columns.instance[i]];
  if (Object.keys(place).length > 1) meaning.place = place;
  return meaning;
}

// Names as an extraction would give them.
function recordsOfFrames() {
  const all = { names: [], values: [], meanings: null };
  const meanings = [];
  const clean = (name) => name.replace(/[- ]/g, '_');
  for (const frame of description.frames) {
    const step = description.steps[frame.step];
    for (const entry of frame.fields) {
      const field = description.fields[entry.field];
      for (const quantity of field.quantities) {
        for (const extreme of ['max', 'min']) {
          const place = entry.extremes[quantity]?.[extreme];
          if (!place) continue;
          all.names.push([clean(step.name), `Frame_${step.frames[frame.frame].number}`, clean(field.name), quantity, extreme].filter(Boolean).join('__'));
          all.values.push(format.number(place.value));
          meanings.push({ step: frame.step, frame: frame.frame, field: field.name, quantity, set: '', extreme, place });
        }
      }
    }
  }
  all.meanings = (i) => meanings[i];
  return all;
}

export class RecordList {
  // `open` is called with the number of a record that is chosen.
  constructor(records, open) {
    Object.assign(this, { records, open, hits: [], active: -1 });
    this.lower = records.names.map((name) => name.toLowerCase());
    this.box = byId('rows');
    this.body = byId('body');
    byId('search').oninput = () => this.search();
    this.box.onscroll = () => this.paint();
    // Rows may be made anew while a button is down, so a click is taken by its place.
    this.box.onclick = (event) => this.choose(Math.floor((event.clientY - this.body.getBoundingClientRect().top) / ROW));
    this.box.onkeydown = (event) => this.key(event);
    new ResizeObserver(() => this.paint()).observe(this.box);
    window.addEventListener('beforeprint', () => this.print());
    this.search();
  }

  // All words must occur in the name, in any order and case.
  search() {
    const words = byId('search').value.toLowerCase().split(/\s+/).filter(Boolean);
    this.hits = [];
    for (let i = 0; i < this.lower.length; ++i) if (words.every((word) => this.lower[i].includes(word))) this.hits.push(i);
    byId('count').textContent = `${this.hits.length.toLocaleString('en')} of ${format.count(this.lower.length, 'record')}`;
    this.active = -1;
    this.box.removeAttribute('aria-activedescendant');
    this.box.scrollTop = 0;
    this.paint();
  }

  paint() {
    const first = Math.max(0, Math.floor(this.box.scrollTop / ROW) - 4);
    const end = Math.min(this.hits.length, first + Math.ceil(this.box.clientHeight / ROW) + 8);
    this.body.style.height = `${this.hits.length * ROW}px`;
    const rows = [];
    for (let place = first; place < end; ++place) rows.push(this.row(place));
    this.body.replaceChildren(...rows);
    if (this.active >= first && this.active < end) this.box.setAttribute('aria-activedescendant', `row-${this.active}`);
  }

  row(place) {
    const record = this.hits[place];
    const row = make('div', {
      class: 'record', role: 'option', id: `row-${place}`, 'aria-selected': String(place === this.active), 'aria-posinset': place + 1,
      'aria-setsize': this.hits.length, title: `${this.records.names[record]}  ${this.records.values[record]}`,
    }, make('span', {}, this.records.names[record]), make('b', {}, this.records.values[record]));
    row.style.top = `${place * ROW}px`;
    return row;
  }

  choose(place) {
    if (place < 0 || place >= this.hits.length) return;
    this.active = place;
    const top = place * ROW;
    if (top < this.box.scrollTop) this.box.scrollTop = top;
    if (top + ROW > this.box.scrollTop + this.box.clientHeight) this.box.scrollTop = top + ROW - this.box.clientHeight;
    this.paint();
    this.open(this.hits[place]);
  }

  key(event) {
    const page = Math.max(1, Math.floor(this.box.clientHeight / ROW) - 1);
    const moves = { ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -Infinity, End: Infinity, Enter: 0 };
    if (!(event.key in moves) || event.ctrlKey || event.metaKey || event.altKey) return;
    event.preventDefault();
    const place = Math.max(0, Math.min(this.hits.length - 1, (this.active < 0 && moves[event.key] > 0 ? -1 : this.active) + moves[event.key]));
    this.choose(place);
  }

  // On paper there is no scrolling: a table of what has been found, up to a number.
  print() {
    const rows = this.hits.slice(0, PRINTED).map((i) => make('tr', {}, make('td', {}, this.records.names[i]), make('td', {}, this.records.values[i])));
    const left = this.hits.length - rows.length;
    const caption = left > 0 ? `The first ${PRINTED} of ${this.hits.length} records; a search before printing chooses others.` : format.count(this.hits.length, 'record');
    byId('printed-records').replaceChildren(make('caption', {}, caption), make('tbody', {}, ...rows));
  }
}
