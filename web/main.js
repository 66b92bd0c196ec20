// The page: puts machine, screen, sound, keys and files together, and runs a frame whenever the sound wants one.
import { Machine, ROM, RUN_STOPPED } from './machine.js';
import { Screen, toImage } from './screen.js';
import { Sound } from './sound.js';
import { Keys, buildKeyboard, readGamepads } from './keys.js';
import { listingToTape, pack, tapeToListing, unpack } from './listing.js';
import { SLOTS, deleteState, getState, putState } from './states.js';
import { currentLanguage, languages, reasons, say, setLanguage } from './text.js';

const $ = (id) => document.getElementById(id);

const defaults = { language: navigator.language.startsWith('ja') ? 'ja' : 'en', aspect: '4:3', lines: false, layout: 'place', arrows: 'cursor',
  sound: true, hidden: 'pause', monitor: '24', spoken: true };
const settings = { ...defaults, ...kept() };

// What a person chose before. A browser may refuse to keep anything, and what it kept may be damaged.
function kept() {
  try {
    return JSON.parse(localStorage.getItem('kiv') ?? '{}');
  } catch {
    return {};
  }
}

function keep() {
  try {
    localStorage.setItem('kiv', JSON.stringify(settings));
  } catch { /* the settings hold until the page is left */ }
}

let machine, screen, sound, keys;
let roms = null;                // own images in the machine: [[socket, bytes], ...]
let romsChosen = [];            // on their way there, until all are
let paused = false, fast = false, stopTold = false;
let next = 0;                   // without sound: when the next frame is due, milliseconds
let heard = '', heardAt = 0;

let messageTimer;
function tell(text) {
  $('message').textContent = text;
  clearTimeout(messageTimer);
  messageTimer = setTimeout(() => { $('message').textContent = ''; }, Math.max(2500, 90 * text.length)); // long enough to be read
}

// What went wrong with something: in words where it is known, else as it was said.
function tellFailure(what, error) { tell(say('failed', what, reasons()[error.code] ?? error.message)); }

// ---- time

function frame() {
  stepListing();
  if (machine.runFrame() === RUN_STOPPED && !stopTold) {
    stopTold = true;
    tell(say('stopped', machine.stopAddress.toString(16).toUpperCase().padStart(4, '0')));
  }
}

// With sound, the queue's fill is the clock; without, the page's own.
function advance(fastFor = 12) {
  if (paused || (document.hidden && settings.hidden === 'pause')) return;
  if (fast) return runFast(fastFor);
  if (sound.running) {
    for (let i = 0; i < 8 && sound.wants; i++) {
      machine.setRate(sound.rate());
      frame();
      sound.play(machine.samples());
    }
    next = 0;
    return;
  }
  const now = performance.now();
  if (next === 0 || now - next > 200) next = now;
  for (; next <= now; next += machine.frameSeconds * 1000) frame();
}

function runFast(milliseconds) {
  const end = performance.now() + milliseconds;
  do frame(); while (performance.now() < end);
}

function draw() {
  requestAnimationFrame(draw);
  readGamepads(machine);
  advance();
  screen.show(machine.picture());
  speak();
}

// The text screen for those who hear it: what changed, at most once a second, when it stands still.
function speak() {
  const now = performance.now();
  if (!settings.spoken || now - heardAt < 1000) return;
  heardAt = now;
  const text = machine.screenText();
  if (text === heard) return;
  heard = text;
  // A row each, so that only those that changed are read out.
  const place = $('text'), rows = text.split('\n');
  while (place.children.length < rows.length) place.appendChild(document.createElement('div'));
  [...place.children].forEach((row, i) => { if (row.textContent !== (rows[i] ?? '')) row.textContent = rows[i] ?? ''; });
}

function setPaused(on) {
  paused = on;
  $('pause').setAttribute('aria-pressed', String(on));
  if (!on) return;
  sound.rest();
  keys.releaseAll();
}

