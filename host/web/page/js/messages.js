// The messages of the loggers as they come, the newest at the end.
import { arrange, el, fill, paced, setText, settled } from './dom.js';
import { plural } from './format.js';
import * as model from './model.js';
import { link, remember } from './router.js';
import { searchFor } from './search.js';
import { kSeverities, signed } from './states.js';
import { dateTime } from './time.js';
import { loggerChoice, loggerNotice, openWhenKnown } from './widgets.js';

const kNames = Object.keys(kSeverities); // the least severe first
const kShown = 1000;

export const show = (main, parameters) => openWhenKnown(() => new MessagesPage(main, parameters));

class MessagesPage {
  #logger;
  #severity = el('select');
  #place = el('select');
  #search = el('input', { type: 'search', placeholder: 'Words of a message' });
  #follow = el('input', { type: 'checkbox', checked: true });
  #count = el('p', { class: 'hint' }); // not read out: messages come all the time
  #list = el('ol', { class: 'messages', tabindex: 0, 'aria-label': 'Messages' });
  #made = new Map(); // a message to its row
  #ends = [];

  constructor(main, parameters) {
    this.#logger = parameters.get('logger') ?? '';
    this.#makeFields(parameters);
    this.#make(main);
    const paint = paced(() => this.#paint());
    const change = settled(() => this.#paint(), 120);
    for (const field of [this.#severity, this.#place, this.#search]) field.addEventListener('input', change);
    this.#follow.addEventListener('change', () => this.#scroll());
    this.#list.addEventListener('scroll', () => this.#notice());
    const want = () => model.want(this, { message: this.#loggers() });
    this.#ends.push(paint.end, change.end, model.on('message', paint), model.on('loggers', want), () =>
      model.want(this, null)
    );
    want();
    this.#paint();
  }

  end() {
    for (const end of this.#ends) end();
  }

  #loggers() {
    return this.#logger
      ? [this.#logger]
      : model
          .loggers()
          .filter(model.isLive)
          .map(one => one.name);
  }

  #makeFields(parameters) {
    fill(
      this.#severity,
      kNames.map((name, i) => el('option', { value: name }, i === 0 ? 'all' : i === 3 ? name : name + ' and worse'))
    );
    this.#severity.value = kNames.includes(parameters.get('severity')) ? parameters.get('severity') : 'notice';
    this.#search.value = parameters.get('search') ?? '';
    this.#offerPlaces([], parameters.get('place') ?? '');
  }

  #make(main) {
    const notice = loggerNotice(this.#logger, model.isLive);
    this.#ends.push(notice.end);
    const choice = loggerChoice(
      this.#logger,
      name => {
        location.hash = link('messages', { logger: name });
      },
      { all: 'all', fits: model.isLive }
    );
    main.append(
      el(
        'div',
        { class: 'tools' },
        choice,
        el('label', {}, 'Severity ', this.#severity),
        el('label', {}, 'Place ', this.#place),
        el('label', {}, 'Search ', this.#search),
        el('label', { class: 'check' }, this.#follow, ' Follow')
      ),
      notice.element,
      this.#count,
      this.#list
    );
  }

  #paint() {
    const all = this.#loggers()
      .flatMap(model.messages)
      .sort((a, b) => a.time - b.time);
    this.#offerPlaces(all, this.#place.value);
    const found = all.filter(this.#filter()).slice(-kShown);
    setText(this.#count, all.length ? `${found.length} of ${plural(all.length, 'message')}` : 'There is no message.');
    this.#showRows(found);
    remember('messages', {
      logger: this.#logger,
      place: this.#place.value,
      search: this.#search.value,
      severity: this.#severity.value === 'notice' ? null : this.#severity.value
    });
  }

  #filter() {
    const least = kNames.indexOf(this.#severity.value),
      chosen = this.#place.value;
    const fits = searchFor(this.#search.value);
    return message => {
      if (kNames.indexOf(message.severity) < least || (chosen && message.place !== chosen)) return false;
      const { place, name, function: what, link: kind } = message;
      return fits([place, name, what, kind, wordsOf(message)].join(' '));
    };
  }

  // The nodes and parts of configurations that have messages, and the one that is chosen.
  #offerPlaces(all, chosen) {
    const names = [...new Set([...all.map(message => message.place), chosen])].filter(Boolean).sort();
    if (this.#place.options.length !== names.length + 1)
      fill(
        this.#place,
        el('option', { value: '' }, 'all'),
        names.map(name => el('option', { value: name }, name))
      );
    this.#place.value = chosen;
  }

  // A row that is there stays: what is marked or read stays, and only new ones are made.
  #showRows(found) {
    const rows = found.map(message => this.#made.get(message) ?? this.#makeRow(message));
    this.#made = new Map(found.map((message, i) => [message, rows[i]]));
    arrange(this.#list, rows);
    this.#scroll();
  }

  #makeRow(message) {
    const { time, severity, function: what, link: kind, name, place, logger } = message;
    const source = [kind, name, what].filter(Boolean).join(', '); // for the maker of a driver
    return el(
      'li',
      { class: kSeverities[severity] },
      el('span', { class: 'when' }, dateTime(time)),
      el('span', { class: 'severity' }, signed(kSeverities[severity], severity)),
      el(
        'span',
        { class: 'who', title: source },
        !this.#logger && el('b', {}, logger + ' '),
        place
      ),
      el('span', { class: 'text' }, wordsOf(message))
    );
  }

  #scroll() {
    if (this.#follow.checked) this.#list.scrollTop = this.#list.scrollHeight;
  }

  // Scrolling up is reading: the list stays where it is until its end is reached again.
  #notice() {
    const { scrollTop, clientHeight, scrollHeight } = this.#list;
    this.#follow.checked = scrollTop + clientHeight > scrollHeight - 30;
  }
}

// `place` and `words` are what the text of the link says, in parts for people.
const wordsOf = ({ words, text }) => words ?? text;
