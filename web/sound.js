// The sound: what the machine made goes to a worklet's queue. Its clock and the page's drift apart, so the rate at which the
// machine makes samples follows the queue's fill: too full, a little less; too empty, a little more. At most half a per cent,
// which nobody hears, and never by dropping or repeating samples.

//
// How much waits in the queue follows the host: where it ran dry, the page is held up for longer than what had waited, so more
// waits from then on, and after a while without trouble a little less again.

const LEAST = 0.06, MOST = 0.2;     // seconds that wait in the queue
const MORE = 0.03;                  // seconds more after an underrun
const LESS = 0.005, PATIENCE = 60;  // seconds less, after so many seconds without one
const STRONGEST = 0.005;

export class Sound {
  constructor() {
    this.context = null;
    this.fill = 0;      // seconds, as the worklet last said, and what was sent since
    this.on = true;
    this.underruns = 0;
    this.target = LEAST;
    this.quietSince = 0; // seconds of the context
  }

  // Needs a gesture of the person. True when sound runs.
  async start() {
    if (this.context) {
      await this.context.resume();
      return this.running;
    }
    try {
      this.context = new AudioContext({ latencyHint: 'interactive' });
      await this.context.audioWorklet.addModule('worklet.js');
      this.node = new AudioWorkletNode(this.context, 'kiv-queue', { numberOfInputs: 0, outputChannelCount: [1] });
      this.node.port.onmessage = ({ data }) => {
        this.fill = data.waiting / this.context.sampleRate;
        this.adapt(data.underruns);
        this.onwant?.();
      };
      this.gain = new GainNode(this.context, { gain: this.on ? 1 : 0 });
      this.node.connect(this.gain).connect(this.context.destination);
      await this.context.resume();
    } catch (error) {
      this.context = null;
      console.warn(`no sound: ${error.message}`);
    }
    return this.running;
  }

  get running() { return this.context?.state === 'running' && this.node !== undefined; }
  get wants() { return this.fill < this.target; }

  adapt(underruns) {
    const now = this.context.currentTime;
    if (underruns > this.underruns) this.target = Math.min(MOST, this.target + MORE);
    else if (now - this.quietSince < PATIENCE) return;
    else this.target = Math.max(LEAST, this.target - LESS);
    this.underruns = underruns;
    this.quietSince = now;
  }

  // Samples a second that the machine is to make now.
  rate() {
    const error = (this.target - this.fill) / this.target;
    return this.context.sampleRate * (1 + STRONGEST * Math.max(-1, Math.min(1, error)));
  }

  play(samples) {
    const floats = new Float32Array(samples.length);
    for (let i = 0; i < samples.length; i++) floats[i] = samples[i] / 32768;
    this.fill += floats.length / this.context.sampleRate;
    this.node.port.postMessage(floats, [floats.buffer]);
  }

  switch(on) {
    this.on = on;
    if (this.gain) this.gain.gain.setTargetAtTime(on ? 1 : 0, this.context.currentTime, 0.01);
  }

  pause() { return this.context?.suspend(); }
}
