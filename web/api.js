// Talking to Selvane: the token of this tab, JSON requests, pictures, the event socket, and the
// status line that shows what went wrong.

import { t } from './strings.js';

const TOKEN_KEY = 'selvane.token';

// The token lives in this tab's session only: closing the tab forgets it.
export const session = {
  get token() {
    return sessionStorage.getItem(TOKEN_KEY) || '';
  },
  set token(value) {
    sessionStorage.setItem(TOKEN_KEY, value);
  },
  clear() {
    sessionStorage.removeItem(TOKEN_KEY);
  },
};

export class ApiError extends Error {
  constructor(status, message) {
    super(message);
    this.status = status;
  }
}

// Called when the server no longer takes our token (set by the panel).
let onUnauthorized = () => {};
export function whenUnauthorized(handler) {
  onUnauthorized = handler;
}

async function send(method, path, body) {
  const init = { method, cache: 'no-store', headers: { Authorization: `Bearer ${session.token}` } };
  if (body !== undefined) {
    init.headers['Content-Type'] = 'application/json';
    init.body = JSON.stringify(body);
  }
  try {
    return await fetch(`/api/v1${path}`, init);
  } catch {
    throw new ApiError(0, t('unreachable'));
  }
}

async function failure(response) {
  let text = response.statusText || String(response.status);
  try {
    text = (await response.json()).error || text;
  } catch {
    // not JSON: the status text stands
  }
  if (response.status === 401) onUnauthorized();
  return new ApiError(response.status, text);
}

// A JSON request; resolves to the answer's object, throws ApiError with the server's "error".
export async function api(method, path, body) {
  const response = await send(method, path, body);
  if (!response.ok) throw await failure(response);
  return response.status === 204 ? {} : response.json();
}

// A picture; null when there is none (404, 204).
export async function picture(path) {
  const response = await send('GET', path);
  if (response.status === 404 || response.status === 204) return null;
  if (!response.ok) throw await failure(response);
  return response.blob();
}

// ---- the status line ----

let messageTimer = 0;
export function say(text, isError = false) {
  const line = document.getElementById('message');
  line.textContent = text;
  line.classList.toggle('error', isError);
  line.classList.add('shown');
  clearTimeout(messageTimer);
  messageTimer = setTimeout(() => line.classList.remove('shown'), isError ? 6000 : 2500);
}

// A request made by a control: its error lands on the status line, never in an exception.
export async function run(method, path, body) {
  try {
    return await api(method, path, body);
  } catch (error) {
    if (error.status !== 401) say(error.message, true);
    return null;
  }
}

// ---- events ----

// Keeps a WebSocket of events open while `isWanted()` holds: a fresh one-use ticket for each
// connection (browsers cannot send the Authorization header on an upgrade), and after a drop
// a new try 1 s later, then 2 s, 4 s, at most 5 s apart.
export function openEvents({ onEvent, onLink, isWanted }) {
  let socket = null;
  let delay = 1000;
  let timer = 0;
  const retry = () => {
    onLink(false);
    if (!isWanted()) return;
    timer = setTimeout(connect, delay);
    delay = Math.min(delay * 2, 5000);
  };
  async function connect() {
    if (!isWanted()) return;
    let ticket;
    try {
      ticket = (await api('POST', '/events/ticket')).ticket;
    } catch {
      retry();
      return;
    }
    if (!isWanted()) return;
    const scheme = location.protocol === 'https:' ? 'wss://' : 'ws://';
    socket = new WebSocket(`${scheme}${location.host}/api/v1/events`, ['selvane-events', `ticket.${ticket}`]);
    socket.addEventListener('open', () => {
      delay = 1000;
      onLink(true);
    });
    socket.addEventListener('message', (event) => {
      try {
        onEvent(JSON.parse(event.data));
      } catch (error) {
        console.warn('event not understood', error);
      }
    });
    socket.addEventListener('close', () => {
      socket = null;
      retry();
    });
  }
  connect();
  return () => {
    clearTimeout(timer);
    if (socket) socket.close();
    socket = null;
  };
}
