// The chart: the past from the logs and the present as it comes, in one picture. The address has the whole view.
import { faultWords, get, loggerAddress } from './api.js';
import { ChartData } from './chart_data.js';
import { listen } from './chart_gestures.js';
import { savePicture } from './chart_picture.js';
import { loadPlots, makePlot, mostAxes } from './chart_plot.js';
import { ChartTable } from './chart_table.js';
import { Tools } from './chart_tools.js';
import { ChartView } from './chart_view.js';
import { canHover, el, paced, refill, settled } from './dom.js';
import * as model from './model.js';
import { pick } from './picker.js';
import { remember } from './router.js';
import { fault } from './states.js';
import { dateTime } from './time.js';
import { chosenLogger, loggerNotice, whenKnown } from './widgets.js';

const kMost = 8; // variables: as many as there are colours
const kAsk = 150; // ms without a further zoom or pan, until the logs are asked
const kFresh = 30e3; // ms, until a chart that follows asks again
const kQuick = 5e3; // the same for a logger that reads more than the stream sends
const kAll = 10e3; // ms that "All" has at least: a log can be of one row
const kChoose = 'Choose variables to see their curves.';
const kNone = 'There are no rows yet.';
const kPlotLabel =
  'Chart. Arrow keys move, plus and minus zoom, F follows, A and B place a cursor, comma and full stop ' +
  'move it, C clears the cursors. The values are in the table below.';

const kMouseHelp =
  'Wheel: zoom. Drag: zoom into a range. Shift and drag: move. Click: cursors A and B. ' +
  'Keys in the chart: arrows, +, -, F, A, B, C, H, D, W.';
const kTouchHelp = 'Two fingers: zoom. One finger: move. Tap: cursors A and B.';

export function show(main, parameters) {
  let page = null,
    isEnded = false;
  const open = async () => {
    const logger = chosenLogger(parameters);
    const [variables] = await Promise.all([logger ? variablesOf(logger) : [], loadPlots()]);
    if (!isEnded) page = new ChartPage(main, parameters, logger, variables);
  };
  const end = whenKnown(() => open().catch(error => main.append(el('p', { role: 'alert' }, fault(error.message)))));
  return () => {
    isEnded = true;
    end();
    page?.end();
  };
}

// Those of the samples and of the logs; without the server those that are known.
async function variablesOf(logger) {
  const { variables } = await get(loggerAddress(logger, 'variables')).catch(() => ({}));
  return variables ?? model.variables(logger) ?? [];
}

class ChartPage {
  #logger;
  #all; // the variables to choose from
  #names; // the chosen ones
  #view;
  #tools;
  #plot = null;
  #variables = [];
  #colours = new Map(); // the name of a variable to the number of its colour
  #data = null;
  #columns = [[]];
  #asked = 0;
  #pointer = null;
  #problem = ''; // why the logs could not be asked
  #hasRows = true; // whether there are any, as far as is known
  #area = el('div', { class: 'plot', tabindex: 0, role: 'application', 'aria-label': kPlotLabel });
  #status = el('p', { class: 'hint', role: 'status' });
  #table = new ChartTable(name => this.#choose(this.#names.filter(one => one !== name)));
  #ends = [];
  #ask = settled(() => this.#request(), kAsk);
  #paint = paced(() => this.#draw()); // of new samples
  #drawSoon = paced(() => this.#draw(), 0); // of a finger that moves, at most once in a frame

