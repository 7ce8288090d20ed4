// How good or bad something is, in one table for all views: what is wrong is red with a sign, what is in doubt is
// amber with a sign, and what is only worth knowing is plain. The names are classes in style.css, which has the colours.
import { el } from './dom.js';

const kSigns = { well: '✓', plain: '', warn: '!', bad: '✕' };

// The state of a message by its severity, the least severe first.
export const kSeverities = { notice: 'plain', warning: 'warn', error: 'bad', fatal: 'bad' };

// Words with the sign of their state, as children of an element. A screen reader leaves the sign out.
export function signed(state, ...words) {
  const sign = kSigns[state];
  return [sign && el('span', { class: 'sign ' + state, 'aria-hidden': 'true' }, sign + ' '), words];
}

// An element of a state, such as what says that a request failed.
export const stated = (state, ...words) => el('span', { class: state }, signed(state, ...words));
export const fault = words => stated('bad', words);
