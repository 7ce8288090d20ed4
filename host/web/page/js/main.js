// Starts the page: the frame around the views, and the view that the address names.
import { faultWords, logOut } from './api.js';
import { el, fill, refill, setProperty, setText } from './dom.js';
import * as model from './model.js';
import { link, where } from './router.js';
import { fault, stated } from './states.js';
import { clockTime, serverNow, zone } from './time.js';

// The title of each page, and its module, which is loaded when it is shown first.
const kPages = {
  overview: ['Overview', () => import('./overview.js')],
  values: ['Values', () => import('./values.js')],
  chart: ['Chart', () => import('./chart.js')],
  files: ['Files', () => import('./files.js')],
  messages: ['Messages', () => import('./messages.js')]
};
const kNarrow = 600; // px
const moduleOf = page => (kPages[page] ?? kPages.overview)[1]();
const main = document.querySelector('main');
history.scrollRestoration = 'manual';
let close = null;
let shown = null;
let address = ''; // that of the view
const places = new Map(); // address to how far its view was scrolled
let turn = 0; // counts the views: one that comes late is not shown

async function show() {
  const mine = ++turn;
  const { page, parameters } = where();
  const [title] = kPages[page] ?? kPages.overview;
  places.set(address, scrollY);
  close?.();
  close = null;
  fill(main, el('h1', { tabindex: -1 }, title));
  if (shown !== null && shown !== page) main.querySelector('h1').focus();
  shown = page;
  showPages();
  showHealth();
  const view = await moduleOf(page).catch(() => null);
  if (mine !== turn) return;
  if (!view)
    return main.append(el('p', { role: 'alert' }, fault('The page cannot be loaded from the server. Load it again.')));
  close = view.show(main, parameters);
  scrollTo(0, places.get(address) ?? 0);
}

// The other pages are loaded while nothing else is done: so they are there at once, also when the server is not.
const loadAll = () => Promise.allSettled(Object.keys(kPages).map(moduleOf));

const visited = {}; // page to the logger and the address of its newest view
const pageLinks = new Map(Object.entries(kPages).map(([name, [title]]) => [name, el('a', {}, title)]));
document.querySelector('nav').append(...pageLinks.values());

// The links keep the logger that is looked at, and lead back to the view that a page had of it.
function showPages() {
  const { page, parameters } = where();
  const logger = parameters.get('logger');
  visited[page] = { logger, hash: location.hash };
  address = location.hash;
  for (const [name, element] of pageLinks) {
    const isOld = name !== page && visited[name]?.logger === logger;
    element.href = isOld ? visited[name].hash : link(name, { logger });
    setProperty(element, 'aria-current', name === page ? 'page' : null);
  }
}

// All pages and the tab say that something is wrong; the overview says what.
function showHealth() {
  const isBad = !model.link().up || model.listFault() !== '' || !model.loggers().every(model.isWell);
  const [title] = kPages[shown] ?? kPages.overview;
  document.title = `${isBad ? '✕ ' : ''}${title} · Vastra`;
  const [overview] = kPages.overview;
  refill(pageLinks.get('overview'), isBad ? [stated('bad', ''), overview, hidden(', something is wrong')] : overview);
}

const hidden = words => el('span', { class: 'hidden' }, words);

// The fragment is the view, so the link to the content cannot be one.
document.querySelector('.skip').addEventListener('click', event => {
  event.preventDefault();
  main.focus();
});

let lost = null; // the newest state of the link that is not up, and when it came
const lostSince = el('strong');
const retry = el('span', { 'aria-hidden': 'true' }); // not read out: a screen reader says the loss once
fill(document.querySelector('#link'), stated('bad', lostSince, retry));

function showLink(state) {
  document.body.classList.toggle('lost', !state.up);
  document.querySelector('#link').hidden = state.up;
  lost = state.up ? null : { ...state, until: performance.now() + state.retry * 1000 };
  countDown();
}

function countDown() {
  if (!lost) return;
  setText(lostSince, `No connection to the server since ${clockTime(lost.since)}. `);
  const seconds = Math.max(0, Math.ceil((lost.until - performance.now()) / 1000));
  setText(retry, seconds ? `What is shown is of then. Next attempt in ${seconds} s.` : 'Connecting ...');
}

function showAbout() {
  const { version, user } = model.about();
  const time = el('span');
  fill(document.querySelector('#about'), `Vastra ${version} · `, time);
  const tick = () => setText(time, `${clockTime(serverNow())}, ${zone()}`);
  tick();
  setInterval(() => {
    tick();
    countDown();
  }, 1000);
  if (user !== null) showAccount(user);
}

// On a small screen the head has space for the pages only.
function showAccount(user) {
  const account = document.querySelector('.account');
  fill(account, el('span', {}, user), el('button', { onclick: logOut }, 'Log out'));
  if (innerWidth <= kNarrow) document.querySelector('#about').append(account);
}

async function start() {
  moduleOf(where().page).catch(() => {}); // at the same time as what the server says
  try {
    await model.start();
  } catch (error) {
    fill(main, el('h1', {}, 'Vastra'), el('p', { role: 'alert' }, fault(faultWords(error) + '. Trying again.')));
    return setTimeout(start, 3000);
  }
  showAbout();
  model.on('link', showLink);
  model.on('link', showHealth);
  model.on('loggers', showHealth);
  showLink(model.link());
  addEventListener('hashchange', show);
  addEventListener('remembered', showPages);
  await show();
  setTimeout(loadAll, 2000);
}

start();
