// The section with the model: what is chosen, the picture, its legend and marks.
import { Vector3 } from 'three';
import { bands, paintLegend, showLegend } from './bands.js';
import { control } from './camera.js';
import { description } from './data.js';
import { byId, debounced, fillSelect, make } from './dom.js';
import * as format from './format.js';
import { displacementsOf, fieldIn, hasQuantity, membersOf, readModel, valuesOf } from './model.js';
import { View } from './view.js';

const { fields, frames, sets = [], steps } = description;

export class Picture {
  // Throws where there is no model, or the browser draws none.
  static async make() {
    if (!description.model || !frames.length) throw new Error(description.model ? 'There is no field to show.' : 'The page has no model.');
    const model = await readModel();
    let view;
    try {
      view = new View(byId('canvas'), model, bands);
    } catch {
      throw new Error('This browser draws no 3D pictures (WebGL 2 is missing or turned off). Records and curves work without.');
    }
    const picture = new Picture(model, view);
    await picture.begin();
    return picture;
  }

  constructor(model, view) {
    this.model = model;
    this.view = view;
    this.extra = null; // a place that a record has asked for
    this.picked = null;
    this.drawSoon = () => {
      if (!this.isDue) requestAnimationFrame(() => { this.isDue = false; this.draw(); });
      this.isDue = true;
    };
    this.checkMarks = debounced(() => this.hideMarksBehind(), 80);
    control(view.canvas, view.camera, () => { this.isMoved = true; this.drawSoon(); });
    new ResizeObserver(() => this.resized()).observe(view.canvas);
  }

  async begin() {
    paintLegend();
    this.setUpChoices();
    this.setUpSets();
    this.setUpPicking();
    const main = Math.max(0, fields.findIndex((f) => f.name === 'S'));
    byId('field').value = main;
    this.fieldChanged(false);
    await this.show();
    this.fit();
    this.draw();
    this.hideMarksBehind();
  }

  setUpChoices() {
    fillSelect(byId('field'), fields.map((field, i) => [i, field.description ? `${field.name}: ${field.description}` : field.name]));
    byId('field').onchange = () => { this.fieldChanged(true); this.show(); };
    byId('quantity').onchange = () => { this.quantityChanged(); this.show(); };
    byId('frame').oninput = () => this.show();
    byId('range').onchange = () => this.show();
    byId('scale').oninput = () => this.rescale();
    byId('mesh').onchange = () => { this.view.wantsMesh = byId('mesh').checked; this.drawSoon(); };
    byId('edges').onchange = () => { this.view.edges.visible = byId('edges').checked; this.drawSoon(); };
    byId('marks').onchange = () => this.draw();
    byId('fit').onclick = () => { this.fit(); this.drawSoon(); };
    for (const button of document.querySelectorAll('[data-view]')) button.onclick = () => this.lookAlong(button.dataset.view);
    this.view.wantsMesh = byId('mesh').checked;
  }

  // The legend stands at the right side.
  fit() {
    this.view.resize();
    this.view.camera.inset = byId('legend').offsetWidth + 16;
    this.view.camera.fit();
    this.isMoved = false;
  }

  // What the user has chosen to see stays.
  resized() {
    if (!this.isMoved) this.fit();
    this.drawSoon();
  }

  // Keeps the frame that is shown, where the field has it.
  fieldChanged(keepsFrame) {
    this.field = Number(byId('field').value);
    const before = keepsFrame ? this.frame : undefined;
    const { quantities } = fields[this.field];
    const known = quantities.filter((q) => frames.some((frame) => hasQuantity(frame, this.field, q)));
    const kept = known.includes(byId('quantity').value) ? byId('quantity').value : known[0];
    fillSelect(byId('quantity'), known.map((q) => [q, format.quantity(q)]));
    byId('quantity').value = kept;
    byId('quantity').disabled = known.length < 2;
    this.quantityChanged(before);
  }

  quantityChanged(before = this.frame) {
    this.quantity = byId('quantity').value;
    this.choices = frames.filter((frame) => hasQuantity(frame, this.field, this.quantity));
    const slider = byId('frame');
    slider.max = this.choices.length - 1;
    const place = this.choices.indexOf(before);
    slider.value = place >= 0 ? place : this.bestFrame();
    slider.disabled = this.choices.length < 2;
  }