function setFast(on) {
  fast = on;
  $('fast').setAttribute('aria-pressed', String(on));
  if (on) sound.rest();
}

// ---- power and files

function boot() {
  if (roms) for (const [socket, bytes] of roms) machine.insertRom(socket, bytes);
  else machine.insertOpenRoms();
  machine.boot();
  listing = null;
  applyMachineSettings();
  stopTold = false;
}

function applyMachineSettings() {
  machine.setSetting('tenkeyless', settings.arrows === 'tenkey' ? 1 : 0);
  machine.setSetting('soft_volume', 6);
}

// Runs until BASIC has said Ok, so that what is typed arrives.
function waitForBasic() {
  for (let i = 0; i < 300 && !machine.screenText().includes('Ok'); i++) machine.runFrame();
}

// Runs through the quarter of a second in which the screen is still dark.
function waitForTitle() {
  for (let i = 0; i < 30 && machine.screenText().trim() === ''; i++) machine.runFrame();
}

// A listing is loaded through the deck; RUN is typed when all of it is read, for BASIC does not listen meanwhile.
let listing = null; // while it is read: { position, moved: the frame in which the tape moved last }
const LINE_END = 27, PATIENCE = 550; // frames; behind the last byte BASIC has a line left to put away

function loadListing(text) {
  boot();
  waitForBasic();
  machine.insertTape(listingToTape(text));
  machine.type('CLOAD\n');
  listing = { position: 0, moved: machine.frames };
}

function stepListing() {
  if (!listing || machine.typing > 0) return;
  const position = machine.tapePosition, now = machine.frames;
  if (position !== listing.position) listing = { position, moved: now };
  if (now - listing.moved < (position >= machine.tapeSize ? LINE_END : PATIENCE)) return;
  listing = null;
  machine.type('RUN\n');
}

const LARGEST = 64 << 20; // bytes of a file; the longest tapes are a hundredth of it
const openers = {
  bas: (bytes) => loadListing(new TextDecoder().decode(bytes)),
  cmt: (bytes) => machine.insertTape(bytes),
  kiv: (bytes) => machine.loadDump(bytes),
  kst: (bytes) => restore(bytes),
};
openers.txt = openers.bas;
openers.kivstate = openers.kst; // as the page's states were called at first

async function openFile(file) {
  const name = file.name.toLowerCase(), open = openers[name.split('.').pop()];
  if (!open && !(name in ROM)) throw new Error(say(name.endsWith('.rom') ? 'romNames' : 'kinds'));
  if (file.size > LARGEST) throw new Error(say('tooLarge', LARGEST >> 20));
  const bytes = new Uint8Array(await file.arrayBuffer());
  if (name in ROM) return openRom(name, bytes);
  open(bytes);
  stopTold = false;
  tell(say('loaded', file.name));
}

function openRom(name, bytes) {
  if (bytes.length > 0x8000) throw new Error(say('romSize', bytes.length));
  const chosen = new Map([...(roms ?? []), ...romsChosen, [ROM[name], bytes]]);
  romsChosen = [...chosen];
  const missing = Object.keys(ROM).filter((wanted) => !chosen.has(ROM[wanted]));
  if (missing.length) return tell(say('romsMissing', name, missing.join(', ')));
  changeRoms(romsChosen);
  tell(say('loaded', name));
}

function changeRoms(images) {
  roms = images;
  romsChosen = [];
  boot();
  buildSettings();
}

async function openFiles(files) {
  for (const file of files) {
    try {
      await openFile(file);
    } catch (error) {
      tellFailure(file.name, error);
    }
  }
  $('machine').focus();
}

// ---- states

async function saveState(slot) {
  await putState(slot, { bytes: machine.save(), time: Date.now(), pixels: machine.pixels().slice(), roms });
}

