// What leaves the page: the command, presets, files.

import { call, copyText, get, note, post } from "./api.js";
import { infoOf } from "./files.js";
import { make } from "./markup.js";
import { refreshDialog } from "./callbacks.js";
import { effectNamed, isSound, newStage, store, wire } from "./state.js";

async function usualName() {
  const { doc } = store;
  const info = doc.source ? await infoOf(doc.source) : null;
  const stem = (doc.source ?? "picture").split("/").at(-1).replace(/\.[^.]*$/, "");
  const last = doc.stages.at(-1)?.effect.split("/").at(-1).toLowerCase().replaceAll(/\W+/g, "-") ?? "copy";
  const moves = info?.kind === "clip" || doc.stages.some((stage) => Object.values(stage.values).some((text) => /;[^;]*=/.test(text)));
  return `${stem}-${last}${isSound() ? ".wav" : moves ? ".mp4" : ".png"}`;
}

const wanted = (output, more = {}) => ({ ...wire(), duration: store.doc.duration ?? (store.facts.lasts ? null : store.facts.duration), frame: store.doc.frame, output,
  ...(store.facts.opaque || isSound() ? {} : { alpha: "keep" }), ...more });

export async function copyCommand() {
  try {
    const { command } = await post("/api/command", wanted(await usualName()));
    note(`${(await copyText(command)) ? "Copied" : "To be copied"}: ${command}`);
  } catch (error) {
    note(error.message);
  }
}

export async function savePreset() {
  try {
    const { preset } = await post("/api/command", wanted("preset.mp4"));
    const link = make("a", { href: URL.createObjectURL(new Blob([JSON.stringify(preset, null, 2) + "\n"], { type: "application/json" })), download: "preset.json" });
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 1000);
    note("Saved as preset.json: zol render --preset preset.json -i CLIP -o FILE");
  } catch (error) {
    note(error.message);
  }
}

/** The clip that is looked at stays; one of the preset's own comes where there is none. */
export async function loadPreset(file) {
  try {
    const loaded = await post("/api/preset", JSON.parse(await file.text()));
    store.change((doc) => {
      doc.source = doc.source ?? (loaded.source || null);
      doc.stages = loaded.stages.map((stage) => ({ ...newStage(effectNamed(stage.effect)), inputs: stage.inputs, values: Object.fromEntries(stage.settings) }));
      doc.current = 0;
    });
    for (let i = 0; i < store.doc.stages.length; ++i) await refreshDialog(i); // values as the page writes them
  } catch (error) {
    note(error instanceof SyntaxError ? "That is no preset: it is no JSON." : error.message);
  }
}

export function choosePreset() {
  const input = make("input", { type: "file", accept: ".json,application/json" });
  input.addEventListener("change", () => loadPreset(input.files[0]));
  input.click();
}

// ---- Rendering a file ----

export async function showOutput() {
  const dialog = document.getElementById("output");
  const { output } = await get("/api/state");
  const name = make("input", { type: "text", id: "output-name", value: await usualName(), spellcheck: false });
  const quality = make("select", { id: "output-quality" }, ...["good", "best", "lossless", "draft"].map((q) => make("option", {}, q)));
  const over = make("input", { type: "checkbox", id: "output-over" });
  const command = make("textarea", { readOnly: true, rows: 3, id: "output-command" });
  const bar = make("progress", { max: 1, value: 0, hidden: true, "aria-label": "Progress" });
  const told = make("p", { role: "status" });
  const start = make("button", { className: "primary", id: "output-start", onclick: () => begin() }, "Render");
  const close = make("button", { onclick: () => (job ? cancel() : dialog.close()) }, "Close");
  let job = null, exists = false;
  const body = () => wanted(name.value, { overwrite: over.checked, ...(quality.value === "good" ? {} : { quality: quality.value }) });
  const tellCommand = async () => {
    const usable = /^[^.\-/\\%][^/\\%]*\.\w+$/.test(name.value);
    start.disabled = !usable;
    if (!usable) return void (told.textContent = "A file has a name with an ending such as .mp4, and no folder.");
    try {
      const reply = await post("/api/command", body());
      command.value = reply.command;
      exists = reply.exists;
      told.textContent = exists ? `“${name.value}” exists. Choose another name, or replace it.` : "";
    } catch (error) {
      told.textContent = error.message;
    }
  };
  const cancel = () => call(`/api/render/${job}`, { method: "DELETE" }).catch(() => {});
  const over_ = (text) => { job = null; start.disabled = false; close.textContent = "Close"; bar.hidden = true; told.textContent = text; };
  async function begin() {
    await tellCommand();
    if (exists || start.disabled) return;
    start.disabled = true;
    try {
      job = (await post("/api/render", body())).number;
    } catch (error) {
      return over_(error.message);
    }
    bar.hidden = false;
    close.textContent = "Cancel";
    while (job) {
      const state = await get(`/api/render/${job}`).catch((error) => ({ state: "failed", error: error.message, notes: [] }));
      const { done = 0, all = 0, seconds = 0 } = state;
      bar.value = all ? done / all : 0;
      const rate = seconds ? done / seconds : 0;
      if (state.state === "running")
        told.textContent = all ? `${done} of ${all}${!isSound() && rate ? `, ${rate.toFixed(0)} a second, ${Math.ceil((all - done) / rate)} s left` : ""}` : "Beginning …";
      else if (state.state === "done") over_(`Written: ${state.file}${state.notes.map((line) => `\n${line}`).join("")}`);
      else over_(state.state === "cancelled" ? "Cancelled; nothing was left behind." : state.error);
      await new Promise((resolve) => setTimeout(resolve, 150));
    }
  }
  for (const control of [name, quality, over]) control.addEventListener("change", tellCommand);
  dialog.replaceChildren(make("h2", { id: "output-title" }, "Render a file"),
    make("p", { className: "hint" }, `Into ${output}. The name's ending tells the format: .mp4, .mov, .mkv, .png, .jpg, .wav …`),
    make("div", { className: "field" }, make("label", { htmlFor: "output-name", className: "name" }, "File"), name),
    make("div", { className: "field" }, make("label", { htmlFor: "output-quality", className: "name" }, "Quality"), quality),
    make("div", { className: "field toggle" }, make("label", { htmlFor: "output-over", className: "name" }, "Replace an existing file"), over),
    make("div", { className: "field" }, make("label", { htmlFor: "output-command", className: "name" }, "The same in a terminal"), command),
    bar, told, make("div", { className: "row" }, make("button", { onclick: async () => { if (await copyText(command.value)) note("Copied."); } }, "Copy command"), close, start));
  dialog.onclose = () => job && cancel();
  await tellCommand();
  dialog.showModal();
}
