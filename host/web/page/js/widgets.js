// Parts that several views have.
import { el, fill } from './dom.js';
import * as model from './model.js';
import { fault } from './states.js';
import { fromField, midnight, serverNow, toField } from './time.js';

// The logger of the address, or the first one that fits; null before any is known.
export function chosenLogger(parameters, fits = () => true) {
  const name = parameters.get('logger');
  return name ?? model.loggers().find(fits)?.name ?? null;
}

// Which logger is looked at. `all`: a choice for all of them, as the empty name.
export function loggerChoice(name, change, { all = null, fits = () => true } = {}) {
  const names = model
    .loggers()
    .filter(fits)
    .map(logger => logger.name);
  if (name && !names.includes(name)) names.push(name);
  const select = el(
    'select',
    { onchange: () => change(select.value) },
    all && el('option', { value: '' }, all),
    names.map(one => el('option', { value: one }, one))
  );
  select.value = name ?? '';
  return el('label', {}, 'Logger ', select);
}

// Says that a logger is away, while the server is there. Returns the element and a function that ends it.
export function loggerNotice(name) {
  const element = el('p', { class: 'callout', role: 'status' });
  let shown = null;
  const update = () => {
    const words = noticeWords(name);
    element.hidden = !words;
    if (words === shown) return;
    shown = words;
    fill(element, words && fault(words));
  };
  update();
  return { element, end: model.on('loggers', update) };
}

function noticeWords(name) {
  if (name === '' || !model.isKnown()) return '';
  if (name === null) return 'There is no logger. The overview says how one comes here.';
  const logger = model.logger(name);
  if (!logger) return `There is no logger "${name}".`;
  if (logger.up) return '';
  return `${name} does not answer${logger.fault ? ': ' + logger.fault : ''}. What is shown is its last.`;
}

// Waits until the loggers are known, then calls `work` once. Returns a function that gives it up.
export function whenKnown(work) {
  if (model.isKnown()) {
    work();
    return () => {};
  }
  const end = model.on('loggers', () => {
    end();
    work();
  });
  return end;
}

// Makes a view once the loggers are known. Returns a function that ends it, also before that.
export function openWhenKnown(make) {
  let view = null;
  const end = whenKnown(() => {
    view = make();
  });
  return () => {
    end();
    view?.end();
  };
}

// Two fields for a range, in the time of the server. Calls `change(from, to)`; says what is wrong otherwise.
export function rangeFields(change) {
  const from = el('input', { type: 'datetime-local', step: 1 });
  const to = el('input', { type: 'datetime-local', step: 1 });
  const problem = el('span', { role: 'alert' });
  const submit = event => {
    event.preventDefault();
    const range = [fromField(from.value), fromField(to.value)];
    const words = rangeFault(...range);
    fill(problem, words && fault(words));
    if (!words) change(...range);
  };
  const element = el(
    'form',
    { class: 'range', onsubmit: submit },
    el('label', {}, 'From ', from),
    el('label', {}, 'To ', to),
    el('button', {}, 'Show'),
    problem
  );
  const set = (a, b) => {
    if (element.contains(document.activeElement)) return; // somebody types
    from.value = toField(a);
    to.value = toField(b);
  };
  return { element, set };
}

function rangeFault(from, to) {
  if (from === null || to === null) return 'A time is missing';
  return from < to ? '' : 'The end is not after the beginning';
}

// The range of the address, otherwise whole days up to and with today.
export function rangeOf(parameters, days) {
  const from = Number(parameters.get('from')),
    to = Number(parameters.get('to'));
  return from < to ? [from, to] : [midnight(serverNow(), 1 - days), midnight(serverNow(), 1)];
}

const kWide = 1200; // px; on a smaller screen the view needs the space of the rarer tools

// Tools that are behind a word on a small screen.
export function more(word, ...tools) {
  return el('details', { class: 'more', open: innerWidth > kWide }, el('summary', {}, word), el('div', {}, tools));
}
