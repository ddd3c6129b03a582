// Starts the browsers of the machine, as many as are there.
import { existsSync } from 'node:fs';
import puppeteer from 'puppeteer-core';

const CHROMIUM = ['--no-sandbox', '--disable-dev-shm-usage', '--use-gl=angle', '--use-angle=swiftshader', '--enable-unsafe-swiftshader'];
export const browsers = {
  chromium: { browser: 'chrome', paths: ['/usr/bin/chromium'], args: CHROMIUM, without: { args: ['--no-sandbox', '--disable-dev-shm-usage', '--disable-3d-apis', '--disable-gpu'] } },
  firefox: { browser: 'firefox', paths: ['/usr/bin/firefox-esr', '/usr/bin/firefox'], args: [],
    // Without a display it draws nothing in 3D: its software renderer is that of X (run starts one, where xvfb is there).
    headless: !process.env.DISPLAY, extraPrefsFirefox: { 'webgl.force-enabled': true }, without: { extraPrefsFirefox: { 'webgl.disabled': true } } },
};

export const pathOf = (name) => browsers[name].paths.find((path) => existsSync(path));

export function start(name, withoutPictures = false) {
  const { paths, without, ...options } = browsers[name];
  return puppeteer.launch({ executablePath: pathOf(name), headless: true, ...options, ...(withoutPictures ? without : {}) });
}

// Opens a page from its file. What the browser says and asks for is kept in `said` and `asked`.
export async function open(browser, file, { width = 1300, height = 950, dark = false } = {}) {
  const page = await browser.newPage();
  await page.setViewport({ width, height });
  const said = [];
  const asked = [];
  page.on('console', (message) => said.push(`${message.type()}: ${message.text()}`));
  page.on('pageerror', (error) => said.push(`error: ${error.message}`));
  page.on('dialog', (dialog) => { said.push(`dialog: ${dialog.message()}`); dialog.dismiss(); });
  page.on('request', (request) => asked.push(request.url()));
  await page.goto(`file://${file}`);
  await page.waitForFunction(() => document.documentElement.dataset.ready, { timeout: 120000 });
  if (dark) await page.evaluate(() => document.documentElement.dataset.theme === 'dark' || document.getElementById('theme').click());
  return { page, said, asked };
}

export async function drawsPictures(browser) {
  const page = await browser.newPage();
  const does = await page.evaluate(() => document.createElement('canvas').getContext('webgl2') !== null);
  await page.close();
  return does;
}

// The pixels of the picture as one text.
export const pixels = (page) => page.evaluate(() => document.getElementById('canvas').toDataURL());
export const text = (page, id) => page.$eval(`#${id}`, (element) => element.textContent);

// Waits until what a frame of the picture and its marks need has been done.
export async function settle(page) {
  await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done, 300)))));
}

// Sets an input as a user does.
export async function set(page, id, value) {
  await page.$eval(`#${id}`, (element, v) => {
    if (element.type === 'checkbox') element.checked = v;
    else element.value = v;
    element.dispatchEvent(new Event('input', { bubbles: true }));
    element.dispatchEvent(new Event('change', { bubbles: true }));
  }, value);
  await settle(page);
}
