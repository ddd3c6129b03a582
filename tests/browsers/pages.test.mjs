// Pages of `kolvex report` in the browsers that the machine has. KOLVEX_PAGES is the directory that prepare.py has filled.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import { after, before, describe, test } from 'node:test';
import { browsers, drawsPictures, open, pathOf, pixels, set, settle, start, text } from './browser.mjs';

const PAGES = process.env.KOLVEX_PAGES;
const file = (name) => join(PAGES, name);
const expected = JSON.parse(readFileSync(file('expected.json'), 'utf8'));
const AXE = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

const marks = (page) => page.$$eval('.mark:not([hidden])', (all) => all.map((m) => ({ kind: m.className.split(' ')[1], node: m.dataset.node, isBehind: m.classList.contains('behind'), text: m.textContent, left: parseFloat(m.style.left), top: parseFloat(m.style.top) })));
const mark = async (page, kind) => (await marks(page)).find((m) => m.kind === kind);

// Whether there is red, the colour of the last band in some light, within a few pixels of a place of the picture.
const isRedAt = (page, left, top) => page.evaluate((x, y) => {
  const source = document.getElementById('canvas');
  const copy = document.createElement('canvas');
  [copy.width, copy.height] = [source.width, source.height];
  const context = copy.getContext('2d');
  context.drawImage(source, 0, 0);
  const { data } = context.getImageData(Math.round(x * source.width) - 6, Math.round(y * source.height) - 6, 13, 13);
  for (let i = 0; i < data.length; i += 4) if (data[i + 3] === 255 && data[i] > 2 * data[i + 1] && data[i] > 2 * data[i + 2]) return true;
  return false;
}, left / 100, top / 100);

async function choose(page, field, quantity, frame) {
  await page.$eval('#field', (select, name) => { select.value = [...select.options].find((o) => o.textContent.split(':')[0] === name).value; select.dispatchEvent(new Event('change')); }, field);
  await page.$eval('#quantity', (select, q) => { select.value = q; select.dispatchEvent(new Event('change')); }, quantity);
  await set(page, 'frame', frame);
}

