// One row of a dialog for each kind of field: {element, update}. A row's update shows the value that is now.

import { note } from "./api.js";
import * as curves from "./curves.js";
import { refreshDialog } from "./callbacks.js";
import { fileSelect, onFiles } from "./files.js";
import { geometryRow, shapeAt } from "./geometry.js";
import { label, make, plain } from "./markup.js";
import { currentStage, share, store } from "./state.js";
import { pickColor } from "./viewer.js";

/** A value as rows read and write it: `text`, `keys`, and `now` at the frame that is looked at. */
export class Value {
  /** `at` reads keys at a time; shapes have their own. */
  constructor(name, normal, at = curves.textAt) {
    this.name = name;
    this.normal = normal ?? "";
    this.at = at;
  }
  get text() { return currentStage()?.values[this.name] ?? this.normal; }
  get keys() { return curves.parse(this.text); }
  get now() { return this.at(this.keys, share()); }
  get changed() { return currentStage()?.values[this.name] !== undefined; }
  set(text) {
    store.change((doc) => { doc.stages[doc.current].values[this.name] = text; }, `${store.doc.current} ${this.name}`);
  }
  setKeys(keys) { keys.length ? this.set(curves.format(keys)) : this.reset(); }
  setNow(text) { this.setKeys(curves.withValue(this.keys, share(), text)); }
  reset() {
    store.change((doc) => { delete doc.stages[doc.current].values[this.name]; });
  }
  /** Puts a key at this time, or takes the one that is there. */
  toggleKey() {
    const keys = this.keys, here = keys.length > 1 && curves.keyAt(keys, share());
    if (here) return this.setKeys(keys.filter((key) => key !== here));
    if (keys.length > 1) return this.setKeys(curves.withKey(keys, share(), this.now));
    const other = share() < 0.5 ? 1 : 0; // the value stays as it is until one of the two is changed
    this.setKeys([{ t: share(), v: this.now, course: "line" }, { t: other, v: this.now, course: "line" }].sort((a, b) => a.t - b.t));
  }
}

export const cssColor = (number) => (number === undefined ? null : "#" + number.toString(16).padStart(6, "0"));

/** A label with its letter, help and reset, before what a field is set with. */
function frame(field, value, ...controls) {
  const shown = label(field.label || field.name);
  const help = [field.help && plain(field.help), field.unit && `In ${field.unit}.`, ...(field.remarks ?? [])].filter(Boolean).join(" ");
  const id = `field-${field.name.replaceAll(/\W/g, "-")}-${field.id ?? ""}`;
  const name = make("label", { className: "name", title: value ? "Double-click: the default" : "" }, shown.node);
  controls[0].id ||= id;
  name.htmlFor = controls[0].id;
  if (shown.key) controls[0].accessKey = shown.key.toLowerCase();
  for (const control of controls) if (!control.getAttribute("aria-label")) control.setAttribute("aria-label", shown.text);
  if (value) name.addEventListener("dblclick", () => value.reset());
  const element = make("div", { className: `field ${field.type}` }, field.hideName ? null : name, ...controls);
  element.dataset.field = field.name;
  if (help) element.append(make("p", { className: "help" }, help));
  return element;
}

function keyButton(value, name) {
  const button = make("button", { className: "key small", onclick: () => value.toggleKey() }, "◆");
  const update = () => {
    const keys = value.keys, keyed = keys.length > 1;
    button.classList.toggle("keyed", keyed);
    button.classList.toggle("here", Boolean(keyed && curves.keyAt(keys, share())));
    const told = keyed && curves.keyAt(keys, share()) ? "Remove the key at this time" : "Put a key at this time";
    button.title = told;
    button.setAttribute("aria-label", `${told}: ${name}`);
  };
  return { button, update };
}

// ---- Numbers ----

function rangeOf(field) {
  if (field.kind.toLowerCase() === "angle") return { min: -180, max: 180, below: false, above: false };
  if (field.kind === "Alpha") return { min: 0, max: 1, below: true, above: true };
  return { min: field.min ?? 0, max: field.max ?? 1, ...field.limited };
}

