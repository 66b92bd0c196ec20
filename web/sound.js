// The sound: what the machine made goes to a worklet's queue. Its clock and the page's drift apart, so the rate at which the
// machine makes samples follows the queue's fill: too full, a little less; too empty, a little more. At most half a per cent,
// which nobody hears, and never by dropping or repeating samples.
//
// How much waits in the queue follows the host. What matters is how little ever waited: where that came close to nothing the
// page is held up for long, so more waits from then on, before the queue runs dry; after a while with plenty a little less.

const FIRST = 0.1, LEAST = 0.06, MOST = 0.25; // seconds that wait in the queue
const CLOSE = 0.025, PLENTY = 0.05;           // seconds that waited at the least
const MORE = 0.03, LESS = 0.005;              // seconds
const SETTLE = 1, PATIENCE = 60;              // seconds of the context: until a change shows; that plenty has to last
const STRONGEST = 0.005;

export class Sound {
  constructor() {
    this.context = null;
    this.sent = this.played = 0; // samples, the latter as the worklet last said
    this.on = true;
    this.underruns = 0;
    this.target = FIRST;
    this.lowest = Infinity; // seconds that waited at the least since...
    this.since = 0;         // ...seconds of the context
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
        this.played = data.played;
        this.adapt(data.least / this.context.sampleRate, data.underruns);
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
  // What has been counted down late is taken for what still waits, never the other way round: after the page was held up, it
  // makes no more than was missing.
  get fill() { return (this.sent - this.played) / this.context.sampleRate; }
  get wants() { return this.fill < this.target; }

  adapt(least, underruns) {
    const now = this.context.currentTime, ranDry = underruns > this.underruns;
    this.underruns = underruns;
    if (now - this.since < SETTLE && !ranDry) return;
    this.lowest = Math.min(this.lowest, least);
    if (ranDry || this.lowest < CLOSE) this.target = Math.min(MOST, this.target + MORE);
    else if (now - this.since < PATIENCE) return;
    else if (this.lowest > PLENTY) this.target = Math.max(LEAST, this.target - LESS);
    this.lowest = Infinity;
    this.since = now;
  }

  // Samples a second that the machine is to make now.
  rate() {
    const error = (this.target - this.fill) / this.target;
    return this.context.sampleRate * (1 + STRONGEST * Math.max(-1, Math.min(1, error)));
  }

  play(samples) {
    const floats = new Float32Array(samples.length);
    for (let i = 0; i < samples.length; i++) floats[i] = samples[i] / 32768;
    this.sent += floats.length;
    this.node.port.postMessage(floats, [floats.buffer]);
  }

  switch(on) {
    this.on = on;
    if (this.gain) this.gain.gain.setTargetAtTime(on ? 1 : 0, this.context.currentTime, 0.01);
  }

  // Nothing more comes for a while: what waits is played, and then there is silence.
  rest() { this.node?.port.postMessage(null); }

  pause() { return this.context?.suspend(); }
}
