// Sound effects: the waveform of what comes out, played with levels.

import { client, onReturn, send } from "./api.js";
import { make } from "./markup.js";
import { isSound, store, wire } from "./state.js";

let requests = 0;

/** {rate, channels: [samples]} of a file of 32-bit floats. */
function readWav(bytes) {
  const view = new DataView(bytes);
  const channels = view.getUint16(22, true), rate = view.getUint32(24, true);
  const samples = new Float32Array(bytes, 44);
  return { rate, channels: Array.from({ length: channels }, (_, c) => samples.filter((_, i) => i % channels === c)) };
}

const decibels = (level) => (level > 1e-5 ? `${(20 * Math.log10(level)).toFixed(1)} dB` : "silence");

class SoundView extends HTMLElement {
  connectedCallback() {
    this.canvas = make("canvas", { role: "img", tabIndex: 0, "aria-label": "Waveform" });
    this.play = make("button", { className: "primary", onclick: () => (this.source ? this.stop() : this.start()) }, "▶ Play");
    this.meters = make("div", { className: "meters", "aria-hidden": "true" });
    this.told = make("output", {});
    this.message = make("p", { className: "message", hidden: true });
    this.length = make("input", { type: "text", inputMode: "decimal", className: "entry", "aria-label": "Length in seconds", title: "Seconds of sound, where no input tells",
      onchange: () => { const s = Number(this.length.value); if (s > 0) store.change((doc) => { doc.duration = s; }); } });
    this.append(make("div", { className: "viewbar" }, this.play, this.told, make("label", { className: "length" }, this.length, " s")),
      make("div", { className: "wave" }, this.canvas, this.message), this.meters);
    store.addEventListener("change", () => this.refresh());
    store.addEventListener("look", () => this.refresh());
    onReturn(() => this.refresh());
    new ResizeObserver(() => this.draw()).observe(this.canvas);
    this.canvas.addEventListener("click", (event) => {
      const box = this.canvas.getBoundingClientRect();
      this.start(((event.clientX - box.left) / box.width) * this.seconds);
    });
    this.refresh();
  }

  get seconds() { return this.sound ? this.sound.channels[0].length / this.sound.rate : 0; }

  refresh() {
    this.hidden = !isSound();
    if (this.hidden) return this.stop();
    const body = JSON.stringify(wire());
    if (body === this.asked) return;
    this.asked = body;
    clearTimeout(this.timer);
    this.timer = setTimeout(() => this.fetch(), 80);
  }

  async fetch() {
    const asked = this.asked;
    try {
      const response = await send("/api/sound", { ...wire(), client: `${client}:sound`, number: ++requests });
      if (response.status === 204) return;
      if (response.headers.get("Content-Type").includes("json")) throw new Error((await response.json()).message);
      const sound = readWav(await response.arrayBuffer());
      if (asked !== this.asked) return;
      this.sound = sound;
      this.message.hidden = true;
      const peaks = sound.channels.map((samples) => samples.reduce((most, s) => Math.max(most, Math.abs(s)), 0));
      this.told.textContent = `${this.seconds.toFixed(2)} s · ${sound.rate} Hz · peaks ${peaks.map(decibels).join(", ")}`;
      this.dataset.peak = Math.max(...peaks);
      if (document.activeElement !== this.length) this.length.value = this.seconds.toFixed(2);
      this.draw();
      if (this.source) this.start(this.position);
    } catch (error) {
      if (error.status === 0) return void (this.asked = null);
      this.message.textContent = error.message.replace(/^"[^"]*" at [\d.e-]+ s: /, "");
      this.message.hidden = false;
    }
  }

  draw() {
    const { canvas, sound } = this;
    const width = (canvas.width = Math.round(canvas.clientWidth * devicePixelRatio)), height = (canvas.height = Math.round(canvas.clientHeight * devicePixelRatio));
    if (!sound || !width) return;
    const context = canvas.getContext("2d"), style = getComputedStyle(this);
    const row = height / sound.channels.length;
    sound.channels.forEach((samples, c) => {
      const middle = row * (c + 0.5), most = row * 0.46;
      context.fillStyle = style.getPropertyValue("--line");
      context.fillRect(0, Math.round(middle), width, 1);
      for (let x = 0; x < width; ++x) {
        const from = Math.floor((x * samples.length) / width), to = Math.max(from + 1, Math.floor(((x + 1) * samples.length) / width));
        let low = 1, high = -1;
        for (let i = from; i < to; ++i) { low = Math.min(low, samples[i]); high = Math.max(high, samples[i]); }
        context.fillStyle = style.getPropertyValue(Math.max(high, -low) >= 1 ? "--danger" : "--accent");
        context.fillRect(x, middle - Math.min(1, high) * most, 1, Math.max(1, (Math.min(1, high) - Math.max(-1, low)) * most));
      }
    });
    if (this.source) {
      context.fillStyle = style.getPropertyValue("--text");
      context.fillRect((this.position / this.seconds) * width, 0, 2, height);
    }
  }

  get position() { return (this.context.currentTime - this.began) % (this.seconds || 1); }

  start(from = 0) {
    this.stop();
    if (!this.sound) return;
    this.context ??= new AudioContext();
    const { channels, rate } = this.sound;
    const buffer = this.context.createBuffer(channels.length, channels[0].length, rate);
    channels.forEach((samples, c) => buffer.copyToChannel(samples, c));
    this.source = this.context.createBufferSource();
    this.source.buffer = buffer;
    this.source.loop = true;
    this.source.connect(this.context.destination);
    this.source.start(0, from);
    this.began = this.context.currentTime - from;
    this.context.resume();
    this.play.textContent = "■ Stop";
    this.meters.replaceChildren(...channels.map(() => make("div", {}, make("i", {}))));
    const tick = () => {
      if (!this.source) return;
      const at = Math.floor(this.position * rate);
      channels.forEach((samples, c) => {
        const peak = samples.subarray(at, at + rate / 20).reduce((most, s) => Math.max(most, Math.abs(s)), 0);
        this.meters.children[c].firstChild.style.width = `${Math.min(100, 100 * Math.max(0, 1 + Math.log10(Math.max(peak, 1e-3)) / 3))}%`;
      });
      this.draw();
      requestAnimationFrame(tick);
    };
    tick();
  }

  stop() {
    this.source?.stop();
    this.source = null;
    this.play.textContent = "▶ Play";
    if (this.sound) this.draw();
  }
}
customElements.define("sound-view", SoundView);
