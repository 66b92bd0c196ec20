// The machine: kiv.wasm behind an object. Every call is the flat interface's of api/kiv.h; what is said there about
// ownership holds here, so views of the memory are made anew at each look, for it may have moved.

export const WIDTH = 640, HEIGHT = 400;
export const RUN_STOPPED = 2;
export const ROM = { '8801-zun.rom': 0, '8801-kiv.rom': 1, '8801-4th.rom': 2 };

export class MachineError extends Error {
  constructor(message, code) {
    super(message);
    this.code = code; // the kiv_result, where it was one
  }
}

// Compressed as a file, for few static servers compress by themselves; some say so, and then the browser has unpacked it.
async function unpacked(stream) {
  const reader = stream.getReader();
  let { value, done } = await reader.read();
  const packed = value?.[0] === 0x1F;
  const whole = new ReadableStream({
    async pull(controller) {
      if (done) return controller.close();
      controller.enqueue(value);
      ({ value, done } = await reader.read());
    },
    cancel: (reason) => reader.cancel(reason),
  });
  return packed ? whole.pipeThrough(new DecompressionStream('gzip')) : whole;
}

export class Machine {
  // Loads the program; the machine is not powered on yet. It is compiled while it arrives.
  static async load(url) {
    // The C library asks for a few services of a host that no call of the machine ever needs: all of them say no.
    const refuse = new Proxy({}, { get: () => () => 52 });
    const answer = await fetch(url);
    if (!answer.ok) throw new MachineError(`${url}: ${answer.status}`);
    const program = new Response(await unpacked(answer.body), { headers: { 'Content-Type': 'application/wasm' } });
    const { instance } = await WebAssembly.instantiateStreaming(program, { wasi_snapshot_preview1: refuse, env: refuse });
    instance.exports._initialize?.();
    return new Machine(instance.exports);
  }

  constructor(exports) {
    this.c = exports;
    this.openRoms = true;
  }

  bytes(at, size) { return new Uint8Array(this.c.memory.buffer, at, size); }

  text(at) {
    const memory = new Uint8Array(this.c.memory.buffer);
    let end = at;
    while (memory[end] !== 0) end++;
    return new TextDecoder().decode(memory.subarray(at, end));
  }

  check(result) {
    if (result < 0) throw new MachineError(this.text(this.c.kiv_error_text()), result);
    return result;
  }

  // Calls f with the address of a copy of the bytes.
  lend(data, f) {
    const at = this.c.malloc(Math.max(data.length, 1));
    if (at === 0) throw new MachineError('out of memory', -4);
    try {
      this.bytes(at, data.length).set(data);
      return f(at, data.length);
    } finally {
      this.c.free(at);
    }
  }

  lendText(text, f) {
    return this.lend(new TextEncoder().encode(text + '\0'), f);
  }

  insertRom(socket, data) {
    this.check(this.lend(data, (at, size) => this.c.kiv_rom(socket, at, size)));
    this.openRoms = false;
  }

  insertOpenRoms() {
    this.check(this.c.kiv_open_roms());
    this.openRoms = true;
  }

  boot(date = new Date()) {
    const fields = Int32Array.of(date.getFullYear(), date.getMonth() + 1, date.getDate(), date.getHours(), date.getMinutes(), date.getSeconds());
    this.check(this.lend(new Uint8Array(fields.buffer), (at) => this.c.kiv_calendar_start(at)));
    this.check(this.c.kiv_boot());
  }

  reset() { this.check(this.c.kiv_reset()); }
  runFrame() { return this.c.kiv_run_frame(); }
  get frames() { return Number(this.c.kiv_frames()); }
  get frameSeconds() { return this.c.kiv_frame_t_states() / this.c.kiv_clock_hz(); }
  get stopReason() { return this.c.kiv_stop_reason(); }
  get stopAddress() { return this.c.kiv_stop_address(); }

  pixels() { return this.bytes(this.c.kiv_pixels(), WIDTH * HEIGHT * 4); } // blue, green, red, 0
  // The same for a canvas: red, green, blue, opaque, and which lines are not what they were at the last call.
  picture() {
    const pixels = new Uint8ClampedArray(this.c.memory.buffer, this.c.page_picture(), WIDTH * HEIGHT * 4);
    return { pixels, first: this.c.page_first_line(), end: this.c.page_end_line() };
  }

  samples() { return new Int16Array(this.c.memory.buffer, this.c.kiv_resampled(), this.c.kiv_resampled_count()); }
  setRate(rate) { this.check(this.c.kiv_set_sample_rate(rate)); }
  setSetting(key, value) { this.lendText(key, (at) => this.check(this.c.kiv_set_setting(at, value))); }

  screenText() {
    const size = this.c.kiv_text_screen(0, 0);
    if (size === 0) return '';
    return this.lend(new Uint8Array(size + 1), (at) => {
      this.c.kiv_text_screen(at, size + 1);
      return this.text(at);
    });
  }

  key(virtualKey, down) { this.c.kiv_key(virtualKey, down ? 1 : 0); }
  placeKey(row, bit, down) { this.key(0x100 + row * 8 + bit, down); }
  matrixRow(row) { return this.c.kiv_matrix_row(row); }
  releaseKeys() { this.c.kiv_release_keys(); }
  type(text) { this.lendText(text, (at) => this.check(this.c.kiv_type(at))); }
  get typing() { return this.c.kiv_type_waiting(); }
  stopTyping() { this.c.kiv_type_cancel(); }

  insertTape(data) { this.check(this.lend(data, (at, size) => this.c.kiv_tape_insert(at, size))); }
  get tapePosition() { return this.c.kiv_tape_position(); }
  get tapeSize() { return this.c.kiv_tape_size(); }
  recordTape(on) {
    this.c.kiv_tape_record(on ? 1 : 0);
    this.c.kiv_tape_output_clear();
  }
  recorded() { return this.bytes(this.c.kiv_tape_output(), this.c.kiv_tape_output_size()).slice(); }
  loadDump(data) { this.check(this.lend(data, (at, size) => this.c.kiv_dump_load(at, size))); }

  save() {
    const size = this.c.kiv_snapshot_size(0);
    return this.lend(new Uint8Array(size), (at) => this.bytes(at, this.c.kiv_snapshot_save(0, at, size)).slice());
  }
  load(data) { this.check(this.lend(data, (at, size) => this.c.kiv_snapshot_load(at, size))); }
}
