// Times as the clock of the server shows them, in its zone, whatever the clock of this device says.

const kDay = 86400e3;
let formatter = makeFormatter('UTC');
let zoneName = 'UTC';
let clock = { server: Date.now(), here: performance.now() };

function makeFormatter(timeZone) {
  return new Intl.DateTimeFormat('en-GB', {
    timeZone,
    hourCycle: 'h23',
    year: 'numeric',
    month: '2-digit',
    day: '2-digit',
    hour: '2-digit',
    minute: '2-digit',
    second: '2-digit'
  });
}

// A zone that this browser lacks is shown as UTC, and the zone says so.
export function setZone(zone) {
  try {
    formatter = makeFormatter(zone);
    zoneName = zone;
  } catch {
    zoneName = 'UTC';
  }
  offsets.clear();
}

export const zone = () => zoneName;

export function setServerNow(now) {
  clock = { server: now, here: performance.now() };
}

export function serverNow() {
  return clock.server + performance.now() - clock.here;
}

// Milliseconds that the wall clock is ahead of UTC. Zones change at whole quarters of an hour, so one answer for each
// is kept: a formatter is slow.
const offsets = new Map();
function offset(ms) {
  const quarter = Math.floor(ms / 900e3);
  let found = offsets.get(quarter);
  if (found === undefined) {
    if (offsets.size > 5000) offsets.clear();
    offsets.set(quarter, (found = offsetOf(quarter * 900e3)));
  }
  return found;
}

function offsetOf(ms) {
  const parts = {};
  for (const { type, value } of formatter.formatToParts(ms)) parts[type] = Number(value);
  return Date.UTC(parts.year, parts.month - 1, parts.day, parts.hour, parts.minute, parts.second) - ms;
}

// A wall time is the time that the clock shows, as if it was UTC: so that it can be calculated with.
const toWall = ms => ms + offset(ms);

// Of an hour that the clock shows twice the first one; of one that it leaves out, as if it had not been changed yet.
function fromWall(wall) {
  const before = offset(wall - kDay),
    after = offset(wall + kDay);
  if (toWall(wall - before) === wall) return wall - before;
  return toWall(wall - after) === wall ? wall - after : wall - before;
}

const isTwice = ms => toWall(ms + 3600e3) === toWall(ms) || toWall(ms - 3600e3) === toWall(ms);

function offsetText(ms) {
  const minutes = Math.round(offset(ms) / 60e3),
    size = Math.abs(minutes);
  const two = number => String(number).padStart(2, '0');
  return (minutes < 0 ? '-' : '+') + two(Math.floor(size / 60)) + ':' + two(size % 60);
}

const iso = ms => new Date(toWall(ms)).toISOString();
const mark = ms => (isTwice(ms) ? ' ' + offsetText(ms) : '');

// 2026-03-01 12:00:00, with the offset in the hour that the clock shows twice.
export const dateTime = ms => iso(ms).slice(0, 19).replace('T', ' ') + mark(ms);
export const dateTimeMs = ms => iso(ms).slice(0, 23).replace('T', ' ') + mark(ms);
export const day = ms => iso(ms).slice(0, 10);
export const clockTime = ms => iso(ms).slice(11, 19) + mark(ms);

// The time alone if it is of today.
const isToday = ms => day(ms) === day(serverNow());
export const shortTime = ms => (isToday(ms) ? clockTime(ms) : dateTime(ms));
export const shortTimeMs = ms => (isToday(ms) ? iso(ms).slice(11, 23) + mark(ms) : dateTimeMs(ms));

// For fields of the type datetime-local, which have no zone.
export const toField = ms => iso(ms).slice(0, 19);
export function fromField(text) {
  const wall = Date.parse(text + 'Z');
  return Number.isNaN(wall) ? null : fromWall(wall);
}

// Midnight of the day of `ms`, `days` later.
export function midnight(ms, days = 0) {
  return fromWall(Math.floor(toWall(ms) / kDay) * kDay + days * kDay);
}

const kUnits = [
  [86400, 'd'],
  [3600, 'h'],
  [60, 'min']
];

// 45 s, 12 min, 3 h 5 min, 2 d 4 h
export function duration(ms) {
  let seconds = Math.round(Math.abs(ms) / 1000);
  if (Math.abs(ms) < 10e3) return Number((ms / 1000).toFixed(2)) + ' s';
  const words = [];
  for (const [size, word] of kUnits) {
    const count = Math.floor(seconds / size);
    seconds -= count * size;
    if (count) words.push(count + ' ' + word);
  }
  if (seconds) words.push(seconds + ' s');
  return (ms < 0 ? '-' : '') + words.slice(0, 2).join(' ');
}

const kHour = 3600e3;
const kSteps = [
  ...[1, 2, 5, 10, 20, 50, 100, 200, 500],
  ...[1, 2, 5, 10, 15, 30].map(seconds => seconds * 1e3),
  ...[1, 2, 5, 10, 15, 30].map(minutes => minutes * 60e3),
  ...[1, 2, 3, 6, 12].map(hours => hours * kHour),
  ...[1, 2, 7, 14].map(days => days * kDay)
];
const kMonth = 30 * kDay; // about
const kMonths = [1, 3, 6, 12, 24, 60, 120, 240, 600, 1200];

// About `count` round times of a range. They are whole on the wall clock: from two hours on a step is one of the wall
// clock, so that 06:00 stays 06:00 through a change of summer time.
export function ticks(from, to, count) {
  const step = kSteps.find(size => (to - from) / size <= count);
  if (!step) return monthTicks(from, to, (to - from) / count);
  if (step >= 2 * kHour) return wallTicks(from, to, step);
  const shift = offset(from);
  return multiples(from + shift, to + shift, step).map(t => t - shift);
}

function multiples(from, to, step) {
  const first = Math.ceil(from / step);
  return Array.from({ length: Math.max(0, Math.floor(to / step) - first + 1) }, (_, i) => (first + i) * step);
}

// An hour that the clock leaves out has no tick of its own.
function wallTicks(from, to, step) {
  const times = multiples(toWall(from), toWall(to), step).map(fromWall);
  return times.filter((time, i) => i === 0 || time > times[i - 1]);
}

function monthTicks(from, to, least) {
  const step = kMonths.find(months => months * kMonth >= least) ?? kMonths.at(-1);
  const monthOf = ms => new Date(toWall(ms)).getUTCFullYear() * 12 + new Date(toWall(ms)).getUTCMonth();
  const times = multiples(monthOf(from), monthOf(to), step).map(month => fromWall(Date.UTC(1970, month - 1970 * 12)));
  return times.filter(time => time >= from);
}

// The labels of ticks: the date is under the first one and where the day changes.
export function tickLabels(times) {
  const step = times.length > 1 ? times[1] - times[0] : kDay;
  let shown = '';
  return times.map(t => {
    const text = iso(t),
      date = text.slice(0, 10);
    const isNew = date !== shown;
    shown = date;
    if (step >= 23 * 3600e3) return date;
    const time = step < 1e3 ? text.slice(11, 23) : step < 60e3 ? text.slice(11, 19) : text.slice(11, 16);
    return time + mark(t) + (isNew ? '\n' + date : '');
  });
}