async function loadState(slot, found = getState(slot)) {
  const state = await found;
  if (!state) return false;
  const before = { roms, bytes: machine.save() };
  if (state.roms || roms) changeRoms(state.roms);
  try {
    restore(state.bytes);
  } catch (error) {
    if (before.roms || roms) changeRoms(before.roms);
    restore(before.bytes);
    throw error;
  }
  return true;
}

function restore(bytes) {
  machine.load(bytes);
  listing = null;
  keys.releaseAll(); // what was held when it was saved is held no more
  stopTold = false;
}

async function showStates() {
  const list = $('slots');
  list.replaceChildren();
  for (let slot = 1; slot <= SLOTS; slot++) {
    const state = await getState(slot);
    const item = list.appendChild(document.createElement('li'));
    const picture = item.appendChild(document.createElement('canvas'));
    [picture.width, picture.height] = [640, 400];
    if (state) picture.getContext('2d').putImageData(toImage(state.pixels), 0, 0);
    const when = state ? new Date(state.time).toLocaleString(currentLanguage()) : say('empty');
    picture.setAttribute('role', 'img');
    picture.setAttribute('aria-label', `${say('slot')} ${slot}: ${when}`);
    item.appendChild(document.createElement('span')).textContent = `${slot}  ${when}`;
    const buttons = item.appendChild(document.createElement('div'));
    buttons.className = 'buttons';
    const act = (name, enabled, action) => {
      const button = buttons.appendChild(document.createElement('button'));
      button.textContent = say(name);
      button.disabled = !enabled;
      button.setAttribute('aria-label', `${say(name)} ${slot}`);
      button.addEventListener('click', async () => {
        try {
          await action();
        } catch (error) {
          tellFailure(`${say('slot')} ${slot}`, error);
        }
        if (name === 'load') $('dialog-states').close();
        else await showStates();
      });
    };
    act('save', true, () => saveState(slot).then(() => tell(say('saved', slot))));
    act('load', state, () => loadState(slot).then(() => tell(say('restored', slot))));
    act('remove', state, () => deleteState(slot));
  }
}

// ---- out of the page

function download(blob, name) {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(blob);
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}

const stamp = () => new Date().toISOString().slice(0, 19).replace(/[T:]/g, '-');

function savePicture() {
  const canvas = document.createElement('canvas');
  [canvas.width, canvas.height] = [640, 400];
  canvas.getContext('2d').putImageData(toImage(machine.pixels()), 0, 0);
  canvas.toBlob((blob) => download(blob, `kiv-${stamp()}.png`));
}

// Lets a copy of the machine write its program to a tape, and puts the machine back: nobody sees it.
function takeProgram() {
  const before = machine.save();
  sound.rest(); // it may take the page longer than what waits in the queue
  try {
    machine.recordTape(true);
    machine.type('SAVE "SHARE"\n');
    for (let quiet = 0, size = 0, i = 0; i < 6000 && quiet < 60; i++) {
      machine.runFrame();
      const now = machine.c.kiv_tape_output_size();
      quiet = machine.typing === 0 && now === size ? quiet + 1 : 0;
      size = now;
    }
    return tapeToListing(machine.recorded());
  } finally {
    machine.load(before);
    machine.recordTape(false);
  }
}

async function share() {
  const listing = takeProgram();
  if (listing.trim() === '') return tell(say('noProgram'));
  const address = new URL(location.pathname, location.href);
  address.searchParams.set('bas', await pack(listing));
  history.replaceState(null, '', address);
  try {
    await navigator.clipboard.writeText(address.href);
    tell(say('copied'));
  } catch {
    tell(address.href);
  }
}

async function paste(text) {
  try {
    text ??= await navigator.clipboard.readText();
    if (!text) return tell(say('nothing'));
    machine.type(text.replace(/\r\n?/g, '\n'));
    tell(say('typing'));
  } catch (error) {
    tellFailure(say('paste'), error);
  }
}

// ---- settings

