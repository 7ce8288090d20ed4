// Logs as files.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { open, parameters, ready, text, until } from './page.mjs';
import { archive, path, vastra } from './plant.mjs';
import { at, count, test } from './world.mjs';

const logsIn = async page => Number((await text(page.locator('.hint'))).match(/^(\d+) logs?,/)?.[1] ?? 0);

async function download(page, link) {
  const [file] = await Promise.all([page.waitForEvent('download'), page.getByRole('link', { name: link }).click()]);
  return readFileSync(await file.path());
}

async function request(page, link) {
  const href = await page.getByRole('link', { name: link }).getAttribute('href');
  return (await page.request.get(new URL(href, page.url()).href)).body();
}

test('a download is the file of the disk, and its CSV what vastra convert prints', async () => {
  const end = archive.from + archive.rows * 1000;
  const { page } = await open(at(`#/files?logger=archive&from=${archive.from}&to=${end}`));
  await ready(page, 'files');
  assert.match(await text(page.locator('.hint')), /^6 logs, 21 600 rows, /);
  for (const [i, name] of archive.files.entries()) {
    const file = path(archive.folder, name);
    const take = i === 3 ? download : request; // the browser limits how many files it saves at once
    assert.ok((await take(page, `${name} as a file`)).equals(readFileSync(file)), name);
    assert.equal((await take(page, `${name} as CSV`)).toString(), vastra('convert', file).toString(), name);
    count('files as on the disk');
  }
  const rows = page.getByRole('row', { name: 'hour2' });
  assert.match(await text(rows), /02:00:00 \+02:00 02:59:59 \+02:00 3 600/);
});

test('a range has its logs and its rows, and the address holds it', async () => {
  const { page } = await open(at('#/files?logger=archive'));
  await page.getByLabel('From', { exact: true }).fill('2026-10-25T01:30');
  await page.getByLabel('To', { exact: true }).fill('2026-10-25T00:30');
  await page.getByRole('button', { name: 'Show', exact: true }).click();
  await page.getByText('The end is not after the beginning').waitFor();
  await page.getByLabel('To', { exact: true }).fill('2026-10-25T03:10');
  await page.getByRole('button', { name: 'Show', exact: true }).click();
  const [from, to] = [archive.from + 5400e3, archive.from + 4 * 3600e3 + 600e3];
  const status = await until('four logs', async () => {
    const words = await text(page.locator('.hint'));
    return words.startsWith('4 logs, 14 400 rows') && words;
  });
  const csv = (await download(page, 'All rows of this range')).toString();
  const iso = ms => new Date(ms).toISOString();
  assert.equal(csv, vastra('convert', archive.folder, '--from', iso(from), '--to', iso(to)).toString());
  await until('the address', () => Number(parameters(page).get('from')) === from && Number(parameters(page).get('to')) === to);
  const other = await open(page.url());
  await until('the same in another browser', async () => (await text(other.page.locator('.hint'))) === status);
});

test('a log that is closed comes by itself, what is open or has the focus stays, and nothing is asked in between', async () => {
  const { page, context } = await open(at('#/files?logger=kiln'));
  await ready(page, 'files');
  await until('three logs', async () => (await logsIn(page)) >= 3);
  const row = page.locator('.logs tbody tr').first();
  await row.getByRole('link', { name: 'as a file' }).focus();
  await page.evaluate(() => (window.seen = document.activeElement));
  const asked = [];
  context.on('request', request => request.url().includes('/api/') && asked.push(request.url()));
  const before = await logsIn(page);
  await until('three more', async () => (await logsIn(page)) >= before + 3);
  assert.ok(await page.evaluate(() => document.activeElement === window.seen), 'the focus is lost');
  assert.ok(asked.every(url => /\/logs\?/.test(url)), `what else is asked: ${asked}`);
  assert.ok(asked.length <= 2 * ((await logsIn(page)) - before), `${asked.length} requests`);
  await page.locator('.logs summary').first().click();
  const closed = await logsIn(page);
  await until('another log', async () => (await logsIn(page)) > closed);
  assert.equal(await page.locator('.logs tbody').isVisible(), false, 'what was closed is open again');
});
