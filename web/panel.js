// The control panel: signing in, keeping the page in step with Selvane (events, a status poll
// once a second, the pictures) and the controls that drive it.

import { api, run, say, session, openEvents, whenUnauthorized } from './api.js';
import { buildStrips, showVolumes, showLevels } from './audio.js';
import { throttle, markTouched } from './dom.js';
import { Pictures } from './pictures.js';
import { language, setLanguage, t } from './strings.js';
import * as view from './views.js';

const $ = (id) => document.getElementById(id);
const model = { signedIn: false, status: null, production: {} };
const timers = [];
let closeEvents = null;

// Thumbnails are asked for only where a channel has something to show.
const pictures = new Pictures((n) => {
  const channel = model.status?.channels?.[n - 1];
  return !!channel?.source && !['idle', 'connecting', 'failed'].includes(channel.state);
});

// ---- what the server says ----

function applyStatus(status) {
  model.status = status;
  view.showChannels(status.channels || []);
  applyProduction(status.production || { program: status.program?.channel ?? null });
  view.showOverlays(status.overlays || {});
  showVolumes(status);
  view.showOutputs(status.outputs || {});
  view.showSchedule(status.schedule || {});
}

function applyProduction(production) {
  model.production = { ...model.production, ...production };
  const { program, preview } = model.production;
  view.showTally(program, preview);
  view.showProduction(model.production);
  pictures.setPreview(preview || 0);
}

function setChannelState(n, state) {
  const channel = model.status?.channels?.[n - 1];
  if (channel) channel.state = state;
  view.showChannelState(n, state);
}

const productionEvents = new Set(['preview', 'transition', 'take', 'tbar', 'fadeToBlack', 'stinger']);

function onEvent(event) {
  if (!model.signedIn) return;
  if (productionEvents.has(event.type)) {
    applyProduction(event);
    return;
  }
  switch (event.type) {
    case 'hello': applyStatus(event.status); break;
    case 'levels': showLevels(event); break;
    case 'channel': setChannelState(event.channel, event.state); break;
    case 'channelError': say(t('channelError', event.channel, event.error), true); break;
    case 'cut': applyProduction({ program: event.channel }); break;
    case 'overlays': view.showOverlays(event); break;
    case 'stream': view.showTargetStatus(event.target, event.status); break;
    case 'outputsStarted':
    case 'outputsStopped': poll(); break;
    case 'outputsFailed': say(t('outputsFailed', event.message || event.reason), true); poll(); break;
    case 'schedule': view.showSchedule({ running: event.running }); break;
    case 'scheduleClip': view.showSchedule({ clip: event.id }); break;
    case 'diskForecast': if (!event.twin) view.showForecast(event.secondsLeft); break;
    default: break;
  }
}

// The status once a second brings what events do not: bytes, bitrates, times, the disk.
let polling = false;
async function poll() {
  if (polling || !model.signedIn) return;
  polling = true;
  try {
    const status = await api('GET', '/status');
    if (model.signedIn) applyStatus(status);
  } catch (error) {
    if (error.status !== 401) say(error.message, true);
  } finally {
    polling = false;
  }
}

function showLink(up) {
  const el = $('link-state');
  el.classList.toggle('up', up);
  view.tr(el, up ? 'connected' : 'disconnected');
}

// ---- signing in and out ----

function showSignIn(errorKey, errorText) {
  $('panel-view').hidden = true;
  $('signout').hidden = true;
  $('link-state').hidden = true;
  $('signin-view').hidden = false;
  const error = $('signin-error');
  if (errorKey) view.tr(error, errorKey);
  else {
    delete error.dataset.t;
    error.textContent = errorText || '';
  }
  $('token').focus();
}

let checking = false;
async function signIn(token) {
  if (model.signedIn || checking) return;
  checking = true;
  session.token = token;
  let status;
  try {
    status = await api('GET', '/status');
  } catch (error) {
    session.clear();
    if (error.status === 401) showSignIn('wrongToken');
    else if (error.status === 429) showSignIn('tooMany');
    else showSignIn(null, error.message);
    return;
  } finally {
    checking = false;
  }
  model.signedIn = true;
  $('signin-view').hidden = true;
  $('panel-view').hidden = false;
  $('signout').hidden = false;
  $('link-state').hidden = false;
  $('token').value = '';
  showLink(false);
  applyStatus(status);
  document.body.dataset.ready = '1';
  timers.push(setInterval(() => document.hidden || poll(), 1000), setInterval(view.tickOnAir, 500));
  closeEvents = openEvents({ onEvent, onLink: showLink, isWanted: () => model.signedIn });
  pictures.start();
}

