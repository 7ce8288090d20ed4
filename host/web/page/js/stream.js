// The event stream of the server. Whatever ends it, it goes on by itself.
import { address, get } from './api.js';
import { serverNow, setServerNow } from './time.js';

const kTypes = ['loggers', 'variables', 'sample', 'message', 'dropped', 'log', 'now'];
const kSilence = 15e3;
const kPauses = [1, 2, 4, 7, 10];

// Hands each event to `deliver(type, data)`, its own state as events of the type `link`: `up`, and if it is not up
// `since` and `retry`, the seconds until the next attempt; and as `about` what a server that is back says of itself.
// Times are those of the server.
export class Stream {
  #deliver;
  #source = null;
  #parameters = {};
  #attempt = 0;
  #timer = 0;
  #watch = 0;
  #heard = null;
  #lostSince = null;
  #isClosed = false;

  constructor(deliver) {
    this.#deliver = deliver;
  }

  // Opens the stream, or opens it again with other parameters.
  open(parameters) {
    this.#parameters = parameters;
    this.#stop();
    this.#source = new EventSource(address('stream', parameters));
    for (const type of kTypes) this.#source.addEventListener(type, event => this.#take(type, event));
    this.#source.addEventListener('error', () => this.#lose());
    this.#hear();
    this.#watch = setInterval(() => this.#look(), 1000);
  }

  close() {
    this.#isClosed = true;
    this.#stop();
  }

  // Does not wait for the end of a pause: the device is on the network again, or somebody looks, perhaps after hours.
  hurry() {
    if (this.#lostSince === null) this.#look();
    if (this.#lostSince === null) return;
    clearTimeout(this.#timer);
    this.#check();
  }

  #stop() {
    clearTimeout(this.#timer);
    clearInterval(this.#watch);
    this.#source?.close();
    this.#source = null;
  }

  #take(type, event) {
    const isFirst = this.#lostSince !== null;
    this.#hear();
    this.#attempt = 0;
    this.#lostSince = null;
    if (isFirst) this.#deliver('link', { up: true });
    this.#deliver(type, JSON.parse(event.data));
  }

  #hear() {
    this.#heard = { steady: performance.now(), wall: Date.now(), server: serverNow() };
  }

  // Two clocks: the steady one stops while the device sleeps, so a jump of the other one can mean that the connection is
  // long gone, or that the clock was set. Then the server is asked before it is called lost.
  #look() {
    const { steady, wall } = this.#heard;
    if (performance.now() - steady > kSilence) return this.#lose();
    if (Math.abs(Date.now() - wall) < kSilence) return;
    this.#heard.wall = Date.now();
    this.#check();
  }

  #lose() {
    this.#stop();
    this.#lostSince ??= this.#heard.server;
    const retry = kPauses[Math.min(this.#attempt++, kPauses.length - 1)];
    this.#deliver('link', { up: false, since: this.#lostSince, retry });
    this.#timer = setTimeout(() => this.#check(), retry * 1000);
  }

  // A stream does not say why it failed, a request does: an expired session leads to the page for logging in.
  async #check() {
    const about = await get(address('about'), AbortSignal.timeout(5000)).catch(() => null);
    if (this.#isClosed) return;
    if (!about) return this.#lose();
    setServerNow(about.now);
    this.#deliver('about', about);
    this.open(this.#parameters);
  }
}
