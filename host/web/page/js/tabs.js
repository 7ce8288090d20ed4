// One event stream for all tabs of this browser: a browser opens only six connections to a server, and the server has
// a limited number of viewers.
//
// One tab leads: it has the stream and posts its events to the others. A tab that hears nothing from a leader leads
// itself. If two lead, the one with the smaller id goes on. This needs nothing but BroadcastChannel, which is there
// without TLS, too.
import { Stream } from './stream.js';

const kJoin = 400; // ms until a new tab leads, if no leader answers
const kLeaderGone = 6e3; // ms without a word of the leader, which has an event at least every 5 s
const kTabGone = 60e3; // ms without a word of a tab

export class Tabs {
  #id = Math.random().toString(36).slice(2);
  #channel = 'BroadcastChannel' in globalThis ? new BroadcastChannel('vastra') : null;
  #deliver;
  #snapshot;
  #stream = null; // of the leader
  #asked = ''; // what the stream was asked for
  #wants = { sample: [], message: [] };
  #others = new Map(); // what the other tabs want: id to { wants, heard }
  #heard = 0;

  // Hands each event to `deliver(type, data)`. `snapshot()` lists the events that a new tab needs as [type, data].
  constructor(deliver, snapshot) {
    this.#deliver = deliver;
    this.#snapshot = snapshot;
  }

  start(wants) {
    this.#wants = wants;
    if (!this.#channel) return this.#lead();
    this.#channel.addEventListener('message', ({ data }) => this.#take(data));
    this.#post('join', { wants });
    this.#heard = Date.now();
    setTimeout(() => {
      if (!this.#stream && Date.now() - this.#heard >= kJoin - 50) this.#lead();
    }, kJoin);
    setInterval(() => this.#look(), 2000);
    addEventListener('pagehide', () => this.#leave());
    addEventListener('pageshow', event => {
      if (event.persisted) this.#post('join', { wants: this.#wants });
    });
  }

  want(wants) {
    this.#wants = wants;
    this.#post('want', { wants });
    this.#ask();
  }

  hurry() {
    this.#stream?.hurry();
    this.#post('hurry');
  }

  #post(kind, fields = {}) {
    this.#channel?.postMessage({ from: this.#id, kind, ...fields });
  }

  // Before a tab leads, and after it led, the channel is all it hears.
  #take(message) {
    const handlers = {
      join: () => this.#welcome(message),
      want: () => this.#note(message),
      bye: () => this.#forget(message),
      lead: () => this.#meetLeader(message.from),
      event: () => this.#pass(message),
      snapshot: () => {
        if (message.to === this.#id) for (const event of message.events) this.#deliver(...event);
      },
      hurry: () => this.#stream?.hurry()
    };
    handlers[message.kind]?.();
  }

  #lead() {
    this.#post('lead');
    this.#stream = new Stream((type, data) => this.#spread(type, data));
    this.#asked = '';
    this.#ask();
  }

  #stepDown() {
    this.#stream.close();
    this.#stream = null;
    this.#heard = Date.now();
    this.#post('want', { wants: this.#wants });
  }

  #meetLeader(other) {
    this.#heard = Date.now();
    if (this.#stream && this.#id < other) return this.#post('lead');
    if (this.#stream) this.#stepDown();
    else this.#post('want', { wants: this.#wants });
  }

  #welcome(message) {
    if (!this.#stream) return;
    this.#post('lead');
    this.#post('snapshot', { to: message.from, events: this.#snapshot() });
    this.#note(message);
  }

  #note({ from, wants }) {
    this.#others.set(from, { wants, heard: Date.now() });
    this.#ask();
  }

  // The leader has left: the others wait a moment of different length, so that one of them comes first.
  #forget({ from, led }) {
    this.#others.delete(from);
    if (this.#stream) return this.#ask();
    if (led) this.#heard = Date.now() - kLeaderGone + Math.random() * 300;
    if (led) setTimeout(() => this.#look(), 350);
  }

  #leave() {
    this.#post('bye', { led: this.#stream !== null });
    this.#stream?.close();
    this.#stream = null;
  }

  #look() {
    if (this.#stream) this.#post('lead');
    else if (Date.now() - this.#heard > kLeaderGone) this.#lead();
  }

  #spread(type, data) {
    this.#post('event', { type, data });
    this.#deliver(type, data);
    if (type === 'now') this.#dropSilent();
  }

  #pass({ from, type, data }) {
    if (this.#stream) return this.#meetLeader(from);
    this.#heard = Date.now();
    this.#deliver(type, data);
    if (type === 'now') this.#post('want', { wants: this.#wants });
  }

  #dropSilent() {
    for (const [id, { heard }] of this.#others) if (Date.now() - heard > kTabGone) this.#others.delete(id);
    this.#ask();
  }

  // Opens the stream again if all tabs together want something else.
  #ask() {
    if (!this.#stream) return;
    const all = [this.#wants, ...[...this.#others.values()].map(other => other.wants)];
    const union = type => [...new Set(all.flatMap(wants => wants[type]))].sort();
    const parameters = { sample: union('sample'), message: union('message') };
    if (JSON.stringify(parameters) === this.#asked) return;
    this.#asked = JSON.stringify(parameters);
    this.#stream.open(parameters);
  }
}
