// On the audio thread: a queue of samples, given out as the device asks. When it runs dry the last sample fades out
// rather than breaking off, and it waits for some to gather before it goes on.

const GATHER = 0.03; // seconds

class Queue extends AudioWorkletProcessor {
  constructor() {
    super();
    this.chunks = [];
    this.at = 0;       // of the first chunk
    this.waiting = 0;  // samples
    this.level = 0;    // last given out
    this.dry = true;
    this.blocks = 0;
    this.underruns = 0;
    this.port.onmessage = ({ data }) => {
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
    return sample;
  }

  process(inputs, outputs) {
    const out = outputs[0][0];
    for (let i = 0; i < out.length; i++) {
      if (!this.dry && this.waiting === 0) {
        this.dry = true;
        this.underruns++;
      }
      this.level = this.dry ? this.level * 0.99 : this.next();
      out[i] = this.level;
    }
    if (++this.blocks % 2 === 0) this.port.postMessage({ waiting: this.waiting, underruns: this.underruns });
    return true;
  }
}

registerProcessor('kiv-queue', Queue);