const settingRows = [
  ['language', Object.entries(languages), (value) => { setLanguage(value); buildSettings(); buildHelp(); }],
  ['aspect', [['4:3', 'monitor43'], ['square', 'square']], (value) => { screen.aspect = value === '4:3' ? 4 / 3 : 1.6; screen.fit(); }],
  ['lines', [[false, 'off'], [true, 'on']], (value) => { screen.lines = value; screen.fit(); }],
  ['layout', [['place', 'place'], ['character', 'character']], (value) => { keys.byCharacter = value === 'character'; }],
  ['arrows', [['tenkey', 'tenkey'], ['cursor', 'cursor']], () => applyMachineSettings()],
  ['sound', [[true, 'on'], [false, 'off']], (value) => sound.switch(value)],
  ['monitor', [['24', '24 kHz'], ['15', '15 kHz']], (value) => machine.setSetting('hires_crt', value === '24' ? 1 : 0)],
  ['hidden', [['pause', 'pauseHidden'], ['on', 'goOn']], () => {}],
  ['spoken', [[true, 'on'], [false, 'off']], (value) => { if (!value) $('text').replaceChildren(); heard = ''; }],
];

function buildSettings() {
  $('setting-rows').replaceChildren(...settingRows.map(([name, choices, apply]) => {
    const row = document.createElement('label');
    row.className = 'setting';
    row.append(say(name === 'spoken' ? 'spokenText' : name));
    const select = row.appendChild(document.createElement('select'));
    for (const [value, label] of choices) select.add(new Option(say(label) ?? label, String(value), false, settings[name] === value));
    select.addEventListener('change', () => {
      settings[name] = choices[select.selectedIndex][0];
      keep();
      apply(settings[name]);
    });
    return row;
  }), romRow());
}

function romRow() {
  const row = document.createElement('div');
  row.className = 'setting';
  row.append(say('roms'));
  const button = row.appendChild(document.createElement('button'));
  button.textContent = roms ? say('openRoms') : say('ownRoms');
  button.addEventListener('click', () => {
    if (!roms) return $('file').click();
    changeRoms(null);
  });
  return row;
}

function buildHelp() {
  const table = document.createElement('table');
  for (const [key, what] of say('helpText')) {
    const row = table.insertRow();
    row.appendChild(document.createElement('th')).textContent = key;
    row.insertCell().textContent = what;
  }
  const line = document.createElement('p');
  line.textContent = say('helpBasic');
  $('help-text').replaceChildren(table, line);
}

// ---- the page's own events

