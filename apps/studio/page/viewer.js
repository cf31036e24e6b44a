// The picture: before and after, as large as it is shown, the newest values first.

import { client, onReturn, send } from "./api.js";
import { make } from "./markup.js";
import { isSound, store, wire } from "./state.js";
import { GeometryOverlay } from "./geometry.js";

const kPatience = 400;  // milliseconds that a picture under way is waited for before it is given up
const kSmooth = 33;     // milliseconds that a picture may take while a slider is dragged
const kRest = 160;      // milliseconds without a change after which the whole picture comes

let requests = 0;
let picking = null;
/** Has the next click on the picture give its colour. */
export function pickColor(take) {
  picking = take;
  document.querySelector("picture-view").classList.add("picking");
}

/** One canvas and its requests: one that is rendered, one whose pixels come meanwhile, and the newest waits. */
class Pictures {
  #under = null;  // when the one that is rendered was asked for
  #coming = 0;
  #next = null;
  #drawn = 0;     // the request that the canvas shows
  #costs = { 1: 0, 0.5: 0, 0.25: 0 }; // milliseconds from one picture to the next, by what part of the whole they are

  /** `wanted` tells whether what comes is to be drawn still. */
  constructor(name, canvas, told, wanted = () => true) {
    this.wanted = wanted;
    this.name = `${client}:${name}`;
    this.canvas = canvas;
    this.told = told;
  }