function signOut(errorKey) {
  model.signedIn = false;
  timers.splice(0).forEach(clearInterval);
  if (closeEvents) closeEvents();
  closeEvents = null;
  pictures.stop();
  session.clear();
  delete document.body.dataset.ready;
  showSignIn(errorKey);
}

// ---- the controls ----

// When a cut was asked for, for measuring the time from a tap to the picture on air.
function tapped(event) {
  window.selvaneLastTap = performance.timeOrigin + event.timeStamp;
}

async function production(method, path, body) {
  const answer = await run(method, path, body);
  if (answer && model.signedIn && 'preview' in answer) applyProduction(answer);
  return answer;
}

const cutTo = (n) => run('POST', '/program/cut', { channel: n });
const take = () => production('POST', '/program/take');
const cutPreview = () => production('POST', '/program/take', { cut: true });

function wireControls() {
  view.buildTiles($('tiles'), (n, event) => {
    tapped(event);
    cutTo(n);
  }, (n) => production('PUT', '/program/preview', { channel: n }));
  buildStrips($('strips'));

  $('take').addEventListener('click', take);
  $('cut').addEventListener('click', (event) => {
    tapped(event);
    cutPreview();
  });
  $('ftb').addEventListener('click', () => production('POST', '/program/fade-to-black'));

  const transition = (el, field, value) => {
    el.addEventListener('change', () => {
      markTouched(el);
      $('direction-field').hidden = $('transition').value !== 'wipe';
      production('PUT', '/program/transition', { [field]: value(el) });
    });
  };
  transition($('transition'), 'type', (el) => el.value);
  transition($('direction'), 'direction', (el) => el.value);
  transition($('duration'), 'durationMs', (el) => Math.round(Number(el.value)));

  const tbar = $('tbar');
  const sendTbar = throttle((position) => run('PUT', '/program/tbar', { position }), 50);
  tbar.addEventListener('input', () => {
    markTouched(tbar);
    sendTbar(Number(tbar.value));
  });
  tbar.addEventListener('change', () => markTouched(tbar));

  const thenPoll = (method, path, body) => async () => {
    if (await run(method, path, body)) poll();
  };
  $('outputs-start').addEventListener('click', thenPoll('POST', '/outputs/start', {}));
  $('outputs-stop').addEventListener('click', thenPoll('POST', '/outputs/stop'));
  $('schedule-start').addEventListener('click', thenPoll('POST', '/schedule/start'));
  $('schedule-stop').addEventListener('click', thenPoll('POST', '/schedule/stop'));

  $('signin-form').addEventListener('submit', (event) => {
    event.preventDefault();
    const token = $('token').value.trim();
    if (token) signIn(token);
  });
  $('signout').addEventListener('click', () => signOut());
  $('lang').addEventListener('change', () => setLanguage($('lang').value));
  whenUnauthorized(() => model.signedIn && signOut('wrongToken'));

  // A button pressed with a finger or the mouse gives the keys back to the shortcuts.
  document.addEventListener('click', (event) => {
    const button = event.target.closest?.('button');
    if (button && event.detail > 0) button.blur();
  });
  document.addEventListener('keydown', shortcut);
}

// 1–4 cut to that channel, Enter takes, Space cuts the preview to program; not while typing,
// and Enter or Space on a focused control still works that control.
function shortcut(event) {
  if (!model.signedIn || event.ctrlKey || event.metaKey || event.altKey || event.repeat) return;
  const target = event.target instanceof Element ? event.target : null;
  if (target?.closest('input:not([type=range]):not([type=checkbox]), select, textarea, [contenteditable]')) return;
  const activation = event.key === 'Enter' || event.key === ' ';
  if (activation && target?.closest('button, input, select, a, summary')) return;
  if (/^[1-4]$/.test(event.key)) {
    tapped(event);
    cutTo(Number(event.key));
  } else if (event.key === 'Enter') {
    take();
  } else if (event.key === ' ') {
    tapped(event);
    cutPreview();
  } else {
    return;
  }
  event.preventDefault();
}

// ---- start ----

wireControls();
$('lang').value = language();
setLanguage(language());
if (session.token) signIn(session.token);
else showSignIn();
