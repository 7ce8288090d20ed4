// One event stream for all tabs of this browser: a browser opens only six connections to a server, and the server has
// a limited number of viewers. One tab leads: it has the stream and posts its events to the others.
import { leadership } from './leadership.js';
import { Stream } from './stream.js';

const kLook = 2e3;
const kLeaderGone = 6e3; // ms without a word of the leader, which looks after itself every 2 s and has an event every 5 s
const kTabGone = 60e3; // ms without a word of a tab

export class Tabs {
  #id = Math.random().toString(36).slice(2);
  #channel = 'BroadcastChannel' in globalThis ? new BroadcastChannel('vastra') : null;
  #leadership = leadership(this.#id, {
    lead: () => this.#lead(),
    follow: () => this.#follow(),
    claim: () => this.#post('lead')
  });
  #deliver;
  #snapshot;
  #stream = null; // of the leader
  #asked = ''; // what the stream was asked for
  #wants = {};
  #others = new Map(); // what the other tabs want: id to { wants, heard }
  #heard = 0; // when the leader was heard
  #looked = 0;

  // Hands each event to `deliver(type, data)`. `snapshot()` lists the events that a new tab needs as [type, data].
  constructor(deliver, snapshot) {
    this.#deliver = deliver;
    this.#snapshot = snapshot;
  }

  start(wants) {
    this.#wants = wants;
    if (!this.#channel) return this.#lead();
    this.#channel.addEventListener('message', ({ data }) => this.#take(data));
    this.#join();
    setInterval(() => this.#look(), kLook);
    addEventListener('pagehide', () => this.#leave());
    addEventListener('pageshow', event => {
      if (event.persisted) this.#join();
    });
  }

  want(wants) {
    this.#wants = wants;
    this.#post('want', { wants });
    this.#ask();
  }

  // Somebody looks, or the device is on the network again: a lost stream is tried at once.
  hurry() {
    this.#stream?.hurry();
    this.#post('hurry');
  }

  #post(kind, fields = {}) {
    this.#channel?.postMessage({ from: this.#id, kind, ...fields });
  }

  #take(message) {
    const handlers = {
      join: () => this.#welcome(message),
      want: () => this.#note(message),
      bye: () => this.#forget(message.from),
      lead: () => this.#meetLeader(),
      event: () => this.#pass(message),
      snapshot: () => {
        if (message.to === this.#id) for (const event of message.events) this.#deliver(...event);
      },
      hurry: () => this.#stream?.hurry()
    };
    this.#leadership.hear(message);
    handlers[message.kind]?.();
  }

  #join() {
    this.#heard = this.#looked = performance.now();
    this.#post('join', { wants: this.#wants });
    this.#leadership.start();
  }

  #lead() {
    this.#stream = new Stream((type, data) => this.#spread(type, data));
    this.#asked = '';
    this.#post('lead');
    this.#ask();
  }

  #follow() {
    this.#stream?.close();
    this.#stream = null;
    this.#heard = performance.now();
    this.#post('want', { wants: this.#wants });
  }

  #leave() {
    this.#post('bye', { led: this.#stream !== null });
    this.#stream?.close();
    this.#stream = null;
    this.#leadership.leave();
  }

  #meetLeader() {
    this.#heard = performance.now();
    if (!this.#stream) this.#post('want', { wants: this.#wants });
  }

  #welcome(message) {
    if (!this.#stream) return;
    this.#post('lead');
    this.#post('snapshot', { to: message.from, events: this.#snapshot() });
    this.#note(message);
  }

  #note({ from, wants }) {
    this.#others.set(from, { wants, heard: performance.now() });
    this.#ask();
  }

  #forget(tab) {
    this.#others.delete(tab);
    this.#ask();
  }

  // A tab that was asleep itself has not heard the leader either: it listens again before it takes its place.
  #look() {
    const now = performance.now();
    if (now - this.#looked > 2 * kLook) this.#heard = now;
    this.#looked = now;
    if (this.#stream) this.#post('lead');
    else if (now - this.#heard > kLeaderGone) this.#leadership.take();
  }

  #spread(type, data) {
    this.#post('event', { type, data });
    this.#deliver(type, data);
    if (type === 'now') this.#dropSilent();
  }

  #pass({ type, data }) {
    if (this.#stream) return;
    this.#heard = performance.now();
    this.#deliver(type, data);
  }

  #dropSilent() {
    for (const [id, { heard }] of this.#others) if (performance.now() - heard > kTabGone) this.#others.delete(id);
    this.#ask();
  }

  // Opens the stream again if all tabs together want something else.
  #ask() {
    if (!this.#stream) return;
    const all = [this.#wants, ...[...this.#others.values()].map(other => other.wants)];
    const union = type => [...new Set(all.flatMap(wants => wants[type] ?? []))].sort();
    const parameters = { sample: union('sample'), message: union('message'), log: union('log') };
    if (JSON.stringify(parameters) === this.#asked) return;
    this.#asked = JSON.stringify(parameters);
    this.#stream.open(parameters);
  }
}
