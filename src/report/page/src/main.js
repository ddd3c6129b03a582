// The page: facts first, then records and curves, then the picture, which may be missing.
import 'uplot/dist/uPlot.min.css';
import './page.css';
import { byId } from './dom.js';
import { Curves } from './curves.js';
import { Picture } from './picture.js';
import { RecordList, readRecords } from './records.js';
import { showFacts } from './facts.js';
import { setUpTheme } from './theme.js';
import * as format from './format.js';

let picture = null;

// A record has been chosen: its curve, its frame, its place.
async function open(records, curves, record) {
  curves.showRecord(record);
  const meaning = records.meanings?.(record);
  const say = (text) => { byId('chosen').textContent = text; };
  if (!meaning) return say('The database does not know this record.');
  const isInside = meaning.place && meaning.place.vertex === undefined && meaning.place.element === undefined;
  const where = meaning.place ? format.place(meaning.place) + (isInside ? ', inside the model' : '') : '';
  if (!picture || !meaning.field) return say(where);
  const isShown = await picture.choose(meaning);
  if (!isShown) return say([where, 'The page has no picture of this field in this frame.'].filter(Boolean).join('. '));
  if (meaning.place) picture.goTo(meaning.place, `${records.names[record].split('__').at(-1)} ${records.values[record]}`);
  return say(where);
}

async function begin() {
  showFacts();
  const records = await readRecords();
  const curves = new Curves(records);
  setUpTheme(() => curves.redraw());
  const list = new RecordList(records, (record) => open(records, curves, record));
  await curves.begin();
  try {
    picture = await Picture.make();
  } catch (error) {
    byId('picture').classList.add('missing');
    byId('what').textContent = error.message;
  }
  document.documentElement.dataset.ready = picture ? 'picture' : 'no picture';
  return list;
}

begin().catch((error) => {
  byId('what').textContent = `The page cannot be shown: ${error.message}`;
  document.documentElement.dataset.ready = 'failed';
});
