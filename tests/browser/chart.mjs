// The chart: its values, its picture, and all that moves it.
import assert from 'node:assert/strict';
import { setTimeout as pause } from 'node:timers/promises';
import { drawn, open, parameters, range, readings, ready, text, until } from './page.mjs';
import { archive, table } from './plant.mjs';
import { archiveRows, at, count, rounds, test } from './world.mjs';

const kEnd = archive.from + archive.rows * 1000;
const chart = (logger, vars, more) => at(`#/chart?logger=${logger}&${vars.map(name => 'vars=' + name).join('&')}&${more}`);
const chance = number => Math.floor(Math.random() * number);
const near = (seen, expected, reach, words) =>
  seen.forEach((one, i) => assert.ok(Math.abs(one - expected[i]) <= reach, `${words}: ${seen}, not ${expected} (${reach})`));
const plotBox = page => page.locator('.plot .u-over').boundingBox();

// Values of a cell: the mean, the least and the greatest.
function cell(words) {
  const [, mean, least, greatest] = words.match(/^(\S+)(?: °C)?(?: \((\S+) … (\S+)\))?$/) ?? assert.fail(words);
  return [mean, least ?? mean, greatest ?? mean].map(Number);
}

// Where the rows themselves are shown, a cursor has those of its row, to the last digit.
async function checkCursors(logger, names, rows) {
  const { page } = await open(at('#/'));
  for (let round = 0; round < 4 * rounds; round++) {
    const i = chance(rows.length);
    const [a, b] = [rows[i], rows[(i + 1 + chance(20)) % rows.length]];
    const [from, to] = [a[0] - 3e3 - chance(5e3), a[0] + 3e3 + chance(5e3)];
    await page.goto(chart(logger, names, `from=${from}&to=${to}&a=${a[0]}&b=${b[0]}`));
    await ready(page, 'chart');
    const cells = await readings(page);
    names.forEach((name, k) => {
      assert.equal(cell(cells[name].a)[0], a[k + 1], `${name} at ${a[0]}`);
      if (b[0] >= from && b[0] < to) {
        const difference = b[k + 1] - a[k + 1];
        assert.equal(cell(cells[name].b)[0], b[k + 1], `${name} at ${b[0]}`);
        near([cell(cells[name].difference)[0]], [difference], Math.abs(difference) * 1e-6, `${name}, B - A`);
      }
      count('values at cursors');
    });
    const { x, width, y } = await plotBox(page);
    await page.mouse.move(x + (width * (a[0] - from)) / (to - from), y + 50);
    const close = rows.filter(row => Math.abs(row[0] - a[0]) <= (2 * (to - from)) / width).map(row => row[1]);
    await until('the value at the pointer', async () => close.includes(cell((await readings(page))[names[0]].now)[0]));
  }
}

test('a cursor has the values of its row in a folder of logs', () =>
  checkCursors('archive', ['Level', 'Peak', 'Row'], archiveRows));

test('a cursor has the values of its row in a logger that runs', async () => {
  const { rows } = await until('rows', () => (table('feeds/kiln').rows.length > 30 ? table('feeds/kiln') : null));
  await checkCursors('kiln', ['Temp', 'Heat', 'Items'], rows.slice(0, -5));
});

test('a part of many rows has their mean, least and greatest, and no peak is lost in the picture', async () => {
  const peakAt = archive.from + archive.peak * 1000;
  const { page } = await open(at('#/'), { mayFail: true }); // hasCurve reads a canvas, which Chromium warns of
  for (let i = 0; i < 3 * rounds; i++) {
    const mark = archiveRows[chance(archiveRows.length)];
    await page.goto(chart('archive', ['Peak', 'Level', 'Row'], `axes=each&from=${archive.from}&to=${kEnd}&a=${mark[0]}`));
    await ready(page, 'chart');
    const cells = await readings(page);
    const [, first, last] = cell(cells.Row.a);
    near([(first + last) / 2], [mark[3]], 60, 'the part of the cursor');
    const level = archiveRows.slice(first, last + 1).map(row => row[1]);
    const mean = level.reduce((sum, value) => sum + value, 0) / level.length;
    const expected = [mean, Math.min(...level), Math.max(...level)];
    near(cell(cells.Level.a), expected, 1e-5, `rows ${first} to ${last}`);
    count('means, minima and maxima', 3);
    // The colour of the peak's curve is in the upper part of the plot, at its time.
    const { x, width, y, height } = await plotBox(page);
    const spot = [x + (width * (peakAt - archive.from)) / (kEnd - archive.from), y + height * 0.2];
    assert.ok(await page.evaluate(hasCurve, spot), 'the peak is not in the picture');
    assert.ok(!(await page.evaluate(hasCurve, [spot[0] + 40, spot[1]])), 'a peak where there is none');
  }
});

