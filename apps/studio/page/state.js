// What the user has made: the clip and the chain. It lives in the address's fragment; every change can be undone.

import { get } from "./api.js";

export const effects = await get("/api/effects");
effects.forEach((effect, number) => {
  effect.number = number;
  effect.title = effect.name.split("/").at(-1);
  effect.family = effect.name.split("/").slice(0, -1).join(" / ") || "Others";
  effect.pictures = effect.video || effect.realTime;
  effect.renders = effect.pictures || effect.audio;
});
export const effectNamed = (name) => effects.find((effect) => effect.name === name);

const empty = () => ({ source: null, stages: [], current: 0, frame: 0, duration: null, size: null });

const encode = (doc) => {
  const bytes = new TextEncoder().encode(JSON.stringify(doc));
  return btoa(Array.from(bytes, (byte) => String.fromCharCode(byte)).join("")).replaceAll("+", "-").replaceAll("/", "_").replace(/=+$/, "");
};
const decode = (text) =>
  JSON.parse(new TextDecoder().decode(Uint8Array.from(atob(text.replaceAll("-", "+").replaceAll("_", "/")), (c) => c.charCodeAt(0))));

function fromFragment() {
  try {
    const doc = { ...empty(), ...decode(location.hash.slice(1)) };
    doc.stages = doc.stages.filter((stage) => effectNamed(stage.effect));
    doc.current = Math.max(0, Math.min(doc.current, doc.stages.length - 1));
    return doc;
  } catch {
    return empty();
  }
}

class Store extends EventTarget {
  #past = [];
  #future = [];
  #merging = null;
  #written = 0;
  doc = location.hash.length > 1 ? fromFragment() : empty();
  facts = { frames: 1, rate: 25, duration: 5, wholeWidth: 720, wholeHeight: 576, pixelAspect: 1, opaque: true };

  /** Changes of one `merge` that follow each other closely are undone together. */
  change(edit, merge = null) {
    const before = JSON.stringify(this.doc);
    edit(this.doc);
    if (JSON.stringify(this.doc) === before) return;
    const now = performance.now();
    const goesOn = merge && this.#merging?.name === merge && now - this.#merging.time < 1000;
    if (!goesOn) this.#past.push(before);
    if (this.#past.length > 300) this.#past.shift();
    this.#merging = merge && { name: merge, time: now };
    this.#future = [];
    this.#tell("change");
  }

  /** What is looked at, which is nothing to undo. */
  look(edit) {
    edit(this.doc);
    this.#tell("look");
  }

  undo() { this.#step(this.#past, this.#future); }
  redo() { this.#step(this.#future, this.#past); }
  get canUndo() { return this.#past.length > 0; }
  get canRedo() { return this.#future.length > 0; }

  setFacts(facts) {
    const news = JSON.stringify(facts) !== JSON.stringify(this.facts);
    this.facts = facts;
    if (news) this.dispatchEvent(new Event("facts"));
  }

  onChange(listener) {
    this.addEventListener("change", listener);
    this.addEventListener("look", listener);
    this.addEventListener("facts", listener);
  }

  #step(from, to) {
    if (!from.length) return;
    to.push(JSON.stringify(this.doc));
    const { frame } = this.doc;
    this.doc = { ...JSON.parse(from.pop()), frame };
    this.#merging = null;
    this.#tell("change");
  }

  #tell(what) {
    this.dispatchEvent(new Event(what));
    clearTimeout(this.#written); // browsers allow few changes of the address
    this.#written = setTimeout(() => history.replaceState(null, "", "/#" + encode(this.doc)), 250);
  }
}

export const store = new Store();
addEventListener("hashchange", () => store.change((doc) => Object.assign(doc, fromFragment())));

export const currentStage = () => store.doc.stages[store.doc.current];
export const currentEffect = () => effectNamed(currentStage()?.effect);
export const isSound = () => store.doc.stages.some((stage) => stage.on && !effectNamed(stage.effect).pictures);
/** Where the frame that is looked at lies in the span of the effects. */
export const share = () => store.doc.frame / (store.facts.rate * store.facts.duration);

/** The document as the server takes it. */
export function wire(doc = store.doc) {
  const stages = doc.stages.filter((stage) => stage.on).map((stage) => ({
    effect: stage.effect, inputs: stage.inputs, settings: Object.entries(stage.values),
  }));
  return { source: doc.source, stages, size: doc.size, duration: doc.duration };
}

export const newStage = (effect) => ({ effect: effect.name, on: true, inputs: {}, values: {}, items: {} });
