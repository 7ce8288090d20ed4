// The logs by folder and day, to take along.
import { faultWords, get, loggerAddress } from './api.js';
import { arrange, el, fill, refill, setText } from './dom.js';
import { bytes, count, plural } from './format.js';
import * as model from './model.js';
import { link, remember } from './router.js';
import { fault, signed } from './states.js';
import { clockTime, dateTime, day, midnight, serverNow } from './time.js';
import { chosenLogger, loggerChoice, loggerNotice, more, rangeFields, rangeOf, openWhenKnown } from './widgets.js';

const kNarrow = 600; // px
const kListed = /\.rp[hd]$/i; // files that are in the list
const kLeast = 10e3; // ms of a chart: a log can be of one row
const kRows = 300; // of a table at once
const kPauses = [3e3, 6e3, 12e3, 24e3]; // ms until a closed log is looked for, and until it is looked for again
const kDays = [
  ['Today', 1],
  ['7 days', 7],
  ['31 days', 31],
  ['366 days', 366]
];

export const show = (main, parameters) => openWhenKnown(() => new FilesPage(main, parameters));

class FilesPage {
  #logger;
  #range;
  #fields = rangeFields((from, to) => this.#look([from, to]));
  #status = el('p', { class: 'hint', role: 'status' });
  #csv = el('a', { class: 'button', download: '' }, 'All rows of this range as CSV');
  #faults = el('div');
  #list = el('div', { class: 'logs' });
  #parts = new Map(); // of the list, by folder and day
  #rows = new Map(); // of logs, by id: the facts as text, and the element
  #request = null;
  #closed = null; // the file of the newest closed log, until it is in the list
  #looks = 0; // for it
  #timer = 0;
  #ends;

