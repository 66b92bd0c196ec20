// From the host's keyboard, by place or by character, and from fingers on a picture of the machine's keyboard, to the
// machine's keys. Numbers are virtual-key codes, as kiv_key takes them.

// By place, as a Japanese keyboard is laid out. KeyboardEvent.code names the place, whatever the layout prints there.
const places = {
  Backspace: 0x2E, Delete: 0x2E, Insert: 0x2D, Pause: 0x08, Tab: 0x09, Enter: 0x0D, NumpadEnter: 0x0D, Escape: 0x1B, Space: 0x20,
  Home: 0x24, ArrowLeft: 0x25, ArrowUp: 0x26, ArrowRight: 0x27, ArrowDown: 0x28,
  ShiftLeft: 0x10, ShiftRight: 0x10, ControlLeft: 0x11, ControlRight: 0x11,
  AltRight: 0x1D, NonConvert: 0x1D, Convert: 0x1C, KanaMode: 0x1C, CapsLock: 0x1C, ContextMenu: 0x1C,
  Minus: 0xBD, Equal: 0xDE, IntlYen: 0xDC, Backquote: 0xDC, BracketLeft: 0xC0, BracketRight: 0xDB, Backslash: 0xDD,
  Semicolon: 0xBB, Quote: 0xBA, Comma: 0xBC, Period: 0xBE, Slash: 0xBF, IntlRo: 0xE2, IntlBackslash: 0xE2, PageUp: 0xE2,
  NumpadMultiply: 0x6A, NumpadAdd: 0x6B, NumpadDecimal: 0x6E,
};
for (let i = 0; i < 26; i++) places[`Key${String.fromCharCode(65 + i)}`] = 65 + i;
for (let i = 0; i < 10; i++) {
  places[`Digit${i}`] = 0x30 + i;
  places[`Numpad${i}`] = 0x60 + i;
}
for (let i = 1; i <= 5; i++) places[`F${i}`] = 0x6F + i;

// By character: key and shift on the machine's keyboard.
const characters = {};
for (let i = 0; i < 26; i++) {
  characters[String.fromCharCode(97 + i)] = [65 + i, false];
  characters[String.fromCharCode(65 + i)] = [65 + i, true];
}
[...'0123456789'].forEach((c, i) => { characters[c] = [0x30 + i, false]; });
[...'!"#$%&\'()'].forEach((c, i) => { characters[c] = [0x31 + i, true]; });
for (const [c, key, shifted] of [['-', 0xBD, '='], ['^', 0xDE, '~'], ['\\', 0xDC, '|'], ['¥', 0xDC, '|'], ['@', 0xC0, '`'], ['[', 0xDB, '{'],
  [']', 0xDD, '}'], [';', 0xBB, '+'], [':', 0xBA, '*'], [',', 0xBC, '<'], ['.', 0xBE, '>'], ['/', 0xBF, '?'], ['_', 0xE2, '_'], [' ', 0x20, ' ']]) {
  characters[shifted] ??= [key, true];
  characters[c] = [key, c === '_'];
}

const SHIFT = 0x10;

export class Keys {
  constructor(machine) {
    this.machine = machine;
    this.byCharacter = false;
    this.held = new Map(); // KeyboardEvent.code -> [virtual key, shift as the character wants it, or null]
  }

  // True when the key is the machine's.
  down(event) {
    if (event.repeat) return this.held.has(event.code);
    const found = this.find(event);
    if (!found) return false;
    this.held.set(event.code, found);
    if (found[1] !== null) this.machine.key(SHIFT, found[1]);
    this.machine.key(found[0], true);
    return true;
  }

  up(event) {
    const found = this.held.get(event.code);
    if (!found) return false;
    this.held.delete(event.code);
    this.machine.key(found[0], false);
    if (found[1] !== null) this.machine.key(SHIFT, event.shiftKey);
    return true;
  }

  find(event) {
    if (event.metaKey || (event.altKey && event.code !== 'AltRight')) return null;
    if (this.byCharacter && !event.ctrlKey && [...event.key].length === 1) return characters[event.key] ?? null;
    const key = places[event.code];
    return key === undefined ? null : [key, null];
  }

  releaseAll() {
    this.held.clear();
    this.machine.releaseKeys();
  }
}

// ---- the machine's keyboard on the screen: [label, virtual key, class]

