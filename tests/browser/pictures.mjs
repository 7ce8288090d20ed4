// node tests/browser/pictures.mjs DIR   makes the pictures of the page for the documentation; script/screenshots calls it
import { mkdirSync, writeFileSync } from 'node:fs';
import { setTimeout as pause } from 'node:timers/promises';
import { closeBrowser, open, ready } from './page.mjs';
import { end, log, logBytes, path, serve } from './plant.mjs';

const kUnits = { Temp: '°C', SetPoint: '°C', Gas: 'm³/h', Draft: 'mbar', Oxygen: '%', Speed: '1/min', Batch: '', Fan: 'A' };
const kNames = Object.keys(kUnits);
const kSeconds = 10; // from row to row of the past
const kBatch = 1207;

// A firing of eight hours: it heats for three hours, and cools after five and a half.
function rowAt(time) {
  const hour = (time / 3600) % 8;
  const part = Math.min(1, hour / 3, (8 - hour) / 2.5);
  const heat = part * part * (3 - 2 * part);
  const noise = Math.sin(time * 12.9898) * Math.sin(time * 0.078);
  const gas = hour < 3 ? 40 + 10 * heat : hour < 5.5 ? 24 + Math.sin(time / 700) : 3;
  const air = [-1.2 - heat + noise / 20, 20.9 - gas * 0.23 + noise / 8, 600 + 800 * heat + 6 * noise];
  return [40 + 820 * heat + 2 * Math.sin(time / 400), 40 + 820 * heat, gas, ...air, kBatch, 3 + 6 * heat + noise / 10];
}

const kEquations = `
  Temp = 860 + 2 * Wave; SetPoint = 860; Gas = 24 + Wave / 2; Draft = -2.2 + Noise / 20; Oxygen = 15.4 + Noise / 8;
  Speed = 1400 + 6 * Wave; Fan = 9 + Noise / 10; Batch = ${kBatch};`;
const device = (nodeName, varNames, driver) => ({ nodeName, varNames, absent: 'nan', driver: { plcType: 9001, ...driver } });
const output = (directory, varNames) => [{ enableText: 'WriteToLog = 1;', varNames, saveRp: 1, directory, maxSamples: 7200 }];
const kiln = directory => ({
  input: {
    scanPeriod: 500,
    plcNodes: [device('Kiln', ['Wave', 'Noise'], { text1: 'sine,noise', value1: 60000, value2: 900 })],
    preprocess: 1,
    preEquationText: kEquations,
    preNewVars: kNames
  },
  outputs: output(directory, kNames),
  variables: Object.fromEntries(kNames.map(name => [name, { unit: kUnits[name] }]))
});
// One of its two devices does not answer.
const press = directory => ({
  input: {
    scanPeriod: 1000,
    plcNodes: [device('Press', ['Force'], { text1: 'ramp' }), device('Scale', ['Weight'], { value4: 1, value5: 109 })]
  },
  outputs: output(directory, ['Force'])
});

// The kiln has been hot for an hour, whatever the clock says.
function makePast(folder) {
  mkdirSync(path(folder), { recursive: true });
  const now = Math.floor(Date.now() / 1000 / kSeconds) * kSeconds;
  const shift = 4 * 3600 - (now % 28800);
  for (let hour = 24; hour > 0; hour--) {
    const first = now - hour * 3600;
    const rows = Array.from({ length: 3600 / kSeconds }, (_, i) => rowAt(first + i * kSeconds + shift + 28800));
    writeFileSync(path(folder, `hour${24 - hour}.rph`), logBytes(kNames, first, kSeconds, rows));
  }
}

const kCursor = `&a=${Date.now() - 2.2 * 3600e3}`;
const kPictures = [
  ['overview', '#/', 'overview', { width: 1100, height: 505 }],
  ['values', '#/values?logger=kiln', 'values', { width: 1100, height: 610 }],
  ['chart', '#/chart?logger=kiln&vars=Temp&vars=Gas&vars=Oxygen&last=36000' + kCursor, 'chart', { width: 1100, height: 800 }],
  ['phone', '#/chart?logger=kiln&vars=Temp&vars=Oxygen&last=36000', 'chart', { width: 390, height: 760, hasTouch: true, isMobile: true }]
];

makePast('feeds/kiln');
makePast('old');
log('feeds', 'kiln', kiln);
log('feeds', 'press', press);
const server = await serve('feeds', { args: ['--folder', 'archive=' + path('old')] });
await pause(40e3); // for the small curves
for (const [name, hash, view, size] of kPictures) {
  const { page, context } = await open(`${server.address}/${hash}`, size);
  await ready(page, view);
  await pause(3000);
  await page.screenshot({ path: `${process.argv[2]}/${name}.png` });
  await context.close();
}
await closeBrowser();
await end();