// Whether the first curve's colour is at a place of the window, or a few pixels beside it.
function hasCurve([x, y]) {
  const canvas = document.querySelector('.plot canvas');
  const place = canvas.getBoundingClientRect();
  const colour = getComputedStyle(canvas).getPropertyValue('--curve1');
  const wanted = colour.match(/[\da-f]{2}/g).map(part => parseInt(part, 16));
  const { data } = canvas.getContext('2d').getImageData(x - place.left - 3, y - place.top, 7, 1);
  for (let i = 0; i < data.length; i += 4)
    if (data[i + 3] > 100 && wanted.every((part, k) => Math.abs(part - data[i + k]) < 60)) return true;
  return false;
}

// What moves the chart: words, what is done, and the range after it by that before it.
const zoomed =
  (factor, part = 0.5) =>
  (from, to) => [from + (to - from) * part * (1 - factor), to - (to - from) * (1 - part) * (1 - factor)];
const moved = part => (from, to) => [from + (to - from) * part, to + (to - from) * part];
const key = name => page => page.locator('.plot').press(name);
const button = name => page => page.getByRole('button', { name, exact: true }).click();
const drag = (begin, end, { shift = false, button = 'left' } = {}) => async (page, { x, y, width }) => {
  if (shift) await page.keyboard.down('Shift');
  await page.mouse.move(x + width * begin, y + 90);
  await page.mouse.down({ button });
  await page.mouse.move(x + width * end, y + 90, { steps: 4 });
  await page.mouse.up({ button });
  if (shift) await page.keyboard.up('Shift');
};
const wheel = (part, dx, dy) => async (page, { x, y, width }) => {
  await page.mouse.move(x + width * part, y + 90);
  await page.mouse.wheel(dx * width, dy);
};
async function typeRange(page) {
  await page.getByLabel('From', { exact: true }).fill('2026-10-25T00:30');
  await page.getByLabel('To', { exact: true }).fill('2026-10-25T03:10');
  await page.getByRole('button', { name: 'Show', exact: true }).click();
}
const kMoves = [
  ['+', key('+'), zoomed(1 / 1.5)],
  ['Arrow Left', key('ArrowLeft'), moved(-0.1)],
  ['Arrow Right', key('ArrowRight'), moved(0.1)],
  ['Page Up', key('PageUp'), moved(-1)],
  ['Page Down', key('PageDown'), moved(1)],
  ['-', key('-'), zoomed(1.5)],
  ['Earlier', button('Earlier'), moved(-0.25)],
  ['Zoom out', button('Zoom out'), zoomed(1.5)],
  ['Zoom in', button('Zoom in'), zoomed(1 / 1.5)],
  ['Later', button('Later'), moved(0.25)],
  ['wheel up', wheel(0.25, 0, -100), zoomed(1 / 1.2, 0.25)],
  ['wheel down', wheel(0.75, 0, 100), zoomed(1.2, 0.75)],
  ['wheel sideways', wheel(0.5, 0.1, 0), moved(0.1)],
  ['drag', drag(0.2, 0.6), (from, to) => [from + (to - from) * 0.2, from + (to - from) * 0.6]],
  ['drag with Shift', drag(0.5, 0.3, { shift: true }), moved(0.2)],
  ['drag with the middle button', drag(0.3, 0.5, { button: 'middle' }), moved(-0.2)],
  ['fields', typeRange, () => [archive.from + 1800e3, archive.from + 4 * 3600e3 + 600e3]],
  ['All', button('All'), () => [archive.from, archiveRows.at(-1)[0]]]
];

