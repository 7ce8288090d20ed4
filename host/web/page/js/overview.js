// The overview: a card for each logger.
import { get, loggerAddress } from './api.js';
import { arrange, el, fill, paced, refill } from './dom.js';
import { bytes, count, plural } from './format.js';
import * as model from './model.js';
import { link } from './router.js';
import { signed } from './states.js';
import { dateTime, duration, serverNow, shortTime } from './time.js';

const kNone =
  'There is no logger on this machine yet. A logger comes here by itself as soon as it runs as a service, or with ' +
  '"vastra run ... --feed" below the folder of --dir. Logs without a logger: "vastra-web --folder NAME=DIR".';

export function show(main) {
  const summary = el('p', { class: 'summary', role: 'status' }, 'Waiting for the loggers ...');
  const cards = el('div', { class: 'cards' });
  const made = new Map(); // a card stays the same element, so that the focus in it stays
  main.append(summary, cards);
  const paint = paced(() => {
    if (!model.isKnown()) return;
    showSummary(summary);
    arrange(
      cards,
      sorted(model.loggers()).map(logger => paintCard(made, logger))
    );
  }, 500);
  const ends = [model.on('loggers', paint), model.on('link', paint)];
  const timer = setInterval(paint, 1000);
  paint();
  return () => {
    clearInterval(timer);
    paint.end();
    for (const end of ends) end();
  };
}

function showSummary(element) {
  const [state, words] = summaryOf(model.loggers());
  if (element.textContent.endsWith(words)) return;
  fill(element, signed(state, words));
  element.className = `summary ${state}`;
}

function summaryOf(all) {
  const bad = all.filter(logger => !model.isWell(logger)),
    folders = all.filter(isFolder).length;
  if (model.listFault()) return ['bad', `The loggers cannot all be found: ${model.listFault()}.`];
  if (all.length === 0) return ['plain', kNone];
  if (bad.length)
    return ['bad', `${plural(bad.length, 'logger')} of ${all.length - folders} not well: ${namesOf(bad)}.`];
  const live = all.length - folders;
  const kinds = [live && plural(live, 'logger'), folders && plural(folders, 'folder of logs', 'folders of logs')];
  return ['well', `All is well: ${kinds.filter(Boolean).join(', ')}.`];
}

const namesOf = loggers => loggers.map(logger => logger.name).join(', ');
const isFolder = logger => !model.isLive(logger);

// What is wrong comes first, folders come last.
const rank = logger => (isFolder(logger) ? 2 : model.isWell(logger) ? 1 : 0);
const sorted = loggers => [...loggers].sort((a, b) => rank(a) - rank(b));

// The parts of a card that are written again: links keep their element.
function paintCard(made, logger) {
  if (!made.has(logger.name)) made.set(logger.name, makeCard(logger));
  const { element, state, facts, problems } = made.get(logger.name);
  element.classList.toggle('bad', !model.isWell(logger));
  refill(state, stateOf(logger));
  if (!isFolder(logger)) refill(facts, factsOf(logger.up ? logger : logger.last));
  facts.classList.toggle('old', !logger.up);
  refill(problems, problemsOf(logger));
  return element;
}

function makeCard(logger) {
  const { name } = logger;
  const state = el('p', { class: 'state' }),
    facts = el('dl'),
    problems = el('div', { class: 'problems' });
  const pages = isFolder(logger) ? ['chart', 'files'] : ['values', 'chart', 'files', 'messages'];
  const links = pages.map(page =>
    el('a', { href: link(page, { logger: name }) }, page[0].toUpperCase() + page.slice(1))
  );
  const element = el(
    'article',
    { class: 'card', 'aria-label': name },
    el('h2', {}, name),
    state,
    problems,
    facts,
    el('p', { class: 'links' }, links)
  );
  if (isFolder(logger)) showRange(facts, name);
  return { element, state, facts, problems };
}

// A folder has nothing but its past.
async function showRange(facts, name) {
  const { from, to } = await get(loggerAddress(name, 'range')).catch(() => ({}));
  const words = from ? [fact('First row', dateTime(from)), fact('Last row', dateTime(to))] : fact('Rows', 'none');
  if (from !== undefined) fill(facts, words);
}

function stateOf(logger) {
  if (!logger.up) return signed('bad', 'does not answer');
  if (isFolder(logger)) return signed('well', 'folder of logs');
  const since = logger.since ? ` since ${shortTime(logger.since)}` : '';
  const words = logger.state + since + (logger.reason ? ': ' + logger.reason : '');
  if (model.isWell(logger)) return signed('well', words);
  return signed('bad', logger.state === 'running' ? 'not well, ' + words : words);
}

// The facts of a logger: the name, the words, and the state if it is not a plain one. Late scans and failed reads are
// worth knowing; whether they are wrong is in the problems of the logger.
const kFacts = [
  ['Last sample', lastSample],
  ['Samples read', ({ read, failedReads }) => count(read) + (failedReads ? `, ${count(failedReads)} failed` : '')],
  ['Late scans', ({ late }) => count(late)],
  ['Rows', rowsLogged],
  ['Lost', ({ lost }) => plural(lost, 'row'), ({ lost }) => (lost > 0 ? 'bad' : 'plain')]
];

function factsOf(logger) {
  if (!logger) return [];
  const facts = kFacts.map(([name, words, state]) => fact(name, words(logger), state?.(logger)));
  const free = disks(logger.folders ?? []).map(([bytesFree, paths]) =>
    fact('Disk', `${bytes(bytesFree)} free`, 'plain', paths.join('\n'))
  );
  return [...facts, ...free];
}

function rowsLogged({ stages = [] }) {
  const sum = key => stages.reduce((total, stage) => total + (stage[key] ?? 0), 0);
  const waiting = sum('waiting');
  return count(sum('kept')) + (waiting ? `, ${count(waiting)} in the journal` : '');
}

// Folders of one file system have the same space: a list of [free, paths].
function disks(folders) {
  const found = new Map();
  for (const { path, free } of folders) found.set(free, [...(found.get(free) ?? []), path]);
  return [...found];
}

function fact(name, words, state = 'plain', title = null) {
  return el('div', { class: state, title }, el('dt', {}, name), el('dd', {}, signed(state, words)));
}

function lastSample({ lastSample: time }) {
  if (!time) return 'none yet';
  return model.link().up ? `${shortTime(time)} (${age(serverNow() - time)} ago)` : shortTime(time);
}

const age = ms => duration(Math.max(0, Math.floor(ms / 1000) * 1000));

function problemsOf(logger) {
  const lines = linesOf(logger);
  const error = logger.lastError;
  const isNew = error && !lines.some(line => line.includes(error.words));
  return [
    ...(lines.length
      ? [
          el(
            'ul',
            {},
            lines.map(line => el('li', {}, line))
          )
        ]
      : []),
    ...(isNew
      ? [el('p', {}, `Last error, ${shortTime(error.time)}: ${error.place || error.name}: ${error.words}`)]
      : [])
  ];
}

// A line for each problem; of a node that is away also since when, and when it is asked again.
function linesOf({ up, fault, problems = [], nodes = [], writes = [] }) {
  if (!up && problems.length === 0) return [fault].filter(Boolean);
  const away = [...nodes, ...writes].filter(node => !node.up);
  return problems.map(line => {
    const node = away.find(({ name }) => line.startsWith(`node ${name} is away`));
    return node ? `${line} Since ${shortTime(node.since)}${againWords(node)}.` : line;
  });
}

const againWords = ({ next }) => (next ? `, asked again at ${shortTime(next)}` : '');
