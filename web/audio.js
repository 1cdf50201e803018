// The audio strips: a fader in dB over the API's linear volume, a mute, and meters of peak and
// RMS fed by the "levels" events.

import { run } from './api.js';
import { h, throttle, touchedRecently, markTouched } from './dom.js';

const FLOOR_DB = -60; // the meters' and faders' bottom; the fader's notch below it is silence
const MAX_DB = 12;
const MAX_VOLUME = 4;

export const dbOf = (linear) => (linear > 0 ? 20 * Math.log10(linear) : -Infinity);

function faderToVolume(db) {
  return db < FLOOR_DB ? 0 : Math.min(MAX_VOLUME, 10 ** (db / 20));
}

function volumeToFader(volume) {
  const db = dbOf(volume);
  return db < FLOOR_DB ? FLOOR_DB - 1 : Math.min(MAX_DB, db);
}

function dbText(db) {
  if (db < FLOOR_DB) return '−∞ dB';
  const sign = db > 0.05 ? '+' : db < -0.05 ? '−' : '';
  return `${sign}${Math.abs(db).toFixed(1)} dB`;
}

// 0 at the floor, 1 at full scale.
function meterFraction(linear) {
  const db = dbOf(linear);
  return db <= FLOOR_DB ? 0 : Math.min(1, (db - FLOOR_DB) / -FLOOR_DB);
}

function strip(key, label, path) {
  const name = h('span', { class: 'strip-name', 'data-t-args': label, 'data-t': 'name' });
  const fader = h('input', {
    id: `fader-${key}`, type: 'range', min: FLOOR_DB - 1, max: MAX_DB, step: 1, value: 0,
    'data-t-label': 'volumeOf', 'data-t-args': label,
  });
  const readout = h('output', { class: 'db', for: fader.id }, '0.0 dB');
  const mute = h('button', {
    id: `mute-${key}`, type: 'button', class: 'mute', 'aria-pressed': 'false',
    'data-t': 'mute', 'data-t-label': 'muteOf', 'data-t-args': label,
  });
  const meter = h('div', {
    id: `meter-${key}`, class: 'meter', role: 'meter', 'aria-valuemin': FLOOR_DB, 'aria-valuemax': 0,
    'aria-valuenow': FLOOR_DB, 'data-peak': '0', 'data-t-label': 'meterOf', 'data-t-args': label,
  }, h('div', { class: 'peak' }), h('div', { class: 'rms' }));

  const sendVolume = throttle((db) => run('PUT', path, { volume: faderToVolume(db) }), 50);
  fader.addEventListener('input', () => {
    markTouched(fader);
    readout.textContent = dbText(Number(fader.value));
    sendVolume(Number(fader.value));
  });
  fader.addEventListener('change', () => markTouched(fader));
  mute.addEventListener('click', async () => {
    const muted = mute.getAttribute('aria-pressed') !== 'true';
    mute.setAttribute('aria-pressed', String(muted));
    markTouched(mute);
    const answer = await run('PUT', path, { mute: muted });
    if (answer && 'mute' in answer) mute.setAttribute('aria-pressed', String(answer.mute));
  });
  return h('div', { class: 'strip' }, name, meter, h('div', { class: 'fader' }, fader, readout), mute);
}

export function buildStrips(container) {
  container.replaceChildren(
    strip('program', '@program', '/audio/program'),
    ...[1, 2, 3, 4].map((n) => strip(String(n), `@channel:${n}`, `/audio/channels/${n}`)),
  );
}

// Volumes and mutes as the status has them, except where the operator's hand is.
export function showVolumes(status) {
  const rows = [['program', status.program], ...status.channels.map((c) => [String(c.number), c])];
  for (const [key, s] of rows) {
    const fader = document.getElementById(`fader-${key}`);
    const mute = document.getElementById(`mute-${key}`);
    if (!fader || !s) continue;
    if (!touchedRecently(fader) && document.activeElement !== fader) {
      fader.value = volumeToFader(s.volume);
      fader.nextElementSibling.textContent = dbText(volumeToFader(s.volume));
    }
    if (!touchedRecently(mute)) mute.setAttribute('aria-pressed', String(!!s.mute));
  }
}

function showLevel(key, level) {
  const meter = document.getElementById(`meter-${key}`);
  if (!meter || !level) return;
  meter.dataset.peak = String(level.peak);
  const peak = meterFraction(level.peak);
  const rms = meterFraction(level.rms);
  meter.firstChild.style.clipPath = `inset(0 ${(100 - peak * 100).toFixed(1)}% 0 0)`;
  meter.lastChild.style.clipPath = `inset(0 ${(100 - rms * 100).toFixed(1)}% 0 0)`;
  meter.classList.toggle('clip', level.peak >= 0.999);
  meter.setAttribute('aria-valuenow', Math.max(FLOOR_DB, dbOf(level.peak)).toFixed(0));
}

export function showLevels(event) {
  showLevel('program', event.program);
  (event.channels || []).forEach((level, i) => showLevel(String(i + 1), level));
}
