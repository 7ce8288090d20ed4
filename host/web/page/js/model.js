// What this tab has heard from the server, and who wants to know.
import { address, get, loggerAddress } from './api.js';
import { plural } from './format.js';
import { History } from './history.js';
import { fullest, merged } from './rows.js';
import { Tabs } from './tabs.js';
import { serverNow, setServerNow, setZone } from './time.js';

const kMessages = 1000; // of each logger
const kSeeded = 100; // variables
const kSeedRows = 120; // periods of the logger that it goes back
const kSeedLimit = 1000;

const listeners = new Map();
const views = new Map(); // what each open view wants
const state = {
  about: null,
  link: { up: true },
  loggers: null,
  listFault: '',
  variables: new Map(),
  samples: new Map(),
  messages: new Map(),
  histories: new Map()
};
const tabs = new Tabs(take, snapshot);

export const link = () => state.link;
export const loggers = () => state.loggers ?? [];
// Why the list of loggers is not complete; empty if it is.
export const listFault = () => state.listFault;
export const isKnown = () => state.loggers !== null;
export const logger = name => loggers().find(one => one.name === name);
export const isLive = logger => logger.kind === 'logger';
export const isWell = logger => logger.well && logger.up;
export const variables = name => state.variables.get(name);
export const sample = name => state.samples.get(name);
export const messages = name => [...(state.messages.get(name)?.values() ?? [])];
export const history = name => state.histories.get(name);
export const about = () => state.about;

// Calls `listener(data)` at each event of a type until the function that it returns is called.
export function on(type, listener) {
  if (!listeners.has(type)) listeners.set(type, new Set());
  listeners.get(type).add(listener);
  return () => listeners.get(type).delete(listener);
}

// `wants` has lists of loggers: `sample`, `message` and `log`. Null: the view is closed.
export function want(view, wants) {
  const before = JSON.stringify(union());
  if (wants) views.set(view, wants);
  else views.delete(view);
  if (JSON.stringify(union()) !== before) tabs.want(union());
}

function union() {
  const all = type => [...new Set([...views.values()].flatMap(wants => wants[type] ?? []))];
  return { sample: all('sample'), message: all('message'), log: all('log') };
}

// Throws if the server does not answer; it can be called again then.
export async function start() {
  startTabs();
  state.about = await get(address('about'));
  setZone(state.about.zone);
  setServerNow(state.about.now);
}

// At the same time as the first request: on a slow link each one takes long.
let isStarted = false;
function startTabs() {
  if (isStarted) return;
  isStarted = true;
  tabs.start(union());
  addEventListener('online', () => tabs.hurry());
  document.addEventListener('visibilitychange', () => {
    if (!document.hidden) tabs.hurry();
  });
}

const takers = {
  link: data => {
    state.link = data;
  },
  about: takeAbout,
  now: ({ now }) => setServerNow(now),
  loggers: takeLoggers,
  variables: takeVariables,
  sample: takeSample,
  message: takeMessage,
  dropped: takeDropped
};

function take(type, data) {
  takers[type]?.(data);
  for (const listener of listeners.get(type) ?? []) listener(data);
}

// A server of another version has another page, and perhaps another zone.
function takeAbout({ version, zone }) {
  if (state.about && (version !== state.about.version || zone !== state.about.zone)) location.reload();
}

// A logger that does not answer keeps its last facts in `last`.
function takeLoggers({ loggers, fault }) {
  const old = new Map((state.loggers ?? []).map(one => [one.name, one]));
  for (const one of loggers) {
    const before = old.get(one.name);
    if (!one.up && before) one.last = before.up ? before : before.last;
  }
  [state.loggers, state.listFault] = [loggers, fault ?? ''];
}

function takeVariables({ logger, variables }) {
  const isSame = JSON.stringify(variables) === JSON.stringify(state.variables.get(logger));
  state.variables.set(logger, variables);
  if (!isSame || !state.histories.has(logger)) state.histories.set(logger, new History(variables.length));
}

// Fills the history with what the logs have of the last minutes, so that the curves do not begin empty. With many
// variables this is left out: the answer would be large.
export async function seed(logger) {
  const names = state.variables.get(logger)?.map(one => one.name) ?? [];
  if (names.length === 0 || names.length > kSeeded) return;
  const newer = state.histories.get(logger);
  const from = Math.round(serverNow() - kSeedRows * Math.max(100, loggerPeriod(logger)));
  const { rows } = await get(loggerAddress(logger, 'rows', { from, vars: names, limit: kSeedLimit }));
  if (state.histories.get(logger) !== newer) return; // there are other variables now
  const history = new History(names.length);
  history.isSeeded = newer.isSeeded = true;
  for (const [time, ...values] of fullest(merged(rows)))
    if (time < (newer.oldest ?? Infinity)) history.add({ time, values });
  newer.visitFrom(0, (time, at) => history.add({ time, values: names.map((_, i) => at(i)) }));
  state.histories.set(logger, history);
}

const loggerPeriod = name => logger(name)?.period ?? 0;

// The newest sample comes again when the stream is opened again.
function takeSample(sample) {
  const old = state.samples.get(sample.logger);
  state.samples.set(sample.logger, sample);
  if (old?.number !== sample.number || old.time !== sample.time) state.histories.get(sample.logger)?.add(sample);
}

// A logger counts its messages from 1 again when it starts, so the time belongs to the key.
function takeMessage(message) {
  const { logger, number, time } = message;
  if (!state.messages.has(logger)) state.messages.set(logger, new Map());
  const kept = state.messages.get(logger);
  kept.set(number + ' ' + time, message);
  if (kept.size > kMessages) kept.delete(kept.keys().next().value);
}

// Messages that this browser was too slow for are shown as missing, in their place.
function takeDropped({ logger, messages }) {
  if (!messages) return;
  const time = [...(state.messages.get(logger)?.values() ?? [])].at(-1)?.time ?? serverNow();
  const words = `${plural(messages, 'message')} left out: too many came at once`;
  const rest = { severity: 'warning', function: '', link: '', name: '', text: words, place: '', words };
  takeMessage({ logger, number: -serverNow(), time, ...rest });
  for (const listener of listeners.get('message') ?? []) listener({ logger });
}

function snapshot() {
  const events = [
    ['now', { now: serverNow() }],
    ['link', state.link]
  ];
  if (state.loggers) events.push(['loggers', { loggers: state.loggers, fault: state.listFault }]);
  for (const [logger, variables] of state.variables) events.push(['variables', { logger, variables }]);
  for (const sample of state.samples.values()) events.push(['sample', sample]);
  for (const kept of state.messages.values()) for (const message of kept.values()) events.push(['message', message]);
  return events;
}