function numberRow(field, value) {
  const { min, max, below, above } = rangeOf(field);
  const whole = field.type === "integer";
  const fine = whole ? 1 : 10 ** Math.floor(Math.log10((max - min || 1) / 200));
  const limited = (x) => Math.min(above ? max : Infinity, Math.max(below ? min : -Infinity, whole ? Math.round(x) : x));
  const put = (x) => Number.isFinite(x) && value.setNow(curves.numberText(limited(x)));
  const slider = make("input", { type: "range", min, max, step: whole ? 1 : "any" });
  const entry = make("input", { type: "text", inputMode: "decimal", className: "entry", autocomplete: "off" });
  const now = () => Number(value.now || 0);
  const nudge = (event, direction) => {
    put(Number((now() + direction * fine * (event.shiftKey ? 10 : 1)).toFixed(8)));
    event.preventDefault();
  };
  const onKey = (event) => {
    const direction = { ArrowUp: 1, ArrowRight: 1, ArrowDown: -1, ArrowLeft: -1 }[event.key];
    if (direction && !(event.target === entry && event.key.match(/Left|Right/))) nudge(event, direction);
  };
  slider.addEventListener("input", () => {
    const digits = Math.max(0, Math.ceil(-Math.log10(fine)));
    put(Number(Number(slider.value).toFixed(digits)));
  });
  slider.addEventListener("keydown", onKey);
  slider.addEventListener("dblclick", () => value.reset());
  entry.addEventListener("keydown", onKey);
  entry.addEventListener("change", () => {
    const wanted = entry.value.trim() === "" ? now() : Number(entry.value.replace(",", "."));
    if (!Number.isFinite(wanted)) note(`“${entry.value}” is no number.`);
    else if (limited(wanted) !== wanted) note(`${label(field.label || field.name).text} is ${below && above ? `from ${min} to ${max}` : below ? `at least ${min}` : `at most ${max}`}.`);
    put(wanted);
    update();
  });
  for (const control of [slider, entry])
    control.addEventListener("wheel", (event) => document.activeElement === control && nudge(event, event.deltaY < 0 ? 1 : -1), { passive: false });
  const key = whole ? null : keyButton(value, field.label || field.name);
  const dial = field.kind.toLowerCase() === "angle" ? angleDial(put, now) : null;
  const element = frame(field, value, slider, entry);
  if (dial) slider.before(dial.element);
  if (key) entry.after(key.button);
  const color = cssColor(field.curveColor);
  if (color) element.style.setProperty("--curve", color);
  function update() {
    const x = now();
    slider.min = Math.min(min, x);
    slider.max = Math.max(max, x);
    slider.value = x;
    slider.setAttribute("aria-valuetext", curves.numberText(x));
    slider.style.setProperty("--filled", `${(100 * (x - slider.min)) / (slider.max - slider.min || 1)}%`);
    if (document.activeElement !== entry || !entry.matches(":focus-visible") || entry.dataset.shown !== entry.value) entry.value = String(Number(x.toPrecision(5)));
    entry.dataset.shown = entry.value;
    element.classList.toggle("changed", value.changed);
    key?.update();
    dial?.update();
  }
  return { element, update };
}

function angleDial(put, now) {
  const hand = make("span", {});
  const element = make("div", { className: "dial", role: "slider", tabIndex: 0, "aria-label": "Angle" }, hand);
  const turn = (event) => {
    const box = element.getBoundingClientRect();
    const degrees = (Math.atan2(event.clientY - box.top - box.height / 2, event.clientX - box.left - box.width / 2) * 180) / Math.PI;
    const turns = Math.round((now() - degrees) / 360) * 360; // the nearest way round
    put(Math.round((degrees + turns) / (event.shiftKey ? 15 : 1)) * (event.shiftKey ? 15 : 1));
  };
  element.addEventListener("pointerdown", (event) => { element.setPointerCapture(event.pointerId); turn(event); });
  element.addEventListener("pointermove", (event) => element.hasPointerCapture(event.pointerId) && turn(event));
  element.addEventListener("keydown", (event) => {
    const step = { ArrowUp: 1, ArrowRight: 1, ArrowDown: -1, ArrowLeft: -1 }[event.key];
    if (step) { put(now() + step * (event.shiftKey ? 15 : 1)); event.preventDefault(); }
  });
  return { element, update: () => {
    hand.style.transform = `rotate(${now()}deg)`;
    element.setAttribute("aria-valuenow", now());
  } };
}

// ---- Colours ----

function colorRow(field, value) {
  const swatch = make("input", { type: "color" });
  const text = make("input", { type: "text", className: "entry hex", spellcheck: false, "aria-label": `${field.name} as #rrggbb or #rrggbbaa` });
  const alpha = make("input", { type: "range", min: 0, max: 255, step: 1, "aria-label": `${field.name}: opacity`, title: "Opacity" });
  const now = () => curves.color.parse(value.now) ?? [0, 0, 0, 255];
  const put = (rgba) => value.setNow(curves.color.format(rgba));
  swatch.addEventListener("input", () => put([...curves.color.parse(swatch.value).slice(0, 3), now()[3]]));
  alpha.addEventListener("input", () => put([...now().slice(0, 3), Number(alpha.value)]));
  text.addEventListener("change", () => {
    const rgba = curves.color.parse(text.value);
    if (rgba) put(rgba);
    else note("A colour is written #rrggbb or #rrggbbaa.");
    update();
  });
  const picker = make("button", { className: "small", title: "Pick a colour from the picture", "aria-label": `Pick ${field.name} from the picture`,
    onclick: () => pickColor((rgba) => put([...rgba.slice(0, 3), now()[3] || 255])) }, "Pick");
  const key = keyButton(value, field.name);
  const element = frame(field, value, swatch, text, picker);
  picker.after(key.button, make("div", { className: "alpha" }, alpha));
  function update() {
    const rgba = now();
    swatch.value = curves.color.format(rgba).slice(0, 7);
    alpha.value = rgba[3];
    text.value = curves.color.format(rgba);
    element.style.setProperty("--shown", curves.color.format(rgba).slice(0, 7));
    element.classList.toggle("changed", value.changed);
    key.update();
  }
  return { element, update };
}

