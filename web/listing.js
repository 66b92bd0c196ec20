// Listings between a person's text and the machine's tape; and as a few letters in an address.

// What has another code on the machine than in Unicode; ASCII is the same, half-width katakana stand in a row.
const special = '▁▂▃▄▅▆▇█▏▎▍▌▋▊▉┼┴┬┤├▔─│▕┌┐└┘╭╮╰╯';
const marks = '═╞╪╡◢◣◥◤♠♥♦♣●○╱╲╳円年月日時分秒';
const toByte = new Map([['¥', 0x5C]]);
[...special].forEach((c, i) => toByte.set(c, 0x80 + i));
[...marks].forEach((c, i) => toByte.set(c, 0xE0 + i));
const fromByte = new Map([...toByte].map(([c, byte]) => [byte, c]));
fromByte.delete(0x5C); // a listing goes out as ASCII

export function listingToTape(text) {
  const bytes = [];
  for (const c of text.normalize('NFC').replace(/\r\n?/g, '\n')) {
    const code = c.codePointAt(0);
    if (c === '\n') bytes.push(0x0D, 0x0A);
    else if (code < 0x80) bytes.push(code);
    else if (code >= 0xFF61 && code <= 0xFF9F) bytes.push(code - 0xFF61 + 0xA1);
    else if (toByte.has(c)) bytes.push(toByte.get(c));
    else bytes.push(0x3F);
  }
  bytes.push(0x0D, 0x0A, 0x1A);
  return Uint8Array.from(bytes);
}

// What SAVE has put on a tape: its lines, between the leader with the name and the mark of the end.
export function tapeToListing(bytes) {
  let text = '';
  for (const byte of bytes) {
    if (byte === 0x1A) break;
    if (byte === 0x0D || byte === 0x0A) text += text.endsWith('\n') ? '' : '\n';
    else if (byte >= 0xA1 && byte <= 0xDF) text += String.fromCodePoint(byte - 0xA1 + 0xFF61);
    else if (fromByte.has(byte)) text += fromByte.get(byte);
    else if (byte >= 0x20 && byte < 0x7F) text += String.fromCharCode(byte);
    else text = text.slice(0, text.lastIndexOf('\n') + 1);
  }
  return text.split('\n').filter((line) => /^\s*\d/.test(line)).join('\n') + '\n';
}

async function through(stream, bytes) {
  return new Uint8Array(await new Response(new Blob([bytes]).stream().pipeThrough(stream)).arrayBuffer());
}

export async function pack(text) {
  const bytes = await through(new CompressionStream('deflate-raw'), new TextEncoder().encode(text));
  return btoa(Array.from(bytes, (b) => String.fromCharCode(b)).join('')).replace(/\+/g, '-').replace(/\//g, '_').replace(/=+$/, '');
}

export async function unpack(letters) {
  const bytes = Uint8Array.from(atob(letters.replace(/-/g, '+').replace(/_/g, '/')), (c) => c.charCodeAt(0));
  return new TextDecoder().decode(await through(new DecompressionStream('deflate-raw'), bytes));
}
