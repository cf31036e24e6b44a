// What effects do in their dialogs by themselves.

import { note, post } from "./api.js";
import { effectNamed, share, store, wire } from "./state.js";

/** Has the effect's own callbacks say what the dialog holds, after what the user did in it. */
export async function refreshDialog(number, event = {}) {
  const stage = store.doc.stages[number];
  const effect = effectNamed(stage.effect);
  const doc = { ...store.doc, stages: [{ ...stage, on: true }] };
  let reply;
  try {
    reply = await post("/api/dialog", { ...wire(doc), duration: store.facts.duration, stage: 0, share: share(), ...event });
  } catch (error) {
    return note(error.message);
  }
  store.change((now) => {
    const place = now.stages[number];
    if (place?.effect !== effect.name) return;
    reply.fields.forEach((field, id) => {
      const { name, type, default: normal } = effect.fields[id];
      if (type === "inputs") place.inputs[name] = field.slots;
      else if (type === "dataset") setItems(place, name, field.items);
      else if (field.value !== undefined && field.value !== (place.values[name] ?? normal)) place.values[name] = field.value;
    });
  }, "dialog");
  reply.messages.forEach(note);
}

function setItems(stage, name, items) {
  const old = stage.items[name] ?? [];
  old.forEach((item) => delete stage.values[item.name]);
  stage.items[name] = items.map((item) => {
    const normal = old.find((other) => other.name === item.name)?.default ?? item.value;
    if (item.value !== normal) stage.values[item.name] = item.value;
    return { name: item.name, color: item.color, default: normal };
  });
}
