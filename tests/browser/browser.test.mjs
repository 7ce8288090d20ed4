// The page of vastra-web in a real browser. `run` starts it.
import { after, describe, it } from 'node:test';
import './looks.mjs';
import './values.mjs';
import './chart.mjs';
import './history.mjs';
import './faults.mjs';
import { closeBrowser } from './page.mjs';
import { end } from './plant.mjs';
import { cases, figures } from './world.mjs';

for (const [words, run] of cases.alone) it(words, run);
describe('side by side', { concurrency: 5 }, () => {
  for (const [words, run] of cases.beside) it(words, run);
});

after(async () => {
  await closeBrowser();
  console.log('claim: ' + figures());
  await end();
});
