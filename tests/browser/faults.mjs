// A logger, a server or a session that ends, and comes back.
import assert from 'node:assert/strict';
import { open, parameters, range, ready, text, until } from './page.mjs';
import { addUser, archive, kill, log, path, serve, table } from './plant.mjs';
import { count, rounds, test } from './world.mjs';

const card = page => page.getByRole('article', { name: 'oven' });
const isOld = page => card(page).locator('dl').evaluate(list => list.classList.contains('old'));
const words = async locator => ((await locator.isVisible()) ? text(locator).catch(() => '') : '');
const newest = page => page.locator('.hint').innerText();
const isRed = locator => locator.evaluate(one => one.classList.contains('bad'));

test('a logger that is killed is red and keeps its last figures, and is well when it is back', async () => {
  const server = await serve('some');
  let logger = log('some', 'oven');
  const { page } = await open(server.address);
  const { page: values } = await open(server.address + '/#/values?logger=oven');
  for (let i = 0; i < rounds; i++) {
    await until('it runs', async () => /✓ running/.test(await words(card(page))));
    await until('it is well', async () => !(await isRed(card(page))) && !(await isOld(page)));
    await until('it is well on the values, too', () => values.locator('.callout').isHidden());
    await until('rows', async () => /Rows [1-9]/.test(await words(card(page))));
    await kill(logger);
    await until('the card', async () => /✕ does not answer/.test(await words(card(page))));
    assert.ok((await isRed(card(page))) && (await isOld(page)));
    assert.match(await words(card(page)), /Rows [1-9]/);
    assert.match(await words(page.locator('.summary')), /1 logger of 1 not well: oven\.$/);
    await until('the values', async () => /oven does not answer/.test(await words(values.locator('.callout'))));
    const last = await newest(values);
    logger = log('some', 'oven');
    await until('new values', async () => (await newest(values)) !== last && values.locator('.callout').isHidden());
    count('kills of a logger');
  }
});

test('a server that is killed is told, and all goes on by itself when it is back', async () => {
  let server = await serve('more');
  log('more', 'oven');
  const mayFail = true; // requests fail while the server is away
  const { page } = await open(server.address + '/#/values?logger=oven', { mayFail });
  const { page: chart } = await open(server.address + '/#/chart?logger=oven&vars=Items&last=20', { mayFail });
  const pages = [page, chart];
  for (let i = 0; i < rounds; i++) {
    await until('samples', async () => / at /.test(await newest(page)));
    await ready(chart, 'chart');
    await kill(server.process);
    for (const one of pages) {
      const banner = one.locator('#link');
      await until('the banner', async () => /No connection to the server since \d\d:\d\d:\d\d\. /.test(await words(banner)));
      assert.ok(await one.evaluate(() => document.body.classList.contains('lost')));
    }
    const last = await newest(page);
    assert.match(last, / at /);
    server = await serve('more', { port: server.port });
    for (const one of pages) await until('no banner', () => one.locator('#link').isHidden());
    await until('new samples', async () => (await newest(page)) !== last);
    assert.ok(!(await page.evaluate(() => document.body.classList.contains('lost'))));
    const before = await words(chart.locator('.readings tbody'));
    await until('the chart goes on', async () => (await words(chart.locator('.readings tbody'))) !== before);
    count('kills of the server');
  }
});

test('a session that has ended leads to the page for logging in, and back to the same view', async () => {
  addUser('guests', 'anna', 'secret');
  const server = await serve('none', { args: ['--users', 'guests', '--folder', 'archive=' + path(archive.folder)] });
  const [from, to] = [archive.from + 600e3, archive.from + 1200e3];
  const { page, tab } = await open(`${server.address}/#/chart?logger=archive&vars=Row&from=${from}&to=${to}`, { mayFail: true });
  const logIn = async password => {
    await page.getByLabel('Name').fill('anna');
    await page.getByLabel('Password').fill(password);
    await page.getByRole('button', { name: 'Log in' }).click();
    await ready(page, 'chart');
    assert.deepEqual([...range(page), parameters(page).get('vars')], [from, to, 'Row']);
  };
  await logIn('secret');
  await (await tab(server.address)).getByRole('article').waitFor(); // the cookie is the browser's
  addUser('guests', 'anna', 'other'); // ends the sessions
  await page.waitForURL('**/login**', { timeout: 60e3 });
  await logIn('other');
  await page.getByRole('button', { name: 'Log out' }).click();
  await page.waitForURL('**/login**');
});

test('all tabs share one stream, and go on when the one that has it is closed', async () => {
  const server = await serve('tabs');
  log('tabs', 'oven');
  const { page, tab, context } = await open(server.address + '/#/values?logger=oven');
  const streams = [];
  const end = request => streams.splice(streams.indexOf(request), 1);
  await until('samples', async () => / at /.test(await newest(page)));
  context.on('request', request => request.url().includes('/stream') && streams.push(request));
  context.on('requestfailed', request => streams.includes(request) && end(request));
  const other = await tab(server.address + '/#/values?logger=oven');
  await until('samples in both tabs', async () => / at /.test(await newest(other)));
  assert.ok(streams.length <= 1, `${streams.length} further streams`);
  await page.close();
  const last = await newest(other);
  await until('samples when the other tab is closed', async () => (await newest(other)) !== last);
});
