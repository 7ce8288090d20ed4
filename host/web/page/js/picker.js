// The dialog in which the variables of a chart are chosen.
import { el, fill, settled } from './dom.js';

const kShown = 200; // of a thousand variables nobody reads more: the search finds the others

// `variables` are those to choose from, `chosen` the names that are chosen, at most `most`. Calls `change(names)` at
// each change.
export function pick(variables, chosen, most, change) {
  const names = new Set(chosen);
  const search = el('input', { type: 'search', 'aria-label': 'Search variables', placeholder: 'Search' });
  const list = el('div', { class: 'choices' }),
    hint = el('p', { class: 'hint', role: 'status' });
  const dialog = el(
    'dialog',
    { 'aria-label': 'Variables of the chart' },
    el(
      'form',
      { method: 'dialog' },
      el('h2', {}, 'Variables'),
      search,
      hint,
      list,
      el('button', { class: 'primary' }, 'Done')
    )
  );

  const toggle = (name, isOn) => {
    if (isOn) names.add(name);
    else names.delete(name);
    change([...names]);
    show();
  };
  const show = () => {
    const found = variables.filter(variable => fits(variable, search.value));
    fill(
      list,
      found.slice(0, kShown).map(variable => choice(variable, names, most, toggle))
    );
    hint.textContent =
      `${names.size} of at most ${most} chosen` +
      (found.length > kShown ? `; ${found.length - kShown} more are found by the search` : '');
  };
  search.addEventListener('input', settled(show, 100));
  search.addEventListener('keydown', event => {
    if (event.key === 'Enter') event.preventDefault();
  });
  dialog.addEventListener('close', () => dialog.remove());
  document.body.append(dialog);
  show();
  dialog.showModal();
}

function fits({ name, unit, node }, search) {
  const text = `${name} ${unit ?? ''} ${node ?? ''}`.toLowerCase();
  return search
    .toLowerCase()
    .split(/\s+/)
    .every(word => text.includes(word));
}

function choice({ name, unit, node }, names, most, toggle) {
  const isOn = names.has(name);
  const box = el('input', {
    type: 'checkbox',
    checked: isOn,
    disabled: !isOn && names.size >= most,
    onchange: () => toggle(name, box.checked)
  });
  return el('label', {}, box, ' ', name, el('small', {}, ` ${[unit, node].filter(Boolean).join(' · ')}`));
}