  ask(body) {
    this.#next = body;
    this.#goOn();
    clearTimeout(this.timer);
    this.timer = setTimeout(() => this.#goOn(), kPatience);
  }

  #goOn() {
    const patient = this.#under && performance.now() - this.#under < kPatience;
    if (this.#next && !patient && this.#coming < 2) this.#go();
  }

  async #go() {
    const body = this.#next, number = ++requests;
    const began = performance.now();
    this.#next = null;
    this.#under = began;
    const rendered = () => {
      if (this.#under === began) this.#under = null;
      this.#goOn();
    };
    ++this.#coming;
    try {
      const response = await send("/api/frame", { ...body, client: this.name, number });
      const answered = performance.now();
      rendered();
      if (response.status === 204) return; // a newer one is on its way
      if (response.headers.get("Content-Type").includes("json")) {
        const { message } = await response.json();
        if (number > this.#drawn) this.told(message, null, body);
        return;
      }
      const facts = JSON.parse(response.headers.get("X-Frame"));
      const image = new ImageData(new Uint8ClampedArray(await response.arrayBuffer()), facts.width, facts.height);
      if (number < this.#drawn || !this.wanted()) return;
      this.#drawn = number;
      if (this.canvas.width !== facts.width || this.canvas.height !== facts.height) Object.assign(this.canvas, { width: facts.width, height: facts.height });
      this.canvas.getContext("2d", { willReadFrequently: true }).putImageData(image, 0, 0);
      this.#learn(body.part ?? 1, Math.max(answered - began, performance.now() - answered));
      this.told(null, facts, body);
    } catch (error) {
      if (error.status) this.told(error.message, null, body);
    } finally {
      --this.#coming;
      rendered();
    }
  }

  /** A single slow one, such as the first, does not count for much; larger ones are tried again in a while. */
  #learn(part, cost) {
    const costs = this.#costs;
    costs[part] = (3 * costs[part] + Math.min(cost, 3 * kSmooth)) / 4;
    for (const larger in costs) if (larger > part) costs[larger] *= 0.97;
  }

  /** The part of the whole at which pictures follow a hand smoothly. */
  get part() { return [1, 0.5].find((part) => this.#costs[part] <= kSmooth) ?? 0.25; }

  get idle() { return !this.#coming && !this.#next; }
}

class PictureView extends HTMLElement {
  zoom = "fit";
  pan = { x: 0, y: 0 };
  split = null;

  connectedCallback() {
    this.after = make("canvas", { className: "after", role: "img", "aria-label": "The picture behind the effects" });
    this.before = make("canvas", { className: "before", role: "img", "aria-label": "The picture before the effects", hidden: true });
    this.divider = make("div", { className: "divider", hidden: true, role: "slider", tabIndex: 0, "aria-label": "Where before ends and after begins" });
    this.sheet = make("div", { className: "sheet" }, this.after, this.before);
    this.overlay = new GeometryOverlay();
    this.sheet.append(this.overlay.svg, this.divider);
    this.desk = make("div", { className: "desk", tabIndex: 0, "aria-label": "Picture; plus and minus zoom, 0 fits, arrows move" }, this.sheet);
    this.message = make("p", { className: "message", hidden: true });
    this.facts = make("output", { className: "facts" });
    this.tools = make("div", { className: "viewbar" },
      this.button("Fit", "fit", () => this.setZoom("fit")), this.button("100 %", "whole", () => this.setZoom(1)),
      this.button("−", "out", () => this.zoomBy(1 / 1.25), "Zoom out"), this.button("+", "in", () => this.zoomBy(1.25), "Zoom in"),
      this.button("Before | after", "split", () => this.setSplit(this.split === null ? 0.5 : null)),
      this.overlay.tools, this.facts);
    this.append(this.tools, this.desk, this.message);
    this.pictures = new Pictures("after", this.after, (...told) => this.show(...told));
    this.fallback = new Pictures("fallback", this.after, (error, facts) => facts && this.know(facts), () => !this.message.hidden);
    this.originals = new Pictures("before", this.before, () => this.layout());
    new ResizeObserver(() => { this.layout(); this.refresh(); }).observe(this.desk);
    store.addEventListener("change", () => this.refresh(true));
    store.addEventListener("look", () => this.refresh(true));
    onReturn(() => this.refresh());
    this.addGestures();
    this.refresh();
  }

  button(text, name, press, title = "") {
    return make("button", { className: `view-${name}`, title, "aria-label": title || text, onclick: press }, text);
  }

  /** The whole picture's size on the screen at 100 %, in CSS pixels. */
  get whole() {
    const { wholeWidth, wholeHeight, pixelAspect } = store.facts;
    return { width: (wholeWidth * pixelAspect) / devicePixelRatio, height: wholeHeight / devicePixelRatio };
  }
  get scale() {
    if (this.zoom !== "fit") return this.zoom;
    const { width, height } = this.whole;
    return Math.min(4, (this.desk.clientWidth - 24) / width, (this.desk.clientHeight - 24) / height);
  }
  get box() {
    const known = store.facts.known;
    const most = (side) => Math.max(16, Math.round((side - 24) * devicePixelRatio));
    if (this.zoom === "fit" || !known) return [most(this.desk.clientWidth), most(this.desk.clientHeight)];
    const { wholeWidth, wholeHeight, pixelAspect } = store.facts;
    const part = Math.min(1, this.zoom);
    return [Math.ceil(wholeWidth * pixelAspect * part), Math.ceil(wholeHeight * part)];
  }

  refresh(dragging = false) {
    const sound = isSound();
    this.hidden = sound;
    if (sound) return;
    const { doc } = store;
    if (!doc.source && !doc.stages.some((stage) => stage.on)) return this.tell("Drop a picture, a clip or a sound here, or choose one of the sources on the left.");
    const body = { ...wire(), frame: doc.frame, box: this.box };
    clearTimeout(this.rest);
    const { part } = this.pictures;
    if (dragging && part < 1) { // a smaller one at once, the whole when the hand rests
      this.pictures.ask({ ...body, box: body.box.map((side) => Math.max(16, Math.round(side * part))), part });
      this.rest = setTimeout(() => this.pictures.ask(body), kRest);
    } else {
      this.pictures.ask(body);
    }
    const original = JSON.stringify([doc.source, doc.frame, body.box, doc.size, doc.duration]);
    if (this.split !== null && doc.source && this.original !== original) {
      this.original = original;
      this.originals.ask({ ...body, stages: [] });
    }
  }

  show(message, facts, body) {
    if (message) {
      this.tell(message.replace(/^"[^"]*" at [\d.e-]+ s: /, "") + (this.overlay.empty ? ". Draw it on the picture: Pen, Rectangle and Ellipse are above." : ""));
      if (body.source) return this.fallback.ask({ ...body, stages: [] });
      this.after.getContext("2d", { willReadFrequently: true }).clearRect(0, 0, this.after.width, this.after.height);
      return this.layout();
    }
    this.message.hidden = true;
    this.sheet.hidden = false;
    const { milliseconds } = facts;
    this.know(facts);
    this.sheet.classList.toggle("checker", !facts.opaque);
    this.facts.textContent = `${facts.wholeWidth} × ${facts.wholeHeight}${body.part ? "" : ` · ${milliseconds.toFixed(0)} ms`}`;
    this.dataset.shown = body.part ? "" : JSON.stringify([body.stages, body.frame]);
    this.layout();
  }

  know({ width, height, milliseconds, ...whole }) {
    store.setFacts({ ...whole, known: true });
    this.layout();
  }

  tell(text) {
    const nothing = !store.doc.source && !store.doc.stages.length;
    this.message.textContent = text;
    this.message.hidden = false;
    this.message.classList.toggle("whole", nothing);
    this.sheet.hidden = nothing;
    this.dataset.shown = "";
  }

  layout() {
    const { width, height } = this.whole, { scale } = this;
    const style = this.sheet.style;
    style.width = `${width * scale}px`;
    style.height = `${height * scale}px`;
    const limit = (value, inner, outer) => Math.min(Math.max(0, (inner - outer) / 2 + 60), Math.max(-Math.max(0, (inner - outer) / 2 + 60), value));
    if (this.zoom === "fit") this.pan = { x: 0, y: 0 };
    this.pan.x = limit(this.pan.x, width * scale, this.desk.clientWidth);
    this.pan.y = limit(this.pan.y, height * scale, this.desk.clientHeight);
    style.transform = `translate(-50%, -50%) translate(${this.pan.x}px, ${this.pan.y}px)`;
    this.sheet.classList.toggle("pixels", scale * devicePixelRatio > 2);
    this.divider.hidden = this.split === null;
    this.before.hidden = this.split === null || !store.doc.source;
    if (this.split !== null) {
      this.divider.style.left = `${this.split * 100}%`;
      this.before.style.clipPath = `inset(0 ${100 - this.split * 100}% 0 0)`;
      this.divider.setAttribute("aria-valuenow", Math.round(this.split * 100));
    }
    this.tools.querySelector(".view-split").setAttribute("aria-pressed", this.split !== null);
    this.tools.querySelector(".view-fit").setAttribute("aria-pressed", this.zoom === "fit");
    this.tools.querySelector(".view-whole").setAttribute("aria-pressed", this.zoom === 1);
    this.overlay.layout();
  }

  setZoom(zoom) { this.zoom = zoom; this.layout(); this.refresh(); }

  /** About a point of the desk, by default its middle. */
  zoomBy(factor, x = 0, y = 0) {
    const old = this.scale;
    this.zoom = Math.min(32, Math.max(0.05, old * factor));
    const grown = this.zoom / old;
    this.pan = { x: x - (x - this.pan.x) * grown, y: y - (y - this.pan.y) * grown };
    this.layout();
    this.refresh(true);
  }

  setSplit(split) {
    this.split = split === null ? null : Math.min(1, Math.max(0, split));
    this.original = null;
    this.layout();
    this.refresh();
  }

  addGestures() {
    const { desk, divider } = this;
    desk.addEventListener("wheel", (event) => {
      const box = desk.getBoundingClientRect();
      this.zoomBy(Math.exp(-event.deltaY / 500), event.clientX - box.left - box.width / 2, event.clientY - box.top - box.height / 2);
      event.preventDefault();
    }, { passive: false });
    let held = null;
    desk.addEventListener("pointerdown", (event) => {
      if (picking && event.button === 0) return this.pick(event);
      if (this.overlay.busy(event) && event.button === 0) return;
      held = { x: event.clientX - this.pan.x, y: event.clientY - this.pan.y };
      desk.setPointerCapture(event.pointerId);
    });
    desk.addEventListener("pointermove", (event) => {
      if (!held) return;
      if (this.zoom === "fit") this.zoom = this.scale;
      this.pan = { x: event.clientX - held.x, y: event.clientY - held.y };
      this.layout();
    });
    desk.addEventListener("pointerup", () => { held = null; });
    desk.addEventListener("keydown", (event) => {
      if (event.target !== desk) return;
      const step = { ArrowLeft: [40, 0], ArrowRight: [-40, 0], ArrowUp: [0, 40], ArrowDown: [0, -40] }[event.key];
      if (step) { this.pan.x += step[0]; this.pan.y += step[1]; this.layout(); }
      else if (event.key === "+" || event.key === "=") this.zoomBy(1.25);
      else if (event.key === "-") this.zoomBy(1 / 1.25);
      else if (event.key === "0") this.setZoom("fit");
      else if (event.key === "1") this.setZoom(1);
      else return;
      event.preventDefault();
    });
    divider.addEventListener("pointerdown", (event) => { divider.setPointerCapture(event.pointerId); event.stopPropagation(); });
    divider.addEventListener("pointermove", (event) => {
      if (!divider.hasPointerCapture(event.pointerId)) return;
      const box = this.sheet.getBoundingClientRect();
      this.split = Math.min(1, Math.max(0, (event.clientX - box.left) / box.width));
      this.layout();
    });
    divider.addEventListener("keydown", (event) => {
      const step = { ArrowLeft: -0.02, ArrowRight: 0.02 }[event.key];
      if (step) { this.split = Math.min(1, Math.max(0, this.split + step)); this.layout(); event.preventDefault(); }
    });
  }

  /** Of the picture before the effects where there is one: that is what a keyer is to be told. */
  async pick(event) {
    const take = picking;
    picking = null;
    this.classList.remove("picking");
    event.preventDefault();
    const box = this.sheet.getBoundingClientRect();
    const x = (event.clientX - box.left) / box.width, y = (event.clientY - box.top) / box.height;
    if (x < 0 || y < 0 || x >= 1 || y >= 1) return;
    let canvas = this.after;
    if (store.doc.source) {
      canvas = make("canvas");
      const originals = new Pictures("pick", canvas, () => {});
      originals.ask({ ...wire(), stages: [], frame: store.doc.frame, box: this.box });
      while (!originals.idle) await new Promise((resolve) => setTimeout(resolve, 20));
    }
    take([...canvas.getContext("2d", { willReadFrequently: true }).getImageData(Math.floor(x * canvas.width), Math.floor(y * canvas.height), 1, 1).data]);
  }
}
customElements.define("picture-view", PictureView);
