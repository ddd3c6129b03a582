// Light or dark: as the system has it, until the user says otherwise. Nothing is kept when the page is closed.
import { byId } from './dom.js';

export function setUpTheme(changed) {
  const system = matchMedia('(prefers-color-scheme: dark)');
  const isDark = () => (document.documentElement.dataset.theme ? document.documentElement.dataset.theme === 'dark' : system.matches);
  const tell = () => { byId('theme').textContent = isDark() ? 'Light' : 'Dark'; };
  byId('theme').onclick = () => {
    document.documentElement.dataset.theme = isDark() ? 'light' : 'dark';
    tell();
    changed();
  };
  system.addEventListener('change', () => { tell(); changed(); });
  tell();
}
