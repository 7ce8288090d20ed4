// The table under the plot: each variable with its colour, and its values at the pointer and at the two cursors.
import { nearest } from './chart_data.js';
import { el, fill, setText } from './dom.js';
import { value, withUnit } from './format.js';
import { duration, shortTimeMs } from './time.js';

const kColumns = ['now', 'a', 'b', 'difference'];

export class ChartTable {
  #cells = new Map(); // column and index of the variable to the cell
  #times = {}; // column to its cell in the head
  #variables = [];

  // `remove(name)` takes a variable out of the chart.
  constructor(remove) {
    this.element = el('table', { class: 'readings' });
    this.remove = remove;
  }

  build(variables) {
    this.#variables = variables;
    for (const column of kColumns) this.#times[column] = el('th', { scope: 'col' });
    const rows = variables.map((variable, i) => this.#row(variable, i));
    fill(
      this.element,
      el('caption', { class: 'hidden' }, 'Values at the pointer and at the cursors'),
      el('thead', {}, el('tr', {}, el('th', { scope: 'col' }, 'Variable'), Object.values(this.#times), el('td'))),
      el('tbody', {}, rows)
    );
  }

  #row({ name, colour }, i) {
    const key = el('span', { class: 'key' });
    key.style.background = colour;
    const cells = kColumns.map(column => {
      const cell = el('td');
      this.#cells.set(column + i, cell);
      return cell;
    });
    return el(
      'tr',
      {},
      el('th', { scope: 'row' }, key, ' ', name),
      cells,
      el(
        'td',
        {},
        el(
          'button',
          {
            class: 'small',
            'aria-label': `Remove ${name}`,
            onclick: () => this.remove(name)
          },
          '✕'
        )
      )
    );
  }

  // `columns` are those of the plot, `at` has the times of "now", "a" and "b", null if there is none. A value counts
  // if it is within `reach` milliseconds.
  show(columns, at, isPointer, reach) {
    this.#showTimes(at, isPointer);
    this.#variables.forEach((variable, i) => {
      const found = {};
      for (const name of ['now', 'a', 'b']) found[name] = reading(columns, i, at[name], reach);
      for (const name of ['now', 'a', 'b'])
        setText(this.#cells.get(name + i), at[name] === null ? '' : words(found[name], variable.unit));
      const isBoth = found.a && found.b;
      setText(this.#cells.get('difference' + i), isBoth ? withUnit(found.b.mean - found.a.mean, variable.unit) : '');
    });
  }

  #showTimes({ now, a, b }, isPointer) {
    const text = (name, time) => (time === null ? '' : `${name} ${shortTimeMs(time)}`);
    setText(this.#times.now, text(isPointer ? 'Pointer' : 'Newest', now));
    setText(this.#times.a, text('A', a));
    setText(this.#times.b, text('B', b));
    setText(this.#times.difference, a !== null && b !== null ? `B − A ${duration(b - a)}` : '');
  }
}

function reading(columns, variable, time, reach) {
  if (time === null) return null;
  const [greatest, least, mean] = columns.slice(1 + variable * 3, 4 + variable * 3);
  const i = nearest(columns[0], mean, time, reach);
  return i < 0 ? null : { greatest: greatest[i], least: least[i], mean: mean[i] };
}

// A part of several rows has a range.
function words(found, unit) {
  if (!found) return '–';
  if (found.least === found.greatest) return withUnit(found.mean, unit);
  return `${withUnit(found.mean, unit)} (${value(found.least)} … ${value(found.greatest)})`;
}
