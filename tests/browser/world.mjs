// The plant that most tests look at, and its server. The other tests of the page start their own.
import { closing } from './page.mjs';
import { archive, fakeFeed, log, makeArchive, path, serve, table } from './plant.mjs';

const kNow = [Math.floor(Date.now() / 1000), 0, 0, 0];
const said = (number, severity, name, text) => ({
  type: 'message', number, time: kNow, severity, function: 'read', link: 'CPlcLink', name, text
});

makeArchive();
for (const name of ['kiln', 'press', 'big']) log('feeds', name);
// Of its messages seven never come.
fakeFeed('feeds', 'loud', [
  { type: 'hello', feed: 1, name: 'loud', started: kNow, period: 1000, variables: ['x'], stages: {} },
  { type: 'state', state: 'running', since: kNow, reason: '', nodes: [], writes: [], folders: [], unsaved: [] },
  said(1, 'notice', 'Mixer', 'The mixer turns <b>slowly</b>.'),
  said(2, 'warning', 'Mixer', 'The mixer is warm.'),
  said(3, 'error', 'Pump', 'The pump does not answer.'),
  { type: 'kept' },
  { type: 'dropped', messages: 7 },
  said(11, 'fatal', 'Pump', 'The pump is gone.')
]);
export const server = await serve('feeds', { args: ['--folder', 'archive=' + path(archive.folder)] });
export const at = hash => server.address + '/' + hash;
export const archiveRows = table(archive.folder).rows;
export const rounds = Number(process.env.ROUNDS ?? 1); // of what the long form repeats

// The cases of all files. They run side by side, except those that measure.
export const cases = { alone: [], beside: [] };
export const test = (words, run) => cases.beside.push([words, closing(run)]);
export const testAlone = (words, run) => cases.alone.push([words, closing(run)]);

const claims = new Map();

// Adds to a figure of the long form.
export function count(words, number = 1) {
  claims.set(words, (claims.get(words) ?? 0) + number);
}
export const figures = () => [...claims].map(([words, number]) => `${number} ${words}`).join(', ');
