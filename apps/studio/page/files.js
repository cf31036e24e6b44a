// The clip that the chain is applied to, and how files come to the page.

import { call, get, note, onReturn } from "./api.js";
import { make } from "./markup.js";
import { store } from "./state.js";

const events = new EventTarget();
export let files = await get("/api/files");
const infos = new Map();

/** What a file holds; null where it cannot be read. */
export async function infoOf(id) {
  if (!infos.has(id)) infos.set(id, get("/api/file?id=" + encodeURIComponent(id)).catch(() => null));
  return infos.get(id);
}

export const onFiles = (listener) => events.addEventListener("files", listener);

async function refresh() {
  files = await get("/api/files").catch(() => files);
  infos.clear();
  events.dispatchEvent(new Event("files"));
}
onReturn(refresh);
addEventListener("focus", refresh); // files may have come into the folder meanwhile

export async function upload(list) {
  const ids = [];
  for (const file of list) {
    note(`Reading ${file.name} …`);
    try {
      const reply = await call("/api/drop?name=" + encodeURIComponent(file.name), { method: "POST", body: file });
      ids.push((await reply.json()).id);
    } catch (error) {
      note(error.message);
    }
  }
  if (!ids.length) return ids;
  await refresh();
  note(ids.length === 1 ? `${ids[0]} is here.` : `${ids.length} files are here.`);
  return ids;
}

export async function useSource(id) {
  const info = id ? await infoOf(id) : null;
  store.change((doc) => {
    doc.source = id || null;
    doc.frame = 0;
    doc.duration = info?.kind === "still" ? 5 : null;
  });
}

/** A choice of one of the files, or of one from the disk. */
export function fileSelect(label, value, choose, none = "Choose a file …") {
  const select = make("select", { "aria-label": label });
  const fill = (chosen) => {
    const missing = chosen && !files.some((file) => file.id === chosen);
    select.replaceChildren(make("option", { value: "" }, none),
      ...files.map((file) => make("option", { value: file.id }, file.id)),
      ...(missing ? [make("option", { value: chosen }, `${chosen} (missing)`)] : []),
      make("option", { value: "\n" }, "Open from the disk …"));
    select.value = chosen ?? "";
  };
  let current = value;
  fill(current);
  select.addEventListener("change", async () => {
    if (select.value !== "\n") return choose(current = select.value);
    select.value = current ?? "";
    const [id] = await pick();
    if (id) choose(current = id);
  });
  select.set = (id) => { current = id; fill(id); };
  return select;
}

const pick = () => new Promise((resolve) => {
  const input = make("input", { type: "file", multiple: true, accept: "image/*,video/*,audio/*,.mkv,.mxf,.exr,.dpx" });
  input.addEventListener("change", async () => resolve(await upload(input.files)));
  input.addEventListener("cancel", () => resolve([]));
  input.click();
});

class SourceBar extends HTMLElement {
  connectedCallback() {
    this.select = fileSelect("Clip", store.doc.source, useSource, "No clip");
    this.append(this.select, make("button", { onclick: async () => {
      const [id] = await pick();
      if (id) useSource(id);
    }, title: "Open a picture, a clip or a sound" }, "Open…"));
    const update = () => this.select.set(store.doc.source);
    store.onChange(update);
    onFiles(update);
    if (!store.doc.source && !store.doc.stages.length && files.length) useSource(files[0].id);
  }
}
customElements.define("source-bar", SourceBar);
