// What a person reads, in English and Japanese.
const texts = {
  en: {
    skip: 'To the machine', open: 'Open…', reset: 'Reset', pause: 'Pause', fast: 'Fast', states: 'States', paste: 'Paste', picture: 'Picture',
    share: 'Share', keys: 'Keyboard', full: 'Full screen', settings: 'Settings', help: 'Help', close: 'Close', download: 'Save to a file',
    screen: 'Screen of the machine. Type here; Shift+Tab leaves.', spoken: 'Text on the screen', keyboard: 'Keyboard of the machine', space: 'Space',
    save: 'Save', load: 'Load', remove: 'Delete', empty: 'empty', slot: 'Slot',
    language: 'Language', aspect: 'Picture', monitor43: '4:3, as on the monitor', square: 'Square pixels', lines: 'Scan lines', off: 'Off', on: 'On',
    layout: 'Keys', place: 'By place', character: 'By character', arrows: 'Arrow keys', tenkey: 'Ten-key 4, 8, 6, 2', cursor: 'Cursor keys',
    sound: 'Sound', hidden: 'When hidden', pauseHidden: 'Pause', goOn: 'Go on', monitor: 'Monitor', roms: 'ROM images', openRoms: 'Open ROM set',
    ownRoms: 'Own images', spokenText: 'Text for screen readers',
    loaded: (n) => `${n} loaded`, saved: (n) => `State ${n} saved`, restored: (n) => `State ${n} loaded`, failed: (n, why) => `${n}: ${why}`,
    stopped: (at) => `The processor stopped at $${at}`, copied: 'Link copied', noProgram: 'There is no BASIC program to share', typing: 'Typing; Escape stops',
    nothing: 'Nothing to paste',
    kinds: 'Kiv opens .cmt tapes, .bas and .txt listings, .kiv dumps, .kst states and ROM images',
    romNames: 'ROM images are called 8801-zun.rom, 8801-kiv.rom and 8801-4th.rom', romSize: (n) => `${n} bytes, more than the 32768 of a ROM`,
    romsMissing: (n, missing) => `${n} taken; still missing: ${missing}`, tooLarge: (n) => `larger than ${n} MB`,
    noListing: 'there is no program in the address', otherSite: (n) => `a tape of another site (${n}) is not fetched`, notThere: (n) => `${n} is not there`,
    helpText: [['Escape', 'stops a paste; else ESC of the machine'], ['Shift+Tab', 'leaves the machine for the buttons'], ['Pause', 'STOP'], ['Backspace', 'DEL'], ['Right Alt', 'GRPH'], ['Caps Lock', 'kana'],
      ['Drop a file', '.cmt tape, .bas or .txt listing, .kiv memory dump, .kst state, 8801-*.rom images'],
      ['?bas=…', 'a program in the address: Share makes one'], ['?tape=file', 'a tape of the same site']],
    helpBasic: 'Type HELP on the machine for its words, DEMO for what it can do.',
  },
  ja: {
    skip: '本体へ', open: '開く…', reset: 'リセット', pause: '一時停止', fast: '早送り', states: 'ステート', paste: '貼り付け', picture: '画面保存',
    share: '共有', keys: 'キーボード', full: '全画面', settings: '設定', help: 'ヘルプ', close: '閉じる', download: 'ファイルに保存',
    screen: '本体の画面。ここで入力します。Shift+Tabで出ます。', spoken: '画面の文字', keyboard: '本体のキーボード', space: 'スペース',
    save: '保存', load: '読込', remove: '削除', empty: '空', slot: 'スロット',
    language: '言語', aspect: '画面比率', monitor43: '4:3 (モニターと同じ)', square: '正方形画素', lines: '走査線', off: 'なし', on: 'あり',
    layout: 'キー配列', place: '位置', character: '文字', arrows: '矢印キー', tenkey: 'テンキー 4, 8, 6, 2', cursor: 'カーソルキー',
    sound: '音', hidden: '隠れたとき', pauseHidden: '一時停止', goOn: '続ける', monitor: 'モニター', roms: 'ROMイメージ', openRoms: 'オープンROM',
    ownRoms: '手持ちのイメージ', spokenText: '読み上げ用の文字',
    loaded: (n) => `${n} を読み込みました`, saved: (n) => `ステート${n}を保存しました`, restored: (n) => `ステート${n}を読み込みました`, failed: (n, why) => `${n}: ${why}`,
    stopped: (at) => `$${at} で停止しました`, copied: 'リンクをコピーしました', noProgram: '共有するBASICプログラムがありません', typing: '入力中。Escapeで中止',
    nothing: '貼り付けるものがありません',
    kinds: '開けるのは .cmt テープ、.bas .txt リスト、.kiv ダンプ、.kst ステート、ROMイメージです',
    romNames: 'ROMイメージの名前は 8801-zun.rom、8801-kiv.rom、8801-4th.rom です', romSize: (n) => `${n} バイトで、ROMの32768を超えています`,
    romsMissing: (n, missing) => `${n} を受け取りました。残り: ${missing}`, tooLarge: (n) => `${n} MBを超えています`,
    noListing: 'アドレスにプログラムがありません', otherSite: (n) => `他のサイト(${n})のテープは読みません`, notThere: (n) => `${n} がありません`,
    helpText: [['Escape', '貼り付けの中止、通常はESC'], ['Shift+Tab', '本体からボタンへ'], ['Pause', 'STOP'], ['Backspace', 'DEL'], ['右Alt', 'GRPH'], ['Caps Lock', 'カナ'],
      ['ファイルのドロップ', '.cmt テープ、.bas .txt リスト、.kiv メモリーダンプ、.kst ステート、8801-*.rom'],
      ['?bas=…', 'アドレスの中のプログラム。「共有」で作れます'], ['?tape=ファイル', '同じサイトのテープ']],
    helpBasic: '本体でHELPと打つと命令の一覧、DEMOでデモが始まります。',
  },
};

// Why something was refused, by the codes of api/kiv.h; what stands here nowhere is said as the machine says it.
const refusals = {
  en: {
    '-4': 'not enough memory', '-10': 'not a state of Kiv', '-11': 'a state of another version of Kiv', '-12': 'the state is damaged',
    '-13': 'the state was made with other ROM images', '-14': 'the state was made with another tape',
  },
  ja: {
    '-3': '大きさが違います', '-4': 'メモリーが足りません', '-5': '打てない文字が含まれています', '-10': 'Kivのステートではありません', '-11': '別の版のステートです',
    '-12': 'ステートが壊れています', '-13': '別のROMイメージのステートです', '-14': '別のテープのステートです',
  },
};
export function reasons() { return refusals[language]; }

export const languages = { en: 'English', ja: '日本語' };
let language = 'en';
export function setLanguage(name) {
  language = texts[name] ? name : 'en';
  document.documentElement.lang = language;
  for (const element of document.querySelectorAll('[data-text]')) element.textContent = say(element.dataset.text);
  for (const element of document.querySelectorAll('[data-label]')) element.setAttribute('aria-label', say(element.dataset.label));
}
export function currentLanguage() { return language; }
export function say(name, ...values) {
  const text = texts[language][name];
  return typeof text === 'function' ? text(...values) : text;
}
