// Bundles the page into one file: node build.mjs [OUTPUT]. The same sources and packages give the same bytes.
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync, mkdirSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = dirname(fileURLToPath(import.meta.url));
const output = process.argv[2] ?? join(here, 'dist/page.html');

const result = await build({
  absWorkingDir: here, entryPoints: ['src/main.js'], bundle: true, minify: true, format: 'iife', target: ['es2022', 'firefox115', 'chrome115'],
  charset: 'ascii', legalComments: 'none', write: false, outdir: 'out',
});
const bundled = (ending) => result.outputFiles.find((file) => file.path.endsWith(ending)).text.trim();
const script = bundled('.js').replaceAll('</script', '<\\/script').replaceAll('<!--', '<\\!--');
const style = bundled('.css');
const hash = (text) => `sha256-${createHash('sha256').update(text).digest('base64')}`;

// Both licences ask to be kept with every copy.
const licences = ['three', 'uplot'].map((name) => {
  const folder = join(here, 'node_modules', name);
  const { version } = JSON.parse(readFileSync(join(folder, 'package.json'), 'utf8'));
  return `${name} ${version}\n\n${readFileSync(join(folder, 'LICENSE'), 'utf8').trim()}`;
}).join('\n\n').replaceAll('--', '- -');

const parts = { 'script-hash': hash(script), 'style-hash': hash(style), style, script, licences: `<!--\nThis page contains\n\n${licences}\n-->` };
let page = readFileSync(join(here, 'src/page.html'), 'utf8');
for (const [name, text] of Object.entries(parts)) page = page.split(`<!--${name}-->`).join(text);
mkdirSync(dirname(output), { recursive: true });
writeFileSync(output, page);
console.log(`${output}: ${page.length} bytes, script ${script.length}, style ${style.length}`);
