// A small plant for the tests of the page: real loggers on the simulator, real servers, and a folder of logs. All of it
// is below one temporary folder and ends with the tests.
import { execFileSync, spawn } from 'node:child_process';
import { once } from 'node:events';
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { createServer } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

export const kZone = 'Europe/Berlin'; // of the server; the browser has another one
const kEnvironment = { ...process.env, TZ: kZone };
const root = mkdtempSync(join(tmpdir(), 'vastra-browser-'));
export const path = (...parts) => join(root, ...parts);

const running = new Set();

// Ends all and removes the folder.
export async function end() {
  await Promise.all([...running].map(process => kill(process)));
  rmSync(root, { recursive: true, force: true });
}

// A process that ends with the tests, also if they are killed.
function start(program, args, options = {}) {
  const command = ['--pdeathsig', 'KILL', program, ...args];
  const settings = { cwd: root, env: kEnvironment, stdio: ['ignore', 'pipe', 'inherit'], ...options };
  const process = spawn('setpriv', command, settings);
  running.add(process);
  process.on('exit', () => running.delete(process));
  return process;
}

export async function kill(process, signal = 'SIGKILL') {
  const exit = once(process, 'exit');
  process.kill(signal);
  await exit;
}

export const vastra = (...args) =>
  execFileSync(process.env.VASTRA, args, { cwd: root, env: kEnvironment, maxBuffer: 1 << 28 });

// The rows of logs as `vastra convert` has them: the head, and numbers with the time in milliseconds first.
export function table(...args) {
  const [head, ...lines] = vastra('convert', ...args, '--time', 'unix').toString().trim().split(/\r?\n/);
  const rows = lines.map(line => line.split(',').map(Number));
  return { names: head.split(',').slice(1), rows: rows.map(([time, ...values]) => [Math.round(time * 1000), ...values]) };
}

// A server of the loggers below `feeds`. Without a port it takes a free one.
export async function serve(feeds, { port = 0, args = [] } = {}) {
  mkdirSync(path(feeds), { recursive: true });
  const options = ['--dir', path(feeds), '--listen', `127.0.0.1:${port}`, ...args];
  const server = start(process.env.WEB, options);
  const [line] = await once(server.stdout, 'data');
  const address = line.toString().trim().replace(/\/$/, '');
  return { process: server, address, port: new URL(address).port };
}

export function addUser(file, name, password) {
  execFileSync(process.env.WEB, ['passwd', path(file), name], { input: password + '\n', stdio: ['pipe', 'ignore', 'inherit'] });
}

export function log(feeds, name, configure = kLoggers[name]) {
  mkdirSync(path(feeds, name), { recursive: true });
  const configuration = path(feeds, name + '.json');
  writeFileSync(configuration, JSON.stringify(configure(path(feeds, name))));
  const args = ['run', configuration, '--feed', path(feeds, name, 'feed'), '--quiet'];
  return start(process.env.VASTRA, args, { stdio: 'ignore' });
}

const output = (directory, varNames) => [
  { enableText: 'WriteToLog = 1;', varNames, saveRp: 1, saveCsv: 1, directory, maxSamples: 50, maxLogs: 1000 }
];
const node = (nodeName, varNames, driver) => ({ nodeName, varNames, driver: { plcType: 9001, ...driver } });
const many = [0, 1, 2, 3].map(n => Array.from({ length: 250 }, (_, i) => `V${n}${String(i).padStart(3, '0')}`));

const kiln = directory => ({
  input: {
    scanPeriod: 100,
    plcNodes: [node('Kiln', ['Heat', 'Items'], { text1: 'sine,counter' })],
    preprocess: 1,
    preEquationText: 'Temp = 850 + 40 * Heat;',
    preNewVars: ['Temp', 'Heat', 'Items']
  },
  outputs: output(directory, ['Temp', 'Heat', 'Items']),
  variables: { Temp: { unit: '°C' } }
});
const kLoggers = {
  kiln,
  oven: kiln,
  // Each third read fails.
  press: directory => ({
    input: { scanPeriod: 400, plcNodes: [node('Press', ['Force'], { text1: 'ramp', value4: 3, value5: 3 })] },
    outputs: output(directory, ['Force'])
  }),
  big: directory => ({
    input: { scanPeriod: 250, plcNodes: many.map((names, n) => node('Node' + n, names, { text1: 'noise,sine,counter' })) },
    outputs: output(directory, ['V0000']),
    variables: Object.fromEntries(many.map(names => [names[7], { unit: 'bar' }]))
  })
};

// Six logs of an hour, a row a second, over the hour that the clock shows twice. Peak has one row that is not 0.
export const archive = { folder: 'archive', from: Date.UTC(2026, 9, 24, 22), rows: 6 * 3600, peak: 12345, files: [] };

export function makeArchive() {
  mkdirSync(path(archive.folder));
  for (let hour = 0; hour < 6; hour++) {
    const first = archive.from / 1000 + hour * 3600;
    const rows = Array.from({ length: 3600 }, (_, i) => rowAt(hour * 3600 + i));
    archive.files.push(`hour${hour}.rph`);
    writeFileSync(path(archive.folder, `hour${hour}.rph`), logBytes(['Level', 'Peak', 'Row'], first, 1, rows));
  }
}

const rowAt = i => [20 + 3 * Math.sin(i / 500) + Math.sin(i * 12.9898) / 7, i === archive.peak ? 1000 : 0, i];

// A binary log whose rows are `step` seconds apart.
export function logBytes(names, first, step, rows) {
  const parts = [];
  const put = (kind, ...values) => {
    for (const value of values) {
      const bytes = Buffer.alloc(4);
      parts.push(bytes.subarray(0, bytes['write' + kind](value)));
    }
  };
  put('UInt32LE', 0x2c0f0781, 0, first, first + step * (rows.length - 1), 0);
  put('UInt8', 0);
  put('UInt16LE', names.length);
  for (const name of names) parts.push(Buffer.from([name.length]), Buffer.from(name));
  put('UInt32LE', rows.length);
  for (const row of rows) {
    put('UInt16LE', row.length);
    put('FloatLE', ...row);
  }
  put('UInt16LE', rows.length);
  for (let i = 0; i < rows.length; i++) {
    put('UInt32LE', first + step * i);
    put('UInt16LE', 0, 0, 0, 0);
  }
  put('UInt32LE', 0);
  return Buffer.concat(parts);
}

// A logger that says only these lines, one object each.
export function fakeFeed(feeds, name, lines) {
  mkdirSync(path(feeds, name), { recursive: true });
  const text = lines.map(line => JSON.stringify(line) + '\n').join('');
  return createServer(connection => connection.on('error', () => {}).write(text)).listen(path(feeds, name, 'feed')).unref();
}
