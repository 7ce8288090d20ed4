// The dialog in which the variables of a chart are chosen.
import { canHover, el, fill, setProperty, setText, settled } from './dom.js';
import { searchFor, textOf } from './search.js';

const kShown = 200; // of a thousand variables nobody reads more: the search finds the others

// `variables` are those to choose from, `chosen` the names that are chosen, at most `most`. Calls `change(names)` at
// each change.
export function pick(variables, chosen, most, change) {
  new Picker(variables, new Set(chosen), most, change).open();
}

class Picker {
  #variables; // the chosen ones first
  #names;
  #most;
  #change;
  #boxes = new Map(); // the name of each variable that is shown to its box
  #search = el('input', { type: 'search', 'aria-label': 'Search variables', placeholder: 'Search' });
  #hint = el('p', { class: 'hint', role: 'status' });
  #list = el('div', { class: 'choices' });

  constructor(variables, names, most, change) {
    this.#variables = [...variables].sort((a, b) => names.has(b.name) - names.has(a.name));
    this.#names = names;
    this.#most = most;
    this.#change = change;
  }

  open() {
    const dialog = this.#makeDialog();
    this.#search.addEventListener(
      'input',
      settled(() => this.#find(), 100)
    );
    this.#search.addEventListener('keydown', event => {
      if (event.key === 'Enter') event.preventDefault();
    });
    dialog.addEventListener('close', () => dialog.remove());
    document.body.append(dialog);
    this.#find();
    dialog.showModal();
  }

  // With a finger the search does not get the focus: the keyboard on the screen would cover the list.
  #makeDialog() {
    const isTouch = !canHover();
    setProperty(this.#search, 'autofocus', !isTouch);
    return el(
      'dialog',
      { 'aria-label': 'Variables of the chart' },
      el(
        'form',
        { method: 'dialog' },
        el('h2', { tabindex: -1, autofocus: isTouch }, 'Variables'),
        this.#search,
        this.#hint,
        this.#list,
        el('button', { class: 'primary' }, 'Done')
      )
    );
  }

  #find() {
    const fits = searchFor(this.#search.value);
    const found = this.#variables.filter(variable => fits(textOf(variable)));
    this.#boxes.clear();
    fill(
      this.#list,
      found.slice(0, kShown).map(variable => this.#choice(variable))
    );
    this.#update(found.length - kShown);
  }

  #choice({ name, unit, node }) {
    const box = el('input', { type: 'checkbox', onchange: () => this.#toggle(name, box.checked) });
    this.#boxes.set(name, box);
    return el('label', {}, box, ' ', name, el('small', {}, ` ${[unit, node].filter(Boolean).join(' · ')}`));
  }

  #toggle(name, isOn) {
    if (isOn) this.#names.add(name);
    else this.#names.delete(name);
    this.#change([...this.#names]);
    this.#update(this.#more);
  }

  #more = 0; // variables that the search finds and the list does not show

  #update(more) {
    this.#more = more;
    for (const [name, box] of this.#boxes) {
      box.checked = this.#names.has(name);
      box.disabled = !box.checked && this.#names.size >= this.#most;
    }
    const rest = more > 0 ? `; ${more} more are found by the search` : '';
    setText(this.#hint, `${this.#names.size} of at most ${this.#most} chosen${rest}`);
  }
}
