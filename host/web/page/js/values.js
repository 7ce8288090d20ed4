// All variables of a logger as they are now, each with a small curve of its newest values.
import { el, paced, setText, settled } from './dom.js';
import { plural, steady } from './format.js';
import * as model from './model.js';
import { link, remember } from './router.js';
import { searchFor, textOf } from './search.js';
import { drawSpark, sparkLook } from './spark.js';
import { dateTimeMs } from './time.js';
import { VirtualList } from './virtual_list.js';
import { chosenLogger, loggerChoice, loggerNotice, openWhenKnown } from './widgets.js';

const kRowHeight = 48;
const kSparkSamples = 120;
const kGap = 5; // periods without a sample are a gap in the curve

export const show = (main, parameters) => openWhenKnown(() => new ValuesPage(main, parameters));

class ValuesPage {
  #logger;
  #found = []; // indices of the variables that fit the search
  #list = new VirtualList(kRowHeight, () => this.#makeRow());
  #search;
  #look = null; // of the curves: size and colour, read once in each painting
  #count = el('span', { role: 'status' });
  #time = el('span');
  #table = el('div', { class: 'values', role: 'table', 'aria-label': 'Values' });
  #ends = [];

  constructor(main, parameters) {
    this.#logger = chosenLogger(parameters, model.isLive);
    this.#search = el('input', {
      type: 'search',
      placeholder: 'Name, unit or node',
      value: parameters.get('search') ?? ''
    });
    this.#make(main);
    const paint = paced(() => this.#paint());
    const find = settled(() => this.#find(), 120);
    this.#search.addEventListener('input', find);
    this.#ends.push(
      paint.end,
      find.end,
      () => this.#list.end(),
      model.on('variables', () => this.#start()),
      model.on('sample', paint),
      model.on('loggers', paint),
      () => model.want(this, null)
    );
    model.want(this, { sample: this.#logger ? [this.#logger] : [] });
    this.#start();
  }

  // Curves without a past are shown all the same.
  #start() {
    this.#find();
    if (!model.history(this.#logger)?.isSeeded) model.seed(this.#logger).catch(() => {});
  }

  end() {
    for (const end of this.#ends) end();
  }

  #make(main) {
    const notice = loggerNotice(this.#logger, model.isLive);
    this.#ends.push(notice.end);
    const choice = loggerChoice(
      this.#logger,
      name => {
        location.hash = link('values', { logger: name });
      },
      { fits: model.isLive }
    );
    const head = el(
      'div',
      { class: 'row head', role: 'row', 'aria-rowindex': 1 },
      ['Variable', 'Value', 'Newest'].map(name => el('span', { role: 'columnheader' }, name))
    );
    this.#table.append(el('div', { role: 'rowgroup' }, head), this.#list.element);
    main.append(
      el('div', { class: 'tools' }, choice, el('label', {}, 'Search ', this.#search)),
      notice.element,
      el('p', { class: 'hint' }, this.#count, ' ', this.#time),
      this.#table
    );
  }

  #find() {
    const fits = searchFor(this.#search.value);
    const variables = model.variables(this.#logger) ?? [];
    this.#found = [...variables.keys()].filter(i => fits(textOf(variables[i])));
    setText(this.#count, this.#countWords(variables.length, this.#search.value.trim() !== ''));
    remember('values', { logger: this.#logger, search: this.#search.value });
    this.#table.setAttribute('aria-rowcount', this.#found.length + 1);
    this.#list.resize(this.#found.length);
    this.#paint();
  }

  #countWords(all, isSearch) {
    if (!model.variables(this.#logger)) return this.#isAway() ? '' : 'Waiting for the variables ...';
    return isSearch ? `${this.#found.length} of ${plural(all, 'variable')}` : plural(all, 'variable');
  }

  #isAway() {
    const logger = model.logger(this.#logger);
    return !logger?.up || !model.isLive(logger);
  }

  #noSample() {
    return model.logger(this.#logger).lastSample ? 'Waiting for the newest sample ...' : 'There is no sample yet.';
  }

  #paint() {
    const sample = model.sample(this.#logger);
    setText(this.#time, sample ? `at ${dateTimeMs(sample.time)}` : this.#isAway() ? '' : this.#noSample());
    this.#table.classList.toggle('old', this.#isAway());
    this.#look = null;
    this.#list.paint();
  }

  #makeRow() {
    const name = el('a'),
      node = el('small'),
      now = el('data'),
      unit = el('small');
    const spark = el('canvas', { 'aria-hidden': 'true' });
    const element = el(
      'div',
      { class: 'row', role: 'row' },
      el('span', { role: 'cell' }, name, node),
      el('span', { role: 'cell', class: 'value' }, now, ' ', unit),
      el('span', { role: 'cell' }, spark)
    );
    return { element, show: index => this.#showRow({ name, node, now, unit, spark }, this.#found[index]) };
  }

  #showRow(parts, i) {
    const variable = model.variables(this.#logger)[i];
    const raw = model.sample(this.#logger)?.values[i];
    const points = this.#pointsOf(i);
    setText(parts.name, variable.name);
    parts.name.href = link('chart', { logger: this.#logger, vars: variable.name });
    parts.name.title = variable.name;
    setText(parts.node, variable.node ?? '');
    setText(parts.now, steady(raw, sizeOf(points, raw)));
    parts.now.value = raw ?? '';
    parts.now.classList.toggle('warn', typeof raw === 'string');
    setText(parts.unit, variable.unit ?? '');
    parts.unit.title = variable.unit ?? '';
    drawSpark(parts.spark, points, (this.#look ??= sparkLook(parts.spark)));
  }

  #pointsOf(i) {
    const points = [],
      gap = kGap * (model.logger(this.#logger)?.period ?? Infinity);
    model.history(this.#logger)?.visit(i, kSparkSamples, (time, number) => {
      if (time - points.at(-1)?.[0] > gap) points.push([time, NaN]);
      points.push([time, number]);
    });
    return points;
  }
}

function sizeOf(points, raw) {
  const numbers = [...points.map(([, number]) => number), raw].filter(Number.isFinite);
  return { greatest: Math.max(0, ...numbers.map(Math.abs)), isWhole: numbers.every(Number.isInteger) };
}
