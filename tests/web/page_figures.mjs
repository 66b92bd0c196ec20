// Figures of the page in Chromium, to be read: milliseconds a frame, first picture from a cold start, bytes over the wire,
// underruns of the sound. node page_figures.mjs PAGE_FOLDER [SECONDS]
import { createServer } from 'node:http';
import { readFileSync } from 'node:fs';
import { extname, join, normalize } from 'node:path';

const [folder, seconds = 120] = process.argv.slice(2);
const { chromium } = await import(process.env.KIV_PLAYWRIGHT ?? 'playwright-core');
const types = { '.html': 'text/html', '.js': 'text/javascript', '.css': 'text/css', '.webmanifest': 'application/manifest+json' };
let bytes = 0;
const server = createServer((request, response) => {
  const path = normalize(new URL(request.url, 'http://x').pathname).replace(/\/$/, '/index.html');
  try {
    const body = readFileSync(join(folder, path));
    bytes += body.length;
    response.writeHead(200, { 'Content-Type': types[extname(path)] ?? 'application/octet-stream' }).end(body);
  } catch {
    response.writeHead(404).end();
  }
});
await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
const browser = await chromium.launch({ executablePath: process.env.KIV_CHROMIUM ?? '/usr/bin/chromium',
  args: ['--no-sandbox', '--disable-gpu', '--autoplay-policy=no-user-gesture-required'] });

// Cold: a context of its own each time, nothing kept. Without the worker, which fetches all once more for offline use.
const starts = [];
for (let i = 0; i < 5; i++) {
  const context = await browser.newContext({ serviceWorkers: 'block' });
  const page = await context.newPage();
  bytes = 0;
  await page.goto(`http://127.0.0.1:${server.address().port}/`);
  await page.waitForFunction(() => globalThis.kiv !== undefined);
  await page.waitForFunction(() => performance.getEntriesByName('first picture').length > 0);
  starts.push(await page.evaluate(() => performance.getEntriesByName('first picture')[0].startTime));
  await page.waitForTimeout(500);
  if (i < 4) { await context.close(); continue; }
  console.log(`first picture: ${starts.map((t) => t.toFixed(0)).join(', ')} ms after the navigation`);
  console.log(`over the wire: ${bytes} bytes`);

  const frame = await page.evaluate(() => {
    const { machine } = kiv;
    machine.setRate(48000);
    machine.type('DEMO\n');
    for (let i = 0; i < 400; i++) machine.runFrame(); // the demonstration draws and plays
    const times = { run: 0, picture: 0, show: 0 };
    for (let i = 0; i < 500; i++) {
      const a = performance.now();
      machine.runFrame();
      machine.samples();
      const b = performance.now();
      const picture = machine.picture();
      const c = performance.now();
      kiv.screen.show({ ...picture, first: 0, end: 400 }); // as if all had changed
      times.run += b - a; times.picture += c - b; times.show += performance.now() - c;
    }
    for (const key in times) times[key] /= 500;
    return times;
  });
  console.log(`a frame: machine and sound ${frame.run.toFixed(3)}, picture ${frame.picture.toFixed(3)}, to the canvas ${frame.show.toFixed(3)} ms`);

  await page.locator('#machine').click();
  await page.waitForFunction(() => kiv.sound.running);
  await page.waitForTimeout(2000);
  const before = await page.evaluate(() => kiv.sound.underruns);
  const devtools = await context.newCDPSession(page);
  await devtools.send('Performance.enable');
  const busy = async () => (await devtools.send('Performance.getMetrics')).metrics.find(({ name }) => name === 'TaskDuration').value;
  const frames = () => page.evaluate(() => kiv.machine.frames);
  const start = { busy: await busy(), frames: await frames() };
  await page.waitForTimeout(seconds * 1000);
  console.log(`the page's thread in all, with style, layout and painting: ${(1000 * (await busy() - start.busy) / (await frames() - start.frames)).toFixed(3)} ms a frame`);
  console.log(`underruns in ${seconds} s: ${await page.evaluate(() => kiv.sound.underruns) - before}`);
}
await browser.close();
server.close();
