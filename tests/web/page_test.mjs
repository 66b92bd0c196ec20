// The page in a browser, as a person uses it. node page_test.mjs PAGE_FOLDER KIV_RUN ROM_FOLDER
// Needs playwright-core (npm) and Chromium; says "skipped" and ends with 77 where they are missing.
import { execFileSync } from 'node:child_process';
import { createServer } from 'node:http';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { extname, join, normalize } from 'node:path';
import assert from 'node:assert/strict';

const [folder, kivRun, roms] = process.argv.slice(2);
const chromiumPath = process.env.KIV_CHROMIUM ?? '/usr/bin/chromium';
let chromium;
try {
  ({ chromium } = await import(process.env.KIV_PLAYWRIGHT ?? 'playwright-core'));
  readFileSync(chromiumPath, { flag: 'r' });
} catch (error) {
  console.log(`SKIPPED: the page was not tried, for there is no Chromium or no playwright-core: ${error.message}`);
  process.exit(77);
}

const scratch = mkdtempSync(join(tmpdir(), 'kiv-page-'));
const types = { '.html': 'text/html', '.js': 'text/javascript', '.css': 'text/css', '.wasm': 'application/wasm', '.png': 'image/png', '.webmanifest': 'application/manifest+json' };
let answering = true;
const requests = [];
const server = createServer((request, response) => {
  const path = normalize(new URL(request.url, 'http://x').pathname).replace(/\/$/, '/index.html');
  requests.push(path);
  if (!answering) return response.destroy();
  try {
    const body = readFileSync(path === '/tape.cmt' ? join(scratch, 'tape.cmt') : join(folder, path));
    response.writeHead(200, { 'Content-Type': types[extname(path)] ?? 'application/octet-stream' }).end(body);
  } catch {
    response.writeHead(404).end();
  }
});
await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
const home = `http://127.0.0.1:${server.address().port}/`;

const browser = await chromium.launch({ executablePath: chromiumPath, args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
  '--disable-background-networking', '--disable-component-update', '--disable-sync', '--autoplay-policy=no-user-gesture-required'] });
const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, locale: 'en-GB', permissions: ['clipboard-read', 'clipboard-write'] });
const page = await context.newPage();
const complaints = [];
page.on('console', (message) => { if (message.type() === 'error') complaints.push(message.text()); });
page.on('pageerror', (error) => complaints.push(error.message));
page.on('request', (request) => { if (!request.url().startsWith(home) && !request.url().startsWith('blob:')) complaints.push(`asked ${request.url()}`); });

const text = () => page.evaluate(() => kiv.machine.screenText());
async function shows(wanted) {
  await page.waitForFunction((w) => kiv.machine.screenText().includes(w), wanted, { timeout: 60000 }).catch(async () => {
    assert.fail(`the screen never shows "${wanted}":\n${await text()}`);
  });
}
async function open(query = '') {
  await page.goto(home + query);
  await page.waitForFunction(() => globalThis.kiv !== undefined, null, { timeout: 30000 });
  await shows('Ok');
}
// A page or a context of its own for a while; none stays behind when a test fails.
async function lend(thing, use) {
  try {
    return await use(thing);
  } finally {
    await thing.close();
  }
}
const send = (name, data) => page.setInputFiles('#file', { name, mimeType: 'application/octet-stream', buffer: Buffer.from(data) });

