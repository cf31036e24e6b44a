// Below the picture: where in time it is looked at, and a lane for each value that changes.

import * as curves from "./curves.js";
import { curvesOf } from "./fields.js";
import { make } from "./markup.js";
import { currentEffect, currentStage, isSound, share, store } from "./state.js";

const ns = "http://www.w3.org/2000/svg";
const kHeight = 40, kWidth = 1000;

const courseTitles = { line: "straight", smooth: "smooth", hold: "held" };

function timeText(frame) {
  const { rate } = store.facts;
  const seconds = frame / rate;
  const two = (n) => String(Math.floor(n)).padStart(2, "0");
  return `${two(seconds / 60)}:${two(seconds % 60)}.${two((seconds % 1) * 100)} · frame ${frame}`;
}

class TimeBar extends HTMLElement {
  chosen = null; // {name, t}
  connectedCallback() {
    this.scrub = make("input", { type: "range", min: 0, step: 1, "aria-label": "Time", oninput: () => this.go(Number(this.scrub.value)) });
    this.play = make("button", { title: "Play (space)", "aria-label": "Play", onclick: () => this.toggle() }, "▶");
    this.told = make("output", {});
    this.length = make("input", { type: "text", inputMode: "decimal", className: "entry", title: "Seconds that the effects span", "aria-label": "Length in seconds",
      onchange: () => {
        const seconds = Number(this.length.value.replace(",", "."));
        if (seconds >= 0.04 && seconds <= 86400) store.change((doc) => { doc.duration = seconds; });
        this.update();
      } });
    this.lanes = make("div", { className: "lanes" });
    this.append(make("div", { className: "scrub" },
      this.play, make("button", { title: "A frame back (,)", "aria-label": "A frame back", onclick: () => this.go(store.doc.frame - 1) }, "‹"),
      make("button", { title: "A frame on (.)", "aria-label": "A frame on", onclick: () => this.go(store.doc.frame + 1) }, "›"),
      this.scrub, this.told, make("label", { className: "length" }, this.length, " s")), this.lanes);
    store.onChange(() => this.update());
    addEventListener("keydown", (event) => {
      if (event.target.matches("input, textarea, select, button, summary") || event.ctrlKey || event.metaKey) return;
      if (event.key === " ") { this.toggle(); event.preventDefault(); }
      if (event.key === ",") this.go(store.doc.frame - 1);
      if (event.key === ".") this.go(store.doc.frame + 1);
    });
    this.update();
  }

  go(frame) {
    store.look((doc) => { doc.frame = Math.max(0, Math.min(Math.round(frame), store.facts.frames - 1)); });
  }

  /** In real time, leaving out frames that do not come in time. */
  toggle() {
    if (this.playing) { cancelAnimationFrame(this.playing); this.playing = null; return this.update(); }
    const began = performance.now(), from = store.doc.frame >= store.facts.frames - 1 ? 0 : store.doc.frame;
    const step = () => {
      const frame = from + Math.floor(((performance.now() - began) / 1000) * store.facts.rate);
      this.playing = frame < store.facts.frames ? requestAnimationFrame(step) : null;
      if (frame !== store.doc.frame) this.go(frame);
      if (!this.playing) this.update();
    };
    this.playing = requestAnimationFrame(step);
    this.update();
  }

  update() {
    this.hidden = isSound();
    const { frames, duration } = store.facts;
    const frame = Math.min(store.doc.frame, frames - 1);
    this.scrub.max = frames - 1;
    this.scrub.value = frame;
    this.scrub.style.setProperty("--filled", `${(100 * frame) / Math.max(1, frames - 1)}%`);
    this.scrub.setAttribute("aria-valuetext", timeText(frame));
    this.told.textContent = timeText(frame);
    if (document.activeElement !== this.length) this.length.value = curves.numberText(duration);
    this.play.textContent = this.playing ? "⏸" : "▶";
    this.updateLanes();
  }

  updateLanes() {
    const stage = currentStage(), effect = currentEffect();
    const keyed = stage ? curvesOf(effect, stage).filter(({ value }) => value.keys.length > 1) : [];
    this.lanes.replaceChildren(...keyed.map((curve) => this.lane(curve)));
    this.lanes.hidden = keyed.length === 0;
    const again = this.chosen && [...this.lanes.querySelectorAll(".key-mark")].find((mark) => mark.name === this.chosen.name && mark.t === this.chosen.t);
    if (again && this.hadFocus) again.focus();
  }

