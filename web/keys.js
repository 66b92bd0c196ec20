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
    this.onrelease?.(); // the keyboard on the screen
    this.machine.releaseKeys();
  }
}

// ---- the machine's keyboard on the screen: [label, row, bit, what Shift makes of it, class]

const letters = {
  A: [2, 1], B: [2, 2], C: [2, 3], D: [2, 4], E: [2, 5], F: [2, 6], G: [2, 7], H: [3, 0], I: [3, 1], J: [3, 2], K: [3, 3], L: [3, 4], M: [3, 5],
  N: [3, 6], O: [3, 7], P: [4, 0], Q: [4, 1], R: [4, 2], S: [4, 3], T: [4, 4], U: [4, 5], V: [4, 6], W: [4, 7], X: [5, 0], Y: [5, 1], Z: [5, 2],
};
const keysOf = (text) => [...text].map((c) => [c, ...letters[c]]);
const digits = [...'1234567'].map((c, i) => [c, 6, i + 1, '!"#$%&\''[i]]);
const functions = [1, 2, 3, 4, 5].map((i) => [`F${i}`, 9, i]);
const PAD = 'pad'; // not a key: changes to the ten-key and back, where there is no room for both

const board = [
  [['STOP', 9, 0], ...functions, ['COPY', 10, 4], ['HELP', 10, 3], ['↑', 8, 1], ['↓', 10, 1], ['←', 10, 2], ['→', 8, 2]],
  [['ESC', 9, 7], ...digits, ['8', 7, 0, '('], ['9', 7, 1, ')'], ['0', 6, 0], ['-', 5, 7, '='], ['^', 5, 6, '~'], ['¥', 5, 4, '|'], ['DEL', 8, 3, 'INS']],
  [['TAB', 10, 0, '', 'wide'], ...keysOf('QWERTYUIOP'), ['@', 2, 0, '`'], ['[', 5, 3, '{'], ['RETURN', 1, 7, '', 'wide']],
  [['CTRL', 8, 7], ['CAPS', 10, 7], ...keysOf('ASDFGHJKL'), [';', 7, 3, '+'], [':', 7, 2, '*'], [']', 5, 5, '}']],
  [['SHIFT', 8, 6, '', 'wide'], ...keysOf('ZXCVBNM'), [',', 7, 4, '<'], ['.', 7, 5, '>'], ['/', 7, 6, '?'], ['_', 7, 7], ['SHIFT', 8, 6, '', 'wide']],
  [['カナ', 8, 5], ['GRPH', 8, 4], ['', 9, 6, '', 'space'], ['HOME', 8, 0, 'CLR'], ['123', PAD]],
];
// The same for a phone's width, in rows of eleven.
const keyOf = new Map(board.flat().map((key) => [key[0] || 'SPACE', key]));
const compact = ['ESC STOP F1 F2 F3 F4 F5 COPY HELP HOME 123', '1 2 3 4 5 6 7 8 9 0 DEL', 'Q W E R T Y U I O P @', 'A S D F G H J K L ; :',
  'Z X C V B N M , . / _', 'TAB CAPS カナ - ^ ¥ [ ] RETURN', 'SHIFT CTRL GRPH SPACE ← ↑ ↓ →'].map((row) => row.split(' ').map((label) => keyOf.get(label)));
const pad = [
  [['7', 0, 7], ['8', 1, 0], ['9', 1, 1], ['/', 10, 6]],
  [['4', 0, 4], ['5', 0, 5], ['6', 0, 6], ['*', 1, 2]],
  [['1', 0, 1], ['2', 0, 2], ['3', 0, 3], ['-', 10, 5]],
  [['0', 0, 0], [',', 1, 5], ['.', 1, 6], ['+', 1, 3]],
  [['ABC', PAD], ['=', 1, 4], ['RETURN', 1, 7, '', 'wide']],
];
const untilNext = new Set(['SHIFT', 'CTRL', 'GRPH']), turning = new Set(['CAPS', 'カナ']);

// SHIFT, CTRL and GRPH are held for the next key, CAPS and カナ until they are touched again. Returns what lets all of them go.
export function buildKeyboard(place, machine, names) {
  const held = new Map(); // label -> [its buttons, row, bit]
  const buttons = new Map();
  const hold = (label, row, bit, on) => {
    if (on) held.set(label, [row, bit]); else held.delete(label);
    for (const button of buttons.get(label)) {
      button.classList.toggle('down', on);
      button.setAttribute('aria-pressed', String(on));
    }
    if (label === 'SHIFT') place.classList.toggle('shifted', on);
    machine.placeKey(row, bit, on);
  };
  const letGo = (all) => {
    for (const [label, [row, bit]] of [...held]) if (all || untilNext.has(label)) hold(label, row, bit, false);
  };

  const addKey = (into, [label, row, bit, shifted, kind]) => {
    const button = into.appendChild(document.createElement('button'));
    button.type = 'button';
    button.textContent = label;
    button.className = `${kind ?? ''} ${label.length > 2 || label === 'カナ' ? 'word' : ''}`;
    if (shifted) button.dataset.shifted = shifted;
    if (label === '') {
      button.dataset.label = 'space';
      button.setAttribute('aria-label', names('space'));
    }
    if (row === PAD) {
      button.classList.add('turns');
      return button.addEventListener('click', () => place.classList.toggle('pad'));
    }
    const holds = untilNext.has(label) || turning.has(label);
    if (holds) {
      buttons.set(label, [...buttons.get(label) ?? [], button]);
      button.setAttribute('aria-pressed', 'false');
    }
    let down = false;
    const press = (on) => {
      down = on;
      button.classList.toggle('down', on);
      machine.placeKey(row, bit, on);
    };
    const begin = () => { if (holds) hold(label, row, bit, !held.has(label)); else press(true); };
    const end = () => {
      if (!down) return;
      press(false);
      letGo(false);
    };
    button.addEventListener('pointerdown', (event) => {
      event.preventDefault();
      button.setPointerCapture(event.pointerId);
      begin();
    });
    for (const name of ['pointerup', 'pointercancel', 'blur']) button.addEventListener(name, end);
    button.addEventListener('keydown', (event) => {
      if ((event.key === 'Enter' || event.key === ' ') && !event.repeat) begin();
    });
    button.addEventListener('keyup', (event) => { if (event.key === 'Enter' || event.key === ' ') end(); });
  };

  for (const [rows, name] of [[board, 'main'], [compact, 'compact'], [pad, 'tenkey']]) {
    const block = place.appendChild(document.createElement('div'));
    block.className = name;
    for (const keys of rows) {
      const row = block.appendChild(document.createElement('div'));
      row.className = 'row';
      for (const key of keys) addKey(row, key);
    }
  }
  return () => letGo(true);
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