test('zoom, moves and ranges do what they say, and the address holds the view', async () => {
  const begin = `from=${archive.from + 3600e3}&to=${archive.from + 3 * 3600e3}`;
  const { page } = await open(chart('archive', ['Level', 'Row'], begin), { width: 1300 });
  await ready(page, 'chart');
  const { page: fresh } = await open('about:blank', { width: 1300 });
  for (let i = 0; i < kMoves.length * rounds; i++) {
    const [words, act, expected] = kMoves[i % kMoves.length];
    const before = range(page);
    const box = await plotBox(page);
    await act(page, box);
    await drawn(page);
    await until(`${words}: the address`, () => range(page).some((time, k) => time !== before[k]));
    near(range(page), expected(...before), ((before[1] - before[0]) * 3) / box.width + 1, words);
    if (i % 6 === 0) await checkSame(page, fresh, words);
    count('zooms and moves');
  }
  await page.getByLabel('Axes').selectOption('each');
  const { x, y, width } = await plotBox(page);
  const [from, to] = range(page);
  for (const part of [0.3, 0.6]) await page.mouse.click(x + width * part, y + 50);
  await until('cursors in the address', () => parameters(page).has('b') && parameters(page).get('axes') === 'each');
  const cursors = ['a', 'b'].map(name => Number(parameters(page).get(name)));
  near(cursors, [0.3, 0.6].map(part => from + (to - from) * part), ((to - from) * 2) / width, 'cursors');
  await checkSame(page, fresh, 'cursors');
  await button('Clear cursors')(page);
  await until('no cursors', () => !parameters(page).has('a'));
});

// The address shows the same in another browser.
async function checkSame(page, other, words) {
  await page.mouse.move(0, 0);
  await other.goto(page.url());
  await ready(other, 'chart');
  assert.equal(other.url(), page.url(), words);
  const seen = [await readings(page), await readings(other)];
  assert.deepEqual(seen[1], seen[0], words);
  for (const name of ['From', 'To'])
    assert.equal(await other.getByLabel(name, { exact: true }).inputValue(), await page.getByLabel(name, { exact: true }).inputValue(), words);
  count('views by their address');
}

test('times are those of the server, and the hour that is there twice has its offset', async () => {
  const twice = archive.from + 2 * 3600e3;
  const { page } = await open(chart('archive', ['Row'], `from=${archive.from}&to=${kEnd}&a=${twice}&b=${twice + 3600e3}`));
  await ready(page, 'chart');
  const head = await text(page.locator('.readings thead'));
  assert.match(head, /A 2026-10-25 02:00:00.000 \+02:00 B 2026-10-25 02:00:00.000 \+01:00 B − A 1 h /);
  assert.equal(await page.getByLabel('From', { exact: true }).inputValue(), '2026-10-25T00:00');
});

// Keys of a chart that follows: the parameters that must be in the address then, and those that must not.
const kKeys = [
  ['h', { last: '3600' }, []],
  ['d', { last: '86400' }, []],
  ['w', { last: '604800' }, []],
  ['f', {}, ['last']],
  ['End', { last: '604800' }, ['from']],
  ['+', { last: '403200' }, []],
  ['a', {}, ['b']],
  ['b', {}, []],
  ['c', {}, ['a', 'b']]
];

async function tabTo(page, name, most = 60) {
  for (let i = 0; i < most; i++) {
    await page.keyboard.press('Tab');
    const focus = await page.evaluate(() => {
      const element = document.activeElement;
      return element.getAttribute('aria-label') ?? element.closest('label')?.textContent ?? element.textContent;
    });
    if (focus.trim().startsWith(name)) return;
  }
  assert.fail(`no way by Tab to "${name}"`);
}