// ---- Choices, files and the rest ----

function selectorRow(field, value) {
  const select = make("select", {}, ...(field.items ?? []).map((item) => make("option", { value: item.text }, item.text)));
  select.addEventListener("change", () => value.set(select.value));
  const element = frame(field, value, select);
  return { element, update: () => {
    select.value = value.text;
    element.classList.toggle("changed", value.changed);
  } };
}

function toggleRow(field, value) {
  const box = make("input", { type: "checkbox" });
  box.addEventListener("change", () => value.set(box.checked ? "on" : "off"));
  const element = frame(field, value, box);
  return { element, update: () => {
    box.checked = value.text === "on";
    element.classList.toggle("changed", value.changed);
  } };
}

/** What comes from the chain is no file to choose. */
function clipText() {
  const { stages, current, source } = store.doc;
  const before = stages.slice(0, current).filter((stage) => stage.on).at(-1);
  return before ? `from ${before.effect.split("/").at(-1)}` : source ?? "the clip, once there is one";
}

function inputRow(effect, field, id) {
  if (id === effect.clip) {
    const told = make("output", { className: "from" });
    return { element: frame(field, null, told), update: () => { told.textContent = clipText(); } };
  }
  const select = fileSelect(field.name, null, (file) => store.change((doc) => { doc.stages[doc.current].inputs[field.name] = file || null; }));
  const update = () => select.set(currentStage()?.inputs[field.name] ?? null);
  onFiles(update);
  return { element: frame(field, null, select), update };
}

let selectedSlots = new Set();

function inputsRow(effect, field, id) {
  const slots = currentStage().inputs[field.name] ?? [""];
  selectedSlots = new Set();
  const selects = slots.map((file, slot) => slot === 0 && id === effect.clip ? null
    : fileSelect(`${field.name} ${slot + 1}`, file, (chosen) => store.change((doc) => {
      (doc.stages[doc.current].inputs[field.name] ??= [""])[slot] = chosen;
    })));
  const told = make("output", { className: "from" });
  const list = make("ol", { className: "slots" }, ...slots.map((_, slot) => make("li", {},
    make("input", { type: "checkbox", "aria-label": `Select input ${slot + 1}`, title: "Selected, for buttons that work on what is selected",
      onchange: (event) => selectedSlots[event.target.checked ? "add" : "delete"](slot) }),
    selects[slot] ?? told)));
  return { element: frame(field, null, list), update: () => {
    told.textContent = clipText();
    selects.forEach((select, slot) => select?.set(currentStage()?.inputs[field.name]?.[slot]));
  } };
}

function buttonRow(field, id) {
  const shown = label(field.label || field.name);
  return { element: make("button", { className: "press", accessKey: shown.key ?? "", title: plain(field.help ?? ""),
    onclick: () => refreshDialog(store.doc.current, { edited: id, selected: [...selectedSlots] }) }, shown.node), update() {} };
}

function datasetRow(field) {
  const items = currentStage().items[field.name] ?? [];
  const rows = items.map((item, i) => numberRow(
    { ...field, type: "number", kind: "FloatA", name: item.name, label: item.name, id: i, help: "", curveColor: item.color, min: 0, max: 1, limited: {} },
    new Value(item.name, item.default)));
  return { element: make("fieldset", {}, make("legend", {}, label(field.label || field.name).node), ...rows.map((one) => one.element)),
    update: () => rows.forEach((one) => one.update()) };
}

/** The values of a stage that have curves, for lanes: {name, value, color, field}. */
export function curvesOf(effect, stage) {
  const plainFields = effect.fields.filter((field) => (field.type === "number" || field.type === "color") && !field.hide)
    .map((field) => ({ field, name: label(field.label || field.name).text, color: cssColor(field.curveColor), value: new Value(field.name, field.default) }));
  const items = effect.fields.filter((field) => field.type === "dataset").flatMap((field) => (stage.items[field.name] ?? [])
    .map((item) => ({ field, name: item.name, color: cssColor(item.color), value: new Value(item.name, item.default) })));
  const shapes = effect.fields.filter((field) => field.type === "geometry" && !field.hide)
    .map((field) => ({ field, name: label(field.label || field.name).text, color: cssColor(field.curveColor), value: new Value(field.name, "", shapeAt) }));
  return [...plainFields, ...items, ...shapes];
}

export function row(effect, field, id) {
  const value = new Value(field.name, field.default);
  switch (field.type) {
    case "number": case "integer": return numberRow({ ...field, id }, value);
    case "color": return colorRow({ ...field, id }, value);
    case "selector": return selectorRow({ ...field, id }, value);
    case "toggle": return toggleRow({ ...field, id }, value);
    case "input": case "media": return inputRow(effect, field, id);
    case "inputs": return inputsRow(effect, field, id);
    case "button": return buttonRow(field, id);
    case "dataset": return datasetRow(field);
    case "geometry": return geometryRow(field, new Value(field.name, "", shapeAt), frame, keyButton);
    case "label": return { element: make("p", { className: "text" }, label(field.label || field.name).node), update() {} };
    default: return {};
  }
}
