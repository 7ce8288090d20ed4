// The newest samples of a logger, so that a curve goes on without asking for rows: a ring of numbers.

const kSamples = 1200;
const kCells = 1200e3; // with many variables fewer samples are kept, at most this many numbers

export class History {
  #width;
  #size;
  #values;
  #times;
  #count = 0;
  isSeeded = false; // whether the logs have been asked for the samples before the first one

  constructor(variables) {
    this.#width = variables;
    this.#size = Math.max(120, Math.min(kSamples, Math.floor(kCells / Math.max(1, variables))));
    this.#values = new Float64Array(this.#size * variables);
    this.#times = new Float64Array(this.#size);
  }

  // A clock that was set back makes the older samples useless: they are dropped.
  add({ time, values }) {
    if (this.#count && time < this.#times[(this.#count - 1) % this.#size]) this.#count = 0;
    const row = this.#count++ % this.#size;
    this.#times[row] = time;
    for (let i = 0; i < this.#width; i++)
      this.#values[row * this.#width + i] = typeof values[i] === 'number' ? values[i] : NaN;
  }

  // Calls `each(time, value)` for the newest `count` samples, the oldest first. NaN: no finite value.
  visit(variable, count, each) {
    for (let i = Math.max(0, this.#count - Math.min(count, this.#size)); i < this.#count; i++) {
      const row = i % this.#size;
      each(this.#times[row], this.#values[row * this.#width + variable]);
    }
  }

  // Calls `each(time, at)` for the samples from a time on; `at(variable)` is the value.
  visitFrom(from, each) {
    for (let i = Math.max(0, this.#count - this.#size); i < this.#count; i++) {
      const row = i % this.#size;
      if (this.#times[row] >= from) each(this.#times[row], variable => this.#values[row * this.#width + variable]);
    }
  }

  get newest() {
    return this.#count ? this.#times[(this.#count - 1) % this.#size] : null;
  }

  get oldest() {
    return this.#count ? this.#times[Math.max(0, this.#count - this.#size) % this.#size] : null;
  }
}
