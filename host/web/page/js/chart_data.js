// The rows of a chart: what the logs have, in one part for each pixel, and after it the samples as they come.
import { get, loggerAddress } from './api.js';
import * as model from './model.js';
import { merged } from './rows.js';
import { serverNow } from './time.js';

const kGap = 3; // a pause of so many usual distances is a gap in the curve
const kLive = 600; // live samples, until the logs are asked again
const kMargin = 0.5; // of the range, on both sides: a pan shows something at once
const kMaxParts = 10000;

export class ChartData {
  #logger;
  #names;
  #request = null;
  #answer = null;
  faults = []; // lines about logs whose rows are missing

  constructor(logger, names) {
    this.#logger = logger;
    this.#names = names;
  }

  // Asks for a range, in place of what was asked before. Throws; an AbortError if another request has replaced it.
  async ask(from, to, pixels) {
    this.#request?.abort();
    this.#request = new AbortController();
    const margin = (to - from) * kMargin;
    const begin = Math.floor(from - margin),
      end = Math.ceil(to + margin);
    const parts = Math.max(100, Math.min(kMaxParts, Math.round(pixels * (1 + 2 * kMargin))));
    const asked = serverNow();
    const answer = await this.#get({ from: begin, to: end, vars: this.#names }, parts, this.#request.signal);
    this.faults = answer.faults ?? [];
    const columns = prepare(answer, this.#names, Math.min(end, asked), (end - begin) / parts, this.#period());
    this.#answer = { ...columns, isRows: answer.isRows };
  }

  // The rows themselves if there are fewer than parts, so that each has its own time and value.
  async #get(query, parts, signal) {
    const expected = (query.to - query.from) / (this.#period() || Infinity);
    if (expected > 0 && expected <= parts) {
      const answer = await get(loggerAddress(this.#logger, 'rows', { ...query, limit: 2 * parts }), signal);
      if (!answer.more) return fromRows(answer);
    }
    return get(loggerAddress(this.#logger, 'buckets', { ...query, parts }), signal);
  }

  end() {
    this.#request?.abort();
  }

  get isThere() {
    return this.#answer !== null;
  }

  // Whether rows are missing between the answer and the live samples, or there are too many of the latter.
  isOld() {
    const oldest = model.history(this.#logger)?.oldest;
    if (!this.#answer || !oldest) return false;
    return this.#live() > kLive || oldest > Math.max(this.#answer.until, this.#answer.times.at(-1) ?? 0) + 5000;
  }

  // The columns for the plot: the times, and of each variable the greatest, the least and the mean. Undefined: the
  // line goes on over it. Null: a gap.
  columns() {
    if (!this.#answer) return [[], ...this.#names.flatMap(() => [[], [], []])];
    const { times, columns, limits } = this.#answer;
    const all = { times: times.slice(), columns: columns.map(column => column.slice()) };
    this.#appendLive(all);
    return withGaps(all, limits);
  }

  // What of the columns has to be drawn: of rows themselves the greatest and the least value are the mean, and one line is
  // quicker than three.
  drawn(columns) {
    if (!this.#answer?.isRows) return columns;
    const none = new Array(columns[0].length);
    return columns.map((column, i) => (i === 0 || i % 3 === 0 ? column : none));
  }

  #period() {
    return model.logger(this.#logger)?.period ?? 0;
  }

  #live() {
    let count = 0;
    model.history(this.#logger)?.visitFrom(this.#answer.until, () => count++);
    return count;
  }

  #appendLive({ times, columns }) {
    const variables = model.variables(this.#logger) ?? [];
    const indices = this.#names.map(name => variables.findIndex(variable => variable.name === name));
    model.history(this.#logger)?.visitFrom(this.#answer.until, (time, at) => {
      if (time <= (times.at(-1) ?? 0)) return;
      times.push(time);
      indices.forEach((index, i) => {
        const number = index < 0 ? NaN : at(index);
        for (let k = 0; k < 3; k++) columns[i * 3 + k].push(Number.isNaN(number) ? undefined : number);
      });
    });
  }
}

// Rows as if each was a part.
function fromRows({ variables, rows, faults }) {
  const all = merged(rows);
  const named = variables.map((name, i) => {
    const column = all.map(row => row[i + 1]);
    return { name, least: column, greatest: column, mean: column };
  });
  return { times: all.map(row => row[0]), variables: named, faults, isRows: true };
}

// The order of the columns is that of the plot's series.
function prepare(answer, names, until, step, period) {
  const columns = names.flatMap(name => {
    const found = answer.variables.find(variable => variable.name === name);
    return ['greatest', 'least', 'mean'].map(key => answer.times.map((_, i) => number(found?.[key][i])));
  });
  const limits = names.map((_, i) => kGap * Math.max(step, period, usualDistance(answer.times, columns[i * 3])));
  return { times: answer.times, columns, limits, until };
}

const number = raw => (typeof raw === 'number' ? raw : undefined);

// The median of the distances between values: a log of one row a minute is not all gaps.
function usualDistance(times, column) {
  const present = times.filter((_, i) => column[i] !== undefined);
  const distances = present
    .slice(1)
    .map((time, i) => time - present[i])
    .sort((a, b) => a - b);
  return distances[distances.length >> 1] ?? 0;
}

function withGaps({ times, columns }, limits) {
  const wide = Math.min(...limits);
  const xs = [],
    ys = columns.map(() => []);
  times.forEach((time, i) => {
    if (i && time - times[i - 1] > wide) {
      xs.push((time + times[i - 1]) / 2);
      for (const y of ys) y.push(undefined);
    }
    xs.push(time);
    ys.forEach((y, k) => y.push(columns[k][i]));
  });
  ys.forEach((y, k) => breakLine(xs, y, limits[Math.floor(k / 3)]));
  return [xs, ...ys];
}

function breakLine(xs, y, limit) {
  let last = -1;
  for (let i = 0; i < y.length; i++) {
    if (y[i] === undefined) continue;
    if (last >= 0 && xs[i] - xs[last] > limit) y.fill(null, last + 1, i);
    last = i;
  }
}

// Calls `each(index)` for the times of a range, its end included.
export function visible(times, from, to, each) {
  for (let i = firstNotBefore(times, from); i < times.length && times[i] <= to; i++) each(i);
}

// The index of the value that is nearest to a time; -1 if there is none within `reach`.
export function nearest(times, column, time, reach) {
  let best = -1;
  const away = i => Math.abs(times[i] - time);
  visible(times, time - reach, time + reach, i => {
    if (typeof column[i] === 'number' && (best < 0 || away(i) < away(best))) best = i;
  });
  return best;
}

function firstNotBefore(times, time) {
  let low = 0,
    high = times.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (times[middle] < time) low = middle + 1;
    else high = middle;
  }
  return low;
}
