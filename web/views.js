// Drawing what the server says: channel tiles, the production controls, overlays, outputs and
// the schedule. Each draw takes the JSON as the status or an event has it.

import { run, say } from './api.js';
import { h, setText, touchedRecently, markTouched, sourceName, fileName, clock } from './dom.js';
import { t, translate } from './strings.js';

// A text of the string table, kept in the element so a change of language redraws it.
export function tr(el, key, ...args) {
  if (typeof el === 'string') el = document.getElementById(el);
  if (!el) return;
  el.dataset.t = key;
  el.dataset.tArgs = args.join('|');
  setText(el, t(key, ...args));
}

function plain(el, text) {
  if (typeof el === 'string') el = document.getElementById(el);
  delete el.dataset.t;
  setText(el, text);
}

// ---- channels ----

export function buildTiles(container, onCut, onPreview) {
  const tile = (n) => {
    const cut = h('button', { id: `cut-${n}`, type: 'button', class: 'cut', 'data-t': 'cut', 'data-t-label': 'cutTo', 'data-t-args': n });
    const pvw = h('button', { id: `pvw-${n}`, type: 'button', class: 'pvw', 'data-t': 'pvw', 'data-t-label': 'pvwTo', 'data-t-args': n });
    cut.addEventListener('click', (event) => onCut(n, event));
    pvw.addEventListener('click', () => onPreview(n));
    return h('article', { id: `tile-${n}`, class: 'tile', 'data-t-label': 'channel', 'data-t-args': n },
      h('div', { class: 'thumb' }, h('img', { alt: '', 'data-t-alt': 'channel', 'data-t-args': n }),
        h('span', { class: 'tally' })),
      h('div', { class: 'info' },
        h('span', { class: 'num' }, String(n)),
        h('span', { class: 'source' }),
        h('span', { class: 'state', 'data-state': 'idle' })),
      h('div', { class: 'tile-buttons' }, cut, pvw));
  };
  container.replaceChildren(...[1, 2, 3, 4].map(tile));
}

export function showChannelState(n, word) {
  const state = document.querySelector(`#tile-${n} .state`);
  if (!state) return;
  state.dataset.state = word;
  tr(state, `state.${word}`);
}

export function showChannels(channels) {
  for (const c of channels) {
    const source = document.querySelector(`#tile-${c.number} .source`);
    if (!source) continue;
    if (c.source) plain(source, sourceName(c.source));
    else tr(source, 'noSource');
    source.title = c.error || '';
    showChannelState(c.number, c.state);
  }
}

// ---- production ----

export function showTally(program, preview) {
  for (let n = 1; n <= 4; ++n) {
    const tile = document.getElementById(`tile-${n}`);
    const onProgram = n === program;
    const onPreview = n === preview && !onProgram;
    tile.classList.toggle('tally-program', n === program);
    tile.classList.toggle('tally-preview', n === preview);
    const badge = tile.querySelector('.tally');
    if (onProgram) tr(badge, 'program');
    else if (onPreview) tr(badge, 'preview');
    else plain(badge, '');
  }
  if (preview) tr('preview-name', 'channel', preview);
  else plain('preview-name', '');
}

export function showProduction(p) {
  const transition = p.transition || {};
  const select = document.getElementById('transition');
  const stinger = select.querySelector('option[value="stinger"]');
  // A stinger needs its clip, which only the window or the API's "file" gives.
  stinger.hidden = stinger.disabled = !transition.file;
  if (!touchedRecently(select) && transition.type) select.value = transition.type;
  const duration = document.getElementById('duration');
  if (document.activeElement !== duration && !touchedRecently(duration)) duration.value = transition.durationMs ?? '';
  const direction = document.getElementById('direction');
  if (!touchedRecently(direction) && transition.direction) direction.value = transition.direction;
  document.getElementById('direction-field').hidden = select.value !== 'wipe';
  const tbar = document.getElementById('tbar');
  if (!touchedRecently(tbar, 600)) tbar.value = p.tbar ?? 0;
  const ftb = document.getElementById('ftb');
  ftb.setAttribute('aria-pressed', String(!!p.fadeToBlack));
  ftb.classList.toggle('on-air', !!p.fadeToBlack);
  if (p.stinger && p.stinger.state === 'failed' && p.stinger.failure) stinger.title = p.stinger.failure;
}

// ---- overlays ----

function textRow(o) {
  const on = h('input', { id: `text-${o.id}-on`, type: 'checkbox', 'data-t-label': 'showText', 'data-t-args': o.id });
  const input = h('input', { id: `text-${o.id}-input`, type: 'text', maxlength: 10000, 'data-t-label': 'textOf', 'data-t-args': o.id });
  const save = h('button', { id: `text-${o.id}-save`, type: 'button', 'data-t': 'save', 'data-t-label': 'saveText', 'data-t-args': o.id });
  const row = h('li', { id: `text-${o.id}`, class: 'overlay' },
    h('label', { class: 'switch' }, on, h('span', { 'data-t': 'textOverlay', 'data-t-args': o.id })), input, save);
  // The whole record goes back, with what the operator changed.
  const put = (changes) => {
    const { id, text, enabled, record } = row.record;
    return run('PUT', `/overlays/text/${id}`, { ...(record || { text, enabled }), ...changes });
  };
  on.addEventListener('change', () => {
    markTouched(on);
    put({ enabled: on.checked });
  });
  input.addEventListener('input', () => (input.dataset.dirty = '1'));
  const store = async () => {
    if (await put({ text: input.value })) delete input.dataset.dirty;
  };
  save.addEventListener('click', store);
  input.addEventListener('keydown', (event) => {
    if (event.key === 'Enter') store();
  });
  return row;
}