test('the chart works by keys alone', async () => {
  const { page } = await open(at('#/values?logger=kiln'));
  await ready(page, 'values');
  await tabTo(page, 'Chart');
  await page.keyboard.press('Enter');
  await ready(page, 'chart');
  await tabTo(page, 'Variables ...');
  await page.keyboard.press('Enter');
  await page.keyboard.type('heat');
  await pause(300); // the list follows when nothing more is typed
  await until('the search', async () => (await page.getByRole('checkbox').count()) === 1);
  await tabTo(page, 'Heat', 5);
  await page.keyboard.press('Space');
  await tabTo(page, 'Done', 5);
  await page.keyboard.press('Enter');
  await until('two variables', () => parameters(page).getAll('vars').join() === 'Temp,Heat');
  await tabTo(page, 'Chart. ');
  for (const [name, wanted, unwanted] of kKeys) {
    await page.keyboard.press(name);
    const fits = seen => Object.keys(wanted).every(key => seen.get(key) === wanted[key]) && !unwanted.some(key => seen.has(key));
    await until(`key ${name}`, () => fits(parameters(page)));
    if (/^[ab]$/.test(name)) await checkMoves(page, name);
  }
  await tabTo(page, 'Remove Heat');
  await page.keyboard.press('Enter');
  await until('one variable', () => parameters(page).getAll('vars').join() === 'Temp');
  await page.getByRole('button', { name: 'Follow' }).click();
  await until('a range that stays', () => parameters(page).has('from'));
});

// Comma and full stop move the cursor that the last key has placed.
async function checkMoves(page, name) {
  const time = () => Number(parameters(page).get(name));
  const span = 403200e3;
  const first = await until(`cursor ${name}`, time);
  for (const [sign, part] of [['.', 0.002], ['>', 0.022], ['<', 0.002], [',', 0]]) {
    await page.keyboard.press(sign);
    await until(`${sign}: cursor ${name}`, () => Math.abs(time() - first - span * part) <= 2);
  }
}

test('a chart that was just zoomed does not lead back from the next page', async () => {
  const { page } = await open(chart('archive', ['Level'], `from=${archive.from}&to=${kEnd}`));
  await ready(page, 'chart');
  for (const delay of [150, 180, 200]) {
    await page.evaluate(async ([hash, time]) => {
      document.querySelector('.plot').dispatchEvent(new KeyboardEvent('keydown', { key: '+' }));
      await new Promise(resolve => setTimeout(resolve, time));
      location.hash = hash;
      for (const end = performance.now() + 300; performance.now() < end; );
    }, [`#/files?logger=archive&from=${archive.from}&to=${kEnd}`, delay]);
    await ready(page, 'files');
    await page.goBack();
    await ready(page, 'chart');
  }
});

test('fingers move, zoom and place a cursor', async () => {
  const [from, to] = [archive.from + 3600e3, archive.from + 2 * 3600e3];
  const phone = { width: 360, hasTouch: true, isMobile: true };
  const { page, context } = await open(chart('archive', ['Level'], `from=${from}&to=${to}`), phone);
  await ready(page, 'chart');
  const session = await context.newCDPSession(page);
  const { x, y, width } = await plotBox(page);
  const touch = async (...steps) => {
    for (const [i, fingers] of steps.entries())
      await session.send('Input.dispatchTouchEvent', {
        type: i === 0 ? 'touchStart' : fingers.length ? 'touchMove' : 'touchEnd',
        touchPoints: fingers.map((part, id) => ({ x: x + width * part, y: y + 60, id }))
      });
    await drawn(page);
  };
  const reach = ((to - from) * 3) / width;
  await touch([0.3], [0.4], [0.55], []);
  await until('one finger moves', () => range(page)[0] !== from);
  near(range(page), moved(-0.25)(from, to), 4 * reach, 'one finger');
  const [a, b] = range(page);
  await touch([0.4, 0.6], [0.35, 0.65], [0.3, 0.7], []);
  await until('two fingers zoom', () => range(page)[0] !== a);
  near(range(page), zoomed(0.5)(a, b), 8 * reach, 'two fingers');
  await page.touchscreen.tap(x + width / 2, y + 60);
  await until('a tap places a cursor', () => parameters(page).has('a'));
  near([Number(parameters(page).get('a'))], [(range(page)[0] + range(page)[1]) / 2], reach, 'tap');
});
