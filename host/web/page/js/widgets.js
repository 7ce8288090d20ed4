// Parts that several views have.
import { el, fill, refill } from './dom.js';
import * as model from './model.js';
import { fault, signed } from './states.js';
import { fromField, midnight, serverNow, toField } from './time.js';

// The logger of the address, or the first one that fits; null before any is known.
export function chosenLogger(parameters, fits = () => true) {
  const name = parameters.get('logger');
  return name ?? model.loggers().find(fits)?.name ?? null;
}

// Which logger is looked at. `all`: a choice for all of them, as the empty name. Loggers that have come later are there
// when the list is opened.
export function loggerChoice(name, change, { all = null, fits = () => true } = {}) {
  const select = el('select', { onchange: () => change(select.value), onfocus: () => offer() });
  const offer = () => {
    const names = new Set(
      model
        .loggers()
        .filter(fits)
        .map(logger => logger.name)
    );
    if (name) names.add(name);
    const options = [...names].map(one => el('option', { value: one }, one));
    refill(select, all && el('option', { value: '' }, all), options);
    select.value = name ?? '';
  };
  offer();
  return el('label', {}, 'Logger ', select);
}

// Says what is wrong with a logger, while the server is there, or that it does not fit the view. Returns the element and a
// function that ends it.
export function loggerNotice(name, fits = () => true) {
  const element = el('p', { role: 'status' });
  const update = () => {
    const [state, words] = noticeOf(name, fits);
    element.hidden = !words;
    element.className = `callout ${state}`;
    refill(element, words && signed(state, words));
  };
  update();
  return { element, end: model.on('loggers', update) };
}

function noticeOf(name, fits) {
  const logger = model.logger(name);
  if (name === '' || !model.isKnown()) return ['plain', ''];
  if (name === null) return ['plain', 'There is no logger. The overview says how one comes here.'];
  if (!logger) return ['bad', `There is no logger "${name}".`];
  if (!fits(logger)) return ['plain', `${name} is a folder of logs without a logger: it has a chart and files only.`];
  if (logger.up) return ['bad', logger.well ? '' : `${name} is not well: ${logger.problems.join('; ')}`];
  return ['bad', `${name} does not answer${logger.fault ? ': ' + logger.fault : ''}. What is shown is its last.`];
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
  const fields = ['From', 'To'].map(timeField);
  const problem = el('span', { role: 'alert' });
  const submit = event => {
    event.preventDefault();
    const range = fields.map(field => field.get());
    const words = rangeFault(...range);
    fill(problem, words && fault(words));
    if (!words) change(...range);
  };
  const labels = fields.map(field => field.element);
  const element = el('form', { class: 'range', onsubmit: submit }, labels, el('button', {}, 'Show'), problem);
  const set = (...range) => {
    if (element.contains(document.activeElement)) return; // somebody types
    fields.forEach((field, i) => field.set(range[i]));
  };
  return { element, set };
}

// The field has seconds and no offset: a time that is not edited is returned as it was set.
function timeField(word) {
  const input = el('input', { type: 'datetime-local', step: 1 });
  let time = null,
    text = '';
  const set = ms => {
    const words = toField(ms);
    if (words !== text) input.value = words;
    [time, text] = [ms, words];
  };
  const get = () => (input.value === text ? time : fromField(input.value));
  return { element: el('label', {}, word + ' ', input), set, get };
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

// Tools that are behind a word on a screen that is not wider than `width`: the view needs the space.
export function more(word, width, ...tools) {
  return el('details', { class: 'more', open: innerWidth > width }, el('summary', {}, word), el('div', {}, tools));
}
