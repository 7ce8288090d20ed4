// The table under the plot: each variable with its colour, its values at the pointer and at the two cursors, and its
// least and greatest value in the range.
import { nearest, visible } from './chart_data.js';
import { el, fill, setText } from './dom.js';
import { value, withUnit } from './format.js';
import { duration, shortTimeMs } from './time.js';

// The columns: the words of the head, which are empty while there is no such column, and of a cell. `at` has the times
// of "now", "a" and "b", null if there is none; `found` what a variable has at these times.
const kColumns = [
  [at => `${at.isPointer ? 'Pointer' : 'Newest'} ${shortTimeMs(at.now)}`, ({ now }, unit) => partWords(now, unit)],
  [at => timeOf('A', at.a), ({ a }, unit) => partWords(a, unit)],
  [at => timeOf('B', at.b), ({ b }, unit) => partWords(b, unit)],
  [at => (at.a !== null && at.b !== null ? `B − A ${duration(at.b - at.a)}` : ''), difference],
  [() => 'Least', ({ range }, unit) => withUnit(range?.least, unit)],
  [() => 'Greatest', ({ range }, unit) => withUnit(range?.greatest, unit)]
];

export class ChartTable {
  #heads = [];
  #rows = []; // of each variable the cells
  #variables = [];

  // `remove(name)` takes a variable out of the chart.
  constructor(remove) {
    this.element = el('table', { class: 'readings' });
    this.remove = remove;
  }

  build(variables) {
    this.element.hidden = variables.length === 0;
    this.#variables = variables;
    this.#heads = kColumns.map(() => el('th', { scope: 'col' }));
    this.#rows = variables.map(() => kColumns.map(() => el('td')));
    const rows = variables.map((variable, i) => this.#row(variable, this.#rows[i]));
    fill(
      this.element,
      el('caption', { class: 'hidden' }, 'Values at the pointer, at the cursors and in the range'),
      el('thead', {}, el('tr', {}, el('th', { scope: 'col' }, 'Variable'), this.#heads, el('td'))),
      el('tbody', {}, rows)
    );
  }

  #row({ name, colour }, cells) {
    const key = el('span', { class: 'key' });
    key.style.background = colour;
    const remove = el('button', { 'aria-label': `Remove ${name}`, onclick: () => this.remove(name) }, '✕');
    return el('tr', {}, el('th', { scope: 'row' }, key, ' ', name), cells, el('td', {}, remove));
  }

  // `columns` are those of the plot, `at` has the times of "now", "a" and "b", whether "now" is that of the pointer, and
  // the range. A value counts if it is within `reach` milliseconds.
  show(columns, at, reach) {
    this.#heads.forEach((head, k) => {
      const words = kColumns[k][0](at);
      setText(head, words);
      head.hidden = words === '';
    });
    this.#variables.forEach(({ unit }, i) => {
      const found = { range: rangeOf(columns, i, at.range) };
      for (const name of ['now', 'a', 'b']) found[name] = reading(columns, i, at[name], reach);
      this.#rows[i].forEach((cell, k) => {
        cell.hidden = this.#heads[k].hidden;
        setText(cell, cell.hidden ? '' : kColumns[k][1](found, unit));
      });
    });
  }
}

const timeOf = (name, time) => (time === null ? '' : `${name} ${shortTimeMs(time)}`);

const ofVariable = (columns, i) => columns.slice(1 + i * 3, 4 + i * 3);

function reading(columns, i, time, reach) {
  if (time === null) return null;
  const [greatest, least, mean] = ofVariable(columns, i);
  const at = nearest(columns[0], mean, time, reach);
  return at < 0 ? null : { greatest: greatest[at], least: least[at], mean: mean[at] };
}

function rangeOf(columns, i, [from, to]) {
  const [greatest, least] = ofVariable(columns, i);
  const found = { least: Infinity, greatest: -Infinity };
  visible(columns[0], from, to, at => {
    if (typeof least[at] !== 'number') return;
    found.least = Math.min(found.least, least[at]);
    found.greatest = Math.max(found.greatest, greatest[at]);
  });
  return found.least <= found.greatest ? found : null;
}

// A part of several rows has a range.
function partWords(found, unit) {
  if (!found) return '–';
  if (found.least === found.greatest) return withUnit(found.mean, unit);
  return `${withUnit(found.mean, unit)} (${value(found.least)} … ${value(found.greatest)})`;
}

function difference({ a, b }, unit) {
  return a && b ? withUnit(b.mean - a.mean, unit) : '–';
}