for (const name of Object.keys(browsers)) {
  describe(name, { skip: pathOf(name) ? false : `${name} is not installed` }, () => {
    let browser;
    let reason; // why there are no pictures
    before(async () => {
      browser = await start(name);
      if (!(await drawsPictures(browser))) reason = `${name} has no WebGL 2 here${name === 'firefox' ? '; it takes a display, which xvfb makes' : ''}`;
    });
    const pictureTest = (title, body) => test(title, (t) => (reason ? t.skip(reason) : body(t)));
    after(() => browser?.close());

    pictureTest('the example opens from its file with an empty console and loads nothing', async () => {
      const { page, said, asked } = await open(browser, file('lug.html'));
      assert.equal(await page.$eval('html', (e) => e.dataset.ready), 'picture');
      await settle(page);
      assert.deepEqual(said, []);
      assert.deepEqual(asked.filter((url) => !/^(file|data|blob):/.test(url)), []);
      assert.equal(await page.title(), 'lug.odb');
      await page.close();
    });

    test('words find records', async () => {
      const { page } = await open(browser, file('lug.html'));
      await page.type('#search', 'MISES frame_4 rim max');
      const found = expected.names.filter((n) => ['mises', 'frame_4', 'rim', 'max'].every((w) => n.toLowerCase().includes(w)));
      assert.ok(found.length > 1);
      assert.equal(await text(page, 'count'), `${found.length} of ${expected.names.length.toLocaleString('en')} records`);
      assert.deepEqual(await page.$$eval('.record span', (all) => all.map((s) => s.textContent)), found);
      await set(page, 'search', 'no such record');
      assert.equal((await page.$$('.record')).length, 0);
      await page.close();
    });

    test('of many records only those in sight are in the document, and the keyboard reaches all', async () => {
      const { page } = await open(browser, file('lug.html'));
      assert.ok((await page.$$('.record')).length < 60);
      await page.focus('#rows');
      await page.keyboard.press('End');
      await settle(page);
      assert.equal(await page.$eval('.record[aria-selected=true] span', (e) => e.textContent), expected.names.at(-1));
      await page.close();
    });

    pictureTest('the slider recolours the model and the legend', async () => {
      const { page } = await open(browser, file('lug.html'));
      await choose(page, 'S', 'mises', 0);
      await set(page, 'scale', 0);
      const [first, limits] = [await pixels(page), await text(page, 'limits')];
      await set(page, 'frame', 3);
      assert.notEqual(await pixels(page), first);
      assert.notEqual(await text(page, 'limits'), limits);
      await set(page, 'frame', 0);
      assert.equal(await pixels(page), first);
      await page.close();
    });

    pictureTest('every quantity of a tensor paints another picture', async () => {
      const { page } = await open(browser, file('lug.html'));
      const pictures = new Set();
      for (const quantity of ['mises', '11', '23', 'tresca', 'maxprincipal', 'minprincipal', 'press']) {
        await choose(page, 'S', quantity, 3);
        pictures.add(await pixels(page));
      }
      assert.equal(pictures.size, 7);
      await page.close();
    });

    pictureTest('max and min are marked at the nodes where they are, on the colour of the last band', async () => {
      const { page } = await open(browser, file('lug.html'));
      for (const { field, quantity, slider, max, min } of expected.extremes) {
        await choose(page, field, quantity, slider);
        assert.equal((await mark(page, 'max')).node, String(max.node), `${field} ${quantity}`);
        assert.equal((await mark(page, 'min')).node, String(min.node), `${field} ${quantity}`);
        assert.match(await text(page, 'go-max'), new RegExp(`^max ${max.text.replaceAll('.', '\\.').replace('+', '\\+')} at node ${max.node}\\b`));
        for (const lines of ['mesh', 'edges']) await set(page, lines, false);
        await page.click('#go-max');
        await settle(page);
        const seen = await mark(page, 'max');
        assert.equal(seen.isBehind, false);
        assert.ok(await isRedAt(page, seen.left, seen.top), `${field} ${quantity}`);
      }
      await page.close();
    });

    pictureTest('a mark is hidden when the model is before it', async () => {
      const { page } = await open(browser, file('lug.html'));
      const { field, quantity, slider } = expected.extremes[0];
      await choose(page, field, quantity, slider);
      await page.click('#go-max');
      await settle(page);
      assert.equal((await mark(page, 'max')).isBehind, false);
      await page.focus('#canvas');
      const states = new Set();
      for (let i = 0; i < 18; ++i) {
        for (let k = 0; k < 3; ++k) await page.keyboard.press('ArrowRight');
        await settle(page);
        states.add((await mark(page, 'max')).isBehind);
      }
      assert.deepEqual([...states].sort(), [false, true]);
      await page.close();
    });

    pictureTest('a record leads to its frame, its field, its place and its curve', async () => {
      const { page } = await open(browser, file('lug.html'));
      for (const { record, title, chosen } of expected.records) {
        await set(page, 'search', record);
        await page.click('.record');
        await settle(page);
        assert.equal(await text(page, 'what'), title);
        assert.equal(await text(page, 'chosen'), chosen);
        assert.equal(await text(page, 'curve-title'), record.replace(/__Frame_\d+__/, '__Frame_*__'));
        assert.match((await mark(page, 'of-record')).text, /^(max|min|enggmax|enggmin) /);
      }
      await page.close();
    });

    pictureTest('a picked point tells the values there', async () => {
      const { page } = await open(browser, file('lug.html'));
      await choose(page, 'S', 'mises', 3);
      await set(page, 'scale', 0);
      const box = await (await page.$('#canvas')).boundingBox();
      await page.mouse.click(box.x + 0.2 * box.width, box.y + 0.55 * box.height);
      await page.waitForSelector('#picked tr');
      const caption = await page.$eval('#picked caption', (e) => e.textContent);
      const node = caption.match(/^node (\d+) at/)[1];
      const value = await page.$$eval('#picked tr', (rows) => rows.map((r) => [...r.children].map((c) => c.textContent)).find(([n]) => n === 'S, Mises')[1]);
      const true_ = expected.nodes[node];
      assert.ok(Math.abs(Number(value) - true_) < 1e-3 * Math.abs(true_), `${caption}: ${value}, not ${true_}`);
      await page.close();
    });

    pictureTest('a set is shown alone', async () => {
      const { page } = await open(browser, file('lug.html'));
      const whole = await pixels(page);
      const rim = await page.$$eval('#set option', (all) => all.find((o) => o.textContent.startsWith('RIM (')).value);
      await set(page, 'set', rim);
      const faint = await pixels(page);
      await set(page, 'alone', true);
      const alone = await pixels(page);
      assert.equal(new Set([whole, faint, alone]).size, 3);
      await set(page, 'set', '');
      assert.equal(await pixels(page), whole);
      await page.close();
    });

    pictureTest('the model fills the view', async () => {
      const { page } = await open(browser, file('lug.html'));
      await set(page, 'scale', 0);
      await page.click('#fit');
      await settle(page);
      const filled = await page.evaluate(() => {
        const source = document.getElementById('canvas');
        const copy = document.createElement('canvas');
        [copy.width, copy.height] = [source.width, source.height];
        const context = copy.getContext('2d');
        context.drawImage(source, 0, 0);
        const { data } = context.getImageData(0, 0, copy.width, copy.height);
        let [left, right, top, bottom] = [copy.width, 0, copy.height, 0];
        for (let y = 0; y < copy.height; ++y) for (let x = 0; x < copy.width; ++x) if (data[4 * (y * copy.width + x) + 3] > 128) { left = Math.min(left, x); right = Math.max(right, x); top = Math.min(top, y); bottom = Math.max(bottom, y); }
        return Math.max((right - left) / copy.width, (bottom - top) / copy.height);
      });
      assert.ok(filled > 0.8, String(filled));
      await page.close();
    });

    test('the page turns dark and narrow and stays readable, and axe finds nothing', async () => {
      for (const [options, pageFile] of [[{}, 'lug.html'], [{ dark: true }, 'lug.html'], [{ width: 400, height: 800 }, 'lug.html'], [{}, 'nasty.html']]) {
        const { page } = await open(browser, file(pageFile), options);
        await page.$eval('#numbers', (details) => { details.open = true; });
        await settle(page);
        assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= window.innerWidth), `${JSON.stringify(options)} is wider than the window`);
        await page.evaluate(AXE);
        const found = await page.evaluate(async () => {
          const { violations } = await globalThis.axe.run(document, { runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'] });
          return violations.map((v) => `${v.id}: ${v.nodes.map((n) => n.target.join(' ')).join(', ')}`);
        });
        assert.deepEqual(found, [], `${pageFile} ${JSON.stringify(options)}`);
        await page.close();
      }
    });

    test('on paper there is a table of the records', async () => {
      const { page } = await open(browser, file('lug.html'));
      await set(page, 'search', 'mises frame_4 rim');
      await page.evaluate(() => window.dispatchEvent(new Event('beforeprint')));
      const rows = await page.$$eval('#printed-records tr', (all) => all.length);
      assert.equal(rows, (await page.$$('.record')).length);
      if (name === 'chromium') {
        await page.emulateMediaType('print');
        assert.equal(await page.$eval('#rows', (e) => getComputedStyle(e).display), 'none');
        assert.equal(await page.$eval('#printed-records', (e) => getComputedStyle(e).display), 'table');
        assert.ok((await page.pdf()).length > 20000);
      }
      await page.close();
    });

    test('names of strangers do nothing but stand there', async () => {
      const { page, said } = await open(browser, file('nasty.html'));
      await settle(page);
      await page.$$eval('.record', (all) => all.forEach((r) => r.click()));
      for (const id of ['field', 'set', 'history']) {
        const values = await page.$$eval(`#${id} option`, (all) => all.map((o) => o.value));
        for (const value of values) await set(page, id, value);
      }
      await settle(page);
      assert.deepEqual(said, []);
      assert.equal(await page.$('img'), null);
      assert.equal((await page.$$('script')).length, 3);
      assert.ok((await page.evaluate(() => document.body.innerText)).includes(expected.nasty));
      await page.close();
    });

    test('without WebGL records and curves still work', async () => {
      const plain = await start(name, true);
      try {
        const { page, said } = await open(plain, file('lug.html'));
        assert.equal(await page.$eval('html', (e) => e.dataset.ready), 'no picture');
        assert.match(await text(page, 'what'), /draws no 3D pictures/);
        await page.type('#search', 'frame_4 u mag max');
        assert.ok((await page.$$('.record')).length > 0);
        await page.click('.record');
        await settle(page);
        assert.match(await text(page, 'curve-title'), /Frame_\*__/);
        const isDrawn = await page.$eval('#curve canvas', (canvas) => canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data.some((v) => v !== 0));
        assert.ok(isDrawn);
        assert.deepEqual(said.filter((line) => line.startsWith('error: ')), []);
      } finally {
        await plain.close();
      }
    });
  });
}
