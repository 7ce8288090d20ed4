// Values and messages as they are now.
import assert from 'node:assert/strict';
import { clock, open, parameters, ready, text, until } from './page.mjs';
import { kZone, table } from './plant.mjs';
import { at, count, rounds, test, testAlone } from './world.mjs';

const shown = () => ({
  time: document.querySelector('.hint').innerText.match(/at (.*)/)?.[1],
  values: [...document.querySelectorAll('.virtual .row data')].map(one => [one.textContent, Number(one.value)])
});

const kLeastDecimals = [3, 4, 0]; // of Temp, Heat and Items

test('the values on the screen are those of the log at the time on the screen', async () => {
  const { page } = await open(at('#/values?logger=kiln'));
  await ready(page, 'values');
  const seen = new Map();
  await until('samples', async () => {
    const { time, values } = await page.evaluate(shown);
    if (time) seen.set(time, values);
    return seen.size >= 5 * rounds;
  }, 20 * rounds);
  assert.match(await text(page.locator('.virtual .row').first()), /^Temp [\d.]+ °C$/);
  const logged = await until('all of them in the log', () => {
    const rows = new Map(table('feeds/kiln').rows.map(([time, ...values]) => [clock(time, kZone), values]));
    return [...seen.keys()].every(time => rows.has(time)) && rows;
  });
  for (const [time, values] of seen) {
    logged.get(time).forEach((value, i) => {
      const [words, exact] = values[i];
      const decimals = words.split('.')[1]?.length ?? 0;
      assert.equal(exact.toPrecision(7), value.toPrecision(7), time);
      assert.ok(Math.abs(Number(words) - value) <= 0.51 * 10 ** -decimals && decimals >= kLeastDecimals[i], `${words} is ${value}`);
      count('values on the screen');
    });
  }
});

// The search, how many variables it finds, and the first of them.
const kSearches = [['v3117', 1, 'V3117'], ['bar', 4, 'V0007'], ['node2 V200', 10, 'V2000'], ['nothing', 0, '']];

testAlone('a thousand variables: the search finds them, and the page stays quick and small', async () => {
  const { page } = await open(at('#/values?logger=big'));
  await ready(page, 'values');
  const rows = page.locator('.virtual .row');
  const hint = () => text(page.locator('.hint'));
  await until('a sample', async () => /^1\s000 variables at /.test(await hint()));
  const [longest, elements] = await page.evaluate(async () => {
    let longest = 0,
      elements = 0;
    const note = ({ duration }) => (longest = Math.max(longest, duration));
    new PerformanceObserver(list => list.getEntries().forEach(note)).observe({ type: 'longtask' });
    for (let y = 0; y < 48000; y += 600) {
      scrollTo(0, y);
      await new Promise(requestAnimationFrame);
      elements = Math.max(elements, document.querySelectorAll('*').length);
    }
    await new Promise(done => setTimeout(done, 300));
    return [longest, elements];
  });
  assert.ok(longest < 700, `a task of ${longest} ms`);
  assert.match(await text(rows.last()), /^V3249/);
  assert.ok(elements < 600, `${elements} elements`);
  for (const [words, found, first] of kSearches) {
    await page.getByLabel('Search').fill(words);
    await until(words, async () => (await hint()).startsWith(`${found} of 1 000 variables`));
    assert.equal(await rows.count(), found);
    if (found) assert.ok((await text(rows.first())).startsWith(first));
  }
  await until('the search in the address', () => parameters(page).get('search') === 'nothing');
});

// The filter: severity, place, words; and the messages that stay, of four and the line for those that are missing.
const kFilters = [
  ['notice', '', '', ['slowly', 'warm', 'does not answer', '7 messages left out', 'gone']],
  ['warning', '', '', ['warm', 'does not answer', '7 messages left out', 'gone']],
  ['error', '', '', ['does not answer', 'gone']],
  ['fatal', '', '', ['gone']],
  ['notice', 'Mixer', '', ['slowly', 'warm']],
  ['notice', '', 'PUMP answer', ['does not answer']],
  ['warning', 'Mixer', 'mixer', ['warm']],
  ['notice', '', 'cplclink', ['slowly', 'warm', 'does not answer', 'gone']],
  ['fatal', '', 'mixer', []]
];

test('messages: filter and search find what they should, and missing ones are shown in their place', async () => {
  const { page } = await open(at('#/messages?logger=loud'));
  const list = other => other.locator('.messages .text').allInnerTexts();
  const fits = (texts, words) => texts.length === words.length && words.every((one, i) => texts[i].includes(one));
  for (const [severity, place, search, words] of kFilters) {
    await page.getByLabel('Severity').selectOption(severity);
    await page.getByLabel('Search').fill(search);
    await until('the place', () => page.getByLabel('Place').selectOption(place, { timeout: 200 }).then(() => true, () => false));
    await until(`${severity} ${place} ${search}`, async () => fits(await list(page), words));
    await until('the count', async () => (await text(page.locator('.hint'))) === `${words.length} of 5 messages`);
    const filter = [severity === 'notice' ? '' : severity, place, search].join();
    const inAddress = () => ['severity', 'place', 'search'].map(name => parameters(page).get(name) ?? '').join();
    const hash = await until('the address', () => inAddress() === filter && page.url());
    if (!place || !search) continue;
    const other = await open(hash);
    await until('the same in another browser', async () => fits(await list(other.page), words));
  }
  assert.deepEqual(await page.locator('.messages .who').allInnerTexts(), [], 'no message fits');
  await page.getByLabel('Search').fill('');
  await page.getByLabel('Severity').selectOption('error');
  await until('places', async () => (await page.locator('.messages .who').allInnerTexts()).join() === 'Pump,Pump');
  await page.goto(at('#/messages'));
  await page.locator('.messages b').filter({ hasText: 'press' }).first().waitFor();
  assert.equal(await page.locator('.messages b').filter({ hasText: 'slowly' }).count(), 0, 'a message is not markup');
});
