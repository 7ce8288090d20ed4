// The bar above the plot.
import { loggerAddress } from './api.js';
import { el } from './dom.js';
import { link } from './router.js';
import { loggerChoice, more, rangeFields } from './widgets.js';

const kSpans = [
  ['Hour', 3600e3],
  ['Day', 86400e3],
  ['Week', 7 * 86400e3]
];
const kNarrow = 1200; // px
const kAxes = [
  ['unit', 'one for each unit'],
  ['each', 'one for each variable'],
  ['one', 'one for all']
];

export class Tools {
  #view;
  #logger;
  #spans = [];
  #follow;
  #axes;
  #csv = el('a', { class: 'button', download: '' }, 'CSV');
  #fields;

  // `acts`: choose, all, picture.
  constructor(logger, isLive, view, acts) {
    this.#view = view;
    this.#logger = logger;
    this.#fields = rangeFields((from, to) => view.show(from, to));
    this.#follow = el('button', { onclick: () => view.key('f'), hidden: !isLive }, 'Follow');
    this.#spans = kSpans.map(([name, span]) => [
      span,
      el('button', { onclick: () => view.follow(span), title: `The last ${name.toLowerCase()}` }, name)
    ]);
    this.#axes = el(
      'select',
      { onchange: () => view.setAxes(this.#axes.value) },
      kAxes.map(([value, words]) => el('option', { value }, words))
    );
    this.#axes.value = view.axes;
    this.element = el(
      'div',
      { class: 'tools' },
      loggerChoice(logger, name => {
        location.hash = link('chart', { logger: name });
      }),
      el('button', { class: 'primary', onclick: acts.choose }, 'Variables ...'),
      this.#ranges(acts.all),
      this.#moves(),
      this.#more(acts.picture)
    );
  }

  #ranges(all) {
    return group(
      'Range',
      this.#spans.map(([, button]) => button),
      el('button', { onclick: all }, 'All'),
      this.#follow
    );
  }

  #moves() {
    const view = this.#view;
    const button = (sign, words, act) => el('button', { 'aria-label': words, title: words, onclick: act }, sign);
    return group(
      'Zoom and move',
      button('◀', 'Earlier', () => view.pan(-view.span / 4)),
      button('−', 'Zoom out', () => view.zoom(1.5)),
      button('+', 'Zoom in', () => view.zoom(1 / 1.5)),
      button('▶', 'Later', () => view.pan(view.span / 4))
    );
  }

  #more(picture) {
    return more(
      'More',
      kNarrow,
      this.#fields.element,
      el('label', {}, 'Axes ', this.#axes),
      this.#csv,
      el('button', { onclick: picture }, 'Picture'),
      el('button', { onclick: () => this.#view.clear() }, 'Clear cursors')
    );
  }

  update(names) {
    const [from, to] = this.#view.range.map(Math.round);
    this.#follow.setAttribute('aria-pressed', this.#view.isFollowing);
    for (const [span, button] of this.#spans)
      button.setAttribute('aria-pressed', this.#view.isAtEnd && Math.abs(this.#view.span - span) < 1);
    this.#csv.href = loggerAddress(this.#logger, 'rows.csv', { from, to, vars: names });
    this.#fields.set(from, to);
  }
}

function group(label, ...buttons) {
  return el('div', { class: 'group', role: 'group', 'aria-label': label }, buttons.flat());
}
