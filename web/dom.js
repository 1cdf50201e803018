// Small helpers for building and updating the page.

// An element with attributes and children (strings become text).
export function h(tag, attrs = {}, ...children) {
  const el = document.createElement(tag);
  for (const [name, value] of Object.entries(attrs)) {
    if (value === false || value === null || value === undefined) continue;
    el.setAttribute(name, value === true ? '' : String(value));
  }
  el.append(...children);
  return el;
}

export function setText(id, text) {
  const el = typeof id === 'string' ? document.getElementById(id) : id;
  if (el && el.textContent !== text) el.textContent = text;
}

// Calls `fn` at most once every `ms`, always with the latest arguments, the last call included.
export function throttle(fn, ms) {
  let last = 0;
  let timer = 0;
  let pending = null;
  const fire = () => {
    timer = 0;
    last = performance.now();
    const args = pending;
    pending = null;
    fn(...args);
  };
  return (...args) => {
    pending = args;
    if (timer) return;
    const wait = last + ms - performance.now();
    if (wait <= 0) fire();
    else timer = setTimeout(fire, wait);
  };
}

// A control the operator moved a moment ago keeps its value against older news from the server.
const touched = new WeakMap();
export function markTouched(el) {
  touched.set(el, performance.now());
}
export function touchedRecently(el, ms = 1500) {
  return performance.now() - (touched.get(el) || -1e9) < ms;
}

// What a source is called on screen: a file's name, or a network address's scheme and host
// (never its path, query or credentials, which may carry a stream key).
export function sourceName(address) {
  if (!address) return '';
  const scheme = /^([a-z][a-z0-9+.-]*):\/\/([^/?#]*)/i.exec(address);
  if (!scheme) return address.split(/[\\/]/).pop();
  const kind = scheme[1].toLowerCase();
  if (kind === 'lavfi') return `lavfi: ${scheme[2].split(/[=:;[,]/)[0]}`;
  if (kind === 'file') return address.split(/[\\/]/).pop();
  return `${kind}://${scheme[2].replace(/^.*@/, '')}`;
}

export const fileName = (path) => (path ? path.split(/[\\/]/).pop() : '');

export function clock(ms) {
  const s = Math.max(0, Math.floor(ms / 1000));
  const pad = (n) => String(n).padStart(2, '0');
  return `${Math.floor(s / 3600)}:${pad(Math.floor(s / 60) % 60)}:${pad(s % 60)}`;
}
