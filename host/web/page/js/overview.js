// The overview: a card for each logger. What is wrong is red, has a sign, and says what it is.
import { el, fill, paced } from './dom.js';
import { bytes, count, plural } from './format.js';
import * as model from './model.js';
import { link } from './router.js';
import { duration, serverNow, shortTime } from './time.js';

export function show(main) {
  const summary = el('p', { class: 'summary', role: 'status' }, 'Waiting for the loggers ...');
  const cards = el('div', { class: 'cards' });
  const made = new Map(); // a card stays the same element, so that the focus in it stays
  main.append(summary, cards);
  const paint = paced(() => {
    if (!model.isKnown()) return;
    showSummary(summary);
    fill(
      cards,
      model.loggers().map(logger => paintCard(made, logger))
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
  const all = model.loggers(),
    bad = all.filter(logger => !isWell(logger));
  const words = model.listFault()
    ? `The loggers cannot all be found: ${model.listFault()}.`
    : all.length === 0
      ? 'There is no logger on this machine.'
      : bad.length === 0
        ? `All is well: ${plural(all.length, 'logger')}.`
        : `${plural(bad.length, 'logger')} of ${all.length} not well: ${bad.map(logger => logger.name).join(', ')}.`;
  if (element.textContent !== words) element.textContent = words;
  element.classList.toggle('bad', bad.length > 0 || model.listFault() !== '');
}

const isWell = logger => logger.well && logger.up;

// The parts of a card that are written again: links keep their element.
function paintCard(made, logger) {
  if (!made.has(logger.name)) made.set(logger.name, makeCard(logger));
  const { element, state, facts, problems } = made.get(logger.name);
  element.classList.toggle('bad', !isWell(logger));
  fill(state, stateWords(logger));
  fill(facts, factsOf(logger.up ? logger : logger.last));
  facts.classList.toggle('old', !logger.up);
  fill(problems, problemsOf(logger));
  return element;
}

function makeCard({ name, kind }) {
  const state = el('p', { class: 'state' }),
    facts = el('dl'),
    problems = el('div', { class: 'problems' });
  const pages = kind === 'folder' ? ['chart', 'files'] : ['values', 'chart', 'files', 'messages'];
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
  return { element, state, facts, problems };
}

function stateWords(logger) {
  if (!logger.up) return '✕ does not answer';
  if (logger.kind === 'folder') return '✓ folder of logs';
  const since = logger.since ? ` since ${shortTime(logger.since)}` : '';
  return (isWell(logger) ? '✓ ' : '✕ ') + logger.state + since + (logger.reason ? ': ' + logger.reason : '');
}

function factsOf(logger) {
  if (!logger || logger.kind === 'folder') return [];
  const stages = logger.stages ?? [],
    folders = logger.folders ?? [];
  const sum = key => stages.reduce((total, stage) => total + (stage[key] ?? 0), 0);
  const kept = sum('kept'),
    waiting = sum('waiting');
  return [
    fact('Last sample', lastSample(logger)),
    fact(
      'Read',
      count(logger.read) + (logger.failedReads ? `, ${count(logger.failedReads)} failed` : ''),
      logger.failedReads > 0
    ),
    fact('Rows', count(kept) + (waiting ? `, ${count(waiting)} in the journal` : '')),
    fact('Late', count(logger.late), logger.late > 0),
    fact('Lost', plural(logger.lost, 'row'), logger.lost > 0),
    ...disks(folders).map(([free, paths]) => fact('Disk', `${bytes(free)} free`, false, paths.join('\n')))
  ];
}

// Folders of one file system have the same space: a list of [free, paths].
function disks(folders) {
  const found = new Map();
  for (const { path, free } of folders) found.set(free, [...(found.get(free) ?? []), path]);
  return [...found];
}

function fact(name, words, isBad = false, title = null) {
  return el('div', { class: isBad ? 'bad' : '', title }, el('dt', {}, name), el('dd', {}, words));
}

function lastSample({ lastSample: time }) {
  if (!time) return 'none yet';
  return model.link().up ? `${shortTime(time)} (${age(serverNow() - time)} ago)` : shortTime(time);
}

const age = ms => duration(Math.max(0, Math.floor(ms / 1000) * 1000));

function problemsOf(logger) {
  const lines = [...(logger.problems ?? [])];
  if (!logger.up && logger.fault && lines.length === 0) lines.push(logger.fault);
  const away = [...(logger.nodes ?? []), ...(logger.writes ?? [])].filter(node => !node.up);
  const error = logger.lastError;
  return [
    lines.length > 0 &&
      el(
        'ul',
        {},
        lines.map(line => el('li', {}, line))
      ),
    away.map(node =>
      el(
        'p',
        {},
        `${node.name} is away since ${shortTime(node.since)}: ${node.reason}` +
          (node.next ? `. Asked again at ${shortTime(node.next)}` : '')
      )
    ),
    error &&
      el(
        'p',
        { class: 'error' },
        `Last error, ${shortTime(error.time)}: ${error.place ?? error.name}: ${error.words ?? error.text}`
      )
  ].flat();
}
