// Shapes on the picture: pen, rectangle and ellipse; nodes and handles that can be dragged.

import * as curves from "./curves.js";
import { label, make } from "./markup.js";
import { between, ellipse, formatPath, parsePath, rectangle } from "./paths.js";
import { currentEffect, currentStage, share, store } from "./state.js";

const ns = "http://www.w3.org/2000/svg";
const svg = (name, attributes) => {
  const element = document.createElementNS(ns, name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  return element;
};

/** The path at a time, which between two keys is between theirs. */
export function shapeAt(keys, t) {
  if (!keys.length) return "";
  const after = keys.findIndex((key) => key.t > t);
  if (after === 0) return keys[0].v;
  const left = keys[(after < 0 ? keys.length : after) - 1];
  if (after < 0 || left.course === "hold") return left.v;
  const right = keys[after], p = (t - left.t) / (right.t - left.t);
  return between(left.v, right.v, left.course === "smooth" ? p * p * (3 - 2 * p) : p);
}

let drawnField = null; // the name of the field that is drawn, where the effect has several
let tool = "edit";
const events = new EventTarget();

const geometryFields = () => currentEffect()?.fields.filter((field) => field.type === "geometry" && !field.hide) ?? [];
const field = () => geometryFields().find((one) => one.name === drawnField) ?? geometryFields()[0];

function choose(name, next) {
  drawnField = name;
  tool = next;
  events.dispatchEvent(new Event("tool"));
}

export function geometryRow(declared, value, frame, keyButton) {
  const text = make("textarea", { rows: 2, spellcheck: false, placeholder: "Draw on the picture, or paste SVG path data" });
  text.addEventListener("change", () => {
    const path = /\sd\s*=\s*"([^"]+)"/.exec(text.value)?.[1] ?? text.value; // a whole path element may be pasted
    path.trim() ? value.setNow(path.trim().replaceAll(/\s+/g, " ")) : value.reset();
  });
  const key = keyButton(value, label(declared.label || declared.name).text);
  const element = frame(declared, value, text);
  text.before(make("div", { className: "draw" },
    make("button", { className: "small", title: "Draw it on the picture", onclick: () => choose(declared.name, "pen") }, "Draw"), make("button", { className: "small", onclick: () => value.reset() }, "Clear"), key.button));
  return { element, update: () => {
    if (document.activeElement !== text) text.value = value.now;
    key.update();
  } };
}

export class GeometryOverlay {
  #contours = [];
  #chosen = null;  // a node
  #drawing = null; // what the pointer draws or drags: a function of the point, and how it ends
  #open = null;    // the contour that the pen goes on with

