// What a chart shows: its range, whether it follows, its axes and cursors. Knows no plot.
import { serverNow } from './time.js';

const kLeast = 20; // ms
const kFirst = Date.UTC(1900, 0),
  kEnd = Date.UTC(2200, 0);
const kGreatest = 100 * 366 * 86400e3;
const kHour = 3600e3;
const kAxes = ['unit', 'each', 'one'];

const numberOf = text => (text === null || !Number.isFinite(Number(text)) ? null : Number(text));

export class ChartView {
  #from;
  #to;
  #change;
  #isLive;
  #active = 'a'; // the cursor that a tap places
  isFollowing = false;
  axes = 'unit';
  a = null;
  b = null;

  end = null; // of the rows of a folder, once it is known: a folder has no present

  // Calls `change(how)` after each change: "range", "axes" or "marks".
  constructor(parameters, isLive, change) {
    this.#change = change;
    this.#isLive = isLive;
    const number = name => numberOf(parameters.get(name));
    const [from, to] = [number('from'), number('to')];
    const isRange = from !== null && to !== null && from < to;
    const span = (number('last') ?? 3600) * 1000;
    this.isFollowing = isLive && !isRange;
    if (isRange) this.#set(from, to);
    else this.#set(serverNow() - Math.max(kLeast, Math.min(kGreatest, span)), serverNow());
    this.axes = kAxes.includes(parameters.get('axes')) ? parameters.get('axes') : 'unit';
    this.a = number('a');
    this.b = number('b');
  }

  get range() {
    return [this.#from, this.#to];
  }

  get span() {
    return this.#to - this.#from;
  }

  // Whether the newest rows there are can be seen.
  get isAtEnd() {
    return this.isFollowing || (this.end !== null && Math.abs(this.#to - this.end) < 1);
  }

  get marks() {
    return [
      ['A', this.a],
      ['B', this.b]
    ].filter(([, time]) => time !== null);
  }

  // For the address.
  parameters() {
    const whole = time => (time === null ? null : Math.round(time));
    const range = this.isFollowing
      ? { last: Number((this.span / 1000).toPrecision(4)) }
      : { from: whole(this.#from), to: whole(this.#to) };
    return { ...range, axes: this.axes === 'unit' ? null : this.axes, a: whole(this.a), b: whole(this.b) };
  }

  // A chart that follows moves with the clock of the server.
  advance() {
    if (this.isFollowing) this.#set(serverNow() - this.span, serverNow());
  }

  show(from, to) {
    this.isFollowing = false;
    this.#set(from, to);
    this.#change('range');
  }

  // Of a folder it shows the end of the rows.
  follow(span = this.span) {
    const end = this.end ?? serverNow();
    if (!this.#isLive) return this.show(end - span, end);
    this.isFollowing = true;
    this.#set(serverNow() - span, serverNow());
    this.#change('range');
  }

  stop() {
    this.show(...this.range);
  }

  setAxes(axes) {
    this.axes = axes;
    this.#change('axes');
  }

  // Within what a calendar can show, and neither too narrow nor too wide.
  #set(from, to) {
    const span = Math.min(kGreatest, Math.max(kLeast, to - from));
    const begin = span === to - from ? from : (from + to - span) / 2;
    this.#from = Math.min(kEnd - span, Math.max(kFirst, begin));
    this.#to = begin === this.#from && span === to - from ? to : this.#from + span;
  }

  // A chart that follows stays at the newest sample and zooms its beginning.
  zoom(factor, time = (this.#from + this.#to) / 2) {
    if (this.isFollowing) return this.follow(Math.max(kLeast, this.span * factor));
    this.show(time - (time - this.#from) * factor, time + (this.#to - time) * factor);
  }

  pan(ms) {
    this.show(this.#from + ms, this.#to + ms);
  }

  // The first tap is A, the second one B, the third one A again.
  tap(time) {
    this.#place(this.#active, time);
    this.#active = this.#active === 'a' ? 'b' : 'a';
  }

  clear() {
    this.#active = 'a';
    this.a = this.b = null;
    this.#change('marks');
  }

  #place(name, time) {
    this[name] = time;
    this.#change('marks');
  }

  // Places a cursor by a key, and makes it the one that comma and full stop move.
  #keyMark(name) {
    this.#moving = name;
    this.#place(name, this[name] ?? (this.#from + this.#to) / 2);
  }

  #moving = 'a';

  #move(parts) {
    if (this[this.#moving] !== null) this.#place(this.#moving, this[this.#moving] + this.span * parts);
  }

  #keys = {
    ArrowLeft: () => this.pan(-this.span / 10),
    ArrowRight: () => this.pan(this.span / 10),
    PageUp: () => this.pan(-this.span),
    PageDown: () => this.pan(this.span),
    '+': () => this.zoom(1 / 1.5),
    '=': () => this.zoom(1 / 1.5),
    '-': () => this.zoom(1.5),
    f: () => (this.isFollowing ? this.stop() : this.follow()),
    End: () => this.follow(),
    a: () => this.#keyMark('a'),
    b: () => this.#keyMark('b'),
    c: () => this.clear(),
    Escape: () => this.clear(),
    ',': () => this.#move(-0.002),
    '.': () => this.#move(0.002),
    '<': () => this.#move(-0.02),
    '>': () => this.#move(0.02),
    h: () => this.follow(kHour),
    d: () => this.follow(24 * kHour),
    w: () => this.follow(7 * 24 * kHour)
  };

  // Whether the key is one of the chart's.
  key(name) {
    const act = this.#keys[name];
    act?.();
    return act !== undefined;
  }
}
