// The live pictures: the program about eight times a second, each channel's thumbnail about
// twice a second, the preview monitor showing its channel's thumbnail larger. Nothing is fetched
// while the page is hidden, nor for a channel that has nothing to show.

import { picture } from './api.js';

const PROGRAM_GAP_MS = 120;
const CHANNEL_GAP_MS = 500;
const sleep = (ms) => new Promise((resolve) => setTimeout(resolve, ms));

function whenVisible() {
  if (!document.hidden) return Promise.resolve();
  return new Promise((resolve) => {
    const seen = () => {
      if (document.hidden) return;
      document.removeEventListener('visibilitychange', seen);
      resolve();
    };
    document.addEventListener('visibilitychange', seen);
  });
}

// Shows a JPEG in an <img>, releasing the picture before it.
function show(img, blob) {
  const old = img.dataset.url;
  if (blob) {
    img.dataset.url = URL.createObjectURL(blob);
    img.src = img.dataset.url;
  } else {
    delete img.dataset.url;
    img.removeAttribute('src');
  }
  if (old) URL.revokeObjectURL(old);
}

export class Pictures {
  // channelWanted(n): whether channel n has a picture worth asking for.
  constructor(channelWanted) {
    this.channelWanted = channelWanted;
    this.previewChannel = 0;
    this.running = false;
    this.thumbs = new Map(); // channel -> latest object URL
  }

  start() {
    if (this.running) return;
    this.running = true;
    this.generation = (this.generation || 0) + 1;
    const generation = this.generation;
    const alive = () => this.running && this.generation === generation;
    this.loop(alive, '/program/snapshot.jpg', PROGRAM_GAP_MS, 0, (blob) =>
      show(document.getElementById('program-img'), blob));
    for (let n = 1; n <= 4; ++n) {
      this.loop(alive, `/channels/${n}/snapshot.jpg`, CHANNEL_GAP_MS, n, (blob) => this.showThumb(n, blob));
    }
  }

  stop() {
    this.running = false;
    for (const id of ['program-img', 'preview-img']) show(document.getElementById(id), null);
    for (let n = 1; n <= 4; ++n) this.showThumb(n, null);
  }

  setPreview(channel) {
    if (channel === this.previewChannel) return;
    this.previewChannel = channel;
    this.copyPreview();
  }

  showThumb(n, blob) {
    const img = document.querySelector(`#tile-${n} img`);
    const old = this.thumbs.get(n);
    if (blob) {
      const url = URL.createObjectURL(blob);
      this.thumbs.set(n, url);
      img.src = url;
    } else {
      this.thumbs.delete(n);
      img.removeAttribute('src');
    }
    if (n === this.previewChannel) this.copyPreview();
    // Both <img> have moved on from the old picture (or shown it already): let it go.
    if (old) URL.revokeObjectURL(old);
  }

  copyPreview() {
    const img = document.getElementById('preview-img');
    const url = this.thumbs.get(this.previewChannel);
    if (url) img.src = url;
    else img.removeAttribute('src');
  }

  // Fetches `path` again and again, the next start at least `gap` ms after the one before.
  async loop(alive, path, gap, channel, onPicture) {
    await sleep(channel * 97); // the channels spread over the half second
    while (alive()) {
      await whenVisible();
      if (!alive()) break;
      const started = performance.now();
      let wait = gap;
      if (channel && !this.channelWanted(channel)) {
        if (this.thumbs.has(channel)) onPicture(null);
      } else {
        try {
          const blob = await picture(path);
          if (!alive()) break;
          onPicture(blob);
          wait = blob ? gap - (performance.now() - started) : gap * 4;
        } catch {
          wait = 2000; // the server is away or busy: the status line tells
        }
      }
      await sleep(Math.max(0, wait));
    }
  }
}