  constructor() {
    this.svg = svg("svg", { class: "shapes", "aria-hidden": "true" });
    this.svg.tabIndex = -1;
    this.tools = make("span", { className: "drawbar", role: "toolbar", "aria-label": "Drawing" });
    for (const [name, title, help] of [["edit", "Edit", "Move nodes and handles; double-click a node for a corner or a curve; Delete removes it"],
      ["pen", "Pen", "Click for corners, drag for curves; the first node or Enter ends"], ["rectangle", "Rectangle", "Drag"], ["ellipse", "Ellipse", "Drag"]])
      this.tools.append(make("button", { title: help, onclick: () => choose(field()?.name, name) }, title));
    store.onChange(() => this.layout());
    events.addEventListener("tool", () => { this.#open = null; this.layout(); });
    this.svg.addEventListener("pointerdown", (event) => this.#down(event));
    this.svg.addEventListener("pointermove", (event) => this.#drawing?.move(this.#point(event), event));
    this.svg.addEventListener("pointerup", () => this.#up());
    this.svg.addEventListener("dblclick", (event) => this.#turn(event));
    addEventListener("keydown", (event) => this.#key(event));
  }

  /** Whether the pointer means a shape rather than the picture. */
  busy(event) { return Boolean(field()) && (tool !== "edit" || event.target.closest?.(".node, .handle")); }

  /** Whether there is a shape to draw, and nothing drawn yet. */
  get empty() { return Boolean(field()) && !this.#text; }

  get #text() { return shapeAt(curves.parse(currentStage()?.values[field()?.name] ?? ""), share()); }

  #write() {
    const { name } = field();
    const text = formatPath(this.#contours);
    const path = `${store.doc.current} ${name}`;
    store.change((doc) => {
      const { values } = doc.stages[doc.current];
      if (text) values[name] = curves.format(curves.withValue(curves.parse(values[name] ?? ""), share(), text));
      else delete values[name];
    }, path);
  }

  layout() {
    const shown = field();
    this.svg.style.display = this.tools.style.display = shown ? "" : "none";
    if (!shown) return;
    const { wholeWidth, wholeHeight } = store.facts;
    this.svg.setAttribute("viewBox", `0 0 ${wholeWidth} ${wholeHeight}`);
    this.svg.setAttribute("preserveAspectRatio", "none");
    this.svg.classList.toggle("drawing", tool !== "edit");
    [...this.tools.children].forEach((button, i) => button.setAttribute("aria-pressed", ["edit", "pen", "rectangle", "ellipse"][i] === tool));
    if (!this.#drawing) {
      const chosen = this.#chosen && this.#place(this.#chosen);
      const open = this.#open && this.#contours.indexOf(this.#open);
      this.#contours = parsePath(this.#text) ?? [];
      this.#chosen = chosen ? this.#contours[chosen[0]]?.nodes[chosen[1]] ?? null : null;
      this.#open = open !== null && open >= 0 ? this.#contours[open] ?? null : null;
    }
    this.#draw();
  }

  #place(node) {
    const contour = this.#contours.findIndex(({ nodes }) => nodes.includes(node));
    return contour < 0 ? null : [contour, this.#contours[contour].nodes.indexOf(node)];
  }

  #draw() {
    const width = this.svg.getBoundingClientRect().width || 1;
    const unit = store.facts.wholeWidth / width; // pixels of the picture for one of the screen
    const parts = [];
    const path = formatPath(this.#contours) || "M0 0";
    for (const name of ["halo", "outline"]) parts.push(svg("path", { d: path, class: name }));
    for (const contour of this.#contours)
      for (const node of contour.nodes) {
        const chosen = node === this.#chosen;
        if (chosen || contour.nodes.length <= 12)
          for (const side of ["in", "out"])
            if (node[side]) {
              const [x, y] = node[side];
              parts.push(svg("line", { x1: node.x, y1: node.y, x2: x, y2: y, class: "arm" }));
              parts.push(Object.assign(svg("circle", { cx: x, cy: y, r: 4 * unit, class: "handle" }), { node, side }));
            }
        const r = 4.5 * unit;
        parts.push(Object.assign(svg("rect", { x: node.x - r, y: node.y - r, width: 2 * r, height: 2 * r, class: chosen ? "node chosen" : "node" }), { node }));
      }
    this.svg.replaceChildren(...parts);
  }

  #point(event) {
    const box = this.svg.getBoundingClientRect();
    const { wholeWidth, wholeHeight } = store.facts;
    return { x: ((event.clientX - box.left) / box.width) * wholeWidth, y: ((event.clientY - box.top) / box.height) * wholeHeight };
  }

  #down(event) {
    if (event.button !== 0 || !field()) return;
    const { node, side } = event.target;
    const from = this.#point(event);
    if (tool === "edit" && !node) return;
    event.stopPropagation();
    event.preventDefault();
    this.svg.closest(".desk").focus(); // keys mean the shape from now on
    this.svg.setPointerCapture(event.pointerId);
    if (tool === "edit") this.#drawing = side ? this.#dragHandle(node, side) : this.#dragNode(node, from);
    else if (tool === "pen") this.#drawing = this.#pen(from, node);
    else this.#drawing = this.#shape(from);
    this.#draw();
  }

  #dragNode(node, from) {
    this.#chosen = node;
    let last = from;
    return { move: (to) => {
      const dx = to.x - last.x, dy = to.y - last.y;
      last = to;
      node.x += dx;
      node.y += dy;
      for (const side of ["in", "out"]) if (node[side]) node[side] = [node[side][0] + dx, node[side][1] + dy];
      this.#write();
      this.#draw();
    } };
  }

  #dragHandle(node, side) {
    this.#chosen = node;
    const other = side === "in" ? "out" : "in";
    return { move: (to, event) => {
      node[side] = [to.x, to.y];
      if (node[other] && !event.altKey) { // the other stays opposite, as long as it is
        const length = Math.hypot(node[other][0] - node.x, node[other][1] - node.y);
        const angle = Math.atan2(node.y - to.y, node.x - to.x);
        node[other] = [node.x + length * Math.cos(angle), node.y + length * Math.sin(angle)];
      }
      this.#write();
      this.#draw();
    } };
  }

  #pen(from, hit) {
    if (this.#open && hit === this.#open.nodes[0] && this.#open.nodes.length > 1) {
      this.#open.closed = true;
      this.#open = null;
      this.#write();
      choose(field().name, "edit");
      return null;
    }
    if (!this.#open) this.#contours.push((this.#open = { closed: false, nodes: [] }));
    const node = { x: from.x, y: from.y, in: null, out: null };
    this.#open.nodes.push(node);
    this.#chosen = node;
    this.#write();
    return { move: (to) => {
      if (Math.hypot(to.x - node.x, to.y - node.y) < 3) return;
      node.out = [to.x, to.y];
      node.in = [2 * node.x - to.x, 2 * node.y - to.y];
      this.#write();
      this.#draw();
    } };
  }

  #shape(from) {
    const make = tool === "rectangle" ? rectangle : ellipse;
    let contour = null;
    return { move: (to, event) => {
      if (event.shiftKey) {
        const side = Math.max(Math.abs(to.x - from.x), Math.abs(to.y - from.y));
        to = { x: from.x + side * Math.sign(to.x - from.x), y: from.y + side * Math.sign(to.y - from.y) };
      }
      if (contour) this.#contours.pop();
      this.#contours.push((contour = make(from, to)));
      this.#write();
      this.#draw();
    }, end: () => contour && choose(field().name, "edit") };
  }

  #up() {
    const done = this.#drawing;
    this.#drawing = null;
    done?.end?.();
    this.layout();
  }

  /** A corner becomes a curve, and back. */
  #turn(event) {
    const { node, side } = event.target;
    if (!node || side || tool !== "edit") return;
    const { nodes } = this.#contours.find((contour) => contour.nodes.includes(node));
    if (node.in || node.out) {
      node.in = node.out = null;
    } else {
      const i = nodes.indexOf(node), before = nodes.at(i - 1), after = nodes[(i + 1) % nodes.length];
      const dx = (after.x - before.x) / 6, dy = (after.y - before.y) / 6;
      node.in = [node.x - dx, node.y - dy];
      node.out = [node.x + dx, node.y + dy];
    }
    this.#write();
    this.layout();
  }

  #key(event) {
    if (event.target.matches("input, textarea, select") || !field()) return;
    if ((event.key === "Enter" || event.key === "Escape") && tool !== "edit") choose(field().name, "edit");
    if (event.key !== "Delete" || !this.#chosen || event.target.closest(".chain, time-bar")) return;
    for (const contour of this.#contours) contour.nodes = contour.nodes.filter((node) => node !== this.#chosen);
    this.#contours = this.#contours.filter((contour) => contour.nodes.length > 1);
    this.#chosen = null;
    this.#write();
  }
}
