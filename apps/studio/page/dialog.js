// The right column: the chain, and the dialog of one of its effects, built from what the effect declares.

import { row } from "./fields.js";
import { label, make, marked } from "./markup.js";
import { currentEffect, currentStage, effectNamed, store } from "./state.js";

class EffectDialog extends HTMLElement {
  rows = [];
  connectedCallback() {
    this.chain = make("ol", { className: "chain", "aria-label": "Chain of effects" });
    this.body = make("div", { className: "dialog" });
    this.help = make("p", { className: "help-line", "aria-live": "polite" });
    this.append(this.chain, this.body, this.help);
    const tell = (event) => {
      const help = event.target.closest?.(".field")?.querySelector(".help");
      if (help) this.help.textContent = help.textContent;
    };
    this.body.addEventListener("pointerover", tell);
    this.body.addEventListener("focusin", tell);
    store.onChange(() => this.update());
    this.update();
  }

  /** Rows follow their values; they are made anew where there are others. */
  update() {
    const stage = currentStage();
    const made = JSON.stringify([store.doc.stages.map((s) => [s.effect, s.on]), store.doc.current,
      stage && Object.values(stage.inputs).filter(Array.isArray).map((slots) => slots.length), stage?.items]);
    if (made !== this.made) {
      this.made = made;
      this.buildChain();
      this.build();
    }
    this.rows.forEach((update) => update());
  }

  buildChain() {
    const { stages, current } = store.doc;
    const move = (from, to) => to >= 0 && to < stages.length && store.change((doc) => {
      doc.stages.splice(to, 0, ...doc.stages.splice(from, 1));
      doc.current = to;
    });
    const focusStage = (number) => this.chain.children[number]?.querySelector(".stage")?.focus();
    this.chain.replaceChildren(...stages.map((stage, i) => {
      const { title } = effectNamed(stage.effect);
      const entry = make("li", { draggable: true, className: i === current ? "current" : "" },
        make("input", { type: "checkbox", checked: stage.on, title: "On or off", "aria-label": `${title} on`,
          onchange: (event) => store.change((doc) => { doc.stages[i].on = event.target.checked; }) }),
        make("button", { className: "stage", "aria-current": i === current, title: "Alt+↑ and Alt+↓ move it, Delete removes it",
          onclick: () => store.look((doc) => { doc.current = i; }),
          onkeydown: (event) => {
            const step = { ArrowUp: -1, ArrowDown: 1 }[event.key];
            if (event.altKey && step) { move(i, i + step); focusStage(i + step); event.preventDefault(); }
            if (event.key === "Delete") this.remove(i);
          } }, make("span", { className: "number" }, String(i + 1)), title),
        make("button", { className: "small", title: "Earlier", "aria-label": `Move ${title} up`, disabled: i === 0, onclick: () => move(i, i - 1) }, "↑"),
        make("button", { className: "small", title: "Later", "aria-label": `Move ${title} down`, disabled: i + 1 === stages.length, onclick: () => move(i, i + 1) }, "↓"),
        make("button", { className: "small", title: "Remove", "aria-label": `Remove ${title}`, onclick: () => this.remove(i) }, "×"));
      entry.addEventListener("dragstart", (event) => event.dataTransfer.setData("text/x-stage", String(i)));
      entry.addEventListener("dragover", (event) => event.preventDefault());
      entry.addEventListener("drop", (event) => {
        const from = event.dataTransfer.getData("text/x-stage");
        if (from !== "") { event.preventDefault(); event.stopPropagation(); move(Number(from), i); }
      });
      return entry;
    }));
    this.chain.hidden = stages.length === 0;
  }

  remove(i) {
    store.change((doc) => {
      doc.stages.splice(i, 1);
      doc.current = Math.max(0, Math.min(doc.current, doc.stages.length - 1));
    });
  }

  build() {
    this.rows = [];
    const effect = currentEffect();
    this.help.textContent = "Point at a setting to read what it does.";
    this.help.hidden = !effect;
    if (!effect) {
      this.body.replaceChildren(make("div", { className: "hint" }, make("h2", {}, "Start here"),
        make("p", {}, "Drop a picture, a clip or a sound anywhere on this page, then choose an effect on the left. Its settings appear here, and the picture follows them."),
        make("p", {}, "Effects that you add form a chain: each works on what the one before it gives.")));
      return;
    }
    const members = new Set(effect.fields.flatMap((field) => field.members ?? []));
    const top = effect.fields.map((_, id) => id).filter((id) => !members.has(id));
    const description = marked(effect.description);
    this.body.replaceChildren(
      make("div", { className: "title" }, make("h2", {}, effect.title),
        make("button", { className: "small", title: "All values as the effect has them at first", onclick: () => this.reset() }, "Reset")),
      make("details", { className: "about" }, make("summary", {}, "About this effect"), make("p", {}, description),
        ...effect.remarks.map((remark) => make("p", {}, remark))),
      ...top.flatMap((id) => this.field(effect, id)));
  }

  reset() {
    store.change((doc) => { doc.stages[doc.current].values = {}; });
  }

  field(effect, id) {
    const field = effect.fields[id];
    if (field.hide) return [];
    if (field.type === "group") return [this.group(effect, field)];
    const { element, update } = row(effect, field, id);
    if (!element) return [];
    this.rows.push(update);
    return [element];
  }

  group(effect, field) {
    const inner = field.members.flatMap((id) => this.field(effect, id));
    const name = label(field.label || field.name);
    const box = make("div", { className: field.kind === "HGroup" ? "hgroup" : "vgroup" }, ...inner);
    if (field.hideName || field.flat) return box;
    if (field.closed) return make("details", { className: "group" }, make("summary", {}, name.node), box);
    return make("fieldset", {}, make("legend", {}, name.node), box);
  }
}
customElements.define("effect-dialog", EffectDialog);
