// What stands around the pictures: where the numbers are from, steps and mass, what has been left out and warned of.
import { byId, make } from './dom.js';
import { description } from './data.js';
import * as format from './format.js';

const list = (numbers) => numbers.map(format.number).join(', ');

function about() {
  const { model, steps, records, histories } = description;
  const frames = steps.reduce((sum, step) => sum + step.frames.length, 0);
  const parts = [description.title, description.producer, `${format.count(steps.length, 'step')}, ${format.count(frames, 'frame')}`];
  if (model) parts.push(`${format.count(model.cells, 'element')}, ${format.count(model.nodes, 'node')}`);
  if (histories.list.length) parts.push(format.count(histories.list.length, 'history', 'histories'));
  parts.push(`${format.bytes(description.bytes)} database`);
  return parts.filter(Boolean).join(' · ');
}

function stepRow(step) {
  const frames = step.frames.length ? `${step.frames.length} (${format.number(step.frames[0].value)} to ${format.number(step.frames.at(-1).value)})` : '0';
  const cells = [step.description, frames, step.mass === undefined ? '' : format.number(step.mass), list(step.massCenter ?? []), list(step.inertiaAboutCenter ?? [])];
  return make('tr', {}, make('th', { scope: 'row' }, step.name), ...cells.map((text) => make('td', {}, text)));
}

export function showFacts() {
  byId('name').textContent = description.file;
  document.title = description.file;
  byId('about').textContent = about();
  byId('steps').append(make('tbody', {}, ...description.steps.map(stepRow)));
  for (const [id, lines] of [['messages', description.messages], ['notes', description.notes]]) {
    byId(id).hidden = lines.length === 0;
    byId(id).querySelector('ul').replaceChildren(...lines.map((line) => make('li', {}, line)));
  }
}