  constructor(main, parameters, logger, variables) {
    this.#logger = logger;
    this.#all = variables;
    this.#names = [...new Set(parameters.getAll('vars'))].slice(0, kMost);
    if (this.#names.length === 0 && variables.length) this.#names = [variables[0].name];
    this.#view = new ChartView(parameters, isLive(logger), how => this.#changed(how));
    this.#make(main);
    this.#listen();
    this.#rebuild();
    if (!isLive(logger)) this.#findRows(parameters.has('from') ? () => {} : range => this.#showRange(range));
  }

  end() {
    this.#data?.end();
    this.#plot?.destroy();
    for (const end of this.#ends) end();
  }

  #make(main) {
    this.#tools = new Tools(this.#logger, isLive(this.#logger), this.#view, {
      choose: () => pick(this.#all, this.#names, kMost, names => this.#choose(names)),
      all: () => this.#findRows(range => this.#showRange(range)),
      picture: () => this.#savePicture()
    });
    const notice = loggerNotice(this.#logger);
    main.append(
      this.#tools.element,
      notice.element,
      this.#area,
      this.#status,
      el('div', { class: 'scroll' }, this.#table.element),
      el('p', { class: 'help' }, canHover() ? kMouseHelp : kTouchHelp)
    );
    this.#ends.push(notice.end, this.#ask.end, this.#paint.end, this.#drawSoon.end);
  }

  #listen() {
    listen(this.#area, () => this.#plot, this.#view);
    const resize = new ResizeObserver(() => this.#resize());
    resize.observe(this.#area);
    const dark = matchMedia('(prefers-color-scheme: dark)'),
      build = () => this.#rebuild();
    dark.addEventListener('change', build);
    const timer = setInterval(() => this.#tick(), 250);
    if (isLive(this.#logger)) model.want(this, { sample: [this.#logger] });
    this.#ends.push(
      () => resize.disconnect(),
      () => dark.removeEventListener('change', build),
      () => clearInterval(timer),
      () => model.want(this, null),
      model.on('sample', this.#paint),
      model.on('link', ({ up }) => {
        if (up) this.#request();
      })
    );
  }

  #choose(names) {
    this.#names = names;
    this.#rebuild();
  }

  // For other variables or colours.
  #rebuild() {
    this.#data?.end();
    this.#data = new ChartData(this.#logger, this.#names);
    const look = getComputedStyle(this.#area),
      colours = this.#coloursOf(this.#names);
    this.#variables = this.#names.map((name, i) => ({
      name,
      unit: this.#all.find(one => one.name === name)?.unit ?? '',
      colour: look.getPropertyValue('--curve' + colours[i]).trim()
    }));
    this.#columns = this.#data.columns();
    this.#makePlot();
    this.#table.build(this.#variables);
    this.#changed('range');
  }

  // The numbers of the colours. A variable keeps its colour while it is in the chart; others get those that are free.
  #coloursOf(names) {
    const kept = new Map([...this.#colours].filter(([name]) => names.includes(name)));
    const free = Array.from({ length: kMost }, (_, i) => i + 1).filter(one => ![...kept.values()].includes(one));
    this.#colours = new Map(names.map(name => [name, kept.get(name) ?? free.shift()]));
    return [...this.#colours.values()];
  }

  // Also for other axes.
  #makePlot() {
    this.#plot?.destroy();
    this.#plot = makePlot(this.#area, {
      variables: this.#variables,
      axes: this.#view.axes,
      view: () => this.#view.range,
      marks: () => this.#view.marks,
      select: (from, to) => this.#view.show(from, to),
      point: time => this.#point(time)
    });
    this.#plot.setData(this.#columns);
  }

  #resize() {
    const { clientWidth: width, clientHeight: height } = this.#area;
    if (!width || (this.#plot.width === width && this.#plot.height === height)) return;
    const isSame = mostAxes(width) === mostAxes(this.#plot.width);
    this.#plot.setSize({ width, height });
    if (!isSame) this.#makePlot();
  }

  // `how`: "range", "axes" or "marks".
  #changed(how) {
    if (how === 'axes') this.#makePlot();
    if (how === 'range') this.#ask();
    remember('chart', { logger: this.#logger, vars: this.#names, ...this.#view.parameters() });
    this.#tools.update(this.#names);
    this.#drawSoon();
  }

  // A finger leaves no pointer: after a tap the newest values are shown again.
  #point(time) {
    this.#pointer = canHover() ? time : null;
    this.#showTable();
  }

  async #request() {
    if (!this.#logger || this.#names.length === 0) return this.#draw();
    this.#asked = performance.now();
    const data = this.#data;
    this.#area.setAttribute('aria-busy', 'true');
    const words = await data.ask(...this.#view.range, this.#area.clientWidth).then(() => '', faultWords);
    if (words === null || data !== this.#data) return;
    this.#problem = words;
    this.#area.removeAttribute('aria-busy');
    this.#draw();
  }

  #tick() {
    if (!this.#view.isFollowing || !model.link().up) return;
    const period = model.logger(this.#logger)?.period ?? 0;
    const age = performance.now() - this.#asked;
    if (age > (period < 100 ? kQuick : kFresh) || (age > 1000 && this.#data.isOld())) this.#request();
    this.#tools.update(this.#names);
    this.#paint();
  }

  #draw() {
    if (!this.#plot) return;
    this.#view.advance();
    this.#columns = this.#data.columns();
    this.#plot.setData(this.#data.drawn(this.#columns));
    const [from, to] = this.#view.range;
    refill(this.#status, this.#statusOf(from, to));
    this.#showTable();
  }

  // What the curves do not say.
  #statusOf(from, to) {
    if (this.#logger && this.#names.length === 0) return this.#all.length ? kChoose : kNone;
    if (this.#problem) return fault(this.#problem);
    if (this.#data.faults.length) return this.#data.faults.map(words => fault(`Rows are missing: ${words} `));
    const isEmpty = this.#data.isThere && !this.#columns[0].some(time => time >= from && time <= to);
    if (!isEmpty) return '';
    return this.#hasRows ? 'There are no rows in this range. "All" shows all there are.' : kNone;
  }

  #showTable() {
    const [from, to] = this.#view.range;
    const reach = Math.max((to - from) / 100, 2 * (model.logger(this.#logger)?.period ?? 0));
    const last = Math.min(to, this.#columns[0].at(-1) ?? to);
    const newest = last < from ? to : last;
    const times = { now: this.#pointer ?? newest, isPointer: this.#pointer !== null, a: this.#view.a, b: this.#view.b };
    this.#table.show(this.#columns, { ...times, range: [from, to] }, reach);
  }

  // Hands the range of all rows to `act`, if there are any.
  async #findRows(act) {
    try {
      const range = await get(loggerAddress(this.#logger, 'range'));
      this.#hasRows = range.from < range.to;
      if (!isLive(this.#logger)) this.#view.end = range.to;
      if (this.#hasRows) act(range);
    } catch (error) {
      this.#problem = faultWords(error);
    }
    this.#tools.update(this.#names);
    this.#drawSoon();
  }

  #showRange({ from, to }) {
    const margin = Math.max(0, kAll - (to - from)) / 2;
    this.#view.show(from - margin, to + margin);
  }

  #savePicture() {
    if (this.#variables.length === 0) return;
    const [from, to] = this.#view.range.map(dateTime);
    savePicture(this.#plot, `${this.#logger}, ${from} to ${to}`, this.#variables, `${this.#logger} ${from}.png`);
  }
}

const isLive = name => model.logger(name)?.kind !== 'folder';