const board = [
  [['STOP', 0x08], ['F1', 0x70], ['F2', 0x71], ['F3', 0x72], ['F4', 0x73], ['F5', 0x74], ['HOME', 0x24], ['INS', 0x2D], ['↑', 0x26], ['↓', 0x28], ['←', 0x25], ['→', 0x27]],
  [['ESC', 0x1B], ...[...'1234567890'].map((c) => [c, c.charCodeAt(0)]), ['-', 0xBD], ['^', 0xDE], ['¥', 0xDC], ['DEL', 0x2E]],
  [['TAB', 0x09, 'wide'], ...[...'QWERTYUIOP'].map((c) => [c, c.charCodeAt(0)]), ['@', 0xC0], ['[', 0xDB], ['RETURN', 0x0D, 'wide']],
  [['CTRL', 0x11, 'wide'], ...[...'ASDFGHJKL'].map((c) => [c, c.charCodeAt(0)]), [';', 0xBB], [':', 0xBA], [']', 0xDD]],
  [['SHIFT', SHIFT, 'wide'], ...[...'ZXCVBNM'].map((c) => [c, c.charCodeAt(0)]), [',', 0xBC], ['.', 0xBE], ['/', 0xBF], ['_', 0xE2], ['SHIFT', SHIFT]],
  [['カナ', 0x1C], ['GRPH', 0x1D], ['', 0x20, 'space'], ...[...'789456'].map((c) => [`⌗${c}`, 0x60 + Number(c)])],
  [...[...'1230'].map((c) => [`⌗${c}`, 0x60 + Number(c)]), ['⌗*', 0x6A], ['⌗+', 0x6B], ['⌗.', 0x6E]],
];
const sticky = new Set([SHIFT, 0x11, 0x1D]);

// A touch on SHIFT, CTRL or GRPH holds it for the next key.
export function buildKeyboard(place, machine, names) {
  const waiting = new Map();
  for (const keys of board) {
    const row = place.appendChild(document.createElement('div'));
    row.className = 'row';
    for (const [label, key, kind] of keys) {
      const button = row.appendChild(document.createElement('button'));
      button.type = 'button';
      button.textContent = label;
      if (kind) button.className = kind;
      if (key === 0x20) button.setAttribute('aria-label', names('space'));
      const press = (down) => {
        button.classList.toggle('down', down);
        machine.key(key, down);
      };
      const begin = () => {
        if (!sticky.has(key)) press(true);
        else if (waiting.delete(key)) press(false);
        else {
          waiting.set(key, press);
          press(true);
        }
      };
      const end = () => {
        if (sticky.has(key)) return;
        press(false);
        for (const release of waiting.values()) release(false);
        waiting.clear();
      };
      button.addEventListener('pointerdown', (event) => {
        event.preventDefault();
        button.setPointerCapture(event.pointerId);
        begin();
      });
      for (const name of ['pointerup', 'pointercancel']) button.addEventListener(name, end);
      button.addEventListener('keydown', (event) => {
        if ((event.key === 'Enter' || event.key === ' ') && !event.repeat) begin();
      });
      button.addEventListener('keyup', (event) => { if (event.key === 'Enter' || event.key === ' ') end(); });
    }
  }
}

// ---- gamepads: the standard layout's buttons

const padButtons = { 0: 0x20, 1: 0x0D, 2: 0x5A, 3: 0x58, 8: 0x1B, 9: 0x70, 12: 0x26, 13: 0x28, 14: 0x25, 15: 0x27 };
const padHeld = new Set();

export function readGamepads(machine) {
  const now = new Set();
  for (const pad of navigator.getGamepads?.() ?? []) {
    if (!pad) continue;
    for (const [button, key] of Object.entries(padButtons)) if (pad.buttons[button]?.pressed) now.add(key);
    if (pad.axes[0] < -0.5) now.add(0x25);
    if (pad.axes[0] > 0.5) now.add(0x27);
    if (pad.axes[1] < -0.5) now.add(0x26);
    if (pad.axes[1] > 0.5) now.add(0x28);
  }
  for (const key of padHeld) if (!now.has(key)) { padHeld.delete(key); machine.key(key, false); }
  for (const key of now) if (!padHeld.has(key)) { padHeld.add(key); machine.key(key, true); }
}
