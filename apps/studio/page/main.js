// The page's beginning.

import "./viewer.js";
import "./sound.js";
import "./time.js";
import "./effects.js";
import "./dialog.js";
import { upload, useSource } from "./files.js";
import { choosePreset, copyCommand, loadPreset, savePreset, showOutput } from "./output.js";
import { store } from "./state.js";

history.replaceState(null, "", "/" + location.hash); // the secret does not stay in sight

const button = (id, press) => {
  const element = document.getElementById(id);
  element.addEventListener("click", press);
  return element;
};
const undo = button("undo", () => store.undo()), redo = button("redo", () => store.redo());
const needStages = [button("copy", copyCommand), button("save-preset", savePreset), button("render", showOutput)];
button("load-preset", choosePreset);

const update = () => {
  undo.disabled = !store.canUndo;
  redo.disabled = !store.canRedo;
  needStages.forEach((one) => { one.disabled = !store.doc.stages.some((stage) => stage.on); });
};
store.onChange(update);
update();

addEventListener("keydown", (event) => {
  const typing = event.target.matches("input[type=text], input[type=search], textarea");
  if ((event.ctrlKey || event.metaKey) && event.key.toLowerCase() === "z" && !typing) {
    event.shiftKey ? store.redo() : store.undo();
    event.preventDefault();
  } else if ((event.ctrlKey || event.metaKey) && event.key.toLowerCase() === "y" && !typing) {
    store.redo();
    event.preventDefault();
  } else if (event.key === "/" && !typing) {
    document.querySelector("effect-browser").focusSearch();
    event.preventDefault();
  }
});

addEventListener("dragover", (event) => {
  event.preventDefault();
  if (event.dataTransfer.types.includes("Files")) document.body.classList.add("dropping");
});
addEventListener("dragleave", (event) => event.relatedTarget || document.body.classList.remove("dropping"));
addEventListener("drop", async (event) => {
  event.preventDefault();
  document.body.classList.remove("dropping");
  const dropped = [...event.dataTransfer.files];
  const presets = dropped.filter((file) => file.name.endsWith(".json"));
  const [id] = await upload(dropped.filter((file) => !presets.includes(file)));
  if (id) await useSource(id);
  for (const preset of presets) await loadPreset(preset);
});
document.body.dataset.ready = "";
