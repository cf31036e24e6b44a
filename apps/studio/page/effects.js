// The left column: all effects, by family, or those that fit what is typed.

import { note } from "./api.js";
import { make, plain } from "./markup.js";
import { effectNamed, effects, newStage, store } from "./state.js";
import { refreshDialog } from "./callbacks.js";

const folded = (text) => text.toLowerCase();

/** What it does, without the words that all begin with. */
function summary(effect) {
  const text = plain(effect.description).replace(/^This effect (simply |is )?/, "");
  return text ? text[0].toUpperCase() + text.slice(1) : effect.family;
}

/** How well an effect fits words: 0 not at all. */
function fitness(effect, words) {
  const title = folded(effect.title), name = folded(effect.name), text = folded(plain(effect.description));
  return words.reduce((total, word) => {
    const fit = title.startsWith(word) ? 8 : title.includes(word) ? 4 : name.includes(word) ? 2 : text.includes(word) ? 1 : 0;
    return fit && total && total + fit;
  }, 1);
}

export function addEffect(effect) {
  const stage = newStage(effect);
  const isSource = (one) => effectNamed(one.effect).clip < 0;
  const mixes = store.doc.stages.some((other) => effectNamed(other.effect).pictures !== effect.pictures);
  store.change((doc) => {
    if (mixes) doc.stages = [];
    const place = doc.stages.length && effect.clip >= 0 ? doc.current + 1 : 0; // sources begin chains
    doc.stages.splice(place, effect.clip < 0 && doc.stages[0] && isSource(doc.stages[0]) ? 1 : 0, stage);
    doc.current = place;
  });
  if (mixes) note("A new chain: sound and pictures do not go through one. Undo brings the last back.");
  if (effect.dialog) refreshDialog(store.doc.current);
}

class EffectBrowser extends HTMLElement {
  connectedCallback() {
    this.search = make("input", {
      type: "search", placeholder: "Find an effect", "aria-label": "Find an effect", oninput: () => this.show(),
      onkeydown: (event) => {
        if (event.key === "Enter") this.list.querySelector("button")?.click();
        if (event.key === "ArrowDown") this.list.querySelector("button")?.focus();
      },
    });
    this.list = make("div", { className: "effects" });
    this.list.addEventListener("keydown", (event) => {
      if (event.key !== "ArrowDown" && event.key !== "ArrowUp") return;
      const all = [...this.list.querySelectorAll("details[open] button, .found button")];
      all[all.indexOf(document.activeElement) + (event.key === "ArrowDown" ? 1 : -1)]?.focus();
      event.preventDefault();
    });
    this.append(this.search, this.list);
    this.show();
  }

  show() {
    const words = folded(this.search.value).split(/\s+/).filter(Boolean);
    const usable = effects.filter((effect) => effect.renders);
    if (words.length) {
      const found = usable.map((effect) => [fitness(effect, words), effect]).filter(([fit]) => fit)
        .sort((a, b) => b[0] - a[0]).map(([, effect]) => this.entry(effect, true));
      this.list.replaceChildren(found.length ? make("ul", { className: "found" }, ...found)
        : make("p", { className: "hint" }, `Nothing fits “${this.search.value}”. Try a word of what it does, such as key, blur or colour.`));
      return;
    }
    const families = Map.groupBy ? Map.groupBy(usable, (effect) => effect.family) : new Map();
    this.list.replaceChildren(...[...families].map(([family, members]) =>
      make("details", { open: true }, make("summary", {}, family), make("ul", {}, ...members.map((effect) => this.entry(effect))))));
  }

  entry(effect, withFamily = false) {
    const text = summary(effect);
    const icon = effect.icon ? make("img", { src: `/api/icon/${effect.number}`, alt: "", width: 50, height: 38, loading: "lazy" })
      : make("span", { className: "no-icon", "aria-hidden": "true" }, effect.title[0]);
    return make("li", {}, make("button", { title: text, onclick: () => addEffect(effect) }, icon,
      make("span", {}, make("b", {}, effect.title), make("small", {}, withFamily && text !== effect.family ? `${effect.family} · ${text}` : text))));
  }

  focusSearch() { this.search.focus(); this.search.select(); }
}
customElements.define("effect-browser", EffectBrowser);