function listen() {
  const place = $('machine');
  const soundAfterGesture = () => { if (settings.sound && !sound.running) sound.start(); };
  window.addEventListener('pointerdown', soundAfterGesture);
  window.addEventListener('keydown', soundAfterGesture);
  place.addEventListener('keydown', (event) => {
    if (event.code === 'Escape' && machine.typing > 0) machine.stopTyping();
    else if ((event.ctrlKey || event.metaKey) && event.code === 'KeyV') return; // the paste event follows
    else if (event.code === 'Tab' && event.shiftKey) return;                   // the way out by keyboard
    else if (!keys.down(event)) return;
    event.preventDefault();
  });
  place.addEventListener('keyup', (event) => { if (keys.up(event)) event.preventDefault(); });
  place.addEventListener('blur', () => keys.releaseAll());
  place.addEventListener('click', () => place.focus());
  document.addEventListener('paste', (event) => { if (!$('dialog-states').open) paste(event.clipboardData.getData('text')); });

  $('open').addEventListener('click', () => $('file').click());
  $('file').addEventListener('change', async (event) => {
    await openFiles([...event.target.files]);
    event.target.value = '';
  });
  for (const name of ['dragover', 'dragleave', 'drop']) {
    document.addEventListener(name, (event) => {
      event.preventDefault();
      place.classList.toggle('dropping', name === 'dragover');
    });
  }
  document.addEventListener('drop', (event) => openFiles([...event.dataTransfer.files]));
  globalThis.launchQueue?.setConsumer(async ({ files }) => openFiles(await Promise.all(files.map((file) => file.getFile()))));

  $('reset').addEventListener('click', () => { machine.reset(); listing = null; stopTold = false; place.focus(); });
  $('pause').addEventListener('click', () => setPaused(!paused));
  $('fast').addEventListener('click', () => setFast(!fast));
  $('paste').addEventListener('click', () => { paste(); place.focus(); });
  $('picture').addEventListener('click', savePicture);
  $('share').addEventListener('click', share);
  $('full').hidden = !document.fullscreenEnabled;
  $('full').addEventListener('click', () => (document.fullscreenElement ? document.exitFullscreen() : document.documentElement.requestFullscreen()));
  $('keys').addEventListener('click', () => {
    $('keyboard').hidden = !$('keyboard').hidden;
    $('keys').setAttribute('aria-pressed', String(!$('keyboard').hidden));
  });
  $('states').addEventListener('click', async () => { await showStates(); $('dialog-states').showModal(); });
  $('state-download').addEventListener('click', () => download(new Blob([machine.save()]), `kiv-${stamp()}.kst`));
  for (const name of ['settings', 'help']) $(name).addEventListener('click', () => $(`dialog-${name}`).showModal());
  for (const button of document.querySelectorAll('.close')) button.addEventListener('click', () => button.closest('dialog').close());

  document.addEventListener('visibilitychange', () => {
    if (!document.hidden) return;
    keys.releaseAll();
    if (settings.hidden === 'pause') sound.pause();
    saveState(0).catch((error) => console.warn(`not kept: ${error.message}`));
  });
  window.addEventListener('focus', () => { if (sound.context) sound.start(); });
}

// ---- the start

// What an address asks for; else what was left, which is being looked for meanwhile.
async function begin(address, left) {
  const wanted = address.searchParams;
  if (wanted.has('bas')) {
    const text = await unpack(wanted.get('bas')).catch(() => { throw new Error(say('noListing')); });
    return loadListing(text);
  }
  if (wanted.has('tape')) return loadTapeOfSite(wanted.get('tape'));
  if (!(await loadState(0, left))) waitForTitle();
}

async function loadTapeOfSite(name) {
  const tape = new URL(name, location.href), file = tape.pathname.split('/').pop();
  if (tape.origin !== location.origin) throw new Error(say('otherSite', tape.origin));
  const answer = await fetch(tape).catch(() => ({}));
  if (!answer.ok) throw new Error(say('notThere', file));
  machine.insertTape(new Uint8Array(await answer.arrayBuffer()));
  tell(say('loaded', file));
}

async function start() {
  const loading = Machine.load('kiv.wasm.gz'), left = getState(0);
  left.catch(() => {}); // told when it is asked for
  setLanguage(settings.language);
  screen = new Screen($('screen'), $('machine'));
  sound = new Sound();
  sound.on = settings.sound;
  // Also while the page is hidden and gets no animation frames. It wants more every few milliseconds.
  sound.onwant = () => { if (!fast || document.hidden) advance(3); };
  buildHelp();
  machine = await loading;
  keys = new Keys(machine);
  boot();
  keys.onrelease = buildKeyboard($('keyboard'), machine, say);
  buildSettings();
  for (const [name, , apply] of settingRows) if (name !== 'language') apply(settings[name]);
  listen();
  try {
    await begin(new URL(location.href), left);
  } catch (error) {
    tellFailure('Kiv', error);
  }
  if (matchMedia('(pointer: coarse)').matches) $('keys').click();
  $('machine').focus();
  draw();
  requestAnimationFrame(() => requestAnimationFrame(() => performance.mark('first picture')));
  globalThis.kiv = { machine, sound, screen }; // for whoever wants to look inside
  navigator.serviceWorker?.register('service-worker.js');
}

start().catch((error) => { $('message').textContent = error.message; });
