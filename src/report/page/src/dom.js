// Elements are made by these functions alone. Texts from the database become text nodes and attributes' values, never markup.

export const byId = (id) => document.getElementById(id);

export function make(name, attributes = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (key.startsWith('on')) element.addEventListener(key.slice(2), value);
    else if (value !== false && value !== undefined) element.setAttribute(key, value === true ? '' : value);
  }
  element.append(...children);
  return element;
}

export function fillSelect(select, entries) {
  select.replaceChildren(...entries.map(([value, label]) => make('option', { value }, label)));
}

// Calls when nothing has asked for `pause` milliseconds.
export function debounced(call, pause) {
  let timer = 0;
  return () => {
    clearTimeout(timer);
    timer = setTimeout(call, pause);
  };
}
