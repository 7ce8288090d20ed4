// A list of rows of one height in which only the rows on the screen exist: a thousand variables cost what twenty cost.
import { el } from './dom.js';

const kExtra = 4;  // rows above and below the screen, for a quick finger

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
      const listener = () => { this.#frame ||= requestAnimationFrame(() => this.#scroll()); };
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
    for (const row of this.#rows) row.index = null;
    this.#scroll();
  }

  // Shows the rows that have come onto the screen.
  #scroll() {
    this.#frame = 0;
    const top = -this.element.getBoundingClientRect().top;
    const first = Math.max(0, Math.floor(top / this.#height) - kExtra);
    const last = Math.min(this.#count, Math.ceil((top + innerHeight) / this.#height) + kExtra);
    this.#grow(Math.max(0, last - first));
    for (const { element, index } of this.#rows) element.hidden = index < first || index >= last;
    // Row i always is in the same element while it is on the screen, so that the focus stays in it.
    for (let i = first; i < last; i++) this.#place(this.#rows[i % this.#rows.length], i);
  }

  // With another number of rows each has another element.
  #grow(count) {
    if (this.#rows.length < count) for (const row of this.#rows) row.index = null;
    while (this.#rows.length < count) {
      const row = { ...this.#make(), index: null };
      row.element.style.height = this.#height + 'px';
      this.#rows.push(row);
      this.element.append(row.element);
    }
  }

  #place(row, index) {
    if (row.index === index && !row.element.hidden) return;
    row.index = index;
    row.element.hidden = false;
    row.element.style.transform = `translateY(${index * this.#height}px)`;
    row.element.setAttribute('aria-rowindex', index + 2);
    row.show(index);
  }
}
