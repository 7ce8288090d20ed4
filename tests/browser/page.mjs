// The browser of the tests, and what they read of a page.
import assert from 'node:assert/strict';
import { AsyncLocalStorage } from 'node:async_hooks';
import { setTimeout as pause } from 'node:timers/promises';
import { chromium } from 'playwright-core';

const browser = await chromium.launch({ executablePath: process.env.CHROMIUM, args: ['--disable-dev-shm-usage'] });
export const closeBrowser = () => browser.close();

// A test whose sessions end with it. Their consoles, which have violations of the Content-Security-Policy, too, have no
// errors and warnings, but for those that were opened with `mayFail`.
const sessions = new AsyncLocalStorage();
export const closing = run => () =>
  sessions.run([], async () => {
    try {
      await run();
      for (const { faults, mayFail } of sessions.getStore()) assert.deepEqual(mayFail ? [] : faults, []);
    } finally {
      await Promise.all(sessions.getStore().map(({ context }) => context.close()));
    }
  });

// A tab of a new session. `tab` opens another tab of the same window: the tabs before it are hidden then, and slow.
export async function open(address, { width = 1200, height = 900, mayFail = false, ...options } = {}) {
  const context = await browser.newContext({ viewport: { width, height }, timezoneId: 'America/New_York', ...options });
  context.setDefaultTimeout(60e3);
  const faults = [];
  sessions.getStore()?.push({ faults, mayFail, context });
  const tab = async to => {
    const page = await context.newPage();
    page.on('console', message => ['error', 'warning'].includes(message.type()) && faults.push(message.text()));
    page.on('pageerror', error => faults.push(error.stack));
    await page.goto(to);
    return page;
  };
  return { page: await tab(address), tab, context };
}

// Waits until a condition holds. Returns what it was at last; fails with `words` and this after `seconds`.
export async function until(words, condition, seconds = 60) {
  const end = Date.now() + seconds * 1000;
  for (;;) {
    const seen = await condition();
    if (seen) return seen;
    if (Date.now() > end) assert.fail(`${words}: not within ${seconds} s`);
    await pause(50);
  }
}

export const text = async locator => (await locator.innerText()).replace(/\s+/g, ' ').trim();

// A view is ready when its data has come.
const kReady = {
  overview: '.card dl div',
  values: '.virtual .row',
  chart: '.readings tbody td',
  files: '.logs tbody tr',
  messages: '.messages li'
};
export async function ready(page, view) {
  const there = page.locator(kReady[view]).first();
  await there.waitFor().catch(async () =>
    assert.fail(`${page.url()}, where ${view} should be, is not ready: ${await text(page.locator('body'))}`)
  );
  if (view === 'chart') await drawn(page);
}

// The answer of the logs for the newest range is in the picture.
export async function drawn(page) {
  await pause(200); // a chart asks when the range has settled
  await page.waitForFunction(() => !document.querySelector('.plot[aria-busy]'));
  await pause(60);
}

// The parameters of the address; it follows the view a moment later.
export const parameters = page => new URLSearchParams(new URL(page.url()).hash.split('?')[1]);
export const range = page => ['from', 'to'].map(name => Number(parameters(page).get(name)));

// The table under the chart: of each variable the texts of its cells by the head's words.
export const readings = page =>
  page.locator('.readings').evaluate(table =>
    Object.fromEntries(
      [...table.tBodies[0].rows].map(row => {
        const [name, now, a, b, difference] = [...row.cells].map(cell => cell.textContent.trim());
        return [name, { now, a, b, difference }];
      })
    )
  );

export const clock = (ms, timeZone) =>
  new Date(ms).toLocaleString('sv-SE', { timeZone }) + '.' + String(ms % 1000).padStart(3, '0');

// The roles and names of what can have the focus, as a screen reader gets them.
export async function controls(page, context) {
  const session = await context.newCDPSession(page);
  const { nodes } = await session.send('Accessibility.getFullAXTree');
  await session.detach();
  const isControl = node => !node.ignored && node.properties?.some(one => one.name === 'focusable' && one.value.value);
  const found = nodes.filter(node => isControl(node) && node.role.value !== 'RootWebArea');
  return found.map(node => [node.role.value, (node.name?.value ?? '').trim()]);
}
