// A list of rows of one height in which only the rows on the screen exist: a thousand variables cost what twenty cost.
import { el } from './dom.js';

const kExtra = 4; // rows above and below the screen, for a quick finger

export class VirtualList {
  #height;
  #make;
  #rows = [];
  #count = 0;
  #frame = 0;
  #ends = [];

  // `make()` returns { element, show(index) }. The list scrolls with the page.
  constructor(rowHeight, make) {
    this.#height = rowHeight;
    this.#make = make;
    this.element = el('div', { class: 'virtual', role: 'rowgroup' });
    for (const type of ['scroll', 'resize']) {
      const listener = () => {
        this.#frame ||= requestAnimationFrame(() => this.#scroll());
      };
      addEventListener(type, listener, { passive: true });
      this.#ends.push(() => removeEventListener(type, listener));
    }
  }

  end() {
    cancelAnimationFrame(this.#frame);
    for (const end of this.#ends) end();
  }

  resize(count) {
    this.#count = count;
    this.element.style.height = count * this.#height + 'px';
    this.paint();
  }

  // Shows each row on the screen again.
  paint() {
    this.#scroll();
    for (const row of this.#rows) if (row.index !== null) row.show(row.index);
  }

  // Shows the rows that have come onto the screen, in elements of rows that have left it. The others stay where they
  // are, and with them the focus; the order of the elements is that of the rows, for keys and screen readers.
  #scroll() {
    this.#frame = 0;
    const top = -this.element.getBoundingClientRect().top;
    const first = Math.max(0, Math.floor(top / this.#height) - kExtra);
    const last = Math.min(this.#count, Math.ceil((top + innerHeight) / this.#height) + kExtra);
    const kept = this.#keep(first, last);
    const free = this.#rows.filter(row => row.index === null);
    let next = null;
    for (let i = last - 1; i >= first; i--) {
      const row = kept.get(i) ?? this.#place(free.pop() ?? this.#add(), i, next);
      next = row.element;
    }
  }

  #keep(first, last) {
    const kept = new Map();
    for (const row of this.#rows) {
      const isKept = row.index !== null && row.index >= first && row.index < last;
      if (isKept) kept.set(row.index, row);
      else row.element.remove();
      if (!isKept) row.index = null;
    }
    return kept;
  }

  #add() {
    const row = { ...this.#make(), index: null };
    row.element.style.height = this.#height + 'px';
    this.#rows.push(row);
    return row;
  }

  #place(row, index, next) {
    row.index = index;
    row.element.style.transform = `translateY(${index * this.#height}px)`;
    row.element.setAttribute('aria-rowindex', index + 2);
    this.element.insertBefore(row.element, next);
    row.show(index);
    return row;
  }
}