  lane({ name, value, color, field }) {
    const keys = value.keys;
    const lane = make("div", { className: "lane" });
    lane.style.setProperty("--curve", color ?? "var(--accent)");
    const area = make("div", { className: "area", title: "Click puts a key" });
    area.append(this.graph(keys, field), ...keys.map((key) => this.mark(key, keys, name, value)));
    const now = make("i", { className: "now" });
    now.style.left = `${Math.min(1, share()) * 100}%`;
    area.append(now);
    area.addEventListener("click", (event) => {
      if (event.target.closest(".key-mark")) return;
      const box = area.getBoundingClientRect();
      const t = this.snapped((event.clientX - box.left) / box.width);
      value.setKeys(curves.withKey(keys, t, value.at(keys, t)));
    });
    lane.append(make("span", { className: "lane-name" }, name), area,
      make("button", { className: "small", title: "No keys: the value that is now, all the time", "aria-label": `Remove the keys of ${name}`,
        onclick: () => value.set(value.now) }, "×"));
    return lane;
  }

  /** A share of the span that is a frame's. */
  snapped(t) {
    const { rate, duration } = store.facts;
    return Math.max(0, Math.min(1, Math.round(t * rate * duration) / (rate * duration)));
  }

  graph(keys, field) {
    const graph = document.createElementNS(ns, "svg");
    graph.setAttribute("viewBox", `0 0 ${kWidth} ${kHeight}`);
    graph.setAttribute("preserveAspectRatio", "none");
    if (field.type === "geometry") return graph;
    const values = Array.from({ length: 201 }, (_, i) => curves.at(keys, i / 200));
    const isColor = values[0].length > 1;
    if (isColor) {
      values.slice(0, -1).forEach((rgba, i) => {
        const rect = document.createElementNS(ns, "rect");
        Object.entries({ x: i * 5, y: 8, width: 5.5, height: kHeight - 16, fill: curves.color.format(rgba).slice(0, 7) }).forEach(([k, v]) => rect.setAttribute(k, v));
        graph.append(rect);
      });
      return graph;
    }
    const numbers = values.map(([v]) => v);
    const least = Math.min(...numbers, field.min ?? Infinity), most = Math.max(...numbers, field.max ?? -Infinity);
    const y = (v) => kHeight - 6 - ((v - least) / (most - least || 1)) * (kHeight - 12);
    const line = document.createElementNS(ns, "polyline");
    line.setAttribute("points", numbers.map((v, i) => `${i * 5},${y(v).toFixed(1)}`).join(" "));
    graph.append(line);
    return graph;
  }

  mark(key, keys, name, value) {
    const mark = make("button", { className: `key-mark ${key.course}`, title: `${curves.numberText(key.t * store.facts.duration)} s: ${key.v.slice(0, 40)}, then ${courseTitles[key.course]}\nDrag moves it, Delete removes it, C changes the way to the next`,
      "aria-label": `Key of ${name} at ${curves.numberText(key.t * store.facts.duration)} seconds` });
    Object.assign(mark, { name, t: key.t });
    mark.style.left = `${key.t * 100}%`;
    const replace = (t, course = key.course) => {
      const others = keys.filter((other) => other !== key && other.t !== t);
      value.setKeys([...others, { ...key, t, course }].sort((a, b) => a.t - b.t));
    };
    mark.addEventListener("focus", () => { this.chosen = { name, t: key.t }; this.hadFocus = true; });
    mark.addEventListener("pointerdown", (event) => {
      event.preventDefault();
      this.go(key.t * store.facts.rate * store.facts.duration);
      const area = this.lanes.querySelectorAll(".area")[[...this.lanes.children].findIndex((lane) => lane.firstChild.textContent === name)];
      const box = area.getBoundingClientRect();
      const others = keys.filter((other) => other !== key);
      let moved = key.t;
      const move = (to) => {
        const t = this.snapped((to.clientX - box.left) / box.width);
        if (t === moved || others.some((other) => other.t === t)) return;
        moved = t;
        this.chosen = { name, t };
        value.setKeys([...others, { ...key, t }].sort((a, b) => a.t - b.t));
      };
      const up = () => { removeEventListener("pointermove", move); removeEventListener("pointerup", up); };
      addEventListener("pointermove", move);
      addEventListener("pointerup", up);
      this.hadFocus = true;
      this.chosen = { name, t: key.t };
      this.updateLanes();
    });
    mark.addEventListener("keydown", (event) => {
      const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
      const { rate, duration } = store.facts;
      if (event.key === "Delete" || event.key === "Backspace") value.setKeys(keys.filter((other) => other !== key));
      else if (event.key.toLowerCase() === "c") replace(key.t, { line: "smooth", smooth: "hold", hold: "line" }[key.course]);
      else if (step) { const t = this.snapped(key.t + step / (rate * duration)); this.chosen = { name, t }; replace(t); }
      else return;
      event.preventDefault();
      event.stopPropagation();
    });
    return mark;
  }
}
customElements.define("time-bar", TimeBar);