  // The one with the largest value. Those of modes mean nothing beside others.
  bestFrame() {
    const isMode = (frame) => /^Mode\b/.test(steps[frame.step].frames[frame.frame].description);
    const largest = this.choices.map((frame) => (isMode(frame) ? -Infinity : (this.extremesIn(frame)?.max.value ?? -Infinity)));
    return Math.max(0, largest.indexOf(Math.max(...largest)));
  }

  extremesIn(frame) {
    return fieldIn(frame, this.field)?.extremes?.[this.quantity];
  }

  // Draws what is chosen. Of calls that overtake each other the last one counts.
  async show() {
    const frame = this.choices[Number(byId('frame').value)];
    this.frame = frame;
    const turn = (this.turn = (this.turn ?? 0) + 1);
    const [values, displacements] = await Promise.all([valuesOf(frame, this.field, this.quantity), displacementsOf(frame)]);
    if (turn !== this.turn) return;
    this.values = values;
    const field = fields[this.field];
    this.view.move(displacements);
    this.view.paint(values, field.on === 'elements');
    this.setDeformation(displacements);
    const [lowest, highest] = this.rangeOf(frame);
    this.view.setRange(lowest, highest);
    showLegend(lowest, highest);
    const title = `${format.fieldQuantity(field.name, this.quantity)}, ${format.frame(steps, frame)}`;
    byId('what').textContent = title;
    byId('frame').setAttribute('aria-valuetext', format.frame(steps, frame));
    byId('frame-name').textContent = format.frame(steps, frame);
    byId('mean').hidden = field.on !== 'elements';
    byId('canvas').setAttribute('aria-label', `The model coloured by ${title}. Arrow keys turn it, with Shift they move it, + and - zoom, Home shows all.`);
    this.tellExtremes();
    this.tellPicked();
    this.draw();
  }

  rangeOf(frame) {
    const of = byId('range').value === 'all' ? this.choices : [frame];
    const extremes = of.map((f) => this.extremesIn(f)).filter(Boolean);
    if (!extremes.length) return [0, 1];
    return [Math.min(...extremes.map((e) => e.min.value)), Math.max(...extremes.map((e) => e.max.value))];
  }

  // Halfway the slider makes the largest displacement a tenth of the model. Displacements that can be seen as they are, and
  // are none of a mode of any size, are shown as they are at first.
  setDeformation(displacements) {
    let most = 0;
    for (const value of displacements ?? []) most = Math.max(most, Math.abs(value));
    byId('scale').disabled = most === 0;
    const part = most / (2 * this.view.camera.radius);
    this.unit = part > 0.05 && part < 0.5 ? 2 : most > 0 ? 0.1 / part : 0;
    this.rescale();
  }

  rescale() {
    const factor = (Number(byId('scale').value) / 50) * this.unit;
    this.view.scale = factor;
    const text = factor === 0 ? 'not deformed' : `${format.number(Number(factor.toPrecision(3)))} times`;
    byId('scale-name').textContent = text;
    byId('scale').setAttribute('aria-valuetext', text);
    this.drawSoon();
  }

  lookAlong(axis) {
    const unit = (c) => new Vector3(...[0, 1, 2].map((i) => Number(i === c)));
    const [x, y, z] = [0, 1, 2].map(unit);
    this.view.camera.lookDown({ x: [y, z, x], y: [x.clone().negate(), z, y], z: [x, y, z] }[axis]);
    this.view.camera.fit();
    this.drawSoon();
  }

  // Marks.

  tellExtremes() {
    const extremes = this.extremesIn(this.frame);
    for (const which of ['max', 'min']) {
      const button = byId(`go-${which}`);
      button.hidden = !extremes;
      if (!extremes) continue;
      button.textContent = `${which} ${format.number(extremes[which].value)} at ${format.place(extremes[which])}`;
      button.onclick = () => this.goTo(extremes[which]);
    }
  }

