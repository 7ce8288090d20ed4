// The logs by folder and day, to take along.
import { faultWords, get, loggerAddress } from './api.js';
import { el, fill } from './dom.js';
import { bytes, count, plural } from './format.js';
import { link, remember } from './router.js';
import { fault, signed } from './states.js';
import { clockTime, dateTime, day, midnight, serverNow } from './time.js';
import { chosenLogger, loggerChoice, loggerNotice, more, rangeFields, rangeOf, openWhenKnown } from './widgets.js';

const kNarrow = 600; // px
const kLeast = 10e3; // ms of a chart: a log can be of one row
const kRows = 300; // of a table at once
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
  #request = null;
  #notice;

  constructor(main, parameters) {
    this.#logger = chosenLogger(parameters);
    this.#notice = loggerNotice(this.#logger);
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
      this.#notice.element,
      this.#status,
      this.#faults,
      this.#list
    );
    if (this.#logger) this.#look(rangeOf(parameters, 7));
  }

  end() {
    this.#request?.abort();
    this.#notice.end();
  }

  async #look(range) {
    this.#range = range;
    const [from, to] = range.map(Math.round);
    this.#fields.set(from, to);
    this.#csv.href = loggerAddress(this.#logger, 'rows.csv', { from, to });
    remember('files', { logger: this.#logger, from, to });
    this.#request?.abort();
    this.#request = new AbortController();
    fill(this.#status, 'Looking for logs ...');
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
    fill(
      this.#status,
      `${plural(logs.length, 'log')}, ${plural(sum('rows'), 'row')}, ${bytes(sum('bytes'))}, ` +
        `from ${dateTime(from)} to ${dateTime(to)}`
    );
    fill(
      this.#faults,
      (faults ?? []).map(words => el('p', { class: 'callout bad' }, signed('bad', words)))
    );
    const folders = grouped(logs, log => log.folder);
    fill(
      this.#list,
      [...folders].map(([folder, inside], i) => this.#folder(folder, inside, i === 0))
    );
  }

  #folder(folder, logs, isOpen) {
    const days = [...grouped(logs, log => (log.first ? day(log.first) : 'no rows'))].sort().reverse();
    return details(el('span', {}, el('b', {}, folder), ` ${plural(logs.length, 'log')}`), isOpen, () =>
      days.map(([date, inside], i) => this.#day(date, inside, i === 0))
    );
  }

  #day(date, logs, isOpen) {
    const rows = logs.reduce((total, log) => total + (log.rows ?? 0), 0);
    return details(`${date}: ${plural(logs.length, 'log')}, ${plural(rows, 'row')}`, isOpen, () =>
      this.#table(date, logs)
    );
  }

  #table(date, logs) {
    const head = ['Log', 'First', 'Last', 'Rows', 'Size', 'Get'].map(name => el('th', { scope: 'col' }, name));
    const body = el('tbody');
    return [
      el('table', { 'aria-label': 'Logs of ' + date }, el('thead', {}, el('tr', {}, head)), body),
      this.#more(body, logs)
    ];
  }

  // The next rows of a table, and a button for those after them.
  #more(body, logs) {
    const rest = logs.slice(kRows);
    body.append(...logs.slice(0, kRows).map(log => this.#log(log)));
    const show = () => button.replaceWith(this.#more(body, rest) || '');
    const button = el('button', { onclick: show }, `${plural(rest.length, 'further log')}`);
    return rest.length > 0 && button;
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

// A part that is made when it is opened: ten thousand logs are not ten thousand rows of a table.
function details(title, isOpen, make) {
  const element = el('details', { open: isOpen }, el('summary', {}, title));
  let isMade = false;
  const open = () => {
    if (!element.open || isMade) return;
    isMade = true;
    element.append(el('div', {}, make()));
  };
  element.addEventListener('toggle', open);
  open();
  return element;
}