const tests = {
  async 'the picture is what kiv-run shows, to the pixel'() {
    await open();
    const png = join(scratch, 'run.png');
    execFileSync(kivRun, ['--roms', roms, '--frames', '150', '--date', '1982-11-01T12:00:00', '--seed', '1', '--png', png]);
    const expected = readFileSync(png).toString('base64');
    const different = await page.evaluate(async (png) => {
      const { machine } = kiv;
      const mine = machine.save();
      const bitmap = await createImageBitmap(await (await fetch(`data:image/png;base64,${png}`).catch(() => null))?.blob?.() ?? new Blob([Uint8Array.from(atob(png), (c) => c.charCodeAt(0))]));
      const canvas = new OffscreenCanvas(640, 400), context = canvas.getContext('2d');
      context.drawImage(bitmap, 0, 0);
      const wanted = new Uint32Array(context.getImageData(0, 0, 640, 400).data.buffer);
      machine.insertOpenRoms();
      machine.c.kiv_seed(1);
      machine.boot(new Date(1982, 10, 1, 12, 0, 0));
      for (let i = 0; i < 150; i++) machine.runFrame();
      const pixels = machine.pixels();
      let count = 0;
      for (let i = 0; i < wanted.length; i++) {
        const rgb = pixels[4 * i + 2] | pixels[4 * i + 1] << 8 | pixels[4 * i] << 16;
        if (rgb !== (wanted[i] & 0xFFFFFF)) count++;
      }
      machine.load(mine);
      return count;
    }, expected);
    complaints.length = 0; // the page's policy forbids the data address, as it should
    assert.equal(different, 0);
  },

  // By a GPU, which a processor stands in for here, and without: a pixel of the canvas for one of the machine.
  async 'the canvas shows the machine, however it is drawn'() {
    for (const anyGl of [false, true]) await lend(await context.newPage(), async (other) => {
      await other.addInitScript((any) => {
        const plain = HTMLCanvasElement.prototype.getContext;
        HTMLCanvasElement.prototype.getContext = function getContext(kind, options) {
          return kind === 'webgl2' && !any ? null : plain.call(this, kind, { ...options, failIfMajorPerformanceCaveat: false });
        };
        // As if a GPU drew.
        if (any) WebGL2RenderingContext.prototype.getExtension = () => null;
      }, anyGl);
      await other.goto(home);
      await other.waitForFunction(() => globalThis.kiv?.machine.screenText().includes('Ok'), null, { timeout: 30000 });
      const seen = await other.evaluate(() => {
        const { machine, screen } = kiv;
        document.getElementById('pause').click();
        screen.place = { clientWidth: 640, clientHeight: 400 };
        screen.aspect = 1.6;
        screen.fit();
        const count = () => {
          screen.show(machine.picture());
          const copy = new OffscreenCanvas(640, 400).getContext('2d');
          copy.drawImage(screen.canvas, 0, 0);
          const got = copy.getImageData(0, 0, 640, 400).data, wanted = machine.pixels();
          let different = 0;
          for (let i = 0; i < got.length; i += 4)
            if (got[i] !== wanted[i + 2] || got[i + 1] !== wanted[i + 1] || got[i + 2] !== wanted[i]) different++;
          return different;
        };
        const different = [count()];
        machine.type('PRINT 1\n'); // only a few lines change
        for (let i = 0; i < 60; i++) machine.runFrame();
        return { gl: Boolean(screen.gl), different: [...different, count()], same: machine.picture().end };
      });
      assert.deepEqual(seen, { gl: anyGl, different: [0, 0], same: 0 });
    });
  },

  async 'a phone, upright and lying'() {
    for (const [width, height, least] of [[390, 844, 380], [844, 390, 400], [320, 568, 300]]) {
      const device = { viewport: { width, height }, isMobile: true, hasTouch: true, locale: 'en-GB' };
      await lend(await browser.newContext(device), async (phone) => {
        const held = await phone.newPage();
        await held.goto(home);
        await held.waitForFunction(() => globalThis.kiv?.machine.screenText().includes('Ok'), null, { timeout: 30000 });
        const sizes = await held.evaluate(() => {
          const keys = [...document.querySelectorAll('#keyboard button')].filter((b) => b.offsetWidth).map((b) => b.getBoundingClientRect());
          return { picture: document.getElementById('screen').getBoundingClientRect().width, keys: keys.length, scrolls: document.documentElement.scrollWidth > innerWidth,
            outside: keys.filter((k) => k.left < 0 || k.right > innerWidth || k.bottom > innerHeight + 0.5).length, lowest: Math.min(...keys.map((k) => k.height)), narrowest: Math.min(...keys.map((k) => k.width)) };
        });
        assert.ok(sizes.picture >= least && sizes.keys > 60 && sizes.outside === 0 && !sizes.scrolls && sizes.lowest >= 36 && sizes.narrowest >= 26, `${width} x ${height}: ${JSON.stringify(sizes)}`);
        const tap = async (label) => {
          await held.locator('#keyboard button:visible', { hasText: new RegExp(`^${label}$`) }).first().tap();
          await held.waitForFunction((frame) => kiv.machine.frames > frame + 6, await held.evaluate(() => kiv.machine.frames));
        };
        for (const label of ['SHIFT', '/', '6', 'SHIFT', ':', '123', '7', 'RETURN', 'ABC']) await tap(label);
        await held.waitForFunction(() => kiv.machine.screenText().includes('\n 42\n'), null, { timeout: 30000 }).catch(async () =>
          assert.fail(`${width} x ${height}:\n${await held.evaluate(() => kiv.machine.screenText())}`));
        if (process.env.KIV_PAGE_PICTURES) await held.screenshot({ path: join(process.env.KIV_PAGE_PICTURES, `page-${width}x${height}.png`) });
      });
    }
  },

  async 'what is typed arrives'() {
    await page.locator('#machine').focus();
    for (const key of ['Shift+Slash', '4', '2', 'Enter']) {
      await page.keyboard.press(key);
      await page.waitForFunction((frame) => kiv.machine.frames > frame + 8, await page.evaluate(() => kiv.machine.frames));
    }
    await shows('\n 42\n');
    await page.evaluate(() => kiv.machine.type('PRINT 100+23\n'));
    await shows('\n 123\n');
  },

  async 'fingers and pads press keys, and what is on the screen can be heard'() {
    const rowOf = (row) => page.evaluate((r) => kiv.machine.matrixRow(r), row);
    const settles = (row, wanted) => page.waitForFunction(([r, w]) => kiv.machine.matrixRow(r) === w, [row, wanted], { timeout: 10000 });
    const idle = await rowOf(2); // A is bit 1 of row 2
    await page.evaluate(() => { navigator.getGamepads = () => [{ buttons: Array.from({ length: 16 }, (_, i) => ({ pressed: i === 2 })), axes: [0, 0] }]; });
    await settles(5, 0xFF & ~0x04); // the third button is Z
    await page.evaluate(() => { navigator.getGamepads = () => [null]; });
    await settles(5, 0xFF);

    await page.evaluate(() => kiv.machine.type('\nCLS\nREM '));
    await page.waitForFunction(() => kiv.machine.typing === 0, null, { timeout: 60000 });
    if (await page.locator('#keyboard').isHidden()) await page.click('#keys');
    for (const label of ['SHIFT', '1', 'A']) {
      const key = page.locator('#keyboard button', { hasText: new RegExp(`^${label}$`) }).first();
      await key.hover();
      await page.mouse.down();
      await page.waitForFunction((frame) => kiv.machine.frames > frame + 8, await page.evaluate(() => kiv.machine.frames));
      await page.mouse.up();
      await page.waitForFunction((frame) => kiv.machine.frames > frame + 8, await page.evaluate(() => kiv.machine.frames));
    }
    // A slow browser holds a key for long, and the machine repeats it.
    await page.waitForFunction(() => /REM !+a+/.test(kiv.machine.screenText()), null, { timeout: 60000 });
    assert.equal(await rowOf(2), idle, 'no key stays down');
    await page.waitForFunction(() => /REM !+a+/.test(document.getElementById('text').textContent), null, { timeout: 10000 });
    await page.click('#keys');
    await page.evaluate(() => kiv.machine.type('\n'));
    await page.waitForFunction(() => kiv.machine.typing === 0, null, { timeout: 60000 });
  },

  async 'every control has a name, and the machine can be left by keyboard'() {
    const nameless = await page.evaluate(() => [...document.querySelectorAll('button, select, [role=application], [role=img], dialog, input:not([hidden])')]
      .filter((e) => !(e.getAttribute('aria-label') || e.getAttribute('aria-labelledby') || e.textContent.trim() || e.closest('label')?.textContent.trim()))
      .map((e) => e.outerHTML.slice(0, 80)));
    assert.deepEqual(nameless, []);
    await page.locator('#machine').focus();
    await page.keyboard.press('Shift+Tab');
    assert.equal(await page.evaluate(() => document.activeElement.id), 'help', 'the last of the buttons');
    await page.keyboard.press('Enter');
    assert.ok(await page.evaluate(() => document.getElementById('dialog-help').open));
    await page.keyboard.press('Escape');
    assert.equal(await page.evaluate(() => document.activeElement.id), 'help', 'and back to where it was opened');
  },

  async 'sound is heard and of the right pitch'() {
    await page.locator('#machine').click();
    await page.waitForFunction(() => kiv.sound.running);
    const hertz = await page.evaluate(async () => {
      const { machine } = kiv;
      machine.setRate(48000);
      machine.type('\nBEEP 1\n');
      const heard = [];
      for (let i = 0; i < 300; i++) {
        machine.runFrame();
        heard.push(...machine.samples());
      }
      let first = -1, last = -1, rises = 0;
      for (let i = 1; i < heard.length; i++) {
        if (!(heard[i - 1] < -500 && heard[i] >= -500)) continue;
        if (first < 0) first = i; else rises++;
        last = i;
      }
      machine.type('BEEP 0\n');
      return rises / ((last - first) / 48000);
    });
    assert.ok(Math.abs(hertz - 2400) < 24, `the beeper sounds at ${hertz} Hz`);
  },

  async 'a pause is no fault of the sound, and lets it go on as it was'() {
    await page.waitForFunction(() => kiv.sound.fill > 0.03);
    const before = await page.evaluate(() => {
      document.getElementById('pause').click();
      return kiv.sound.underruns;
    });
    await page.waitForFunction(() => kiv.sound.fill === 0);
    assert.equal(await page.evaluate(() => kiv.sound.underruns), before);
    await page.click('#pause');
    await page.waitForFunction(() => kiv.sound.fill > 0.03);
  },

  async 'what is wrong with a file is told'() {
    const state = await page.evaluate(() => Array.from(kiv.machine.save()));
    const damaged = Buffer.from(state);
    damaged[5000] ^= 1;
    for (const [name, data, said] of [['photo.png', 'PNG', 'Kiv opens .cmt'], ['8801.rom', 'x', 'ROM images are called'], ['8801-zun.rom', 'x'.repeat(40000), '40000 bytes'],
      ['8801-zun.rom', 'x', 'still missing: 8801-kiv.rom, 8801-4th.rom'], ['a.kst', 'x'.repeat(99), 'not a state of Kiv'], ['a.kst', damaged, 'is damaged'],
      ['a.kiv', 'x', 'not a memory dump'], ['a.kst', Buffer.from(state), 'a.kst loaded']]) {
      await send(name, data);
      await page.waitForFunction((text) => document.getElementById('message').textContent.includes(text), said, { timeout: 10000 }).catch(async () =>
        assert.fail(`${name}: "${await page.textContent('#message')}" instead of "${said}"`));
    }
    await shows('Ok');
  },

  async 'a state survives a reload'() {
    await page.evaluate(() => kiv.machine.type('NEW\n10 REM KEEP ME\nCLS\nLIST\n'));
    await page.waitForFunction(() => kiv.machine.typing === 0, null, { timeout: 60000 });
    await shows('10 REM KEEP ME');
    await page.click('#states');
    await page.click('[aria-label="Save 3"]');
    await page.waitForSelector('[aria-label="Load 3"]:enabled');
    await page.reload();
    await page.waitForFunction(() => globalThis.kiv !== undefined);
    await page.evaluate(() => { kiv.machine.boot(); });
    await page.click('#states');
    await page.click('[aria-label="Load 3"]');
    await shows('10 REM KEEP ME');
  },

  async 'a tape that is dropped loads, a listing runs'() {
    writeFileSync(join(scratch, 'tape.cmt'), '10 PRINT "FROM TAPE"\r\n20 END\r\n\x1a');
    await page.evaluate((text) => {
      const data = new DataTransfer();
      data.items.add(new File([text], 'tape.cmt'));
      for (const name of ['dragover', 'drop']) document.getElementById('machine').dispatchEvent(new DragEvent(name, { dataTransfer: data, bubbles: true, cancelable: true }));
    }, readFileSync(join(scratch, 'tape.cmt'), 'latin1'));
    await page.waitForFunction(() => kiv.machine.tapeSize > 0);
    await page.evaluate(() => kiv.machine.type('CLS\nCLOAD\nRUN\n'));
    await shows('FROM TAPE');
    const long = Array.from({ length: 120 }, (_, i) => `${i + 1} REM so long that RUN has to wait for the tape`).join('\n');
    await send('game.bas', `${long}\n200 PRINT "A LISTING";1+1\n`);
    await shows('A LISTING 2');
  },

  async 'a program travels in the address'() {
    await send('shared.bas', '10 PRINT "SHARED"\n20 PRINT "AGAIN"\n');
    await shows('AGAIN');
    await page.click('#share');
    await page.waitForFunction(() => location.search.includes('bas='));
    const query = new URL(page.url()).search;
    await open(query);
    await shows('SHARED');
    await open('?tape=tape.cmt');
    await page.waitForFunction(() => kiv.machine.tapeSize > 0);
    await open('?bas=nonsense'); // says so, and the machine runs
    await page.waitForFunction(() => document.getElementById('message').textContent.startsWith('Kiv: '), null, { timeout: 10000 });
  },

  async 'it starts without a network'() {
    // All of it is kept when the worker is active; a store alone may still be filling.
    await page.waitForFunction(async () => (await navigator.serviceWorker.ready).active?.state === 'activated');
    answering = false;
    try {
      await open();
      assert.deepEqual(await page.evaluate(() => kiv.machine.frames > 0), true);
    } finally {
      answering = true;
      await page.waitForTimeout(200);
      // Chromium reports its own failed look for an update of the worker.
      for (let i = complaints.length; i-- > 0;) if (/ERR_|Failed to load resource/.test(complaints[i])) complaints.splice(i, 1);
    }
  },

  async 'both languages, and no complaint of the browser'() {
    await page.click('#settings');
    await page.selectOption('#setting-rows select >> nth=0', 'ja');
    assert.equal(await page.textContent('#reset'), 'リセット');
    await page.selectOption('#setting-rows select >> nth=0', 'en');
    await page.keyboard.press('Escape');
    for (const [width, height, name] of [[1280, 900, 'desktop'], [390, 844, 'phone']]) {
      await page.setViewportSize({ width, height });
      await page.waitForTimeout(300);
      if (process.env.KIV_PAGE_PICTURES) await page.screenshot({ path: join(process.env.KIV_PAGE_PICTURES, `page-${name}.png`) });
      assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), `${name}: nothing sticks out`);
    }
    assert.deepEqual(complaints, []);
  },
};

let failed = 0;
for (const [name, test] of Object.entries(tests)) {
  try {
    await test();
    console.log(`ok      ${name}`);
  } catch (error) {
    failed++;
    console.log(`FAILED  ${name}\n${error.stack}`);
  }
}
await browser.close();
server.close();
rmSync(scratch, { recursive: true });
console.log(`${Object.keys(tests).length - failed} passed, ${failed} failed`);
process.exit(failed ? 1 : 0);