  marks() {
    const extremes = byId('marks').checked && this.extremesIn(this.frame);
    const all = [];
    if (extremes) for (const which of ['max', 'min']) all.push({ kind: which, text: `${which} ${format.number(extremes[which].value)}`, at: extremes[which] });
    if (this.extra) all.push({ kind: 'of-record', text: this.extra.text, at: this.extra.at });
    if (this.picked) all.push({ kind: 'picked', text: '', at: { vertex: this.picked.vertex } });
    return all;
  }

  // Where a place is, as the model is drawn: a vertex is moved with it, the middle of an element stays.
  pointOf(place) {
    if (place.vertex >= 0) return this.view.pointOf(place.vertex);
    if (place.element >= 0) return this.middleOf(place.element);
    return place.at ? new Vector3(...place.at) : null;
  }

  // Of an element's faces that can be seen the one whose middle is nearest to the user.
  middleOf(element) {
    const { corners, elements } = this.model.triangles;
    let best = null;
    let nearest = Infinity;
    for (let i = elements.indexOf(element); i >= 0 && elements[i] === element; ++i) {
      const middle = new Vector3();
      for (let k = 0; k < 3; ++k) middle.addScaledVector(this.view.pointOf(corners[3 * i + k]), 1 / 3);
      const { depth } = this.view.camera.project(middle);
      if (depth < nearest) [nearest, best] = [depth, middle];
    }
    return best;
  }

  draw() {
    this.view.draw();
    this.placed = [];
    // A label that would reach the legend stands on the other side.
    const room = 1 - (this.view.camera.inset + 110) / this.view.camera.width;
    const layer = byId('marks-layer');
    const all = this.marks();
    while (layer.children.length < all.length) layer.append(make('div', { class: 'mark' }, make('i'), make('span')));
    [...layer.children].forEach((element, i) => {
      const mark = all[i];
      element.hidden = !mark;
      if (!mark) return;
      const point = this.pointOf(mark.at);
      element.hidden = !point;
      if (!point) return;
      const at = this.view.camera.project(point);
      element.className = `mark ${mark.kind}${at.x > room ? ' left' : ''}`;
      element.lastChild.textContent = mark.text;
      element.lastChild.hidden = !mark.text;
      element.style.left = `${100 * at.x}%`;
      element.style.top = `${100 * at.y}%`;
      element.dataset.node = mark.at.node ?? '';
      this.placed.push([element, point, mark]);
    });
    this.drawTriad();
    this.checkMarks();
  }

  // A mark on what the model hides, or inside it, is hidden too.
  hideMarksBehind() {
    for (const [element, point, mark] of this.placed ?? []) {
      const isInside = mark.at.vertex === undefined && mark.at.element === undefined;
      const isSeen = !isInside && this.view.sees(point);
      element.classList.toggle('behind', !isSeen);
    }
    byId('stage').dataset.checked = String(Number(byId('stage').dataset.checked ?? 0) + 1);
  }

  drawTriad() {
    const lines = byId('triad').querySelectorAll('line');
    const texts = byId('triad').querySelectorAll('text');
    [0, 1, 2].forEach((axis) => {
      const v = new Vector3(...[0, 1, 2].map((c) => Number(c === axis))).applyQuaternion(this.view.camera.turn);
      lines[axis].setAttribute('x2', 30 + 18 * v.x);
      lines[axis].setAttribute('y2', 30 - 18 * v.y);
      texts[axis].setAttribute('x', 30 + 25 * v.x);
      texts[axis].setAttribute('y', 34 - 25 * v.y);
    });
  }

  // Shows a place: the model is turned until it can be seen, as far as that works.
  goTo(place, text) {
    if (text !== undefined) this.extra = { at: place, text };
    const point = this.pointOf(place);
    if (!point) return this.draw();
    this.view.draw();
    if (!this.view.sees(point)) this.turnTo(point);
    this.draw();
  }

