// Each page on a phone, a tablet and a wide screen, light and dark, and the names of its controls.
import assert from 'node:assert/strict';
import { controls, open, ready } from './page.mjs';
import { addUser, archive, serve } from './plant.mjs';
import { at, count, server, test } from './world.mjs';

const kSizes = [[360, 740], [820, 1180], [1600, 900]];
const kArchive = `logger=archive&from=${archive.from}&to=${archive.from + archive.rows * 1000}`;
const kPages = [
  ['overview', '#/'],
  ['values', '#/values?logger=kiln'],
  ['chart', '#/chart?logger=kiln&vars=Temp&vars=Items&last=60'],
  ['chart', `#/chart?${kArchive}&vars=Level&vars=Peak&vars=Row&axes=each&a=${archive.from + 5e6}&b=${archive.from + 9e6}`],
  ['files', '#/files?' + kArchive],
  ['messages', '#/messages']
];

// How many pixels a page, or the list of pages in its head, is too wide; and texts that are too faint.
function look() {
  const nav = document.querySelector('nav') ?? document.body;
  const over = Math.max(document.documentElement.scrollWidth - innerWidth, nav.scrollWidth - nav.clientWidth);
  const numbers = colour => (colour.match(/[\d.]+/g) ?? []).map(Number);
  const light = colour => {
    const [r, g, b] = numbers(colour).map(part => (part /= 255) <= 0.03928 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4);
    return 0.2126 * r + 0.7152 * g + 0.0722 * b + 0.05;
  };
  const ground = element => {
    const colour = getComputedStyle(element).backgroundColor;
    return numbers(colour)[3] === 0 && element.parentElement ? ground(element.parentElement) : colour;
  };
  const contrast = element => {
    const [a, b] = [light(getComputedStyle(element).color), light(ground(element))];
    return Math.max(a, b) / Math.min(a, b);
  };
  const hasText = element => [...element.childNodes].some(node => node.nodeType === 3 && node.data.trim());
  const shown = [...document.body.querySelectorAll('*')].filter(element => element.offsetParent && hasText(element));
  const faint = shown.filter(element => contrast(element) < 4.4).map(element => element.outerHTML.slice(0, 100));
  return { over, faint, isDark: light(getComputedStyle(document.body).backgroundColor) < 0.2 };
}

async function check(session, name, width) {
  for (const colorScheme of ['light', 'dark']) {
    await session.page.emulateMedia({ colorScheme });
    const seen = await session.page.evaluate(look);
    assert.deepEqual(seen, { over: 0, faint: [], isDark: colorScheme === 'dark' }, `${name}, ${width} px, ${colorScheme}`);
    count('looks at a page');
  }
  for (const [role, words] of await controls(session.page, session.context))
    assert.ok(words || role === 'main', `${name}: a control has no name: ${role}`);
}

for (const [width, height] of kSizes)
  test(`no page is too wide or says an error at ${width} px, and each control has a name`, async () => {
    const session = await open(server.address, { width, height });
    for (const [view, hash] of kPages) {
      await session.page.goto(at(hash));
      await ready(session.page, view);
      await check(session, hash, width);
      if (view === 'chart' && width < 1200) {
        await session.page.getByText('More').click();
        await check(session, hash + ' with More', width);
      }
    }
    await session.page.getByRole('link', { name: 'Chart' }).first().click();
    await session.page.getByRole('button', { name: 'Variables' }).click();
    await check(session, 'choice of variables', width);
  });

test('the page for logging in fits, has names, and says what is wrong', async () => {
  addUser('users', 'anna', 'secret');
  const { address } = await serve('none', { args: ['--users', 'users'] });
  for (const [width, height] of kSizes) {
    const session = await open(address, { width, height });
    await check(session, 'login', width);
  }
  const { page } = await open(address);
  await page.getByLabel('Name').fill('anna');
  await page.getByLabel('Password').fill('wrong');
  await page.keyboard.press('Enter');
  await page.getByText('The name or the password is wrong.').waitFor();
});