  constructor(main, parameters) {
    this.#logger = chosenLogger(parameters);
    const notice = loggerNotice(this.#logger);
    this.#ends = [
      notice.end,
      model.on('log', ({ logger, event, file }) => event === 'closed' && kListed.test(file) && this.#noteLog(logger, file)),
      model.on('dropped', ({ logger, logs }) => logs && this.#noteLog(logger)),
      model.on('link', ({ up }) => up && this.#noteLog(this.#logger)),
      () => model.want(this, null)
    ];
    const choice = loggerChoice(this.#logger, name => {
      location.hash = link('files', { logger: name });
    });
    const days = kDays.map(([words, number]) => el('button', { onclick: () => this.#look(lastDays(number)) }, words));
    main.append(
      el(
        'div',
        { class: 'tools' },
        choice,
        el('div', { class: 'group', role: 'group', 'aria-label': 'Range' }, days),
        more('Range', kNarrow, this.#fields.element, this.#csv)
      ),
      notice.element,
      this.#status,
      this.#faults,
      this.#list
    );
    if (!this.#logger) return;
    this.#look(rangeOf(parameters, 7));
    model.want(this, { log: [this.#logger] });
  }

  end() {
    this.#request?.abort();
    clearTimeout(this.#timer);
    for (const end of this.#ends) end();
  }

  // The list of the server can be older than the log, since it looks at large folders now and then only: a log that is
  // missing is looked for again. Without a file, and in a range that has ended, one look is enough. Logs that are closed
  // meanwhile are one look.
  #noteLog(logger, file = null) {
    if (logger !== this.#logger) return;
    this.#closed = this.#range[1] > serverNow() ? file : null;
    this.#looks = 0;
    this.#lookLater();
  }

  // A tab that nobody sees waits.
  #lookLater() {
    if (this.#timer) return;
    this.#timer = setTimeout(
      () =>
        requestAnimationFrame(() => {
          this.#timer = 0;
          if (this.#list.isConnected) this.#ask();
        }),
      kPauses[this.#looks++]
    );
  }

  async #look(range) {
    this.#range = range;
    const [from, to] = range.map(Math.round);
    this.#fields.set(from, to);
    this.#csv.href = loggerAddress(this.#logger, 'rows.csv', { from, to });
    remember('files', { logger: this.#logger, from, to });
    setText(this.#status, 'Looking for logs ...');
    await this.#ask();
  }

  async #ask() {
    const [from, to] = this.#range.map(Math.round);
    this.#request?.abort();
    this.#request = new AbortController();
    try {
      this.#show(await get(loggerAddress(this.#logger, 'logs', { from, to }), this.#request.signal));
    } catch (error) {
      const words = faultWords(error);
      if (words) fill(this.#status, fault(words));
    }
  }

  #show({ logs, faults }) {
    const [from, to] = this.#range;
    const sum = key => logs.reduce((total, log) => total + (log[key] ?? 0), 0);
    setText(
      this.#status,
      `${plural(logs.length, 'log')}, ${plural(sum('rows'), 'row')}, ${bytes(sum('bytes'))}, ` +
        `from ${dateTime(from)} to ${dateTime(to)}`
    );
    refill(
      this.#faults,
      (faults ?? []).map(words => el('p', { class: 'callout bad' }, signed('bad', words)))
    );
    const folders = grouped(logs, log => log.folder);
    arrange(
      this.#list,
      [...folders].map(([folder, inside], i) => this.#folder(folder, inside, i === 0))
    );
    const isMissing = this.#closed !== null && !logs.some(log => log.file === this.#closed);
    if (isMissing && this.#looks < kPauses.length) this.#lookLater();
    else this.#closed = null;
  }

  // A part that is made when it is opened: ten thousand logs are not ten thousand rows of a table. It stays the same
  // element, so that what is open or has the focus stays.
  #part(key, isOpen, title, paint) {
    if (!this.#parts.has(key)) this.#parts.set(key, newPart(isOpen));
    const part = this.#parts.get(key);
    refill(part.title, title);
    part.paint = () => paint(part);
    if (part.element.open) part.paint();
    return part.element;
  }

  #folder(folder, logs, isOpen) {
    const days = [...grouped(logs, log => (log.first ? day(log.first) : 'no rows'))].sort().reverse();
    const title = [el('b', {}, folder), ` ${plural(logs.length, 'log')}`];
    return this.#part(folder, isOpen, title, ({ body }) =>
      arrange(
        body,
        days.map(([date, inside], i) => this.#day(folder, date, inside, i === 0))
      )
    );
  }

  #day(folder, date, logs, isOpen) {
    const rows = logs.reduce((total, log) => total + (log.rows ?? 0), 0);
    const title = `${date}: ${plural(logs.length, 'log')}, ${plural(rows, 'row')}`;
    return this.#part(`${folder}\n${date}`, isOpen, title, part => this.#table(part, date, logs));
  }

  // The first rows, and a button for those after them.
  #table(part, date, logs) {
    part.table ??= newTable(date);
    const { element, rows, further } = part.table;
    arrange(part.body, [element, further]);
    arrange(
      rows,
      logs.slice(0, part.shown).map(log => this.#row(log))
    );
    const rest = logs.length - part.shown;
    const show = () => {
      part.shown += kRows;
      part.paint();
    };
    fill(further, rest > 0 && el('button', { onclick: show }, `${plural(rest, 'further log')}`));
  }

  #row(log) {
    const facts = JSON.stringify(log);
    if (this.#rows.get(log.id)?.facts !== facts) this.#rows.set(log.id, { facts, element: this.#log(log) });
    return this.#rows.get(log.id).element;
  }

  #log({ id, file, first, last, rows, bytes: size, open, fault: words }) {
    const at = what => loggerAddress(this.#logger, what, { id });
    const view = first && link('chart', { logger: this.#logger, from: first, to: Math.max(last + 1, first + kLeast) });
    const files = [
      el('a', { href: at('log'), download: '', 'aria-label': `${file} as a file` }, 'file'),
      ' ',
      el('a', { href: at('log.csv'), download: '', 'aria-label': `${file} as CSV` }, 'CSV'),
      ' ',
      view && el('a', { href: view, 'aria-label': `Chart of ${file}` }, 'chart')
    ];
    const cell = (name, ...words) => el('td', { 'data-name': name }, words);
    return el(
      'tr',
      {},
      el(
        'th',
        { scope: 'row' },
        file,
        open && el('small', {}, ' still written'),
        words && el('small', {}, ' ', fault(words))
      ),
      cell('First', first ? clockTime(first) : '–'),
      cell('Last', last ? (day(last) === day(first) ? clockTime(last) : dateTime(last)) : '–'),
      cell('Rows', count(rows)),
      cell('Size', bytes(size)),
      cell('Get', files)
    );
  }
}

const lastDays = number => [midnight(serverNow(), 1 - number), midnight(serverNow(), 1)];

function grouped(list, key) {
  const groups = new Map();
  for (const one of list) {
    const name = key(one);
    if (!groups.has(name)) groups.set(name, []);
    groups.get(name).push(one);
  }
  return groups;
}

function newPart(isOpen) {
  const title = el('summary'),
    body = el('div');
  const part = { element: el('details', { open: isOpen }, title, body), title, body, shown: kRows, paint() {} };
  part.element.addEventListener('toggle', () => part.element.open && part.paint());
  return part;
}

function newTable(date) {
  const head = ['Log', 'First', 'Last', 'Rows', 'Size', 'Get'].map(name => el('th', { scope: 'col' }, name));
  const rows = el('tbody');
  const element = el('table', { 'aria-label': 'Logs of ' + date }, el('thead', {}, el('tr', {}, head)), rows);
  return { element, rows, further: el('div') };
}