  // Tries directions around the model, the present one's neighbours first.
  turnTo(point) {
    const { camera } = this.view;
    const before = camera.turn.clone();
    for (const [x, y] of [[0.6, 0], [-0.6, 0], [0, 0.6], [0, -0.6], [1.2, 0], [-1.2, 0], [0, 1.2], [0, -1.2], [0, 2.1], [0, -2.1], [0, 3.1], [1.2, 1.5], [-1.2, 1.5], [1.2, -1.5], [-1.2, -1.5], [0.7, 3.1], [-0.7, 3.1]]) {
      camera.turn.copy(before);
      camera.rotate(x, y);
      camera.fit();
      camera.update();
      if (this.view.sees(point)) return;
    }
    camera.turn.copy(before);
    camera.fit();
  }

  // Records ask for a frame, a field and a quantity; false where the page does not have them.
  async choose({ step, frame, field, quantity }) {
    const number = fields.findIndex((f) => f.name === field);
    if (number < 0 || !fields[number].quantities.includes(quantity)) return false;
    const wanted = frames.find((f) => f.step === step && f.frame === frame);
    if (!wanted || !hasQuantity(wanted, number, quantity)) return false;
    byId('field').value = number;
    this.fieldChanged(false);
    byId('quantity').value = quantity;
    this.quantityChanged(wanted);
    await this.show();
    return true;
  }

  // Sets.

  setUpSets() {
    const shown = sets.map((set, i) => [i, set]).filter(([, set]) => set.members);
    const label = (set) => `${set.name} (${format.count(set.size, set.kind)})`;
    fillSelect(byId('set'), [['', 'whole model'], ...shown.map(([i, set]) => [i, label(set)])]);
    byId('set').onchange = () => this.showSet();
    byId('alone').onchange = () => this.showSet();
    byId('set').disabled = shown.length === 0;
  }

  async showSet() {
    const chosen = byId('set').value;
    const set = chosen === '' ? null : sets[Number(chosen)];
    const members = set && (await membersOf(Number(chosen)));
    const ofElements = set?.kind === 'element';
    byId('alone').disabled = !ofElements;
    this.view.showElements(ofElements ? members : null, !byId('alone').checked);
    this.view.showNodes(set && !ofElements ? members : null);
    this.draw();
  }

  // Picking.

  setUpPicking() {
    const { canvas } = this.view;
    let start = null;
    canvas.addEventListener('pointerdown', (event) => { start = [event.clientX, event.clientY]; });
    canvas.addEventListener('pointerup', (event) => {
      if (!start || Math.hypot(event.clientX - start[0], event.clientY - start[1]) > 4) return;
      const box = canvas.getBoundingClientRect();
      this.pick({ x: (event.clientX - box.left) / box.width, y: (event.clientY - box.top) / box.height });
    });
    canvas.addEventListener('keydown', (event) => { if (event.key === 'Enter') this.pick({ x: 0.5, y: 0.5 }); });
  }

  pick(place) {
    this.picked = this.view.pick(place);
    this.tellPicked();
    this.draw();
  }

  // All fields at the picked node or element, in this frame.
  async tellPicked() {
    const box = byId('picked');
    const { picked, frame } = this;
    if (!picked) return box.replaceChildren();
    const { nodes, cells, coordinates, instances, owners } = this.model;
    const at = [0, 1, 2].map((c) => format.number(coordinates[3 * picked.vertex + c]));
    const owner = owners.length ? `${instances[owners[0][picked.vertex]]}, ` : '';
    const rows = [];
    for (const entry of frame.fields) {
      const field = fields[entry.field];
      for (const quantity of field.quantities.filter((q) => hasQuantity(frame, entry.field, q))) {
        const value = (await valuesOf(frame, entry.field, quantity))[field.on === 'elements' ? picked.element : picked.vertex];
        if (Number.isFinite(value)) rows.push(make('tr', {}, make('th', { scope: 'row' }, format.fieldQuantity(field.name, quantity)), make('td', {}, format.number(Number(value.toPrecision(5))))));
      }
    }
    if (picked !== this.picked || frame !== this.frame) return undefined;
    const caption = `${owner}node ${nodes[picked.vertex]} at ${at.join(', ')}; element ${cells[picked.element]}. ${format.frame(steps, frame)}`;
    return box.replaceChildren(make('table', {}, make('caption', {}, caption), make('tbody', {}, ...rows)));
  }
}