function mediaRow(o) {
  const on = h('input', { id: `media-${o.id}-on`, type: 'checkbox', 'data-t-label': 'showMedia', 'data-t-args': o.id });
  const row = h('li', { id: `media-${o.id}`, class: 'overlay' },
    h('label', { class: 'switch' }, on,
      h('span', { 'data-t': 'mediaOverlay', 'data-t-args': `@${o.kind === 'video' ? 'video' : 'image'}|${o.id}` })),
    h('span', { class: 'path' }, fileName(o.path)));
  on.addEventListener('change', () => {
    markTouched(on);
    const { id, path, kind, x, y, w, h: height, opacity } = row.record;
    run('PUT', `/overlays/media/${id}`, { path, kind, x, y, w, h: height, opacity, visible: on.checked });
  });
  return row;
}

export function showOverlays(overlays) {
  const texts = overlays.text || [];
  const media = overlays.media || [];
  const list = document.getElementById('overlay-list');
  const key = [...texts.map((o) => `t${o.id}`), ...media.map((o) => `m${o.id}:${o.kind}`)].join(',');
  if (list.dataset.key !== key) {
    list.dataset.key = key;
    list.replaceChildren(...texts.map(textRow), ...media.map(mediaRow));
    translate(list);
  }
  document.getElementById('no-overlays').hidden = texts.length + media.length > 0;
  for (const o of texts) {
    const row = document.getElementById(`text-${o.id}`);
    row.record = o;
    const on = document.getElementById(`text-${o.id}-on`);
    if (!touchedRecently(on)) on.checked = !!o.enabled;
    const input = document.getElementById(`text-${o.id}-input`);
    if (document.activeElement !== input && !input.dataset.dirty) input.value = o.text ?? '';
  }
  for (const o of media) {
    const row = document.getElementById(`media-${o.id}`);
    row.record = o;
    const on = document.getElementById(`media-${o.id}-on`);
    if (!touchedRecently(on)) on.checked = o.visible !== false;
  }
}

// ---- outputs ----

let onAir = { running: false, stopping: false, elapsedMs: 0, at: 0 };

export function tickOnAir() {
  const el = document.getElementById('onair');
  el.classList.toggle('live', onAir.running);
  if (onAir.running) plain(el, clock(onAir.elapsedMs + (performance.now() - onAir.at)));
  else tr(el, onAir.stopping ? 'stopping' : 'notRunning');
}

export function showTargetStatus(n, word) {
  const status = document.querySelector(`#target-${n} .status`);
  if (!status) return;
  status.dataset.status = word;
  tr(status, `ts.${word}`);
}

function targetRow(n) {
  const again = h('button', { id: `target-${n}-reconnect`, type: 'button', 'data-t': 'reconnect', 'data-t-label': 'reconnectTarget', 'data-t-args': n });
  again.addEventListener('click', async () => {
    if (await run('POST', `/outputs/targets/${n}/reconnect`)) say(t('done'));
  });
  return h('li', { id: `target-${n}`, class: 'target' },
    h('span', { class: 'name' }), h('span', { class: 'status' }), h('span', { class: 'kbps' }), again);
}

export function showOutputs(o) {
  onAir = { running: !!o.running, stopping: !!o.stopping, elapsedMs: o.elapsedMs || 0, at: performance.now() };
  tickOnAir();
  const file = o.file || {};
  const recording = (o.running || o.stopping) && o.recording && file.path;
  if (recording) plain('rec-file', fileName(file.path));
  else tr('rec-file', 'noRecording');
  plain('rec-size', recording ? `${(file.bytes / 1e6).toFixed(1)} MB` : '—');
  if (recording && file.failed) tr('rec-forecast', 'recFailed', file.reason || '');
  else showForecast(recording ? file.secondsLeft : undefined);
  const targets = o.targets || [];
  const list = document.getElementById('targets');
  if (list.children.length !== targets.length) {
    list.replaceChildren(...targets.map((_, i) => targetRow(i + 1)));
    translate(list);
  }
  for (const target of targets) {
    const row = document.getElementById(`target-${target.number}`);
    tr(row.querySelector('.name'), 'target', `${target.number} · ${sourceName(target.url)}`);
    showTargetStatus(target.number, target.status);
    tr(row.querySelector('.kbps'), 'kbps', Math.round(target.kbps || 0));
  }
}

export function showForecast(secondsLeft) {
  const el = document.getElementById('rec-forecast');
  el.classList.toggle('warn', secondsLeft >= 0 && secondsLeft < 600);
  if (secondsLeft >= 0) tr(el, 'minutesLeft', Math.max(1, Math.round(secondsLeft / 60)));
  else plain(el, '—');
}

// ---- schedule ----

export function showSchedule(s) {
  if ('running' in s) {
    const el = document.getElementById('schedule-state');
    el.classList.toggle('live', !!s.running);
    tr(el, s.running ? 'running' : 'stopped');
  }
  if ('clip' in s) plain('schedule-clip', s.clip || '—');
}
