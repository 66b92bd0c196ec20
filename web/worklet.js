// On the audio thread: a queue of samples, given out as the device asks. When it runs dry the last sample fades out
// rather than breaking off, and it waits for some to gather before it goes on.

const GATHER = 0.03; // seconds

class Queue extends AudioWorkletProcessor {
  constructor() {
    super();
    this.chunks = [];
    this.at = 0;       // of the first chunk
    this.waiting = 0;  // samples
    this.played = 0;   // samples
    this.level = 0;    // last given out
    this.dry = true;
    this.resting = true; // nothing more comes for a while, so that running dry is no fault
    this.blocks = 0;
    this.underruns = 0;
    this.least = Infinity; // samples that waited since the last report, where it mattered
    this.port.onmessage = ({ data }) => {
      this.resting = data === null;
      if (this.resting) return;
      this.chunks.push(data);
      this.waiting += data.length;
      if (this.dry && this.waiting >= GATHER * sampleRate) this.dry = false;
    };
  }

  next() {
    const chunk = this.chunks[0];
    const sample = chunk[this.at++];
    if (this.at === chunk.length) {
      this.chunks.shift();
      this.at = 0;
    }
    this.waiting--;
    this.played++;
    return sample;
  }

  process(inputs, outputs) {
    const out = outputs[0][0];
    for (let i = 0; i < out.length; i++) {
      if (!this.dry && this.waiting === 0) {
        this.dry = true;
        if (!this.resting) this.underruns++;
      }
      this.level = this.dry ? this.level * 0.99 : this.next();
      out[i] = this.level;
    }
    if (!this.dry && !this.resting) this.least = Math.min(this.least, this.waiting);
    if (++this.blocks % 2 === 0) {
      this.port.postMessage({ played: this.played, least: this.least, underruns: this.underruns });
      this.least = Infinity;
    }
    return true;
  }
}

registerProcessor('kiv-queue', Queue);
